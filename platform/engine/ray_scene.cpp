#include "platform/engine/ray_scene.h"

#include "foundation/messages.h"
#include "support/maths/vector.h"

#include <algorithm>
#include <embree3/rtcore.h>
#include <limits>

namespace KESTREL {

namespace {

struct DEVICE {
    RTCDevice handle = rtcNewDevice(nullptr);
    DEVICE() = default;
    ~DEVICE() { rtcReleaseDevice(handle); }
    DEVICE(DEVICE const &) = delete;
    DEVICE &operator=(DEVICE const &) = delete;
};

struct INSTANCE {
    RENDER_MODEL const *model;
    float matrix[12];

    // Where the ray meets the plane of a triangle. Embree knows it too, but with bits that depend on the processor.
    PLACE measure(RAY_PACKET const &rays, unsigned ray, unsigned part, std::uint32_t triangle, float &distance) const;
};

PLACE INSTANCE::measure(RAY_PACKET const &rays, unsigned ray, unsigned part, std::uint32_t triangle,
                        float &distance) const
{
    using SUPPORT::VECTOR3;
    GLTF::MODEL_PART const &geometry = model->parts[part].geometry;
    auto const corner = [&](unsigned i) {
        float const *const p = &geometry.positions[std::size_t(geometry.indices[std::size_t(triangle) * 3 + i]) * 3];
        auto const row = [&](float const *m) { return m[0] * p[0] + m[1] * p[1] + m[2] * p[2] + m[3]; };
        return VECTOR3{row(matrix), row(matrix + 4), row(matrix + 8)};
    };
    VECTOR3 const origin = {rays.origins[0][ray], rays.origins[1][ray], rays.origins[2][ray]};
    VECTOR3 const direction = {rays.directions[0][ray], rays.directions[1][ray], rays.directions[2][ray]};
    VECTOR3 const first = corner(0), second = corner(1) - first, third = corner(2) - first;
    VECTOR3 const across = cross(direction, third), from = origin - first, aside = cross(from, second);
    float const determinant = dot(second, across);
    if (determinant == 0) {  // seen from its edge
        distance = -dot(from, direction);
        return {triangle, 0, 0};
    }
    distance = dot(third, aside) / determinant;
    return {triangle, dot(from, across) / determinant, dot(direction, aside) / determinant};
}

// The rays of a packet as the filter finds them again.
struct CONTEXT {
    RTCIntersectContext embree;  // first: Embree hands its address to the filter
    RAY_PACKET const *rays;
    std::vector<INSTANCE> const *instances;
};

// Takes back the hits of a packet where the surface is transparent.
void keep_what_is_seen(RTCFilterFunctionNArguments const *arguments)
{
    auto const &context = *reinterpret_cast<CONTEXT const *>(arguments->context);
    INSTANCE const &instance = (*context.instances)[context.embree.instID[0]];
    for (unsigned i = 0; i < arguments->N; ++i) {
        if (arguments->valid[i] == 0)
            continue;
        unsigned const ray = RTCRayN_id(arguments->ray, arguments->N, i);
        unsigned const part = RTCHitN_geomID(arguments->hit, arguments->N, i);
        float distance;
        PLACE const place =
            instance.measure(*context.rays, ray, part, RTCHitN_primID(arguments->hit, arguments->N, i), distance);
        if (!instance.model->parts[part].is_seen(place, context.rays->thresholds[ray]))
            arguments->valid[i] = 0;
    }
}

// False if memory has run out.
bool attach_part(RTCDevice device, RTCScene scene, unsigned number, RENDER_PART const &part)
{
    RTCGeometry const geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    std::size_t const vertices = part.geometry.positions.size() / 3, triangles = part.geometry.indices.size() / 3;
    auto *const positions = static_cast<float *>(
        rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, 12, vertices));
    auto *const indices = static_cast<unsigned *>(
        rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 12, triangles));
    bool const good = positions != nullptr && indices != nullptr;
    if (good) {
        std::ranges::copy(part.geometry.positions, positions);
        std::ranges::copy(part.geometry.indices, indices);
        if (!part.surface.is_solid())
            rtcSetGeometryIntersectFilterFunction(geometry, keep_what_is_seen);
        rtcCommitGeometry(geometry);
        rtcAttachGeometryByID(scene, geometry, number);
    }
    rtcReleaseGeometry(geometry);
    return good;
}

}  // namespace

struct RAY_SCENE::STATE {
    DEVICE device;
    RTCScene scene = nullptr;
    std::vector<RTCScene> model_scenes;
    std::vector<RENDER_MODEL const *> models;
    std::vector<INSTANCE> instances;

    ~STATE() { release(); }

