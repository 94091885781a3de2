// Small meshes for the tests of the passes, random ones included: few values, so that vertices agree often.
#pragma once

#include "scene/scene.h"

#include <random>
#include <vector>

namespace VEX2_LOADER {

class RANDOM {
public:
    explicit RANDOM(unsigned seed) : engine(seed) {}
    unsigned below(unsigned limit) { return unsigned(engine() % limit); }
    bool chance(unsigned one_in) { return below(one_in) == 0; }
    float pick(std::vector<float> const &values) { return values[below(unsigned(values.size()))]; }
    VEX2_VECTOR vector(std::vector<float> const &values) { return {pick(values), pick(values), pick(values)}; }

private:
    std::mt19937 engine;
};

inline VEX2_POLYGON_SET section_of(std::vector<VEX2_TRIANGLE> const &triangles, int material = -1)
{
    VEX2_POLYGON_SET section;
    for (VEX2_TRIANGLE const &triangle : triangles)
        section.triangles.append(triangle);
    section.material_index = material;
    return section;
}

// `count` triangles over vertices 0 to `vertex_count` - 1, in two sections; now and then a corner beyond.
inline void add_random_triangles(VEX2_MESH &mesh, RANDOM &random, unsigned count, unsigned vertex_count)
{
    mesh.sections.resize(2);
    for (unsigned i = 0; i < count; ++i) {
        VEX2_TRIANGLE triangle;
        for (std::uint32_t &corner : triangle.vertices)
            corner = random.below(vertex_count + (random.chance(50) ? 3 : 0));
        mesh.sections[random.below(2)].triangles.append(triangle);
    }
}

inline VEX2_VERTEX vertex_at(VEX2_VECTOR const &position, std::vector<VEX2_VECTOR> const &uvws = {})
{
    VEX2_VERTEX vertex;
    vertex.position = position;
    vertex.normal = {0, 0, 1};
    for (VEX2_VECTOR const &uvw : uvws)
        vertex.uvws.append(uvw);
    return vertex;
}

}  // namespace VEX2_LOADER
