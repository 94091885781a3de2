// The actions that turn the pictures of a tree billboard into textures. The engine's library implements them.
#pragma once

#include "Plugins/Vx2/host/action_convert.h"
#include "Plugins/Vx2/host/library_api.h"

// One picture into one block-compressed texture (".dds") of the same stem. Names that end in "_normal" hold directions.
class ENGINE_API ACTION_DDS_N : public ACTION_CONVERT {
public:
    ACTION_DDS_N(PHYSICAL_PATH const &picture, PROCESSOR_INTERFACE *planned_by);
    QString get_name(bool with_source) const override;
    bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                 FILE_TABLE const &files) override;
};

// The normal and displacement pictures of a billboard, whose common beginning is the source path, into textures, and
// the description of the strip.
class ENGINE_API ACTION_BILLBOARD : public ACTION_CONVERT {
public:
    ACTION_BILLBOARD(PHYSICAL_PATH const &base_name, PROCESSOR_INTERFACE *planned_by);
    QString get_name(bool with_source) const override;
    void get_source_files(QVector<LOGICAL_PATH> &sources, FILE_TABLE const &files) const override;
    void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                            FILE_TABLE const &files, RULE_CACHE const &rules) const override;
    bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                 FILE_TABLE const &files) override;
};
