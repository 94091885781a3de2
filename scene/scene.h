// VEX2: one scene in memory, what one .vx2 file holds, in plain public lists. Loaded once, moved in time by seek and
// advance, changed in place by the clean-up passes, written back by write. One thread works on a scene at a time;
// different scenes share nothing.
#pragma once

#include "scene/attachment.h"
#include "scene/camera.h"
#include "scene/hierarchy.h"
#include "scene/light.h"
#include "scene/material.h"
#include "scene/mesh.h"
#include "scene/reference.h"
#include "scene/shape.h"

namespace VEX2_LOADER {

class SCENE_API VEX2_HEADER : public VEX2_SERIAL, public VEX2_CHUNK {
public:
    static constexpr float newest_version = 1.16f;

    float version = newest_version;
    KN::UniString producer = u"NATIVE WIN32";
    KN::UniString source_text;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("version", &VEX2_HEADER::version);
        v("producer", &VEX2_HEADER::producer);
        v("source_text", &VEX2_HEADER::source_text);
    }
    // False, too, for a version above the newest and for one that is no number.
    bool read(VEX2_READ_BUFFER &buffer, float version) override;
    // Always writes the newest version.
    bool write(VEX2_CHUNK_WRITER &writer) const override;
    std::uint32_t chunk_type() const override { return 0; }
};

class SCENE_API VEX2_SCENE_INFO : public VEX2_SERIAL, public VEX2_ANIMATED, public VEX2_CHUNK {
public:
    float start_time = 0, end_time = 0;  // seconds
    VEX2_OWNED<VEX2_COLOUR_CHANNEL> background;
    VEX2_OWNED<VEX2_MAP> background_map;
    std::uint8_t stamp[8] = {};  // carried

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("start_time", &VEX2_SCENE_INFO::start_time);
        v("end_time", &VEX2_SCENE_INFO::end_time);
        v("background", &VEX2_SCENE_INFO::background);
        v("background_map", &VEX2_SCENE_INFO::background_map);
        v("stamp", &VEX2_SCENE_INFO::stamp, 1.16f);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    std::uint32_t chunk_type() const override { return 2; }
};

class SCENE_API VEX2_GLOBAL_TINT : public VEX2_SERIAL, public VEX2_ANIMATED, public VEX2_CHUNK {
public:
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> level;
    VEX2_OWNED<VEX2_COLOUR_CHANNEL> colour;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("level", &VEX2_GLOBAL_TINT::level);
        v("colour", &VEX2_GLOBAL_TINT::colour);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    std::uint32_t chunk_type() const override { return 3; }
};

class SCENE_API VEX2_GLOBAL_AMBIENT : public VEX2_SERIAL, public VEX2_ANIMATED, public VEX2_CHUNK {
public:
    VEX2_OWNED<VEX2_COLOUR_CHANNEL> colour;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("colour", &VEX2_GLOBAL_AMBIENT::colour);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    std::uint32_t chunk_type() const override { return 4; }
};

class SCENE_API VEX2_INT_TRACK : public VEX2_SERIAL, public VEX2_ANIMATED, public VEX2_CHUNK {
public:
    VEX2_OWNED<VEX2_INT_CHANNEL> value;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("value", &VEX2_INT_TRACK::value);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    std::uint32_t chunk_type() const override { return 22; }
};

class SCENE_API VEX2 : public VEX2_ANIMATED {
public:
    static constexpr std::uint32_t magic = 0x56583201;

