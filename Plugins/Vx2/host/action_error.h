// ACTION_ERROR: stands in a plan for work that could not be planned. It is always run, and fails with its text.
#pragma once

#include "Plugins/Vx2/host/action.h"

class HOST_API ACTION_ERROR : public ACTION_INTERFACE {
public:
    ACTION_ERROR(QString const &name, QString const &text, PROCESSOR_INTERFACE *planned_by);
    void add_source_file(LOGICAL_PATH const &file) { source_files.append(file); }

    QString get_name(bool with_source) const override;
    void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                            FILE_TABLE const &files, RULE_CACHE const &rules) const override;

private:
    QString name;
    QVector<LOGICAL_PATH> source_files;
};
