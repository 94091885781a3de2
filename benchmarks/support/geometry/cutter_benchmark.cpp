// An outline of many corners, cut across 32 times, and its pieces, beside Clipper taking bands of 0.2 out of the same
// outline, which leaves the same pieces but for the width of the bands.

#include "benchmarks/support/side_by_side.h"
#include "support/geometry/polygon_cutter.h"

#include <cmath>
#include <numbers>
#include <polyclipping/clipper.hpp>

using namespace SUPPORT;

namespace {

constexpr float radius = 1000;
constexpr unsigned cut_count = 32;

// A coast line: a circle with bays.
POLYLINE make_outline(unsigned corners)
{
    POLYLINE outline;
    for (unsigned i = 0; i < corners; ++i) {
        float const angle = 2 * std::numbers::pi_v<float> * float(i) / float(corners);
        float const out = radius * (0.8f + 0.15f * std::sin(9 * angle) + 0.05f * std::sin(31 * angle));
        outline.append(VECTOR2{out * std::cos(angle), out * std::sin(angle)});
    }
    return outline;
}

float cut_height(unsigned cut) { return radius * (-0.6f + 1.2f * (float(cut) + 0.5f) / cut_count); }

double area(POLYLINE const &points)
{
    double sum = 0;
    for (unsigned i = 0; i < points.size(); ++i) {
        VECTOR2 const &a = points[i], &b = points[(i + 1) % points.size()];
        sum += double(a.x) * b.y - double(a.y) * b.x;
    }
    return sum / 2;
}

double ours(POLYLINE const &outline, std::size_t &pieces)
{
    POLYGON_CUTTER cutter;
    cutter.set_outline(outline);
    POLYLINE line;
    line.resize(2);
    for (unsigned cut = 0; cut < cut_count; ++cut) {
        line[0] = {-2 * radius, cut_height(cut)};
        line[1] = {2 * radius, cut_height(cut)};
        cutter.cut(line, false);
    }
    cutter.build_shapes();
    pieces = cutter.output_shapes.size();
    double sum = 0;
    for (CUT_SHAPE const &shape : cutter.output_shapes)
        sum += area(shape.polyline);
    return sum;
}

double theirs(POLYLINE const &outline, std::size_t &pieces)
{
    constexpr double units = 1000;  // Clipper's coordinates are whole
    auto const point = [](double x, double y) {
        return ClipperLib::IntPoint(ClipperLib::cInt(x * units), ClipperLib::cInt(y * units));
    };
    ClipperLib::Path path;
    for (VECTOR2 const &corner : outline)
        path.push_back(point(corner.x, corner.y));
    ClipperLib::Clipper clipper;
    clipper.AddPath(path, ClipperLib::ptSubject, true);
    for (unsigned cut = 0; cut < cut_count; ++cut) {
        double const y = cut_height(cut), x = 2 * radius;
        clipper.AddPath({point(-x, y - 0.1), point(x, y - 0.1), point(x, y + 0.1), point(-x, y + 0.1)},
                        ClipperLib::ptClip, true);
    }
    ClipperLib::Paths result;
    clipper.Execute(ClipperLib::ctDifference, result);
    pieces = result.size();
    double sum = 0;
    for (ClipperLib::Path const &piece : result)
        sum += ClipperLib::Area(piece);
    return sum / (units * units);
}

void CutOutline(benchmark::State &state)
{
    POLYLINE const outline = make_outline(unsigned(state.range(0)));
    double const whole = area(outline);
    double our_area = 0, their_area = 0;
    std::size_t our_pieces = 0, their_pieces = 0;
    SIDE_BY_SIDE times;
    for (auto _ : state) {
        times.time("theirs", [&] { their_area = theirs(outline, their_pieces); });
        times.time("ours", [&] { our_area = ours(outline, our_pieces); });
        times.time("copy", [&] { benchmark::DoNotOptimize(POLYLINE(outline).data); });
    }
    times.report(state);
    state.counters["pieces"] = double(our_pieces);
    state.counters["to_theirs"] = times.ratio("ours", "theirs");
    state.counters["to_copy"] = times.ratio("ours", "copy");
    bool const right = std::abs(our_area - whole) < 1e-4 * whole && std::abs(their_area - whole) < 2e-2 * whole;
    if (!right || our_pieces < cut_count || our_pieces != their_pieces)
        state.SkipWithError("the pieces are wrong");
}

}  // namespace

BENCHMARK(CutOutline)->ArgName("corners")->Arg(64)->Arg(256)->Arg(1024)->Iterations(100);