    VEX2_HEADER header;
    VEX2_SCENE_INFO info;
    VEX2_OWNED<VEX2_GLOBAL_AMBIENT> ambient;
    VEX2_OWNED<VEX2_GLOBAL_TINT> tint;
    VEX2_LIST<VEX2_LIGHT> lights;
    VEX2_LIST<VEX2_CAMERA> cameras;
    VEX2_LIST<VEX2_STATIC_MESH> static_meshes;
    VEX2_LIST<VEX2_ANIMATED_MESH> animated_meshes;
    VEX2_LIST<VEX2_MORPH_MESH> morph_meshes;
    VEX2_LIST<VEX2_WEIGHTED_MESH> weighted_meshes;
    VEX2_LIST<VEX2_SHAPE> shapes;
    VEX2_LIST<VEX2_HELPER> helpers;
    VEX2_LIST<VEX2_NAME_LINK> name_links;
    VEX2_MATRIX_HIERARCHY hierarchy;
    VEX2_LIST<VEX2_MATERIAL> materials;
    // The digit is the list id of the file.
    VEX2_LIST<VEX2_ATTACHMENT> attachments_3;
    VEX2_LIST<VEX2_ATTACHMENT> attachments_2;
    VEX2_LIST<VEX2_ATTACHMENT> attachments_5;  // of static meshes
    VEX2_LIST<VEX2_ATTACHMENT> attachments_0;  // of animated meshes
    VEX2_LIST<VEX2_ATTACHMENT> attachments_4;  // of morph meshes
    VEX2_LIST<VEX2_ATTACHMENT> attachments_6;  // of weighted meshes
    VEX2_LIST<VEX2_ATTACHMENT> attachments_1;
    VEX2_LIST<VEX2_ATTACHMENT> attachments_7;
    VEX2_LIST<VEX2_ATTACHMENT> attachments_8;
    VEX2_LIST<VEX2_ATTACHMENT> attachments_9;
    VEX2_LIST<VEX2_SCENE_REFERENCE> references_a;  // chunk type 15
    VEX2_LIST<VEX2_SCENE_REFERENCE> references_b;  // chunk type 20
    VEX2_LIST<VEX2_LINK> links;
    VEX2_INT_TRACK int_track;

    // All members in the order above; the file has an order of its own.
    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("header", &VEX2::header);
        v("info", &VEX2::info);
        v("ambient", &VEX2::ambient);
        v("tint", &VEX2::tint);
        v("lights", &VEX2::lights);
        v("cameras", &VEX2::cameras);
        v("static_meshes", &VEX2::static_meshes);
        v("animated_meshes", &VEX2::animated_meshes);
        v("morph_meshes", &VEX2::morph_meshes);
        v("weighted_meshes", &VEX2::weighted_meshes);
        v("shapes", &VEX2::shapes);
        v("helpers", &VEX2::helpers);
        v("name_links", &VEX2::name_links);
        v("hierarchy", &VEX2::hierarchy);
        v("materials", &VEX2::materials);
        v("attachments_3", &VEX2::attachments_3);
        v("attachments_2", &VEX2::attachments_2);
        v("attachments_5", &VEX2::attachments_5);
        v("attachments_0", &VEX2::attachments_0);
        v("attachments_4", &VEX2::attachments_4);
        v("attachments_6", &VEX2::attachments_6);
        v("attachments_1", &VEX2::attachments_1);
        v("attachments_7", &VEX2::attachments_7);
        v("attachments_8", &VEX2::attachments_8);
        v("attachments_9", &VEX2::attachments_9);
        v("references_a", &VEX2::references_a);
        v("references_b", &VEX2::references_b);
        v("links", &VEX2::links);
        v("int_track", &VEX2::int_track);
    }

    VEX2();
    ~VEX2() override;
    VEX2(VEX2 const &) = delete;
    VEX2 &operator=(VEX2 const &) = delete;

    // Replaces the scene by what `buffer` holds from its cursor on, prepares the weighted meshes and, with
    // `apply_start_pose`, seeks to info.start_time. Safe on hostile bytes: bounded by the buffer, by 64 MiB + 32 times
    // the bytes read, by the nesting of maps and references. False leaves the scene with what was read so far, one line
    // of error with KN::message, and the same line in buffer.fault.
    bool load(VEX2_READ_BUFFER &buffer, bool apply_start_pose);
    // The scene as a file of the newest version, the files of its references included. False if any part failed; the
    // file is then not a scene file unless only the last bytes are missing.
    bool write(VEX2_CHUNK_WRITER &writer) const;
    // Empty, as a new scene.
    void clear();

    // The hierarchy first, then all that hangs on it; weighted vertices are skinned on the way. Helpers, links,
    // attachments_2 and the channels of attributes are not moved.
    void advance(float delta) override;
    void seek(float time) override;

    // Puts the hierarchy at info.start_time and leaves it there; takes every weighted vertex into the spaces of its
    // nodes. The load has done it; a maker of weighted meshes calls it once its bind positions and normals stand.
    void prepare_weighted_meshes();
    // The same for the frames alone, after frames or vertices of weighted meshes were changed.
    void refresh_weighted_frames();

    static constexpr std::uint32_t attachment_list_count = 10;
    // The list of that id, 0 to 9; null for any other.
    VEX2_LIST<VEX2_ATTACHMENT> *attachment_list(std::uint32_t id);

private:
    template <class STEP>
    void move(STEP const &step);
};

}  // namespace VEX2_LOADER
