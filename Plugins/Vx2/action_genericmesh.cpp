#include "Plugins/Vx2/action_genericmesh.h"

ACTION_GENERICMESH::ACTION_GENERICMESH(PHYSICAL_PATH const &physical, PROCESSOR_INTERFACE *processor)
    : ACTION_VEX2(physical, processor)
{
    set_target_extension(QStringLiteral(".generic_mesh"));
}

ACTION_GENERICMESH::ACTION_GENERICMESH(ACTION_GENERICMESH const &other) = default;
ACTION_GENERICMESH::~ACTION_GENERICMESH() = default;

void ACTION_GENERICMESH::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                                            FILE_TABLE const &files, RULE_CACHE const &rules) const
{
    ACTION_CONVERT::get_affected_files(sources, targets, time, files, rules);
}

bool ACTION_GENERICMESH::convert(PHYSICAL_PATH const &, PHYSICAL_PATH const &, RULE_CACHE const &, FILE_TABLE const &)
{
    output_line(QStringLiteral("Generic meshes are not built yet."), 2);
    return false;
}
