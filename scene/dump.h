// The whole scene as one JSON object, for people, scripts and comparisons.
#pragma once

#include "foundation/string.h"
#include "scene/api.h"

namespace VEX2_LOADER {

class VEX2;

class VEX2_DUMP_SINK {
public:
    // A further piece of the text. False stops the dump.
    virtual bool write(std::string_view piece) = 0;

protected:
    ~VEX2_DUMP_SINK() = default;
};

// The scene as it stands, in UTF-8, ending with a line end. False if the sink stopped it.
SCENE_API bool dump_scene(VEX2 const &scene, VEX2_DUMP_SINK &sink);
SCENE_API KN::String dump_scene(VEX2 const &scene);

}  // namespace VEX2_LOADER
