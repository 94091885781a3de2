// The strip of a tree of 20,000 leaves: 512 x 256 pixels, 16 rays each, leaves cut out by a texture. Read it beside
// PlainRays of the same run: the same rays through the same geometry one by one on one core, hits counted and nothing
// else, with the alpha looked up in the nearest pixel. So the engine's part holds the shading and all cores.

#include "Plugins/Vx2/host/engine.h"
#include "benchmarks/support/side_by_side.h"
#include "platform/gltf/document.h"
#include "platform/gltf/writer.h"
#include "platform/texture/tga.h"
#include "support/camera/camera.h"

#include <QtCore/QTemporaryDir>

#include <cmath>
#include <embree3/rtcore.h>
#include <memory>
#include <random>

namespace {

constexpr unsigned tile = 128, width = 4 * tile, height = 256, samples = 16, leaves = 20000;
constexpr float tree_width = 6, tree_height = 12;  // metres
constexpr double rays = double(width) * height * samples;

struct LEAVES {
    std::vector<float> positions, uvs;
    std::vector<unsigned> indices;
    KESTREL::PICTURE picture;  // a disc
};

LEAVES make_leaves()
{
    LEAVES made;
    std::mt19937 random(1);
    std::uniform_real_distribution<float> place(-1, 1);
    while (made.positions.size() < leaves * 12) {
        float const centre[3] = {place(random), place(random), place(random)};
        if (centre[0] * centre[0] + centre[1] * centre[1] + centre[2] * centre[2] > 0.9f)
            continue;
        float const a[3] = {place(random), place(random), place(random)}, b[3] = {-a[1], a[0], a[2] * 0.5f};
        unsigned const first = unsigned(made.positions.size() / 3);
        for (unsigned corner = 0; corner < 4; ++corner) {
            float const u = corner == 1 || corner == 2 ? 1.0f : 0.0f, v = corner >= 2 ? 1.0f : 0.0f;
            for (unsigned axis = 0; axis < 3; ++axis) {
                float const at = centre[axis] * (axis == 1 ? tree_height / 2 : tree_width / 2) * 0.95f;
                float const up = axis == 1 ? tree_height / 2 : 0;
                made.positions.push_back(at + up + 0.1f * (a[axis] * (u - 0.5f) + b[axis] * (v - 0.5f)));
            }
            made.uvs.insert(made.uvs.end(), {u, v});
        }
        for (unsigned const corner : {0, 1, 2, 0, 2, 3})
            made.indices.push_back(first + corner);
    }
    made.picture = {64, 64, std::vector<std::uint8_t>(64 * 64 * 4, 200)};
    for (unsigned y = 0; y < 64; ++y)
        for (unsigned x = 0; x < 64; ++x)
            made.picture.at(x, y)[3] = std::hypot(float(x) - 31.5f, float(y) - 31.5f) < 30 ? 255 : 0;
    return made;
}

bool write_model(LEAVES const &from, std::string const &folder)
{
    GLTF::DOCUMENT document;
    std::size_t const count = from.positions.size() / 3;
    GLTF::PRIMITIVE primitive;
    int const positions = document.buffer.add(GLTF::COMPONENT::F32, 3, count, GLTF::USE::VERTICES, true);
    std::ranges::copy(from.positions, document.buffer.at<float>(positions));
    int const uvs = document.buffer.add(GLTF::COMPONENT::F32, 2, count, GLTF::USE::VERTICES);
    std::ranges::copy(from.uvs, document.buffer.at<float>(uvs));
    primitive.indices = document.buffer.add(GLTF::COMPONENT::U32, 1, from.indices.size(), GLTF::USE::INDICES);
    std::ranges::copy(from.indices, document.buffer.at<unsigned>(primitive.indices));
    primitive.attributes = {{"POSITION", positions}, {"TEXCOORD_0", uvs}};
    primitive.material = 0;
    GLTF::MATERIAL material;
    material.alpha = GLTF::MATERIAL::CUT_OFF;
    material.diffuse.uri = "leaf.tga";
    document.materials = {material};
    document.meshes = {{"leaves", {primitive}, {}, {}}};
    document.nodes.resize(1);
    document.nodes[0].mesh = 0;
    document.roots = {0};
    KN::String error;
    return write_tga(from.picture, folder + "/leaf.tga", error) &&
           write_glb(document, folder + "/tree.rigid_model_v2", error);
}

// View number k of the strip.
void place(unsigned k, float matrix[12])
{
    float const angle = float(k + 1) * 1.5707964f, s = std::sin(angle), c = std::cos(angle);
    float const made[12] = {c, 0, s, tree_width * (float(k) - 1.5f), 0, 1, 0, 0, -s, 0, c, 0};
    std::copy_n(made, 12, matrix);
}

class STRIP {
public:
    explicit STRIP(LEAVES const &from) : is_good(write_model(from, folder.path().toStdString()))
    {
        camera.set_orthographic(true);
        camera.set_near(0.01f);
        camera.set_far(100);
        camera.set_aspect(tree_width * 4 / tree_height);
        camera.set_view_height(tree_height);
        camera.set_eye({0, tree_height / 2, tree_width});
        camera.set_target({0, tree_height / 2, -tree_width});
        engine.reset(KESTREL::make_engine(false, false, true));
        int const model = engine->load_model(folder.path().toStdString() + "/tree.rigid_model_v2", 77, nullptr);
        engine->set_mode(KESTREL::ENGINE::CAPTURE);
        engine->view()->set_viewport(0, 0, int(width), int(height));
        engine->view()->set_camera(&camera);
        for (unsigned k = 0; k < 4; ++k) {
            float matrix[12];
            place(k, matrix);
            engine->add_instance(model, matrix);
        }
        engine->begin_frame();
    }

