#include "Plugins/Vx2/host/animation_processor.h"

#include "Plugins/Vx2/host/animation.h"
#include "Plugins/Vx2/host/bone_name_table.h"
#include "Plugins/Vx2/host/vex2_filter.h"
#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "foundation/messages.h"
#include "scene/buffer.h"
#include "scene/scene.h"
#include "support/animation/animation_file.h"

using namespace VEX2_LOADER;

namespace TOOLDATABUILDER {

namespace {

// Takes the hierarchy and the time range of the file: what hangs on the nodes need not be moved with them.
bool load_nodes(KN::UniString const &path, VEX2 &nodes, KN::String &fault)
{
    VEX2_READ_BUFFER buffer(path);
    KN::String const shown = KN::printable(KN::disk_path(path));
    VEX2 scene;
    if (buffer.cursor >= buffer.end)
        fault = "Failed to open '" + shown + "' for reading!";
    else if (!scene.load(buffer, false))
        fault = "Failed to load vex2 file '" + shown + "'!";
    nodes.info.start_time = scene.info.start_time;
    nodes.info.end_time = scene.info.end_time;
    nodes.hierarchy.nodes = std::move(scene.hierarchy.nodes);
    return fault.empty();
}

// The table of a skeleton, or of the scene's own nodes under its name.
BONE_NAME_TABLE table_of(KN::String const &skeleton, bool own_nodes)
{
    BONE_NAME_TABLE table(own_nodes ? "all" : skeleton);
    table.name = skeleton;
    return table;
}

bool convert(KN::UniString const &source, KN::UniString const &target, KN::UniString const &bone_matrices,
             KN::String const &skeleton, KN::String const &strip_translations, KN::String const &strip_rotations,
             float rate, bool reference_pose, bool rigid_reference, bool debug, KN::String &fault)
{
    BONE_NAME_TABLE const table = table_of(skeleton, rigid_reference);
    if (!table.valid && !rigid_reference) {
        fault = "Unrecognised skeleton type: " + KN::printable(skeleton);
        return false;
    }
    VEX2 scene;
    if (!load_nodes(source, scene, fault))
        return false;
    ANIMATION const animation(scene, table, strip_translations, strip_rotations, rate, reference_pose, VEX2_FILTER(),
                              rigid_reference, debug);
    if (!animation.valid) {
        fault = KN::printable(KN::disk_path(source)) + ": " + animation.fault;
        return false;
    }
    // With a matrix block behind it, if an empty one, the file can be loaded without one of its own.
    return KN::write_finished_file(KN::disk_path(target), animation.file + SUPPORT::no_matrices_bytes(), fault) &&
           (!reference_pose || KN::write_finished_file(KN::disk_path(bone_matrices), animation.matrices, fault));
}

}  // namespace

bool ANIMATION_PROCESSOR::convert_vex2(bool report, KN::UniString const &source, KN::UniString const &target,
                                       KN::UniString const &bone_matrices, KN::UniString const &skeleton,
                                       KN::String const &strip_translations, KN::String const &strip_rotations,
                                       float rate, bool reference_pose, bool rigid_reference, bool debug)
{
    KN::String fault;
    bool const made = convert(source, target, bone_matrices, KN::to_utf8(skeleton), strip_translations, strip_rotations,
                              rate, reference_pose, rigid_reference, debug, fault);
    if (!made && report)
        KN::message(KN::MESSAGE_ERROR, fault);
    return made;
}

}  // namespace TOOLDATABUILDER
