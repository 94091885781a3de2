// The actions that turn the images of a tree billboard into textures.
#pragma once

#include "Plugins/Vx2/host/action_convert.h"

// One picture into one block-compressed texture (".dds") of the same stem.
class HOST_API ACTION_DDS_N : public ACTION_CONVERT {
public:
    ACTION_DDS_N(PHYSICAL_PATH const &picture, PROCESSOR_INTERFACE *planned_by);
    QString get_name(bool with_source) const override;
    bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                 FILE_TABLE const &files) override;
};

// The normal and displacement pictures of a billboard, whose common beginning is the source path, and the description
// of the strip.
class HOST_API ACTION_BILLBOARD : public ACTION_CONVERT {
public:
    ACTION_BILLBOARD(PHYSICAL_PATH const &base_name, PROCESSOR_INTERFACE *planned_by);
    QString get_name(bool with_source) const override;
    bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                 FILE_TABLE const &files) override;
};
