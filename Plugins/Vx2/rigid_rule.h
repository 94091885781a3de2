// RIGID_RULE: what a rule of kind RigidModelV2 tells the planner, read out once for all files that the same rule data
// hold for. What depends on the file, its folders, is still asked of the rule.
#pragma once

#include "Plugins/Vx2/host/rules.h"

struct RIGID_RULE {
    // Reads no more properties than the plan then uses, since the host counts what is read.
    explicit RIGID_RULE(RULE const &rule);

    bool has_target;                // TargetPath is there, perhaps null; else the rule asks for no model
    bool is_target_null = false;    // TargetPath is null
    bool has_textures = false;      // TextureFolder is not null
    QString texture_sub_folder;     // to be appended to the texture folder as it stands; may be empty
    QString reference_pose_folder;  // to be appended to the target folder as it stands; may be empty
    bool has_reference_pose = false;
    QString animation_type;  // empty: a rigid model
    bool single_lod = false;
    QString extension;  // with its dot; empty: the model's own
    bool update_database = false;
    QString category;  // may be empty
    bool tree = false;
};

// Sub-folders are appended with "/" in front, their own backslashes turned and their outer slashes cut. Empty stays
// empty, while a text of slashes only gives "/".
QString appended_sub_folder(QString text);
