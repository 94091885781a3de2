// Finds the pictures that a model's materials name and publishes them as PNG files in the model's texture folder.
#pragma once

#include "foundation/string.h"

#include <map>

namespace TOOLDATABUILDER {

// With single slashes between the sections, none at the end, and "." and ".." worked out.
KN::String tidy_folder(KN::String const &folder);

class TEXTURE_FILES {
public:
    // Absolute folders: where pictures are looked for, in this order, and where they are published.
    TEXTURE_FILES(KN::String scene_folder, KN::String raw_root, KN::String texture_folder);

    // The published file, absolute, for a picture as a material names it; empty, after a warning, if there is none. The
    // picture is a TGA or PNG file; its own folders are tried first, then its bare name beside the scene. Asked again
    // for one name it does nothing; a file that is published with the same contents already is left alone. Pictures are
    // published under their stems. Of different ones that share one, a model takes the first only, with a warning;
    // those of several models take each other's place, with a warning if that happens within one process.
    KN::String publish(KN::String const &name);

    // Publishes what stands beside the picture under its name with the suffix of a season in front of "_diffuse": what
    // a tree may wear in its place.
    void publish_seasons(KN::String const &name);

private:
    KN::String find(KN::String const &name, KN::String &bytes) const;
    KN::String make(KN::String const &name);

    KN::String scene_folder, raw_root, texture_folder;
    std::map<std::string, KN::String> published;  // by name
};

}  // namespace TOOLDATABUILDER
