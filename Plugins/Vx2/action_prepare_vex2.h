// ACTION_PREPARE_VEX2: loads a scene file once for all actions that work on it, tests its UVW sets, merges duplicate
// vertices and builds tangent frames. The others hold a reference to `scene`, wait for this action and are followed by
// ACTION_CLEAN_UP_VEX2, which destroys the scene; nothing but that order protects it.
#pragma once

#include "Plugins/Vx2/action_vex2.h"

namespace VEX2_LOADER {
class VEX2;
}

class ACTION_PREPARE_VEX2 : public ACTION_VEX2 {
public:
    // Null until `run`. Owned by this action; the clean-up destroys the scene and sets it back to null.
    VEX2_LOADER::VEX2 *scene = nullptr;

    ACTION_PREPARE_VEX2(PHYSICAL_PATH const &physical, PROCESSOR_INTERFACE *processor);
    ACTION_PREPARE_VEX2(ACTION_PREPARE_VEX2 const &) = delete;
    ~ACTION_PREPARE_VEX2() override;

    void reset() override;
    QString get_name(bool with_source) const override;
    // After a failure `scene` holds what was read so far. Not to be called again before a reset or a clean-up.
    STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules) override;
};
