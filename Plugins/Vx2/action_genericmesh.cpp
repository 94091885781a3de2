#include "Plugins/Vx2/action_genericmesh.h"

#include "Plugins/Vx2/host/genericmesh_processor.h"
#include "Plugins/Vx2/host/model_statistics.h"
#include "Plugins/Vx2/text.h"

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
    PHYSICAL_PATH const statistics(get_target() + ".model_statistics");
    targets.append(TARGET_FILE(statistics, PATHS::logical_path(statistics), false));
}

bool ACTION_GENERICMESH::convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &,
                                 FILE_TABLE const &files)
{
    MODEL_STATISTICS statistics;
    statistics.set_filename(PATHS::logical_path(from).toLatin1().constData());
    KN::String const target = local_8_bit(to);
    TOOLDATABUILDER::GENERICMESH_PROCESSOR converter;
    converter.target = target;
    if (!converter.open_vex2(local_8_bit(from), &statistics) || !converter.write(target, &statistics))
        return false;

    add_output_line(QStringLiteral("Attempting to write XML file..."));
    // The local encoding rather than Latin-1: the statistics are to be named as the mesh is on disk.
    if (statistics.save(target))
        add_to_perforce(PHYSICAL_PATH(to + ".model_statistics"), files, false, QString());
    else
        output_line(QStringLiteral("Failed to write statistics XML file."), 1);
    return true;
}
