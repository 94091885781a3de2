// MODEL_AGF_PROCESSOR: plans the asset-graph fragments of the finished models and materials below the working root,
// those included that other actions of the same plan will make.
#pragma once

#include "Plugins/Vx2/host/processor.h"

class MODEL_AGF_PROCESSOR : public PROCESSOR_INTERFACE {
public:
    QString get_name() const override;
    QVector<ACTION_INTERFACE *> plan_actions(FILE_TABLE const &files, RULE_CACHE const &rules) override;
};
