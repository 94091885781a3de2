// The cache of model headers: what RIGID_HEADER_CACHE of the engine's interface remembers and saves, and the file that
// it makes, read back.
//
// On disk, little-endian: the bytes "RHDB", u32 version 1, u32 count, then for each model its name below the working
// root and its head: skeleton, place, materials (name, colour texture, normal texture), levels (meshes: name, indices
// of materials). Texts are a u32 count and bytes, lists a u32 count and elements. Models stand in the order of their
// names.
#pragma once

#include "platform/gltf/model.h"

#include <map>

namespace KESTREL {

// For the next save, if headers are being remembered; else nothing. Any thread.
void remember_header(KN::String const &name, GLTF::MODEL_HEAD const &head);

// The cache file of one working root, read when it is first asked. A file that is absent or damaged has no headers.
class HEADER_CACHE_FILE {
public:
    explicit HEADER_CACHE_FILE(KN::String const &root) : path(root.empty() ? "" : root + "/rigid_db.bin") {}

    // False if loading is disabled, if the cache does not know the model, or if the model is younger than the cache.
    bool find(KN::String const &model_path, KN::String const &name, GLTF::MODEL_HEAD &head);

private:
    void read();

    KN::String path;
    bool is_read = false;
    std::map<std::string, GLTF::MODEL_HEAD> heads;
};

}  // namespace KESTREL
