// A square of ground around the origin: grass on what is level, rock on what is steep.

#include "examples/picture.h"
#include "examples/scene_kit.h"
#include "examples/scenes.h"
#include "scene/scene.h"

namespace EXAMPLES {

namespace {

constexpr int cells = 80;         // a side
constexpr float side = 80;        // metres
constexpr float steep = 0.82f;    // a triangle whose normal rises less is rock
constexpr TEXTURE_FIT fit = {4};  // of grass and rock alike

// A part of a shape with only the corners it uses.
class PATCH {
public:
    explicit PATCH(SHAPE const &shape_of) : whole(shape_of), places(shape_of.corners.size(), none) {}
    void add(std::uint32_t corner)
    {
        if (places[corner] == none) {
            places[corner] = std::uint32_t(shape.corners.size());
            shape.corners.push_back(whole.corners[corner]);
        }
        shape.indices.push_back(places[corner]);
    }

    SHAPE shape;

private:
    static constexpr std::uint32_t none = ~0u;
    SHAPE const &whole;
    std::vector<std::uint32_t> places;  // in `shape`, of the whole's corners
};

}  // namespace

// Metres above the lowest meadow; x and z in metres from the middle.
static float ground_height(float x, float z)
{
    float const u = x / side + 0.5f, v = z / side + 0.5f;
    float const rolling = 12 * tiling_clouds(u, v, 3, 3, 4, 71);
    float const to_crag = std::hypot(x - 14, z + 12);
    float const crag = 14 * (1 - smooth_step(3, 17, to_crag)) * (0.75f + 0.5f * tiling_clouds(u, v, 9, 9, 3, 72));
    float const to_brook = std::fabs(x + 14 + 6 * std::sin(z / 11));
    float const brook = 2.5f * (1 - smooth_step(0.5f, 6, to_brook));
    return rolling + crag - brook;
}

bool write_hills(KN::String const &path)
{
    VEX2 scene;
    scene.header.source_text = u"hills";
    unsigned const root = scene.hierarchy.add_node(u"hills", -1, {});

    SHAPE whole;
    for (int row = 0; row <= cells; ++row)
        for (int column = 0; column <= cells; ++column) {
            float const x = side * (float(column) / cells - 0.5f), z = side * (float(row) / cells - 0.5f);
            constexpr float step = 0.1f;
            VEX2_VECTOR const normal = unit({ground_height(x - step, z) - ground_height(x + step, z), 2 * step,
                                             ground_height(x, z - step) - ground_height(x, z + step)});
            whole.corners.push_back({{x, ground_height(x, z), z}, normal, x / fit.metres, -z / fit.metres});
        }

    PATCH grass(whole), rock(whole);
    auto const add = [&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        VEX2_VECTOR const &first = whole.corners[a].position;
        VEX2_VECTOR const normal = unit(cross(whole.corners[b].position - first, whole.corners[c].position - first));
        PATCH &patch = normal.y < steep ? rock : grass;
        for (std::uint32_t corner : {a, b, c})
            patch.add(corner);
    };
    for (std::uint32_t row = 0; row < cells; ++row)
        for (std::uint32_t column = 0; column < cells; ++column) {
            std::uint32_t const far_left = row * (cells + 1) + column, near_left = far_left + cells + 1;
            add(near_left, near_left + 1, far_left + 1);
            add(near_left, far_left + 1, far_left);
        }

    int const grass_look = add_material(scene, {.name = u"grass", .picture = u"grass.tga", .roughness = 1});
    int const rock_look = add_material(scene, {.name = u"rock", .picture = u"rock.tga", .roughness = 1});
    add_static_mesh(scene, u"hills", u"DISPLAY", root, {{grass_look, grass.shape}, {rock_look, rock.shape}});
    return save_scene(scene, path);
}

}  // namespace EXAMPLES
