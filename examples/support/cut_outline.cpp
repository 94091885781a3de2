// cut_outline FILE.svg: an island's outline, cut by two rivers and a lake that reaches over the coast, drawn piece by
// piece. What the closed cut covers is blue, the pieces of the land have colours of their own.

#include "foundation/finished_file.h"
#include "support/geometry/polygon_cutter.h"
#include "support/numeric/gradient_noise.h"

#include <cmath>
#include <iostream>
#include <numbers>
#include <sstream>

using namespace SUPPORT;

// A ring around (x, y) whose radius follows the noise.
static POLYLINE ragged_ring(float x, float y, float radius, unsigned corners)
{
    GRADIENT_NOISE const noise;
    POLYLINE ring;
    for (unsigned i = 0; i < corners; ++i) {
        float const angle = 2 * std::numbers::pi_v<float> * float(i) / float(corners);
        float const dx = std::cos(angle), dy = std::sin(angle);
        float const out = radius * (1 + 0.6f * noise.fractal_noise({dx, dy, radius}, 4, 1.3f, 1, 0.37f, 0.5f, 2));
        ring.append(VECTOR2{x + out * dx, y + out * dy});
    }
    return ring;
}

// A river across the whole picture, from top to bottom.
static POLYLINE river(float x)
{
    POLYLINE line;
    for (int i = 0; i <= 20; ++i)
        line.append(VECTOR2{x + 25 * std::sin(0.6f * float(i) + x), 60 * float(i) - 100});
    return line;
}

static void draw(std::ostream &svg, POLYLINE const &line, bool closed, char const *style)
{
    svg << (closed ? "<polygon" : "<polyline") << " points=\"";
    for (VECTOR2 const &point : line)
        svg << point.x << ',' << point.y << ' ';
    svg << "\" " << style << "/>\n";
}

int main(int count, char **arguments)
{
    if (count != 2) {
        std::cerr << "usage: cut_outline FILE.svg\n";
        return 2;
    }
    POLYGON_CUTTER cutter;
    POLYLINE const island = ragged_ring(500, 520, 340, 240), lake = ragged_ring(760, 720, 110, 40);
    POLYLINE const rivers[] = {river(360), river(560)};
    cutter.set_outline(island);
    for (POLYLINE const &line : rivers)
        cutter.cut(line, false);
    unsigned const lake_number = cutter.shape_counter;
    cutter.cut(lake, true);
    if (!cutter.build_shapes()) {
        std::cerr << "cut_outline: the cuts cross each other\n";
        return 1;
    }

    static char const *const land[] = {"#7aa35c", "#c9b458", "#b5794a", "#8f9b6a", "#a8683f", "#d0c48a"};
    std::ostringstream svg;
    svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 1000 1000\" width=\"1000\" height=\"1000\">\n"
           "<rect width=\"1000\" height=\"1000\" fill=\"#dfe9f2\"/>\n";
    unsigned number = 0;
    for (CUT_SHAPE const &shape : cutter.output_shapes) {
        bool const water = shape.shape_id == int(lake_number);
        std::string const colour = water ? "#3f78b5" : land[number++ % std::size(land)];
        draw(svg, shape.polyline, true, ("fill=\"" + colour + "\" stroke=\"#222\" stroke-width=\"2\"").c_str());
    }
    for (POLYLINE const &line : rivers)
        draw(svg, line, false, "fill=\"none\" stroke=\"#3f78b5\" stroke-width=\"1\" stroke-dasharray=\"6 6\"");
    draw(svg, lake, true, "fill=\"none\" stroke=\"#3f78b5\" stroke-width=\"1\" stroke-dasharray=\"6 6\"");
    svg << "</svg>\n";

    KN::String error;
    if (!KN::write_finished_file(arguments[1], svg.str(), error)) {
        std::cerr << error << '\n';
        return 1;
    }
    std::cout << cutter.output_shapes.size() << " pieces\n";
    return 0;
}
