// ACTION_CLEAN_UP_VEX2: destroys the scene that an ACTION_PREPARE_VEX2 holds, after all that work on it; also when one
// of them has failed.
#pragma once

#include "Plugins/Vx2/action_vex2.h"

namespace VEX2_LOADER {
class VEX2;
}

class ACTION_CLEAN_UP_VEX2 : public ACTION_VEX2 {
public:
    // `scene` is the pointer of the preparing action itself: there is no scene yet while planning.
    ACTION_CLEAN_UP_VEX2(PHYSICAL_PATH const &physical, VEX2_LOADER::VEX2 *&scene, PROCESSOR_INTERFACE *processor);

    QString get_name(bool with_source) const override;
    void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                            FILE_TABLE const &files, RULE_CACHE const &rules) const override;  // none
    STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules) override;
    bool auto_fail_if_dependency_failed() const override;

private:
    VEX2_LOADER::VEX2 *&shared_scene;
};
