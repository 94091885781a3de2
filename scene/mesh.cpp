#include "scene/mesh.h"

#include "scene/define_record.h"

namespace VEX2_LOADER {

VEX2_DEFINE_SERIAL(VEX2_POLYGON_SET)
VEX2_DEFINE_SERIAL(VEX2_VERTEX)
VEX2_DEFINE_SERIAL(VEX2_ANIMATED_VERTEX)
VEX2_DEFINE_ANIMATED(VEX2_ANIMATED_VERTEX)
VEX2_DEFINE_SERIAL(VEX2_MORPH_VERTEX)
VEX2_DEFINE_SERIAL(VEX2_WEIGHTED_VERTEX)
VEX2_DEFINE_SERIAL(VEX2_STATIC_MESH)
VEX2_DEFINE_SERIAL(VEX2_ANIMATED_MESH)
VEX2_DEFINE_ANIMATED(VEX2_ANIMATED_MESH)
VEX2_DEFINE_SERIAL(VEX2_MORPH_MESH)
VEX2_DEFINE_SERIAL(VEX2_WEIGHTED_MESH)

void VEX2_VERTEX::get_uvw(std::uint32_t index, VEX2_VECTOR &out) const
{
    if (index < uvws.count)
        out = uvws[index];
}

void VEX2_VERTEX::get_frame(std::uint32_t index, VEX2_TANGENT_FRAME &out) const
{
    if (index < frames.count)
        out = frames[index];
}

void VEX2_ANIMATED_VERTEX::get_position(VEX2_VECTOR &out) const
{
    if (position)
        position->value(out);
}

void VEX2_ANIMATED_VERTEX::get_normal(VEX2_VECTOR &out) const
{
    if (normal)
        normal->value(out);
}

void VEX2_ANIMATED_VERTEX::get_colour(VEX2_COLOUR &out) const
{
    if (colour)
        colour->value(out);
}

void VEX2_ANIMATED_VERTEX::get_uvw(std::uint32_t index, VEX2_VECTOR &out) const
{
    if (index < uvws.count && uvws[index])
        uvws[index]->value(out);
}

void VEX2_ANIMATED_VERTEX::get_frame(std::uint32_t index, VEX2_TANGENT_FRAME &out) const
{
    if (index < frames.count && frames[index])
        frames[index]->value(out);
}

std::uint32_t VEX2_MESH::triangle_count() const
{
    std::uint32_t count = 0;
    for (VEX2_POLYGON_SET const &section : sections)
        count += section.triangles.count;
    return count;
}

// The hot loop of a load: everything but the faults is inlined, and the cursor stays in registers.
template <class VERTEX>
[[gnu::flatten]] static bool read_plain_vertices(VEX2_READ_BUFFER &buffer, float version, KN::Arena &blocks,
                                                 KN::DynamicArray<VERTEX> &vertices)
{
    LOCAL_SOURCE source(buffer);
    READ_STATE<LOCAL_SOURCE> state{source, version, &blocks};
    if (!read_array(state, vertices))
        return false;
    source.give_back();
    return true;
}

template <class VERTEX>
bool VEX2_MESH_OF<VERTEX>::read_vertices(VEX2_READ_BUFFER &buffer, float version)
{
    vertices.clear();
    blocks = KN::Arena();
    if constexpr (std::is_base_of_v<VEX2_VERTEX, VERTEX>)
        return read_plain_vertices(buffer, version, blocks, vertices);
    else
        return read_record(buffer, version, vertices);
}

template <class VERTEX>
bool VEX2_MESH_OF<VERTEX>::write_vertices(VEX2_CHUNK_WRITER &writer) const
{
    return write_array(writer, vertices);
}

template class VEX2_MESH_OF<VEX2_VERTEX>;
template class VEX2_MESH_OF<VEX2_ANIMATED_VERTEX>;
template class VEX2_MESH_OF<VEX2_MORPH_VERTEX>;
template class VEX2_MESH_OF<VEX2_WEIGHTED_VERTEX>;

void VEX2_MORPH_MESH::advance(float delta)
{
    move_record(*this, ADVANCE{delta});
    update_offsets();
}

void VEX2_MORPH_MESH::seek(float time)
{
    move_record(*this, SEEK{time});
    update_offsets();
}

void VEX2_MORPH_MESH::update_offsets()
{
    KN::DynamicArray<float> weights;
    weights.reserve(targets.count);
    for (VEX2_FLOAT_ATTRIBUTE const &target : targets)
        weights.append(target.value ? target.value->value() : 0.0f);
    for (VEX2_MORPH_VERTEX &vertex : vertices) {
        VEX2_VECTOR sum;
        for (VEX2_MORPH_DELTA const &delta : vertex.deltas) {
            if (delta.target >= weights.count)
                continue;
            float const weight = weights[delta.target];
            sum.x += weight * delta.offset.x;
            sum.y += weight * delta.offset.y;
            sum.z += weight * delta.offset.z;
        }
        vertex.morph_offset = sum;
    }
}

}  // namespace VEX2_LOADER
