// MODEL_STATISTICS: what a converter counts about a model, level of detail by level, saved as XML beside the model.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "foundation/containers.h"
#include "foundation/string.h"

#include <cstdint>

// One level of detail of a finished model.
struct MODEL_LEVEL_STATISTICS {
    float distance = 0;  // metres from which the level is shown; 0 where no rule tells
    std::uint32_t meshes = 0;
    std::uint64_t triangles = 0;
    std::uint64_t vertices = 0;  // used by the level's triangles
    std::uint32_t materials = 0;
    std::uint32_t bones = 0;
    std::uint64_t bytes = 0;                // of the vertices and indices that no finer level has
    float least[3] = {}, greatest[3] = {};  // corners of the box, metres, model space
};

// What a converter is given to add its numbers to.
class MODEL_STATISTICS_INTERFACE {
public:
    virtual ~MODEL_STATISTICS_INTERFACE() = default;
    virtual void add_level(MODEL_LEVEL_STATISTICS const &level) = 0;  // the finest first
    virtual void set_file_size(std::uint64_t bytes) = 0;              // of the model file
};

class CONVERSION_API MODEL_STATISTICS : public MODEL_STATISTICS_INTERFACE {
public:
    void set_filename(KN::String const &latin1) { filename = latin1; }
    void set_texture_folder(KN::UniString const &folder) { texture_folder = folder; }

    void add_level(MODEL_LEVEL_STATISTICS const &level) override { levels.push_back(level); }
    void set_file_size(std::uint64_t bytes) override { file_size = bytes; }

    // Writes `target` + ".model_statistics". The target is in the encoding of file names; bytes that are none in it are
    // taken for Latin-1. False if that failed; no message.
    bool save(KN::String const &target) const;

private:
    KN::String filename;
    KN::UniString texture_folder;
    KN_STD::VECTOR<MODEL_LEVEL_STATISTICS> levels;
    std::uint64_t file_size = 0;
};
