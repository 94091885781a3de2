// ACTION_PROCESS_TECH: turns the meshes of class TECH of a prepared scene (collision bodies and other helpers) into the
// model's tech file, enters it in the asset graph, and takes the tech scene of older trees out of the depot. It merges
// vertices of the shared scene's tech meshes in place; its group keeps it apart from the model's conversion.
#pragma once

#include "Plugins/Vx2/host/action.h"
#include "foundation/containers.h"
#include "foundation/string.h"

namespace VEX2_LOADER {
class VEX2;
}

class ACTION_PROCESS_TECH : public ACTION_TDB {
public:
    // `shared_scene`: the pointer of the preparing action. `radius`: least distance of the points at which the model
    // catches fire, metres. `target_folder`: below the working root, with "/" only.
    ACTION_PROCESS_TECH(VEX2_LOADER::VEX2 *&shared_scene, PHYSICAL_PATH const &physical, PROCESSOR_INTERFACE *processor,
                        float radius, QString const &target_folder);

    QString get_name(bool with_source) const override;
    void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                            FILE_TABLE const &files, RULE_CACHE const &rules) const override;
    STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules) override;

    float const incendiary_radius;  // metres

private:
    void merge_tech_vertices();
    bool enter_fragment(KN_STD::SET<KN::String> const &references, FILE_TABLE const &files, RULE_CACHE const &rules);

    VEX2_LOADER::VEX2 *&scene;
    PHYSICAL_PATH source;
    QString design_folder;
    QString folder;
    QString stem;  // of the source, all but its last "."-section
    PHYSICAL_PATH parsed_path;
    PHYSICAL_PATH old_source_path;
    PHYSICAL_PATH agf_path;
};
