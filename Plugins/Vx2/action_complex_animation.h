// ACTION_COMPLEX_ANIMATION: turns a scene file with several actors into a folder: one animation an actor,
// tool_spec.xml, which says what each is, and user_spec.xml, which is made once and then belongs to its editor.
#pragma once

#include "Plugins/Vx2/action_vex2.h"
#include "Plugins/Vx2/actor_specs.h"
#include "Plugins/Vx2/host/bone_name_table.h"
#include "Plugins/Vx2/scene_actors.h"
#include "foundation/containers.h"

namespace VEX2_LOADER {
class VEX2;
}

class ACTION_COMPLEX_ANIMATION : public ACTION_VEX2 {
public:
    // `bone_tables`: the skeletons of the tree. Tried are the preferred ones, then the others but "cloth", then
    // "generic".
    ACTION_COMPLEX_ANIMATION(PHYSICAL_PATH const &physical,
                             KN_STD::VECTOR<TOOLDATABUILDER::BONE_NAME_TABLE> const &bone_tables,
                             PROCESSOR_INTERFACE *processor);

    // The animations are those that the file table knows, which are right once the action has run.
    void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                            FILE_TABLE const &files, RULE_CACHE const &rules) const override;
    bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                 FILE_TABLE const &files) override;

    QStringList const skeletons;  // in the order in which they are tried

private:
    bool write_tool_spec(QString const &target, ACTORS &actors, VEX2_LOADER::VEX2 const &scene, bool debug,
                         FILE_TABLE const &files);
    bool write_animation(QString const &path, ACTOR &actor, VEX2_LOADER::VEX2 const &scene, bool debug,
                         FILE_TABLE const &files);
    bool write_user_spec(QString const &target, ACTORS const &actors, FILE_TABLE const &files);
    void name_leftovers(QString const &target, std::size_t actor_count);
};
