// A reference: another scene file by path, and the scene read from it. Reading a reference loads that file, writing it
// writes that file.
#pragma once

#include "scene/record.h"

namespace VEX2_LOADER {

class VEX2;

class SCENE_API VEX2_SCENE_REFERENCE : public VEX2_ANIMATED, public VEX2_CHUNK {
public:
    KN::UniString path;
    VEX2 *scene = nullptr;  // owned; an empty scene if the file is missing

    // `type`: 15 for the scene's first list of references, 20 for the second.
    explicit VEX2_SCENE_REFERENCE(std::uint32_t type = 15);
    ~VEX2_SCENE_REFERENCE() override;
    VEX2_SCENE_REFERENCE(VEX2_SCENE_REFERENCE const &) = delete;
    VEX2_SCENE_REFERENCE &operator=(VEX2_SCENE_REFERENCE const &) = delete;

    VEX2_ANIMATED_OPERATIONS
    std::uint32_t chunk_type() const override { return type; }
    // False if the file exists and does not load, stands in the chain of files being loaded, or lies too deep.
    virtual bool read(VEX2_READ_BUFFER &buffer, float version);
    // Writes the path, and the scene to the file of that path beside the writer's; a failure of that file is a message,
    // not a result.
    virtual bool write(VEX2_CHUNK_WRITER &writer) const;

private:
    std::uint32_t type;
};

// Where `path` leads from the file `base`: itself if it starts with a slash or backslash or has a colon anywhere, else
// what stands in `base` up to its last backslash, then `path`.
SCENE_API KN::UniString resolve_reference_path(KN::UniString const &base, KN::UniString const &path);

// The same with the slashes of `base` taken as backslashes, so that a file finds what lies beside it on every system.
SCENE_API KN::UniString reference_path_from(KN::UniString const &base, KN::UniString const &path);

}  // namespace VEX2_LOADER
