// Shapes: Bezier splines, of fixed points or of points that are channels.
#pragma once

#include "scene/object.h"

namespace VEX2_LOADER {

// A piece of a spline. Neighbouring segments share a point, so n segments of degrees d1 to dn stand on d1 + ... + dn +
// 1 points.
struct SCENE_API VEX2_SPLINE_SEGMENT {
    static constexpr bool stored_as_is = true;
    std::uint32_t degree = 0;  // at most 3
    float length = 0;          // as stored; not computed here

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("degree", &VEX2_SPLINE_SEGMENT::degree);
        v("length", &VEX2_SPLINE_SEGMENT::length);
    }
};

// t from 0 to 1 takes the same share of every segment, whatever its length; beyond 1 the last segment is continued.
// A spline whose points do not suffice for its segments, that has none, or one of a higher degree leaves `out` as it
// was.
class SCENE_API VEX2_SPLINE_BASE : public VEX2_SERIAL {
public:
    KN::DynamicArray<VEX2_SPLINE_SEGMENT> segments;

    virtual void position_at(float t, VEX2_VECTOR &out) const = 0;
    virtual void tangent_at(float t, VEX2_VECTOR &out) const = 0;  // not normalised
    virtual float length() const;                                  // the sum of the stored lengths

protected:
    // The segment of `t`: its degree (0 to 3), its first point and the position on it. False if it has no such points.
    struct PLACE {
        std::uint32_t degree;
        std::uint32_t first_point;
        float u;
    };
    bool locate(float t, std::uint32_t point_count, PLACE &place) const;
};

class SCENE_API VEX2_SPLINE : public VEX2_SPLINE_BASE {
public:
    KN::DynamicArray<VEX2_VECTOR> points;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("points", &VEX2_SPLINE::points);
        v("segments", &VEX2_SPLINE::segments);
    }
    VEX2_SERIAL_OPERATIONS
    void position_at(float t, VEX2_VECTOR &out) const override;
    void tangent_at(float t, VEX2_VECTOR &out) const override;
};

class SCENE_API VEX2_ANIMATED_SPLINE : public VEX2_SPLINE_BASE, public VEX2_ANIMATED {
public:
    KN::DynamicArray<VEX2_OWNED<VEX2_VECTOR_CHANNEL>> points;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("points", &VEX2_ANIMATED_SPLINE::points);
        v("segments", &VEX2_ANIMATED_SPLINE::segments);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    void position_at(float t, VEX2_VECTOR &out) const override;
    void tangent_at(float t, VEX2_VECTOR &out) const override;
};

class SCENE_API VEX2_SHAPE : public VEX2_OBJECT, public VEX2_CHUNK {
public:
    KN::DynamicArray<VEX2_SPLINE> splines;
    KN::DynamicArray<VEX2_ANIMATED_SPLINE> animated_splines;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_OBJECT::fields(v);
        v("splines", &VEX2_SHAPE::splines);
        v("animated_splines", &VEX2_SHAPE::animated_splines);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    std::uint32_t chunk_type() const override { return 11; }
};

}  // namespace VEX2_LOADER
