// The engine as the plug-in and the host know it: it opens finished models, and with a view it renders pictures of them
// without a screen. An engine is an object without global state, so several may exist in one process; one engine is
// driven by one thread at a time. Nothing here throws. What goes wrong becomes a message on the calling thread (level
// 2) and a result that every other operation tolerates: an invalid handle, an empty list, a picture that is not
// written.
//
// Space: right-handed, y up, metres, as that of the models.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "foundation/containers.h"
#include "foundation/string.h"

namespace SUPPORT {
class CAMERA;
}

namespace KESTREL {

// What the season adds to the names of textures, without "_": 0 spring, 1 summer, 2 autumn, 3 winter. Empty for a
// season without one and for any other index.
ENGINE_API KN::String get_season_shortname(int index);

// One record of a level of detail: what it is drawn with. Paths below the working root, or as the model gives them
// where they lead elsewhere; one byte a character.
struct LEVEL_ASSET {
    KN_STD::VECTOR<KN::String> paths;
};

// Opens finished models to look at them. Handles count the openings: each one that is not invalid is closed once.
class RIGID_MODEL_SERVICE {
public:
    enum OPEN_FLAGS : unsigned {
        HEADER_ONLY = 2,   // `name` is a path on disk
        WITH_ASSETS = 33,  // `name` is a path below the working root, one byte a character
    };
    static constexpr unsigned INVALID = ~0u;

    virtual ~RIGID_MODEL_SERVICE() = default;
    // INVALID if the model is missing or damaged. The last two arguments are null and false.
    virtual unsigned open(unsigned flags, KN::String const &name, void *context, bool wait) = 0;
    // 0, and empty, for an invalid handle. Indices are below the count.
    virtual unsigned level_count(unsigned handle) = 0;
    virtual KN::String skeleton_name(unsigned handle) = 0;  // one byte a character; empty for a model without one
    virtual KN_STD::VECTOR<LEVEL_ASSET> level_assets(unsigned handle, unsigned index) = 0;
    virtual void close(unsigned handle) = 0;
};

// The headers of rigid models in one file, so that a later start need not open each model. One of a process, any
// thread.
class ENGINE_API RIGID_HEADER_CACHE {
public:
    // Headers are read from the models themselves, not from an earlier cache.
    static void disable_usage_load();
    // From here on each model that a service opens with HEADER_ONLY is remembered.
    static void enable_usage_save();
    // Writes what is remembered, by name, and forgets it. False, with a message, if the file could not be written.
    static bool save(KN::UniString const &path);
};

// Asked for each texture of a model while it is loaded. What comes back is loaded in its place.
struct TEXTURE_NAME_MAPPER {
    enum KIND { DIFFUSE = 0, NORMAL = 1 };

    // `name` is a path on disk, or below the working root.
    virtual KN::String map(int kind, KN::String const &name) = 0;

protected:
    ~TEXTURE_NAME_MAPPER() = default;
};

struct CAPTURE_REQUEST {
    // NORMAL: in view space, x to the right, y up, z towards the viewer, -1 to 1 as 0 to 255. COLOUR: without lights,
    // its alpha is the covered part of the pixel, and transparent pixels have the colour of what is near. HEIGHT: in
    // red, green and blue alike, 0 at the distance of the camera's target and beyond, 255 at its eye.
    enum KIND { NORMAL = 0, COLOUR = 1, HEIGHT = 2 };

    unsigned width, height;  // pixels; those of the viewport
    KN::String file_name;    // one byte a character; truecolour TGA of 32 bits, with alpha
    int kind;
};

// What pixels hold where nothing is seen, 0xAARRGGBB.
struct VIEW_CLEAR {
    unsigned colour, height, normal;
};

class VIEW {
public:
    virtual ~VIEW() = default;
    virtual void set_clear(VIEW_CLEAR const &clear) = 0;
    virtual void set_viewport(int x, int y, int width, int height) = 0;
    // Not owned; read while a frame is made. Pictures are not mirrored: what is to the right of the line of sight is to
    // the right in the picture, although the camera's own matrices are those of a left-handed space.
    virtual void set_camera(SUPPORT::CAMERA *camera) = 0;
    // Of the last frame.
    virtual void save_image(CAPTURE_REQUEST const &request) = 0;
};

class ENGINE {
public:
    enum MODE {
        PREVIEW = 0,  // one sample a pixel
        CAPTURE = 1,  // many samples a pixel
    };
    enum MATERIAL_SET { BILLBOARD_MATERIALS = 77 };
    static constexpr int INVALID_MODEL = -1;

    virtual ~ENGINE() = default;
    // Null when the engine was started without services. The engine's own, like the view.
    virtual RIGID_MODEL_SERVICE *rigid_model_service() = 0;
    virtual VIEW *view() = 0;  // null when the engine was started without one

    // Empties the scene: models, instances, the last frame.
    virtual void recreate_scene() = 0;
    virtual void set_mode(int mode) = 0;
    // The finest level of a model, by a path on disk or below the working root. `mapper` may be null.
    virtual int load_model(KN::String const &name, int material_set, TEXTURE_NAME_MAPPER *mapper) = 0;
    // Least x, y, z, then greatest x, y, z; zeros for an invalid model.
    virtual void bounding_box(int model, float out[6]) = 0;
    // `matrix`: three rows of four, acting on column vectors.
    virtual void add_instance(int model, float const matrix[12]) = 0;
    // The scene is put together; then it is rendered.
    virtual void begin_frame() = 0;
    virtual void end_frame() = 0;
};

// A new engine, the caller's. mount_data: names below the working root are found; start_services: there is a model
// service; open_view: there is a view. While its library is loaded, ACTION_INIT_KESTREL makes engines with it.
ENGINE_API ENGINE *make_engine(bool mount_data, bool start_services, bool open_view);
using ENGINE_MAKER = ENGINE *(*)(bool mount_data, bool start_services, bool open_view);

}  // namespace KESTREL
