// ACTION_COMPLEX_ANIMATION: turns a scene file with several actors into a folder with one animation an actor and the
// descriptions that bind them. Not built yet: fails when it is run.
#pragma once

#include "Plugins/Vx2/action_vex2.h"
#include "Plugins/Vx2/host/bone_name_table.h"
#include "foundation/containers.h"

class ACTION_COMPLEX_ANIMATION : public ACTION_VEX2 {
public:
    // `skeletons`: the bone tables of the tree, from which the skeletons of the actors are chosen.
    ACTION_COMPLEX_ANIMATION(PHYSICAL_PATH const &physical,
                             KN_STD::VECTOR<TOOLDATABUILDER::BONE_NAME_TABLE> const &skeletons,
                             PROCESSOR_INTERFACE *processor);

    bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                 FILE_TABLE const &files) override;
};