    void render() { engine->end_frame(); }

    // The part of the samples that met something, by the alpha of the picture.
    double coverage()
    {
        std::string const file = folder.path().toStdString() + "/strip.tga";
        engine->view()->save_image({width, height, file, KESTREL::CAPTURE_REQUEST::COLOUR});
        KESTREL::PICTURE picture;
        KN::String error;
        double sum = 0;
        if (is_good && read_picture(file, picture, error))
            for (std::size_t i = 3; i < picture.pixels.size(); i += 4)
                sum += picture.pixels[i];
        return sum / 255 / (double(width) * height);
    }

private:
    QTemporaryDir folder;
    bool is_good;
    SUPPORT::CAMERA camera;
    std::unique_ptr<KESTREL::ENGINE> engine;
};

// The four instances, and rays one by one.
class PLAIN_SCENE {
public:
    explicit PLAIN_SCENE(LEAVES const &from) : leaves_of(from)
    {
        tree = rtcNewScene(device);
        RTCGeometry const geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
        std::ranges::copy(from.positions,
                          static_cast<float *>(rtcSetNewGeometryBuffer(
                              geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, 12, from.positions.size() / 3)));
        std::ranges::copy(from.indices,
                          static_cast<unsigned *>(rtcSetNewGeometryBuffer(
                              geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 12, from.indices.size() / 3)));
        rtcSetGeometryUserData(geometry, this);
        rtcSetGeometryIntersectFilterFunction(geometry, [](RTCFilterFunctionNArguments const *arguments) {
            auto const &plain = *static_cast<PLAIN_SCENE const *>(arguments->geometryUserPtr);
            if (arguments->valid[0] != 0 && !plain.is_seen(*reinterpret_cast<RTCHit const *>(arguments->hit)))
                arguments->valid[0] = 0;
        });
        attach(tree, geometry);
        rtcCommitScene(tree);
        for (unsigned k = 0; k < 4; ++k) {
            RTCGeometry const instance = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_INSTANCE);
            float matrix[12];
            place(k, matrix);
            rtcSetGeometryInstancedScene(instance, tree);
            rtcSetGeometryTransform(instance, 0, RTC_FORMAT_FLOAT3X4_ROW_MAJOR, matrix);
            attach(scene, instance);
        }
        rtcCommitScene(scene);
    }
    ~PLAIN_SCENE()
    {
        rtcReleaseScene(scene);
        rtcReleaseScene(tree);
        rtcReleaseDevice(device);
    }
    PLAIN_SCENE(PLAIN_SCENE const &) = delete;
    PLAIN_SCENE &operator=(PLAIN_SCENE const &) = delete;

    // A grid of four by four rays a pixel.
    double coverage() const
    {
        unsigned hits = 0;
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        for (unsigned y = 0; y < height * 4; ++y)
            for (unsigned x = 0; x < width * 4; ++x) {
                RTCRayHit ray = {};
                ray.ray.org_x = tree_width * 4 * ((float(x) + 0.5f) / float(width * 4) - 0.5f);
                ray.ray.org_y = tree_height * (1 - (float(y) + 0.5f) / float(height * 4));
                ray.ray.org_z = tree_width;
                ray.ray.dir_z = -1;
                ray.ray.tfar = 100;
                ray.ray.mask = ~0u;
                ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
                rtcIntersect1(scene, &context, &ray);
                hits += ray.hit.geomID != RTC_INVALID_GEOMETRY_ID;
            }
        return hits / rays;
    }

private:
    void attach(RTCScene to, RTCGeometry geometry)
    {
        rtcCommitGeometry(geometry);
        rtcAttachGeometry(to, geometry);
        rtcReleaseGeometry(geometry);
    }

    bool is_seen(RTCHit const &hit) const
    {
        float uv[2];
        for (unsigned i = 0; i < 2; ++i) {
            auto const corner = [&](unsigned c) {
                return leaves_of.uvs[leaves_of.indices[std::size_t(hit.primID) * 3 + c] * 2 + i];
            };
            uv[i] = corner(0) * (1 - hit.u - hit.v) + corner(1) * hit.u + corner(2) * hit.v;
        }
        auto const pixel = [](float part) { return std::min(unsigned(std::max(part, 0.0f) * 64), 63u); };
        return leaves_of.picture.at(pixel(uv[0]), pixel(uv[1]))[3] >= 128;
    }

    LEAVES const &leaves_of;
    RTCDevice device = rtcNewDevice(nullptr);
    RTCScene tree = nullptr, scene = rtcNewScene(device);
};

void Strip(benchmark::State &state)
{
    LEAVES const tree = make_leaves();
    STRIP strip(tree);
    PLAIN_SCENE const plain(tree);
    SIDE_BY_SIDE times;
    double plain_coverage = 0;
    for (auto _ : state) {
        times.time("strip", [&] { strip.render(); });
        times.time("plain_rays", [&] { plain_coverage = plain.coverage(); });
    }
    times.report(state);
    state.counters["rays_a_second"] = rays / (state.counters["strip_us"] * 1e-6);
    state.counters["plain_rays_a_second"] = rays / (state.counters["plain_rays_us"] * 1e-6);
    double const coverage = strip.coverage();
    state.counters["coverage"] = coverage;
    if (!(std::abs(coverage - plain_coverage) < 0.005) || coverage < 0.1)
        state.SkipWithError("another part of the strip is covered");
}
BENCHMARK(Strip)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace
