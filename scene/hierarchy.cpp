#include "scene/hierarchy.h"

#include "scene/define_record.h"

namespace VEX2_LOADER {

VEX2_DEFINE_SERIAL(VEX2_MATRIX_NODE)

VEX2_MATRIX_NODE::VEX2_MATRIX_NODE(VEX2_MATRIX_NODE const &other)
    : VEX2_NAMED(other), VEX2_ANIMATED(other), parent_index(other.parent_index), translation(other.translation),
      rotation(other.rotation), scale(other.scale), matrix(other.matrix), node_text(other.node_text),
      attributes(other.attributes)
{}

VEX2_MATRIX_NODE &VEX2_MATRIX_NODE::operator=(VEX2_MATRIX_NODE const &other) { return *this = VEX2_MATRIX_NODE(other); }

void VEX2_MATRIX_NODE::advance(float delta)
{
    move_record(*this, ADVANCE{delta});
    update_matrix();
}

void VEX2_MATRIX_NODE::seek(float time)
{
    move_record(*this, SEEK{time});
    update_matrix();
}

void VEX2_MATRIX_NODE::update_matrix()
{
    if (!translation || !rotation)
        return;
    VEX2_QUATERNION const q = rotation->value();
    float const x = q.x, y = q.y, z = q.z, w = q.w;
    VEX2_MATRIX local = {{{1 - 2 * y * y - 2 * z * z, 2 * x * y - 2 * w * z, 2 * x * z + 2 * w * y, 0},
                          {2 * x * y + 2 * w * z, 1 - 2 * x * x - 2 * z * z, 2 * y * z - 2 * w * x, 0},
                          {2 * x * z - 2 * w * y, 2 * y * z + 2 * w * x, 1 - 2 * x * x - 2 * y * y, 0}}};
    if (scale) {
        VEX2_VECTOR const factor = scale->value();
        for (unsigned row = 0; row < 3; ++row) {
            local[row][0] *= factor.x;
            local[row][1] *= factor.y;
            local[row][2] *= factor.z;
        }
    }
    VEX2_VECTOR const place = translation->value();
    local[0][3] = place.x;
    local[1][3] = place.y;
    local[2][3] = place.z;
    if (!parent) {
        matrix = local;
        return;
    }
    VEX2_MATRIX const &p = *parent;
    for (unsigned i = 0; i < 3; ++i) {
        for (unsigned j = 0; j < 4; ++j)
            matrix[i][j] = p[i][0] * local[0][j] + p[i][1] * local[1][j] + p[i][2] * local[2][j];
        matrix[i][3] += p[i][3];
    }
}

bool VEX2_MATRIX_HIERARCHY::read(VEX2_READ_BUFFER &buffer, float version)
{
    bool const good = read_record(buffer, version, *this);
    link();
    return good;
}

bool VEX2_MATRIX_HIERARCHY::write(VEX2_CHUNK_WRITER &writer) const { return write_item(writer, *this); }

void VEX2_MATRIX_HIERARCHY::advance(float delta)
{
    link();
    for (VEX2_MATRIX_NODE &node : nodes)
        node.advance(delta);
}

void VEX2_MATRIX_HIERARCHY::seek(float time)
{
    link();
    for (VEX2_MATRIX_NODE &node : nodes)
        node.seek(time);
}

void VEX2_MATRIX_HIERARCHY::link()
{
    for (VEX2_MATRIX_NODE &node : nodes)
        node.parent = node.parent_index >= 0 && std::uint32_t(node.parent_index) < nodes.count
                          ? &nodes[std::uint32_t(node.parent_index)].matrix
                          : nullptr;
}

std::uint32_t VEX2_MATRIX_HIERARCHY::add_node(std::u16string_view name, std::int32_t parent_index,
                                              VEX2_VECTOR const &translation, VEX2_QUATERNION const &rotation,
                                              VEX2_VECTOR const *scale)
{
    VEX2_MATRIX_NODE &node = nodes.append();
    node.name = KN::UniString(name);
    node.parent_index = parent_index;
    node.translation = constant_channel<VEX2_VECTOR_CHANNEL>(translation);
    node.rotation = constant_channel<VEX2_SLERP_ROTATION_CHANNEL>(rotation);
    if (scale)
        node.scale = constant_channel<VEX2_VECTOR_CHANNEL>(*scale);
    return nodes.count - 1;
}

}  // namespace VEX2_LOADER
