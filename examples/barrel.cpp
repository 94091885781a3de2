// The barrel comes as exporters of long ago wrote it: version 1.02. The scene library writes the newest version only,
// so the bytes are put together here, each record with the fields that the old version has.

#include "examples/scenes.h"
#include "examples/shape.h"
#include "foundation/finished_file.h"

#include <cstring>
#include <iostream>
#include <string_view>

namespace EXAMPLES {

namespace {

class OLD_BYTES {
public:
    void number(std::uint32_t value) { bytes.append(reinterpret_cast<char const *>(&value), sizeof value); }
    void real(float value) { bytes.append(reinterpret_cast<char const *>(&value), sizeof value); }
    void text(std::u16string_view value)
    {
        auto const units = std::uint16_t(value.size());
        bytes.append(reinterpret_cast<char const *>(&units), sizeof units);
        bytes.append(reinterpret_cast<char const *>(value.data()), 2 * value.size());
    }
    void vector(VEX2_VECTOR const &value)
    {
        for (float part : {value.x, value.y, value.z})
            real(part);
    }
    void missing() { number(0); }  // an optional part that is not there
    // A channel with one key at time 0, as an optional part.
    void constant(std::uint32_t kind, std::initializer_list<float> value)
    {
        for (std::uint32_t head : {1u, kind, 0u})  // present, kind, current key
            number(head);
        real(0);    // fraction
        number(1);  // times
        real(0);
        number(1);  // values
        for (float part : value)
            real(part);
    }
    void begin_chunk(std::uint32_t type)
    {
        chunk = bytes.size();
        number(0);
        number(type);
    }
    void end_chunk()
    {
        auto const size = std::uint32_t(bytes.size() - chunk);
        std::memcpy(bytes.data() + chunk, &size, sizeof size);
    }

