// Loading and writing 400,000 triangles from and to memory that is new each time. Read SceneLoad beside MemoryCopy (the
// file's bytes into fresh memory, the floor) and beside GltfLoad: tinygltf on a binary glTF of the same mesh, which
// only copies the buffer and checks nothing in it.
#include "benchmarks/scene/grid_scene.h"

#include <benchmark/benchmark.h>
#include <tiny_gltf.h>

#include <cstring>

#include <malloc.h>

namespace {

using namespace GRID_SCENE;

// A program loads a scene into memory that the system has not given it before. Left alone, the allocator would keep the
// pages of one round for the next.
bool const fresh_memory = mallopt(M_MMAP_THRESHOLD, 128 << 10) == 1;

std::string const &scene_file()
{
    static std::string const file = file_of(*make_scene());
    return file;
}

void MemoryCopy(benchmark::State &state)
{
    std::string const &file = scene_file();
    for (auto _ : state) {
        char *const copy = static_cast<char *>(std::malloc(file.size()));
        std::memcpy(copy, file.data(), file.size());
        benchmark::DoNotOptimize(copy);
        state.PauseTiming();
        std::free(copy);
        state.ResumeTiming();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * file.size()));
}
BENCHMARK(MemoryCopy)->Unit(benchmark::kMillisecond);

void SceneLoad(benchmark::State &state)
{
    std::string const &file = scene_file();
    for (auto _ : state) {
        auto scene = std::make_unique<VEX2>();
        VEX2_READ_BUFFER buffer(u"grid.vx2", file.data(), unsigned(file.size()));
        if (!scene->load(buffer, true))
            state.SkipWithError("does not load");
        state.PauseTiming();
        if (scene->static_meshes[0]->triangle_count() != triangle_count ||
            scene->static_meshes[0]->vertices.back().uvws[0].x != 1)
            state.SkipWithError("wrong scene");
        scene.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * file.size()));
}
BENCHMARK(SceneLoad)->Unit(benchmark::kMillisecond);

// The same mesh as attributes of floats behind one another: 64 bytes a vertex, and 32-bit indices.
std::vector<unsigned char> glb_file()
{
    tinygltf::Model model;
    model.asset.version = "2.0";
    model.buffers.emplace_back();
    std::vector<unsigned char> &data = model.buffers[0].data;
    tinygltf::Primitive primitive;
    primitive.mode = TINYGLTF_MODE_TRIANGLES;
    auto const scene = make_scene();
    VEX2_STATIC_MESH const &mesh = *scene->static_meshes[0];
    auto const begin_accessor = [&](int components, int type, std::size_t count, int kind) {
        tinygltf::BufferView view;
        view.buffer = 0;
        view.byteOffset = data.size();
        view.byteLength = count * std::size_t(components) * 4;
        model.bufferViews.push_back(view);
        tinygltf::Accessor accessor;
        accessor.bufferView = int(model.bufferViews.size()) - 1;
        accessor.componentType = kind;
        accessor.type = type;
        accessor.count = count;
        model.accessors.push_back(accessor);
        return int(model.accessors.size()) - 1;
    };
    auto const put = [&](void const *bytes, std::size_t size) {
        auto const *first = static_cast<unsigned char const *>(bytes);
        data.insert(data.end(), first, first + size);
    };
    auto const attribute = [&](char const *name, int components, int type, auto const &value_of) {
        primitive.attributes[name] =
            begin_accessor(components, type, mesh.vertices.count, TINYGLTF_COMPONENT_TYPE_FLOAT);
        for (VEX2_VERTEX const &vertex : mesh.vertices) {
            auto const value = value_of(vertex);
            put(&value, sizeof value);
        }
    };
    attribute("POSITION", 3, TINYGLTF_TYPE_VEC3, [](VEX2_VERTEX const &v) { return v.position; });
    attribute("NORMAL", 3, TINYGLTF_TYPE_VEC3, [](VEX2_VERTEX const &v) { return v.normal; });
    attribute("COLOR_0", 4, TINYGLTF_TYPE_VEC4, [](VEX2_VERTEX const &v) { return v.colour; });
    attribute("TEXCOORD_0", 2, TINYGLTF_TYPE_VEC2, [](VEX2_VERTEX const &v) {
        return VEX2_VECTOR2{v.uvws[0].x, v.uvws[0].y};
    });
    attribute("TANGENT", 4, TINYGLTF_TYPE_VEC4, [](VEX2_VERTEX const &v) {
        VEX2_VECTOR const t = v.frames[0].tangent;
        return VEX2_VECTOR4{t.x, t.y, t.z, 1};
    });
    auto const &triangles = mesh.sections[0].triangles;
    primitive.indices =
        begin_accessor(1, TINYGLTF_TYPE_SCALAR, std::size_t(triangles.count) * 3, TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT);
    put(triangles.data, triangles.count * sizeof triangles[0]);
    model.meshes.emplace_back().primitives.push_back(primitive);

    std::ostringstream out;
    tinygltf::TinyGLTF().WriteGltfSceneToStream(&model, out, false, true);
    std::string const text = out.str();
    return {text.begin(), text.end()};
}

void GltfLoad(benchmark::State &state)
{
    std::vector<unsigned char> const file = glb_file();
    for (auto _ : state) {
        auto model = std::make_unique<tinygltf::Model>();
        std::string error, warning;
        tinygltf::TinyGLTF loader;
        if (!loader.LoadBinaryFromMemory(model.get(), &error, &warning, file.data(), unsigned(file.size())))
            state.SkipWithError("does not load");
        state.PauseTiming();
        if (model->accessors.back().count != std::size_t(triangle_count) * 3)
            state.SkipWithError("wrong model");
        model.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * file.size()));
}
BENCHMARK(GltfLoad)->Unit(benchmark::kMillisecond);

void SceneWrite(benchmark::State &state)
{
    auto const scene = make_scene();
    for (auto _ : state)
        if (!write_scene(*scene))
            state.SkipWithError("was not written");
    std::size_t const size = std::filesystem::file_size(scratch_file());
    std::filesystem::remove(scratch_file());
    if (size != scene_file().size())
        state.SkipWithError("wrong file");
    state.SetBytesProcessed(std::int64_t(state.iterations() * size));
}
BENCHMARK(SceneWrite)->Unit(benchmark::kMillisecond);

// The write's floor: the same bytes handed to the system in one call.
void FileWrite(benchmark::State &state)
{
    std::string const &file = scene_file();
    for (auto _ : state) {
        KN::FileOut out;
        out.open(KN::String(scratch_file().string()), false, true);
        if (out.write(file.data(), unsigned(file.size())) != file.size() || !out.close())
            state.SkipWithError("was not written");
    }
    std::filesystem::remove(scratch_file());
    state.SetBytesProcessed(std::int64_t(state.iterations() * file.size()));
}
BENCHMARK(FileWrite)->Unit(benchmark::kMillisecond);

}  // namespace
