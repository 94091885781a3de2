// ACTION_MODEL: turns a scene file into a rigid model (".rigid_model_v2") with its statistics and, where the rules ask
// for them, its description and the files of a terrain tile.
#pragma once

#include "Plugins/Vx2/action_vex2.h"

namespace VEX2_LOADER {
class VEX2;
}

class ACTION_MODEL : public ACTION_VEX2 {
public:
    // The first form converts what stands in `scene`, the pointer of an ACTION_PREPARE_VEX2, when the action runs; the
    // second form loads the file by itself. `textures`: the logical path of the model's texture folder.
    VX2_EXPORT ACTION_MODEL(VEX2_LOADER::VEX2 *&scene, PHYSICAL_PATH const &physical, LOGICAL_PATH const &textures,
                            QString const &type, bool one_lod, PROCESSOR_INTERFACE *processor);
    VX2_EXPORT ACTION_MODEL(PHYSICAL_PATH const &physical, LOGICAL_PATH const &textures, QString const &type,
                            bool one_lod, PROCESSOR_INTERFACE *processor);
    VX2_EXPORT ACTION_MODEL(ACTION_MODEL const &other);
    VX2_EXPORT ~ACTION_MODEL() override;

    VX2_EXPORT void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                                       FILE_TABLE const &files, RULE_CACHE const &rules) const override;
    VX2_EXPORT bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                            FILE_TABLE const &files) override;

    // The folder where the model ends up if its own target is a temporary file.
    VX2_EXPORT void set_final_target_path(PHYSICAL_PATH const &folder);

    LOGICAL_PATH const texture_folder;
    QString const animation_type;  // empty: not animated

private:
    PHYSICAL_PATH final_target_path;

public:
    bool const single_lod;

private:
    QString final_folder() const;
    PHYSICAL_PATH description_path() const;

    VEX2_LOADER::VEX2 *&scene_slot;
};
