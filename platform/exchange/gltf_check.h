// Looks over a glTF file before the importer library gets it, which drops faulty faces without a word.
#pragma once

#include "platform/exchange/import_notes.h"

// True if `path` is glTF by its name.
bool is_gltf_path(KN::String const &path);

// Every array within its buffer, every index below what it counts, the nodes a forest. False with `error`: what is
// wrong, what to do. What is sound but will not be imported as it stands becomes a note.
bool check_gltf(KN::String const &path, IMPORT_NOTES &notes, KN::String &error);
