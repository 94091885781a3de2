// Meshes: triangles by material over vertices of one of four kinds. Triangle corners and material numbers are indices;
// the load has checked the corners, the influences' nodes and the deltas' targets, but not material_index.
#pragma once

#include "foundation/arena.h"
#include "scene/hierarchy.h"
#include "scene/object.h"
#include "scene/vertex.h"

namespace VEX2_LOADER {

struct SCENE_API VEX2_TRIANGLE {
    static constexpr bool stored_as_is = true;
    std::uint32_t vertices[3] = {};  // into the mesh's `vertices`

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("vertices", &VEX2_TRIANGLE::vertices);
    }
};

class SCENE_API VEX2_POLYGON_SET : public VEX2_SERIAL {
public:
    KN::DynamicArray<VEX2_TRIANGLE> triangles;
    std::int32_t material_index = -1;  // into VEX2::materials; negative: none

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("triangles", &VEX2_POLYGON_SET::triangles);
        v("material_index", &VEX2_POLYGON_SET::material_index);
    }
    VEX2_SERIAL_OPERATIONS
};

class SCENE_API VEX2_MESH : public VEX2_OBJECT, public VEX2_CHUNK {
public:
    KN::DynamicArray<std::uint32_t> first_indices;
    KN::DynamicArray<std::uint32_t> second_indices;
    KN::DynamicArray<VEX2_POLYGON_SET> sections;
    std::uint32_t colour_flag = 0;  // not 0: vertex colours count when vertices are compared

    std::uint32_t triangle_count() const;

    virtual bool read_vertices(VEX2_READ_BUFFER &buffer, float version) = 0;
    virtual bool write_vertices(VEX2_CHUNK_WRITER &writer) const = 0;
    // The vertices without regard to their kind; i < vertex_count().
    virtual std::uint32_t vertex_count() const = 0;
    virtual VEX2_VERTEX_INTERFACE &vertex(std::uint32_t i) = 0;
    virtual VEX2_VERTEX_INTERFACE const &vertex(std::uint32_t i) const = 0;

    // What a derived mesh's description begins with; the kind's vertices stand in its midst.
    template <class MESH, class VISITOR>
    static void mesh_fields(VISITOR &v)
    {
        VEX2_OBJECT::fields(v);
        v("first_indices", &VEX2_MESH::first_indices);
        v("second_indices", &VEX2_MESH::second_indices);
        v.vertices("vertices", &MESH::vertices);
        v("sections", &VEX2_MESH::sections);
        v("colour_flag", &VEX2_MESH::colour_flag);
    }
};

// What the four kinds share: the vertices by value, and the blocks that their small arrays stand in.
template <class VERTEX>
class SCENE_API VEX2_MESH_OF : public VEX2_MESH {
public:
    bool read_vertices(VEX2_READ_BUFFER &buffer, float version) override;
    bool write_vertices(VEX2_CHUNK_WRITER &writer) const override;
    std::uint32_t vertex_count() const override { return vertices.count; }
    VERTEX &vertex(std::uint32_t i) override { return vertices[i]; }
    VERTEX const &vertex(std::uint32_t i) const override { return vertices[i]; }

    KN::Arena blocks;  // of the vertices' small arrays, as read and as computed; it outlives `vertices`
    KN::DynamicArray<VERTEX> vertices;
};

class SCENE_API VEX2_STATIC_MESH : public VEX2_MESH_OF<VEX2_VERTEX> {
public:
    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        mesh_fields<VEX2_STATIC_MESH>(v);
    }
    VEX2_SERIAL_OPERATIONS
    std::uint32_t chunk_type() const override { return 7; }
};

// Its vertices hold its whole animation; seek and advance go to them.
class SCENE_API VEX2_ANIMATED_MESH : public VEX2_MESH_OF<VEX2_ANIMATED_VERTEX> {
public:
    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        mesh_fields<VEX2_ANIMATED_MESH>(v);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    std::uint32_t chunk_type() const override { return 8; }
};

class SCENE_API VEX2_MORPH_MESH : public VEX2_MESH_OF<VEX2_MORPH_VERTEX> {
public:
    KN::DynamicArray<VEX2_FLOAT_ATTRIBUTE> targets;  // a named weight per morph target

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        mesh_fields<VEX2_MORPH_MESH>(v);
        v("targets", &VEX2_MORPH_MESH::targets);
    }
    VEX2_SERIAL_OPERATIONS
    // Both end with the vertices' morph_offset for the weights of that time.
    VEX2_ANIMATED_OPERATIONS
    std::uint32_t chunk_type() const override { return 9; }

private:
    void update_offsets();
};

class SCENE_API VEX2_WEIGHTED_MESH : public VEX2_MESH_OF<VEX2_WEIGHTED_VERTEX> {
public:
    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        mesh_fields<VEX2_WEIGHTED_MESH>(v);
    }
    VEX2_SERIAL_OPERATIONS
    std::uint32_t chunk_type() const override { return 10; }

    // The next two take a matrix per node of the hierarchy; an influence whose node has none is left as it is.
    // The vertices' local positions and normals, from the bind ones.
    void take_local_positions(KN::DynamicArray<VEX2_MATRIX> const &inverse,
                              KN::DynamicArray<VEX2_MATRIX> const &rotation_inverse);
    // The vertices' local frames, from their frames.
    void take_local_frames(KN::DynamicArray<VEX2_MATRIX> const &rotation_inverse);
    // The bytes that these frames take.
    std::uint64_t local_frame_bytes() const;
    // Positions, normals and frames of all vertices for the nodes' current matrices.
    void skin(VEX2_MATRIX_HIERARCHY const &hierarchy);

private:
    KN::Arena frame_blocks;  // of the local frames
};

}  // namespace VEX2_LOADER
