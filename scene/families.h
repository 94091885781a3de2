// The families of records whose class a stored subtype selects. Factories and every visit of a record through its base
// derive from the lists here.
#pragma once

#include "scene/attachment.h"
#include "scene/camera.h"
#include "scene/light.h"
#include "scene/material.h"

#include <type_traits>

namespace VEX2_LOADER {

template <class... CLASSES>
struct VEX2_CLASS_LIST {};

// Of a class that is no family's base: itself alone.
template <class BASE>
struct VEX2_FAMILY {
    using LIST = VEX2_CLASS_LIST<BASE>;
};
template <>
struct VEX2_FAMILY<VEX2_ROTATION_CHANNEL> {
    using LIST = VEX2_CLASS_LIST<VEX2_LERP_ROTATION_CHANNEL, VEX2_SLERP_ROTATION_CHANNEL>;
};
template <>
struct VEX2_FAMILY<VEX2_MAP> {
    using LIST = VEX2_CLASS_LIST<VEX2_BITMAP_MAP, VEX2_BLEND_MAP>;
};
template <>
struct VEX2_FAMILY<VEX2_MATERIAL> {
    using LIST = VEX2_CLASS_LIST<VEX2_STANDARD_MATERIAL, VEX2_SHADER_MATERIAL>;
};
template <>
struct VEX2_FAMILY<VEX2_LIGHT> {
    using LIST = VEX2_CLASS_LIST<VEX2_SPOT_LIGHT, VEX2_OMNI_LIGHT, VEX2_DIRECT_LIGHT>;
};
template <>
struct VEX2_FAMILY<VEX2_CAMERA_EFFECT> {
    using LIST = VEX2_CLASS_LIST<VEX2_BLUR_EFFECT, VEX2_DEPTH_EFFECT>;
};
template <>
struct VEX2_FAMILY<VEX2_ATTACHMENT> {
    using LIST =
        VEX2_CLASS_LIST<VEX2_ATTACHMENT, VEX2_INDEX_ATTACHMENT, VEX2_WEIGHT_ATTACHMENT, VEX2_POLYGON_ATTACHMENT>;
};

// A record whose class has a subtype, as against one whose class is known from where it stands.
template <class T>
concept VEX2_HAS_SUBTYPE = requires(T const &record)
{
    record.subtype();
};

template <class BASE, class FUNCTION, class... CLASSES>
bool with_class_of(std::uint32_t subtype, FUNCTION const &function, VEX2_CLASS_LIST<CLASSES...>)
{
    return ((subtype == CLASSES::kind && (function(static_cast<CLASSES *>(nullptr)), true)) || ...);
}

// A new record of the class that `subtype` names, or null; `room` gets its size.
template <class BASE>
BASE *make_of_subtype(std::uint32_t subtype, std::size_t &room)
{
    BASE *made = nullptr;
    with_class_of<BASE>(
        subtype,
        [&]<class CLASS>(CLASS *) {
            made = new CLASS;
            room = sizeof(CLASS);
        },
        typename VEX2_FAMILY<BASE>::LIST{});
    return made;
}

// function(record) with the record's own class.
template <class BASE, class FUNCTION>
void with_own_class(BASE const &record, FUNCTION const &function)
{
    with_class_of<BASE>(
        record.subtype(), [&]<class CLASS>(CLASS *) { function(static_cast<CLASS const &>(record)); },
        typename VEX2_FAMILY<BASE>::LIST{});
}

}  // namespace VEX2_LOADER
