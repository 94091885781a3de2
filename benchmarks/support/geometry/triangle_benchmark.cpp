// Triangle against triangle beside CGAL: pairs with random corners in boxes whose centres are a random way apart, as a
// search by boxes hands them over. At a distance of up to 0.3 half of the pairs meet, at up to 1 one in ten.

#include "benchmarks/support/geometry/cgal_triangles.h"
#include "benchmarks/support/side_by_side.h"

#include <cmath>
#include <random>

using namespace SUPPORT;

namespace {

constexpr unsigned pair_count = 1 << 17;  // more than a branch predictor keeps in mind

std::vector<TRIANGLE3> make_pairs(float distance)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<float> corner(-0.5f, 0.5f), centre(-distance, distance);
    std::vector<TRIANGLE3> triangles(2 * pair_count);
    for (TRIANGLE3 &triangle : triangles) {
        VECTOR3 const at = {centre(random), centre(random), centre(random)};
        for (VECTOR3 &point : triangle.corners)
            point = at + VECTOR3{corner(random), corner(random), corner(random)};
    }
    return triangles;
}

void TriangleTriangle(benchmark::State &state)
{
    std::vector<TRIANGLE3> const triangles = make_pairs(float(state.range(0)) / 10);
    CGAL_TRIANGLES const cgal(triangles);
    unsigned ours = 0, theirs = 0;
    SIDE_BY_SIDE times;
    for (auto _ : state) {
        times.time("theirs", [&] { theirs = cgal.count_meetings(); });
        times.time("ours", [&] {
            ours = 0;
            for (unsigned i = 0; i < triangles.size(); i += 2)
                ours += triangle_triangle(triangles[i], triangles[i + 1]);
        });
        times.time("copy", [&] { benchmark::DoNotOptimize(std::vector<TRIANGLE3>(triangles).data()); });
    }
    times.report(state);
    state.counters["meetings"] = double(ours) / pair_count;
    state.counters["to_theirs"] = times.ratio("ours", "theirs");
    state.counters["to_copy"] = times.ratio("ours", "copy");
    if (ours == 0 || std::abs(int(ours - theirs)) > 20)  // theirs rounds to 32 bits
        state.SkipWithError("the counts differ");
}

}  // namespace

BENCHMARK(TriangleTriangle)->ArgName("tenths_apart")->Arg(3)->Arg(10)->Iterations(15);
