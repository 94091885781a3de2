// TOOLDATABUILDER::MODEL_PROCESSOR: the converter from a scene to a finished rigid model, a binary glTF file. Set the
// public members, open once, write once. Causes of failure are messages of level 2 (KN::message). One thread at a time.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "foundation/containers.h"
#include "foundation/string.h"

#include <memory>

class MODEL_STATISTICS_INTERFACE;
namespace VEX2_LOADER {
class VEX2;
}

namespace TOOLDATABUILDER {

class VEX2_FILTER;

class CONVERSION_API MODEL_PROCESSOR {
public:
    // `texture_folder`: below the working root; empty: the model's own folder. `animation_type`: the skeleton's name,
    // if there is one. `single_lod`: everything is one level, whatever names say. `lighting_materials`: a file that may
    // be absent. `distances`: metres from which the coarser levels are shown. `qualities`: percentages of triangles for
    // coarser levels, for models that bring none.
    MODEL_PROCESSOR(KN::String const &texture_folder, bool has_animation_type, KN::String const &animation_type,
                    bool single_lod, KN::String const &lighting_materials, KN_STD::VECTOR<float> const &distances,
                    KN_STD::VECTOR<unsigned char> const &qualities);
    ~MODEL_PROCESSOR();
    MODEL_PROCESSOR(MODEL_PROCESSOR const &) = delete;
    MODEL_PROCESSOR &operator=(MODEL_PROCESSOR const &) = delete;

    // Where the file of the lighting materials stands below the raw root.
    static KN::String get_lighting_materials_xml();

    KN::String target;            // the model file, as `write` will get it
    KN::String final_target;      // where it ends up, if `target` is temporary: from there it names its textures
    KN::String description_file;  // if named, the model's description (boxes, incendiary points) is written there too
    bool disable_alpha_test = false;
    bool tree = false;                     // cut-out surfaces are leaves: seen from both sides
    bool variable_bones_per_vert = false;  // all influences of a vertex count, else the four strongest
    float incendiary_radius = 2.0f;        // metres between the description's incendiary points
    bool without_side_files = false;       // no textures, no files of a terrain tile: materials are names and numbers

    // Loads the scene file and does to it what the preparing action does, then takes all meshes that are not of class
    // TECH.
    bool open_vex2(KN::String const &source, MODEL_STATISTICS_INTERFACE *statistics, bool debug);
    // Takes the meshes that the filter answers true for, as they are at the scene's current time. The scene is not
    // changed and not needed afterwards. A texture folder that leads out of the working root is refused here. `source`:
    // the scene's file, beside which textures are looked for. `debug`: a line a mesh says what was taken.
    bool load_from_vex2(VEX2_LOADER::VEX2 &scene, VEX2_FILTER const &filter, MODEL_STATISTICS_INTERFACE *statistics,
                        KN::String const &source, bool debug);
    // Writes the model, its textures into the texture folder, the description if one is named, and, if the target's
    // path contains "tiles" in any case, the height map and the outlines of the terrain tile beside it. True if the
    // model stands.
    bool write(KN::String const &target, MODEL_STATISTICS_INTERFACE *statistics);

private:
    struct STATE;
    std::unique_ptr<STATE> state;
};

}  // namespace TOOLDATABUILDER
