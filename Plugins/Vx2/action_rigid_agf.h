// ACTION_RIGID_AGF: the asset-graph fragment of a finished rigid model: which skeleton, textures and files beside it
// the model needs, as the engine sees it.
#pragma once

#include "Plugins/Vx2/host/action.h"

class ACTION_INIT_KESTREL;

class ACTION_RIGID_AGF : public ACTION_INTERFACE {
public:
    // `logical`: of the model, below the working root. The engine is up when the action runs.
    ACTION_RIGID_AGF(LOGICAL_PATH const &logical, ACTION_INIT_KESTREL *engine_start, PROCESSOR_INTERFACE *processor);

    QString get_name(bool with_source) const override;
    void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                            FILE_TABLE const &files, RULE_CACHE const &rules) const override;
    STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules) override;

private:
    PHYSICAL_PATH agf_path() const;

    QString rigid_name;  // below the working root
    QString agf_name;
    ACTION_INIT_KESTREL *init;
};