    std::string bytes;

private:
    std::size_t chunk = 0;
};

constexpr std::uint32_t header = 0, counts = 1, scene_info = 2, static_mesh = 7, hierarchy = 12, material = 13;
constexpr std::uint32_t vector_channel = 3, lerp_rotation_channel = 5;
constexpr std::uint32_t shader_material = 1;

}  // namespace

static void add_node(OLD_BYTES &out)
{
    out.begin_chunk(hierarchy);
    out.number(1);
    out.text(u"barrel");
    out.number(~0u);  // no parent
    out.constant(vector_channel, {0, 0, 0});
    out.constant(lerp_rotation_channel, {0, 0, 0, 1});
    for (int column = 0; column < 4; ++column)  // the stored world matrix: each column and a number that is skipped
        for (int row = 0; row < 4; ++row)
            out.real(row == column ? 1.0f : 0.0f);
    out.text(u"");
    out.end_chunk();
}

static void add_material(OLD_BYTES &out, std::u16string_view name, std::u16string_view picture,
                         std::initializer_list<float> colour, float roughness, float metalness)
{
    out.begin_chunk(material);
    out.number(shader_material);
    out.text(name);
    out.text(u"metallic_roughness");
    out.number(0);  // technique
    out.number(picture.empty() ? 0 : 1);
    if (!picture.empty()) {
        out.text(u"diffuse");
        out.text(picture);
    }
    out.number(0);  // slots
    out.number(2);
    out.text(u"roughness");
    out.constant(0, {roughness});
    out.text(u"metalness");
    out.constant(0, {metalness});
    out.number(0);  // integers
    out.number(0);  // vectors
    out.number(1);
    out.text(u"diffuse_colour");
    out.constant(9, colour);
    out.end_chunk();
}

static void add_mesh(OLD_BYTES &out, std::initializer_list<SHAPE const *> shapes)
{
    out.begin_chunk(static_mesh);
    out.text(u"barrel");
    out.text(u"");
    out.text(u"");
    out.number(0);  // its node
    out.number(0);  // two index lists
    out.number(0);
    std::uint32_t corners = 0;
    for (SHAPE const *shape : shapes)
        corners += std::uint32_t(shape->corners.size());
    out.number(corners);
    for (SHAPE const *shape : shapes)
        for (CORNER const &corner : shape->corners) {
            out.vector(corner.position);
            out.vector(corner.normal);
            for (int channel = 0; channel < 4; ++channel)
                out.real(1);
            out.number(1);
            out.vector({corner.u, corner.v, 0});
        }
    out.number(std::uint32_t(shapes.size()));
    std::uint32_t first = 0, number = 0;
    for (SHAPE const *shape : shapes) {
        out.number(std::uint32_t(shape->indices.size() / 3));
        for (std::uint32_t index : shape->indices)
            out.number(first + index);
        out.number(number++);
        first += std::uint32_t(shape->corners.size());
    }
    out.number(0);  // vertex colours do not count
    out.end_chunk();
}

// 0.68 m wide in the middle, 0.9 m high; hoops a little proud of the staves.
static float stave_radius(float height)
{
    float const from_middle = (height - 0.45f) / 0.45f;
    return 0.34f - 0.07f * from_middle * from_middle;
}

bool write_barrel(KN::String const &path)
{
    constexpr unsigned sides = 24;
    constexpr float inside = 0.24f, lid = 0.86f;
    constexpr TEXTURE_FIT timber = {0.55f};
    SHAPE staves, hoops;
    std::vector<RING> rings = {{{0, 0.04f, 0}, 0, 0}, {{0, 0.04f, 0}, inside, inside}, {{0, 0, 0}, inside, inside}};
    constexpr int steps = 12;
    for (int step = 0; step <= steps; ++step) {
        float const height = 0.9f * float(step) / steps, radius = stave_radius(height);
        rings.push_back({{0, height, 0}, radius, radius});
    }
    rings.push_back({{0, 0.9f, 0}, inside, inside});
    rings.push_back({{0, lid, 0}, inside, inside});
    staves.loft(rings, sides, EDGES::HARD, timber);
    std::vector<VEX2_VECTOR> rim;
    for (unsigned i = 0; i < sides; ++i) {
        float const angle = 2 * pi * float(i) / float(sides);
        rim.push_back({inside * std::cos(angle), lid, -inside * std::sin(angle)});
    }
    staves.polygon(rim, timber);
    for (float low : {0.05f, 0.24f, 0.60f, 0.79f}) {
        float const high = low + 0.06f, proud = 0.012f;
        RING const hoop[] = {{{0, low, 0}, stave_radius(low), stave_radius(low)},
                             {{0, low, 0}, stave_radius(low) + proud, stave_radius(low) + proud},
                             {{0, high, 0}, stave_radius(high) + proud, stave_radius(high) + proud},
                             {{0, high, 0}, stave_radius(high), stave_radius(high)}};
        hoops.loft(hoop, sides, EDGES::HARD, {0.5f});
    }

    OLD_BYTES out;
    out.number(0x56583201);
    out.begin_chunk(header);
    out.real(1.02f);
    out.text(u"NATIVE WIN32");
    out.text(u"barrel");
    out.end_chunk();
    out.begin_chunk(counts);
    out.number(18);
    for (int list = 0; list < 18; ++list)
        out.number(list == 2 ? 1 : list == 8 ? 2 : 0);  // static meshes, materials
    out.end_chunk();
    out.begin_chunk(scene_info);
    out.real(0);  // from, to
    out.real(0);
    out.missing();  // background
    out.missing();  // its map
    out.end_chunk();
    add_mesh(out, {&staves, &hoops});
    add_node(out);
    add_material(out, u"staves", u"timber.tga", {1, 1, 1, 1}, 0.8f, 0);
    add_material(out, u"hoops", u"", {0.12f, 0.11f, 0.1f, 1}, 0.45f, 1);

    KN::String error;
    if (KN::write_finished_file(path, out.bytes, error))
        return true;
    std::cerr << error << '\n';
    return false;
}

}  // namespace EXAMPLES
