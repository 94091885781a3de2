// ACTION_GENERICMESH: turns a scene file into a generic mesh (".generic_mesh"), with its statistics beside it.
#pragma once

#include "Plugins/Vx2/action_vex2.h"

class ACTION_GENERICMESH : public ACTION_VEX2 {
public:
    VX2_EXPORT ACTION_GENERICMESH(PHYSICAL_PATH const &physical, PROCESSOR_INTERFACE *processor);
    VX2_EXPORT ACTION_GENERICMESH(ACTION_GENERICMESH const &other);
    VX2_EXPORT ~ACTION_GENERICMESH() override;

    VX2_EXPORT void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                                       FILE_TABLE const &files, RULE_CACHE const &rules) const override;
    VX2_EXPORT bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                            FILE_TABLE const &files) override;
};
