#include "platform/exchange/stick_figure.h"

#include <algorithm>
#include <cmath>

using namespace SUPPORT;

namespace {

constexpr std::size_t most_bones = 65536;

std::vector<MATRIX34> world_matrices(std::vector<GLTF::NODE> const &bones, std::span<int const> parents)
{
    std::vector<MATRIX34> world;
    for (std::size_t i = 0; i < parents.size(); ++i) {
        float const(&t)[3] = bones[i].translation, (&q)[4] = bones[i].rotation;
        MATRIX34 const local = local_matrix({q[0], q[1], q[2], q[3]}, {t[0], t[1], t[2]});
        world.push_back(parents[i] >= 0 ? world[std::size_t(parents[i])] * local : local);
    }
    return world;
}

VECTOR3 place_of(MATRIX34 const &matrix) { return {matrix[0][3], matrix[1][3], matrix[2][3]}; }

// An octahedron: thickest a fifth of the way from `from` to `to`. Triangles are counter-clockwise seen from outside.
struct STICK {
    VECTOR3 corners[6];  // the two ends, and four around
    int bone;
};
constexpr std::uint32_t stick_triangles[8][3] = {{0, 3, 2}, {0, 4, 3}, {0, 5, 4}, {0, 2, 5},
                                                 {1, 2, 3}, {1, 3, 4}, {1, 4, 5}, {1, 5, 2}};

bool make_stick(VECTOR3 const &from, VECTOR3 const &to, STICK &stick)
{
    VECTOR3 const along = to - from;
    float const size = length(along);
    if (!(size > 1e-5f) || !std::isfinite(size))
        return false;
    VECTOR3 const other = std::abs(along.y) < 0.9f * size ? VECTOR3{0, 1, 0} : VECTOR3{1, 0, 0};
    VECTOR3 const side = normalised(cross(other, along)) * (0.1f * size);
    VECTOR3 const up = normalised(cross(along, side)) * (0.1f * size);
    VECTOR3 const middle = from + along * 0.2f;
    VECTOR3 const corners[6] = {from, to, middle + side, middle + up, middle - side, middle - up};
    std::copy_n(corners, 6, stick.corners);
    return true;
}

std::vector<STICK> make_sticks(std::vector<MATRIX34> const &world, std::span<int const> parents)
{
    std::vector<STICK> sticks;
    STICK stick;
    for (std::size_t i = 0; i < parents.size(); ++i) {
        stick.bone = parents[i];
        if (stick.bone >= 0 && make_stick(place_of(world[std::size_t(stick.bone)]), place_of(world[i]), stick))
            sticks.push_back(stick);
    }
    return sticks;
}

// The arrays may be refused by the buffer; the document cannot be written then.
bool add_mesh(GLTF::DOCUMENT &document, std::vector<STICK> const &sticks)
{
    GLTF::BUFFER &buffer = document.buffer;
    std::size_t const corners = sticks.size() * 6;
    GLTF::PRIMITIVE primitive;
    int const positions = buffer.add(GLTF::COMPONENT::F32, 3, corners, GLTF::USE::VERTICES, true);
    int const joints = buffer.add(GLTF::COMPONENT::U16, 4, corners, GLTF::USE::VERTICES);
    int const weights = buffer.add(GLTF::COMPONENT::F32, 4, corners, GLTF::USE::VERTICES);
    primitive.indices = buffer.add(GLTF::COMPONENT::U32, 1, sticks.size() * 24, GLTF::USE::INDICES);
    if (buffer.is_refused())
        return false;
    primitive.attributes = {{"POSITION", positions}, {"JOINTS_0", joints}, {"WEIGHTS_0", weights}};
    float *position = buffer.at<float>(positions), *weight = buffer.at<float>(weights);
    std::uint16_t *joint = buffer.at<std::uint16_t>(joints);
    std::uint32_t *index = buffer.at<std::uint32_t>(primitive.indices);
    std::uint32_t first = 0;
    for (STICK const &stick : sticks) {
        for (VECTOR3 const &corner : stick.corners) {
            for (float const coordinate : {corner.x, corner.y, corner.z})
                *position++ = coordinate;
            *joint = std::uint16_t(stick.bone);
            *weight = 1;
            joint += 4;
            weight += 4;
        }
        for (auto const &triangle : stick_triangles)
            for (std::uint32_t const corner : triangle)
                *index++ = first + corner;
        first += 6;
    }
    document.meshes.push_back({"sticks", {primitive}, {}, {}});
    return true;
}

bool add_skin(GLTF::DOCUMENT &document, std::vector<MATRIX34> const &world, std::span<MATRIX44 const> inverse_matrices)
{
    GLTF::SKIN skin;
    skin.inverse_bind_matrices = document.buffer.add(GLTF::COMPONENT::F32, 16, world.size(), GLTF::USE::OTHER);
    if (skin.inverse_bind_matrices < 0)
        return false;
    float *to = document.buffer.at<float>(skin.inverse_bind_matrices);
    for (std::size_t i = 0; i < world.size(); ++i) {
        MATRIX44 inverse;
        if (inverse_matrices.size() == world.size()) {
            inverse = inverse_matrices[i];
        } else {
            std::copy_n(&world[i].m[0][0], 12, &inverse.m[0][0]);
            inverse = inverse_or_itself(inverse);
        }
        for (unsigned column = 0; column < 4; ++column)
            for (unsigned row = 0; row < 4; ++row)
                *to++ = inverse[row][column];
        skin.joints.push_back(int(i));
    }
    document.skins.push_back(std::move(skin));
    return true;
}

}  // namespace

void add_stick_figure(GLTF::DOCUMENT &document, std::span<int const> parents,
                      std::span<MATRIX44 const> inverse_matrices)
{
    std::vector<MATRIX34> const world = world_matrices(document.nodes, parents);
    std::vector<STICK> const sticks = make_sticks(world, parents);
    if (sticks.empty() || parents.size() > most_bones || !add_mesh(document, sticks) ||
        !add_skin(document, world, inverse_matrices))
        return;
    // A skinned mesh is placed by its bones; a node of its own keeps the scene's other nodes bones.
    GLTF::NODE figure;
    figure.name = "sticks";
    figure.mesh = int(document.meshes.size()) - 1;
    figure.skin = int(document.skins.size()) - 1;
    document.roots.push_back(int(document.nodes.size()));
    document.nodes.push_back(std::move(figure));
}
