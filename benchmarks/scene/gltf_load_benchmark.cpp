// tinygltf on a binary glTF of the same grid, from memory to memory that is new each time. It copies the buffer and
// checks nothing in it. As a part of scene_benchmark it is served by our operator new with its large pages;
// gltf_benchmark is the same without any library of ours: tinygltf as others have it.
#include "benchmarks/scene/fresh_memory.h"
#include "benchmarks/scene/grid_shape.h"

#include <benchmark/benchmark.h>
#include <tiny_gltf.h>

#include <memory>
#include <sstream>

namespace {

using namespace GRID_SHAPE;

// Attributes of floats behind one another, 64 bytes a vertex, and 32-bit indices.
std::vector<unsigned char> glb_file()
{
    tinygltf::Model model;
    model.asset.version = "2.0";
    model.buffers.emplace_back();
    std::vector<unsigned char> &data = model.buffers[0].data;
    tinygltf::Primitive primitive;
    primitive.mode = TINYGLTF_MODE_TRIANGLES;
    auto const add = [&](std::vector<float> const &values) {
        auto const *bytes = reinterpret_cast<unsigned char const *>(values.data());
        data.insert(data.end(), bytes, bytes + values.size() * 4);
    };
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
    auto const attribute = [&](char const *name, int components, int type, auto const &value_at) {
        primitive.attributes[name] = begin_accessor(components, type, side * side, TINYGLTF_COMPONENT_TYPE_FLOAT);
        for (std::uint32_t row = 0; row < side; ++row)
            for (std::uint32_t column = 0; column < side; ++column)
                add(value_at(column, row));
    };
    using VALUES = std::vector<float>;
    attribute("POSITION", 3, TINYGLTF_TYPE_VEC3, [](std::uint32_t column, std::uint32_t row) {
        auto const point = position(column, row);
        return VALUES(point.begin(), point.end());
    });
    attribute("NORMAL", 3, TINYGLTF_TYPE_VEC3, [](std::uint32_t, std::uint32_t) { return VALUES{0, 1, 0}; });
    attribute("COLOR_0", 4, TINYGLTF_TYPE_VEC4, [](std::uint32_t column, std::uint32_t row) {
        return VALUES{along(column), along(row), 1, 1};
    });
    attribute("TEXCOORD_0", 2, TINYGLTF_TYPE_VEC2, [](std::uint32_t column, std::uint32_t row) {
        return VALUES{along(column), along(row)};
    });
    attribute("TANGENT", 4, TINYGLTF_TYPE_VEC4, [](std::uint32_t, std::uint32_t) { return VALUES{1, 0, 0, 1}; });
    primitive.indices =
        begin_accessor(1, TINYGLTF_TYPE_SCALAR, std::size_t(triangle_count) * 3, TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT);
    for_each_triangle([&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        std::uint32_t const corners[] = {a, b, c};
        auto const *bytes = reinterpret_cast<unsigned char const *>(corners);
        data.insert(data.end(), bytes, bytes + sizeof corners);
    });
    model.meshes.emplace_back().primitives.push_back(primitive);

    std::ostringstream out;
    tinygltf::TinyGLTF().WriteGltfSceneToStream(&model, out, false, true);
    std::string const text = out.str();
    return {text.begin(), text.end()};
}

void GltfLoad(benchmark::State &state)
{
    std::vector<unsigned char> const file = glb_file();
    give_memory_back();
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
        give_memory_back();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * file.size()));
}
BENCHMARK(GltfLoad)->Unit(benchmark::kMillisecond);

}  // namespace