    void release()
    {
        rtcReleaseScene(scene);
        for (RTCScene const model : model_scenes)
            rtcReleaseScene(model);
        scene = nullptr;
        model_scenes.clear();
        models.clear();
        instances.clear();
    }

    RTCScene new_scene()
    {
        RTCScene const made = rtcNewScene(device.handle);
        rtcSetSceneFlags(made, RTC_SCENE_FLAG_ROBUST);
        rtcSetSceneBuildQuality(made, RTC_BUILD_QUALITY_HIGH);
        return made;
    }
};

RAY_SCENE::RAY_SCENE() : state(std::make_unique<STATE>()) { clear(); }

RAY_SCENE::~RAY_SCENE() = default;

void RAY_SCENE::clear()
{
    state->release();
    state->scene = state->new_scene();
}

unsigned RAY_SCENE::add_model(RENDER_MODEL const &model)
{
    RTCScene const scene = state->new_scene();
    unsigned number = 0;
    for (RENDER_PART const &part : model.parts)
        if (!attach_part(state->device.handle, scene, number++, part)) {
            KN::message(KN::MESSAGE_ERROR, "there is no memory left to render a model");
            rtcReleaseScene(scene);
            return RAY_HIT::none;
        }
    rtcCommitScene(scene);
    state->model_scenes.push_back(scene);
    state->models.push_back(&model);
    return unsigned(state->models.size() - 1);
}

void RAY_SCENE::add_instance(unsigned model, float const matrix[12])
{
    RTCGeometry const geometry = rtcNewGeometry(state->device.handle, RTC_GEOMETRY_TYPE_INSTANCE);
    rtcSetGeometryInstancedScene(geometry, state->model_scenes[model]);
    rtcSetGeometryTransform(geometry, 0, RTC_FORMAT_FLOAT3X4_ROW_MAJOR, matrix);
    rtcCommitGeometry(geometry);
    rtcAttachGeometryByID(state->scene, geometry, unsigned(state->instances.size()));
    rtcReleaseGeometry(geometry);
    INSTANCE &instance = state->instances.emplace_back();
    instance.model = state->models[model];
    std::copy_n(matrix, 12, instance.matrix);
}

void RAY_SCENE::commit() { rtcCommitScene(state->scene); }

void RAY_SCENE::cast(RAY_PACKET const &rays, RAY_HIT hits[RAY_PACKET::size]) const
{
    constexpr unsigned size = RAY_PACKET::size;
    alignas(64) int valid[size];
    RTCRayHit16 packet;
    for (unsigned i = 0; i < size; ++i) {
        valid[i] = i < rays.count ? -1 : 0;
        packet.ray.org_x[i] = rays.origins[0][i];
        packet.ray.org_y[i] = rays.origins[1][i];
        packet.ray.org_z[i] = rays.origins[2][i];
        packet.ray.dir_x[i] = rays.directions[0][i];
        packet.ray.dir_y[i] = rays.directions[1][i];
        packet.ray.dir_z[i] = rays.directions[2][i];
        packet.ray.tnear[i] = 0;
        packet.ray.tfar[i] = rays.reach[i];
        packet.ray.time[i] = 0;
        packet.ray.mask[i] = ~0u;
        packet.ray.id[i] = i;
        packet.ray.flags[i] = 0;
        packet.hit.geomID[i] = RTC_INVALID_GEOMETRY_ID;
        packet.hit.instID[0][i] = RTC_INVALID_GEOMETRY_ID;
    }
    CONTEXT context;
    rtcInitIntersectContext(&context.embree);
    context.embree.flags = RTC_INTERSECT_CONTEXT_FLAG_COHERENT;
    context.rays = &rays;
    context.instances = &state->instances;
    rtcIntersect16(valid, state->scene, &context.embree, &packet);
    for (unsigned i = 0; i < size; ++i) {
        hits[i].instance = RAY_HIT::none;
        if (valid[i] == 0 || packet.hit.geomID[i] == RTC_INVALID_GEOMETRY_ID)
            continue;
        hits[i].instance = packet.hit.instID[0][i];
        hits[i].part = packet.hit.geomID[i];
        hits[i].place =
            state->instances[hits[i].instance].measure(rays, i, hits[i].part, packet.hit.primID[i], hits[i].distance);
    }
}

RENDER_PART const &RAY_SCENE::part_of(RAY_HIT const &hit) const
{
    return state->instances[hit.instance].model->parts[hit.part];
}

void RAY_SCENE::turn(RAY_HIT const &hit, float direction[3]) const
{
    float const *const m = state->instances[hit.instance].matrix;
    float const d[3] = {direction[0], direction[1], direction[2]};
    for (unsigned row = 0; row < 3; ++row)
        direction[row] = m[row * 4] * d[0] + m[row * 4 + 1] * d[1] + m[row * 4 + 2] * d[2];
}

}  // namespace KESTREL
