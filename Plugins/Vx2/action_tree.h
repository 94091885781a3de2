// ACTION_TREE: renders the billboard images of a tree's temporary model in the engine and moves the model to its place.
// Not built yet: fails when it is run, and the planner plans an error in its place.
#pragma once

#include "Plugins/Vx2/host/action_convert.h"

class ACTION_INIT_KESTREL;

class ACTION_TREE : public ACTION_CONVERT {
public:
    ACTION_TREE(PHYSICAL_PATH const &model, PROCESSOR_INTERFACE *processor, ACTION_INIT_KESTREL *engine,
                FILE_TABLE const &files);

    // The images of a tree: four seasons, one for the suffix "_br", and one without a suffix, which is always made.
    static constexpr int SLOT_COUNT = 6, WHOLE_YEAR = 5;
    bool slot_used(int slot) const;
    // The path of a slot's pictures without "_diffuse.tga" and the like.
    QString image_base(int slot) const;

    bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                 FILE_TABLE const &files) override;
};
