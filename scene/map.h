// Texture maps: bitmaps, and blends of two maps. Maps nest; the reader takes 1,024 levels and no more.
#pragma once

#include "scene/attributes.h"

namespace VEX2_LOADER {

class SCENE_API VEX2_MAP : public VEX2_NAMED, public VEX2_ANIMATED {
public:
    static constexpr unsigned deepest_nesting = 1024;

    KN::UniString second_name;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> amount;

    virtual std::uint32_t subtype() const = 0;
    virtual bool equals(VEX2_MAP const &other) const = 0;
    virtual VEX2_MAP *clone() const = 0;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_NAMED::fields(v);
        v("second_name", &VEX2_MAP::second_name);
        v("amount", &VEX2_MAP::amount);
    }
};

class SCENE_API VEX2_UV_TRANSFORM : public VEX2_ANIMATED {
public:
    std::uint32_t mapping = 8;
    std::uint32_t uv_set = 0;
    VEX2_OWNED<VEX2_VECTOR2_CHANNEL> offset;
    VEX2_OWNED<VEX2_VECTOR2_CHANNEL> tiling;
    std::uint32_t tile_flags[2] = {0xffffffff, 0xffffffff};
    VEX2_OWNED<VEX2_VECTOR_CHANNEL> angles;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("mapping", &VEX2_UV_TRANSFORM::mapping);
        v("uv_set", &VEX2_UV_TRANSFORM::uv_set);
        v("offset", &VEX2_UV_TRANSFORM::offset);
        v("tiling", &VEX2_UV_TRANSFORM::tiling);
        v("tile_flags", &VEX2_UV_TRANSFORM::tile_flags);
        v("angles", &VEX2_UV_TRANSFORM::angles);
    }
    VEX2_ANIMATED_OPERATIONS
};

class SCENE_API VEX2_BITMAP_CROP : public VEX2_ANIMATED {
public:
    bool enabled = false;
    std::uint32_t mode = 0xffffffff;
    VEX2_OWNED<VEX2_RECTANGLE_CHANNEL> rectangle;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("enabled", &VEX2_BITMAP_CROP::enabled);
        v("mode", &VEX2_BITMAP_CROP::mode);
        v("rectangle", &VEX2_BITMAP_CROP::rectangle);
    }
    VEX2_ANIMATED_OPERATIONS
};

class SCENE_API VEX2_BITMAP : public VEX2_ANIMATED {
public:
    KN::UniString file = u"NONAME";
    std::uint32_t width = 0, height = 0;
    VEX2_BITMAP_CROP crop;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("file", &VEX2_BITMAP::file);
        v("width", &VEX2_BITMAP::width);
        v("height", &VEX2_BITMAP::height);
        v("crop", &VEX2_BITMAP::crop);
    }
    VEX2_ANIMATED_OPERATIONS
};

struct SCENE_API VEX2_MAP_FILTER {
    float values[2] = {0, 1};
    std::uint32_t number = 0;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("values", &VEX2_MAP_FILTER::values);
        v("number", &VEX2_MAP_FILTER::number);
    }
};

class SCENE_API VEX2_BITMAP_MAP : public VEX2_MAP {
public:
    static constexpr std::uint32_t kind = 0;
    VEX2_UV_TRANSFORM uv;
    VEX2_BITMAP bitmap;
    VEX2_MAP_FILTER filter;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_MAP::fields(v);
        v("uv", &VEX2_BITMAP_MAP::uv);
        v("bitmap", &VEX2_BITMAP_MAP::bitmap);
        v("filter", &VEX2_BITMAP_MAP::filter);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    std::uint32_t subtype() const override { return kind; }
    bool equals(VEX2_MAP const &other) const override;
    VEX2_BITMAP_MAP *clone() const override { return new VEX2_BITMAP_MAP(*this); }
};

class SCENE_API VEX2_BLEND_MAP : public VEX2_MAP {
public:
    static constexpr std::uint32_t kind = 1;
    VEX2_OWNED<VEX2_MAP> first;
    VEX2_OWNED<VEX2_MAP> second;
    bool flags[3] = {};
    std::uint32_t blend_mode = 0xffffffff;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_MAP::fields(v);
        v("first", &VEX2_BLEND_MAP::first);
        v("second", &VEX2_BLEND_MAP::second);
        v("flags", &VEX2_BLEND_MAP::flags);
        v("blend_mode", &VEX2_BLEND_MAP::blend_mode);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    std::uint32_t subtype() const override { return kind; }
    bool equals(VEX2_MAP const &other) const override;
    VEX2_BLEND_MAP *clone() const override { return new VEX2_BLEND_MAP(*this); }
};

}  // namespace VEX2_LOADER
