// Import of artists' models: glTF, FBX, Collada, OBJ and what else the importer library reads become scene files, with
// their textures beside them as TGA. Foreign parsers and decoders run in a child process within limits; what comes back
// is read like any other file that is not trusted.
//
// Space: metres, y up, right-handed; texture v runs up. See docs/vx2.md for what becomes what.
#pragma once

#include "foundation/containers.h"
#include "platform/exchange/limited_process.h"

struct IMPORT_REQUEST {
    KN::String model;
    KN::String
        target;  // OUT.vx2, in a folder that is made if it is not there; with `all_clips` each scene is OUT_CLIP.vx2
    KN::String clip;  // name of one of several animations; empty: the first
    bool all_clips = false;
    PROCESS_LIMITS limits;
    KN::String worker;  // a program that gives its arguments to run_import_worker when the first is
                        // import_worker_word
};

struct IMPORT_REPORT {
    KN_STD::VECTOR<KN::String> clips;     // of the model, in its order
    KN_STD::VECTOR<KN::String> scenes;    // files written
    KN_STD::VECTOR<KN::String> textures;  // files written
    KN_STD::VECTOR<KN::String> warnings;
    std::uint64_t triangles = 0;  // of one scene
};

inline constexpr char import_worker_word[] = "import-worker";

// False with one line in `error`, "MODEL: what is wrong; what to do", and nothing written. When the disk fails in the
// middle, files that were finished before stay.
bool import_model(IMPORT_REQUEST const &request, IMPORT_REPORT &report, KN::String &error);

// The child's side: the arguments behind import_worker_word. The result is the program's exit code.
int run_import_worker(int count, char const *const *arguments);
