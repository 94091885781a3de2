// Materials of an imported scene and the pictures they use, decoded into files of the worker's folder.
#pragma once

#include "platform/exchange/import_notes.h"

#include <map>

struct aiMaterial;
struct aiScene;

namespace VEX2_LOADER {
class VEX2;
}

// A text of which only letters, digits, "-" and "_" are left, others become "_"; never empty.
KN::String file_name_part(KN::String const &text);

class IMPORT_TEXTURES {
public:
    // Pictures beside `model` are found by their path from its folder, by their name alone in that folder, or in its
    // folder "textures". Files are written to `folder` as STEM_MATERIAL_diffuse.tga and STEM_MATERIAL_normal.tga; one
    // picture in one use is written once.
    IMPORT_TEXTURES(aiScene const &source, KN::String model, KN::String folder, KN::String stem, IMPORT_NOTES &notes);

    // The name of the file that holds the picture `reference` of the source; empty, with a note, if there is none.
    KN::String file_for(KN::String const &reference, KN::String const &material, char const *use);

    KN_STD::VECTOR<KN::String> const &files() const { return written; }

private:
    bool take_bytes(KN::String const &reference, KN::String &bytes, bool &raw);
    KN::String write(KN::String const &reference, KN::String const &material, char const *use);

    aiScene const &source;
    KN::String model, folder, stem;
    IMPORT_NOTES &notes;
    std::map<std::pair<KN::String, KN::String>, KN::String> known;  // reference and use; empty: cannot be had
    KN_STD::VECTOR<KN::String> written;
};

// Appends a scene material for every one of the source that a mesh uses; the result holds its number, or -1, for each
// material of the source.
KN_STD::VECTOR<int> add_materials(aiScene const &source, VEX2_LOADER::VEX2 &scene, IMPORT_TEXTURES &textures,
                                  IMPORT_NOTES &notes);
