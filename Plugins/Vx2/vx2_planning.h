// What the plans of VX2_PROCESSOR, one file a kind, work on together. Private to them.
#pragma once

#include "Plugins/Vx2/rigid_rule.h"
#include "Plugins/Vx2/vx2_processor.h"

#include <optional>

class ACTION_CLEANUP_KESTREL;
class ACTION_CONVERT;
class ACTION_INIT_KESTREL;

// One call of plan_actions.
struct VX2_PROCESSOR::PLANNING {
    FILE_TABLE const &files;
    RULE_CACHE const &rules;
    bool patching_enabled;
    QVector<ACTION_INTERFACE *> result = {};

    // One engine for all trees, started and stopped once. Null before the first tree.
    ACTION_INIT_KESTREL *tree_init = nullptr;
    ACTION_CLEANUP_KESTREL *tree_cleanup = nullptr;
    int tree_group = 0;

    // Files that lie together mostly have the same rule data, and then share what was read out of them.
    RULE_DATA const *last_rule = nullptr;
    std::optional<RIGID_RULE> last_rigid_rule = {};

    RIGID_RULE const &rigid_rule(RULE const &rule)
    {
        if (!last_rigid_rule || last_rule != rule.data()) {
            last_rigid_rule.emplace(rule);
            last_rule = rule.data();
        }
        return *last_rigid_rule;
    }
};

// The file that the walk has come to.
struct VX2_PROCESSOR::SCENE_FILE {
    LOGICAL_PATH const &logical;
    PHYSICAL_PATH const &physical;
    QString working_root;  // that its products belong below

    QString relative_folder(RULE const &rule, QString const &property) const
    {
        return PATHS::relative_target_path_from_rule_path(rule, property, logical, physical);
    }
    // Gives `action` the folder of the rule's TargetPath. Where that is null, the action keeps its own target if the
    // target is optional, else gets an error.
    void set_target_from_rule(ACTION_CONVERT &action, RULE const &rule, bool optional) const;
};

// What the steps of one rigid plan share.
struct VX2_PROCESSOR::RIGID_PLAN {
    RULE const &rule;  // of kind RigidModelV2
    RIGID_RULE const &settings;
    QString target_folder;  // below the working root, as the two others
    QString texture_path;   // empty: none
    LOGICAL_PATH texture_logical;
};
