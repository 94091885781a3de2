// Moving scenes in time: one frame of a skinned figure, and the channels that drive it. Read Skinning and SceneSeek
// beside FrameCopy: 272 bytes a vertex, what a vertex of two influences holds.
#include "benchmarks/scene/grid_scene.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace {

using namespace VEX2_LOADER;

constexpr unsigned vertex_count = 100000;
constexpr unsigned node_count = 60;
constexpr unsigned key_count = 300;  // ten seconds at 30 a second

VEX2_QUATERNION turn(float angle) { return {0, std::sin(angle / 2), 0, std::cos(angle / 2)}; }

// A chain of nodes that turn, and vertices that each hang on `influence_count` neighbouring ones.
std::unique_ptr<VEX2> skinned_scene(unsigned influence_count)
{
    auto scene = std::make_unique<VEX2>();
    scene->info.end_time = 10;
    for (unsigned i = 0; i < node_count; ++i) {
        scene->hierarchy.add_node(u"bone", int(i) - 1, {0, 0.03f, 0});
        auto *const rotation = new VEX2_SLERP_ROTATION_CHANNEL;
        for (unsigned k = 0; k < key_count; ++k)
            append_key(*rotation, float(k) / 30, turn(0.2f * std::sin(float(k) * 0.05f + float(i))));
        scene->hierarchy.nodes[i].rotation = rotation;
    }
    VEX2_WEIGHTED_MESH *const mesh = scene->weighted_meshes.append(new VEX2_WEIGHTED_MESH);
    mesh->vertices.reserve(vertex_count);
    for (unsigned i = 0; i < vertex_count; ++i) {
        VEX2_WEIGHTED_VERTEX &vertex = mesh->vertices.append();
        vertex.bind_position = {0.1f * std::sin(float(i)), float(i) / vertex_count * 1.8f, 0.1f * std::cos(float(i))};
        vertex.bind_normal = {std::sin(float(i)), 0, std::cos(float(i))};
        vertex.uvws.append(VEX2_VECTOR{0.5f, 0.5f, 0});
        vertex.frames.append(VEX2_TANGENT_FRAME{{0, 1, 0}, {std::cos(float(i)), 0, -std::sin(float(i))}});
        unsigned const first = unsigned(std::uint64_t(i) * (node_count - influence_count) / vertex_count);
        for (unsigned k = 0; k < influence_count; ++k)
            vertex.influences.append(VEX2_INFLUENCE{first + k, 1 / float(influence_count), {}, {}});
    }
    // Through a file, so that its memory lies as it does in a scene that was loaded.
    std::string const file = GRID_SCENE::file_of(*scene);
    VEX2_READ_BUFFER buffer(u"skinned.vx2", file.data(), unsigned(file.size()));
    scene->load(buffer, true);
    return scene;
}

// Normals stay of length 1 whatever the pose.
void check_pose(benchmark::State &state, VEX2 const &scene)
{
    VEX2_VECTOR const n = scene.weighted_meshes[0]->vertices[vertex_count / 2].normal;
    if (std::abs(n.x * n.x + n.y * n.y + n.z * n.z - 1) > 1e-4f)
        state.SkipWithError("wrong pose");
}

void FrameCopy(benchmark::State &state)
{
    constexpr std::size_t size = std::size_t(vertex_count) * 272;
    std::vector<char> const from(size, 1);
    std::vector<char> to(size, 2);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), size);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(std::int64_t(state.iterations() * vertex_count));
}
BENCHMARK(FrameCopy)->Unit(benchmark::kMillisecond);

void Skinning(benchmark::State &state)
{
    auto const scene = skinned_scene(unsigned(state.range(0)));
    scene->hierarchy.seek(5);
    for (auto _ : state) {
        scene->weighted_meshes[0]->skin(scene->hierarchy);
        benchmark::ClobberMemory();
    }
    check_pose(state, *scene);
    state.SetItemsProcessed(std::int64_t(state.iterations() * vertex_count));
}
BENCHMARK(Skinning)->Arg(1)->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);

void SceneSeek(benchmark::State &state)
{
    auto const scene = skinned_scene(2);
    float time = 0;
    for (auto _ : state) {
        scene->seek(time);
        time = time > 9.9f ? 0 : time + 1 / 30.0f;
    }
    check_pose(state, *scene);
    state.SetItemsProcessed(std::int64_t(state.iterations() * vertex_count));
}
BENCHMARK(SceneSeek)->Unit(benchmark::kMillisecond);

// Playback: each channel goes a frame further. The times of the jumps are random, so that every search is a long one.
void ChannelSeek(benchmark::State &state)
{
    constexpr unsigned channel_count = 1000;
    std::vector<VEX2_VECTOR_CHANNEL> channels(channel_count);
    for (VEX2_VECTOR_CHANNEL &channel : channels)
        for (unsigned k = 0; k < key_count; ++k)
            append_key(channel, float(k) / 30, VEX2_VECTOR{float(k), 0, 0});
    bool const jumps = state.range(0) != 0;
    std::mt19937 random(1);
    std::uniform_real_distribution<float> any_time(0, 9.9f);
    float time = 0;
    VEX2_VECTOR sum;
    for (auto _ : state) {
        time = jumps ? any_time(random) : time > 9.9f ? 0 : time + 0.01f;
        for (VEX2_VECTOR_CHANNEL &channel : channels) {
            channel.seek(time);
            sum = sum + channel.value();
        }
    }
    if (std::abs(channels[0].value().x - time * 30) > 1e-2f)
        state.SkipWithError("wrong value");
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(std::int64_t(state.iterations() * channel_count));
}
BENCHMARK(ChannelSeek)->ArgName("jumps")->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

}  // namespace
