// ACTION_ANIMATION: turns a scene file into an animation (".anim"), or into the reference pose of a skeleton with its
// bone matrices beside it (".bone_inv_trans_mats").
#pragma once

#include "Plugins/Vx2/action_vex2.h"

class ACTION_ANIMATION : public ACTION_VEX2 {
public:
    // `type`: the skeleton's name; a reference pose without one takes that of its source. The strip texts list bones
    // whose translations or rotations are left out; a reference pose keeps all. `rate`: frames a second, 0 where no
    // rule tells. `rigid`: the reference pose comes with a rigid model, and has the nodes of the scene for its bones.
    VX2_EXPORT ACTION_ANIMATION(PHYSICAL_PATH const &physical, PROCESSOR_INTERFACE *processor, QString const &type,
                                QString const &translations, QString const &rotations, float rate, bool reference,
                                bool rigid);
    VX2_EXPORT ACTION_ANIMATION(ACTION_ANIMATION const &other);
    VX2_EXPORT ~ACTION_ANIMATION() override;

    // Of a plain animation, every file of the skeleton folder is a source.
    VX2_EXPORT void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                                       FILE_TABLE const &files, RULE_CACHE const &rules) const override;
    VX2_EXPORT bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                            FILE_TABLE const &files) override;

    QString const animation_type;
    QString const strip_translations;
    QString const strip_rotations;
    float const fps;
    bool const reference_pose;
    bool const rigid_reference;
};
