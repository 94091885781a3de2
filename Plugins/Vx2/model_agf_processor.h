// MODEL_AGF_PROCESSOR: asset-graph fragments of finished models and materials below the working root. Plans nothing so
// far: the fragment actions are not built yet.
#pragma once

#include "Plugins/Vx2/host/processor.h"

class MODEL_AGF_PROCESSOR : public PROCESSOR_INTERFACE {
public:
    QString get_name() const override;
    QVector<ACTION_INTERFACE *> plan_actions(FILE_TABLE const &files, RULE_CACHE const &rules) override;
};
