// Merging of duplicates beside the well-known library for it, on the same corners in the same run. Theirs is given
// plain arrays and merges equal bytes; ours works on scene vertices, rounds, and keeps the told order of vertices.

#include "benchmarks/mesh/grid.h"
#include "mesh/prepare.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <meshoptimizer.h>

using namespace VEX2_LOADER;

namespace {

double merge_theirs(std::vector<GRID_CORNER> const &corners, benchmark::State &state)
{
    std::vector<unsigned> indices(corners.size());
    for (unsigned i = 0; i < indices.size(); ++i)
        indices[i] = i;
    return seconds_of([&] {
        std::vector<unsigned> remap(corners.size());
        std::size_t const distinct = meshopt_generateVertexRemap(remap.data(), indices.data(), indices.size(),
                                                                 corners.data(), corners.size(), sizeof(GRID_CORNER));
        std::vector<GRID_CORNER> vertices(distinct);
        meshopt_remapVertexBuffer(vertices.data(), corners.data(), corners.size(), sizeof(GRID_CORNER), remap.data());
        std::vector<unsigned> new_indices(indices.size());
        meshopt_remapIndexBuffer(new_indices.data(), indices.data(), indices.size(), remap.data());
        if (distinct != grid_distinct)
            state.SkipWithError("their count of vertices is wrong");
        benchmark::DoNotOptimize(new_indices.data());
    });
}

double merge_ours(std::vector<GRID_CORNER> const &corners, benchmark::State &state)
{
    std::unique_ptr<VEX2> const scene = scene_of(corners);
    VEX2_STATIC_MESH &mesh = *scene->static_meshes[0];
    double const seconds = seconds_of([&] { remove_duplicates(*scene, prepare_duplicate_options); });
    bool right = mesh.vertices.count == grid_distinct;
    for (unsigned i = 0; right && i < corners.size(); ++i) {
        unsigned const corner = mesh.sections[0].triangles[i / 3].vertices[i % 3];
        right = std::memcmp(&mesh.vertices[corner].position, corners[i].position, 10 * sizeof(float)) == 0 &&
                std::memcmp(mesh.vertices[corner].uvws.data, corners[i].uvw, 3 * sizeof(float)) == 0;
    }
    if (!right)
        state.SkipWithError("a corner lost its vertex");
    return seconds;
}

void MergeDuplicates(benchmark::State &state, GRID_KIND kind)
{
    std::vector<GRID_CORNER> const corners = make_grid(kind);
    std::vector<GRID_CORNER> const hills = make_grid(GRID_KIND::HILLS);
    std::vector<double> theirs, ours, ours_on_hills, copy;
    for (auto _ : state) {
        theirs.push_back(merge_theirs(corners, state));
        ours.push_back(merge_ours(corners, state));
        if (kind == GRID_KIND::FLAT)
            ours_on_hills.push_back(merge_ours(hills, state));
        copy.push_back(seconds_of([&] { benchmark::DoNotOptimize(std::vector<GRID_CORNER>(corners).data()); }));
        state.SetIterationTime(ours.back());
    }
    state.counters["ours_ms"] = least(ours) * 1e3;
    state.counters["theirs_ms"] = least(theirs) * 1e3;
    state.counters["copy_ms"] = least(copy) * 1e3;
    state.counters["to_theirs"] = least(ours) / least(theirs);
    state.counters["to_copy"] = least(ours) / least(copy);
    if (kind == GRID_KIND::FLAT)
        state.counters["to_hills"] = least(ours) / least(ours_on_hills);
}

}  // namespace

BENCHMARK_CAPTURE(MergeDuplicates, hills, GRID_KIND::HILLS)
    ->UseManualTime()
    ->Iterations(15)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(MergeDuplicates, shuffled, GRID_KIND::SHUFFLED)
    ->UseManualTime()
    ->Iterations(15)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(MergeDuplicates, flat, GRID_KIND::FLAT)
    ->UseManualTime()
    ->Iterations(15)
    ->Unit(benchmark::kMillisecond);
