// ACTION_KLMODEL_AGF: the asset-graph fragment of a ".klmodel" file: the geometry and the materials that it names.
#pragma once

#include "Plugins/Vx2/host/action.h"

class ACTION_KLMODEL_AGF : public ACTION_INTERFACE {
public:
    ACTION_KLMODEL_AGF(PHYSICAL_PATH const &physical, PROCESSOR_INTERFACE *processor);

    QString get_name(bool with_source) const override;
    void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                            FILE_TABLE const &files, RULE_CACHE const &rules) const override;
    STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules) override;

private:
    LOGICAL_PATH logical;
    PHYSICAL_PATH agf_path;
};
