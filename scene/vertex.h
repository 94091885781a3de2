// The vertices of the four mesh kinds. They share one interface for consumers that do not care for the kind; loops over
// many vertices go to the fields of the concrete class.
//
// The small arrays of a vertex may be borrowed from blocks that its mesh owns: moving a vertex keeps that, so a moved
// vertex belongs to the mesh it came from; copying a vertex gives it arrays of its own.
#pragma once

#include "scene/channel.h"

namespace VEX2_LOADER {

class SCENE_API VEX2_VERTEX_INTERFACE {
public:
    virtual ~VEX2_VERTEX_INTERFACE() = default;
    virtual bool read(VEX2_READ_BUFFER &buffer, float version) = 0;
    virtual bool write(VEX2_CHUNK_WRITER &writer) const = 0;
    // A getter whose source is missing (a null channel, an index past the end) leaves `out` as it was.
    virtual void get_position(VEX2_VECTOR &out) const = 0;
    virtual void get_normal(VEX2_VECTOR &out) const = 0;
    virtual void get_colour(VEX2_COLOUR &out) const = 0;
    virtual std::uint32_t uvw_count() const = 0;
    virtual void get_uvw(std::uint32_t index, VEX2_VECTOR &out) const = 0;
    virtual std::uint32_t frame_count() const = 0;
    virtual void get_frame(std::uint32_t index, VEX2_TANGENT_FRAME &out) const = 0;
    virtual VEX2_VERTEX_INTERFACE *clone() const = 0;
};

class SCENE_API VEX2_VERTEX : public VEX2_VERTEX_INTERFACE {
public:
    VEX2_VECTOR position;
    VEX2_VECTOR normal;
    VEX2_COLOUR colour;
    KN::DynamicArray<VEX2_VECTOR> uvws;
    KN::DynamicArray<VEX2_TANGENT_FRAME> frames;  // one per UVW set once frames are generated; a file may hold none

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("position", &VEX2_VERTEX::position);
        v("normal", &VEX2_VERTEX::normal);
        v("colour", &VEX2_VERTEX::colour);
        v("uvws", &VEX2_VERTEX::uvws);
        v("frames", &VEX2_VERTEX::frames, 1.03f);
    }
    VEX2_SERIAL_OPERATIONS
    void get_position(VEX2_VECTOR &out) const override { out = position; }
    void get_normal(VEX2_VECTOR &out) const override { out = normal; }
    void get_colour(VEX2_COLOUR &out) const override { out = colour; }
    std::uint32_t uvw_count() const override { return uvws.count; }
    void get_uvw(std::uint32_t index, VEX2_VECTOR &out) const override;
    std::uint32_t frame_count() const override { return frames.count; }
    void get_frame(std::uint32_t index, VEX2_TANGENT_FRAME &out) const override;
    VEX2_VERTEX *clone() const override { return new VEX2_VERTEX(*this); }
};

// A vertex all of whose attributes are channels.
class SCENE_API VEX2_ANIMATED_VERTEX : public VEX2_VERTEX_INTERFACE, public VEX2_ANIMATED {
public:
    VEX2_OWNED<VEX2_VECTOR_CHANNEL> position;
    VEX2_OWNED<VEX2_VECTOR_CHANNEL> normal;
    VEX2_OWNED<VEX2_COLOUR_CHANNEL> colour;
    KN::DynamicArray<VEX2_OWNED<VEX2_VECTOR_CHANNEL>> uvws;
    KN::DynamicArray<VEX2_OWNED<VEX2_TANGENT_FRAME_CHANNEL>> frames;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("position", &VEX2_ANIMATED_VERTEX::position);
        v("normal", &VEX2_ANIMATED_VERTEX::normal);
        v("colour", &VEX2_ANIMATED_VERTEX::colour);
        v("uvws", &VEX2_ANIMATED_VERTEX::uvws);
        v("frames", &VEX2_ANIMATED_VERTEX::frames, 1.03f);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    void get_position(VEX2_VECTOR &out) const override;
    void get_normal(VEX2_VECTOR &out) const override;
    void get_colour(VEX2_COLOUR &out) const override;
    std::uint32_t uvw_count() const override { return uvws.count; }
    void get_uvw(std::uint32_t index, VEX2_VECTOR &out) const override;
    std::uint32_t frame_count() const override { return frames.count; }
    void get_frame(std::uint32_t index, VEX2_TANGENT_FRAME &out) const override;
    VEX2_ANIMATED_VERTEX *clone() const override { return new VEX2_ANIMATED_VERTEX(*this); }
};

struct SCENE_API VEX2_MORPH_DELTA {
    static constexpr bool stored_as_is = true;
    VEX2_VECTOR offset;
    std::uint32_t target = 0;  // into the mesh's `targets`

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("offset", &VEX2_MORPH_DELTA::offset);
        v("target", &VEX2_MORPH_DELTA::target);
    }
};

class SCENE_API VEX2_MORPH_VERTEX : public VEX2_VERTEX {
public:
    KN::DynamicArray<VEX2_MORPH_DELTA> deltas;
    VEX2_VECTOR morph_offset;  // the weighted sum of `deltas` at the current time; stored in the file all the same

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_VERTEX::fields(v);
        v("deltas", &VEX2_MORPH_VERTEX::deltas);
        v("morph_offset", &VEX2_MORPH_VERTEX::morph_offset);
    }
    VEX2_SERIAL_OPERATIONS
    void get_position(VEX2_VECTOR &out) const override { out = position + morph_offset; }
    VEX2_MORPH_VERTEX *clone() const override { return new VEX2_MORPH_VERTEX(*this); }
};

struct SCENE_API VEX2_INFLUENCE {
    std::uint32_t matrix_index = 0;  // into hierarchy.nodes
    float weight = 0;
    VEX2_VECTOR local_position;  // the vertex in the node's space, from the start pose; computed after a load
    VEX2_VECTOR local_normal;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("matrix_index", &VEX2_INFLUENCE::matrix_index);
        v("weight", &VEX2_INFLUENCE::weight);
        v.computed("local_position", &VEX2_INFLUENCE::local_position);
        v.computed("local_normal", &VEX2_INFLUENCE::local_normal);
    }
};

// A skinned vertex. A scene seek computes position, normal and frames from the influences.
class SCENE_API VEX2_WEIGHTED_VERTEX : public VEX2_VERTEX {
public:
    KN::DynamicArray<VEX2_INFLUENCE> influences;
    VEX2_VECTOR bind_position;  // world, at the start pose
    VEX2_VECTOR bind_normal;
    // The frames in the space of each influence's node: that of influence i and frame k at i * frames.count + k.
    // Computed after a load and by VEX2::refresh_weighted_frames; while their number is not influences times frames
    // they count as missing.
    KN::DynamicArray<VEX2_TANGENT_FRAME> local_frames;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_VERTEX::fields(v);
        v("influences", &VEX2_WEIGHTED_VERTEX::influences);
        v("bind_position", &VEX2_WEIGHTED_VERTEX::bind_position);
        v("bind_normal", &VEX2_WEIGHTED_VERTEX::bind_normal);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_WEIGHTED_VERTEX *clone() const override { return new VEX2_WEIGHTED_VERTEX(*this); }

    bool has_local_frames() const { return local_frames.count == std::uint64_t(influences.count) * frames.count; }
};

}  // namespace VEX2_LOADER
