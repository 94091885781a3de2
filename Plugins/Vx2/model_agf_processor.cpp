#include "Plugins/Vx2/model_agf_processor.h"

QString MODEL_AGF_PROCESSOR::get_name() const { return QStringLiteral("ModelAGF"); }

QVector<ACTION_INTERFACE *> MODEL_AGF_PROCESSOR::plan_actions(FILE_TABLE const &, RULE_CACHE const &) { return {}; }
