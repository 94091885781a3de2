#include "Plugins/Vx2/host/action_texture.h"

ACTION_DDS_N::ACTION_DDS_N(PHYSICAL_PATH const &picture, PROCESSOR_INTERFACE *planned_by)
    : ACTION_CONVERT(picture, planned_by)
{
    set_target_extension(QStringLiteral(".dds"));
}

QString ACTION_DDS_N::get_name(bool with_source) const
{
    QString const name = QStringLiteral("Convert picture");
    return with_source ? name + QStringLiteral(" (") + PATHS::logical_path(source()) + QLatin1Char(')') : name;
}

bool ACTION_DDS_N::convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &, RULE_CACHE const &, FILE_TABLE const &)
{
    output_line(QStringLiteral("%1: the conversion of pictures is not built yet").arg(from), 2);
    return false;
}

ACTION_BILLBOARD::ACTION_BILLBOARD(PHYSICAL_PATH const &base_name, PROCESSOR_INTERFACE *planned_by)
    : ACTION_CONVERT(base_name, planned_by)
{
    set_target_extension(QStringLiteral(".billboard.xml"));
}

QString ACTION_BILLBOARD::get_name(bool with_source) const
{
    QString const name = QStringLiteral("Make billboard");
    return with_source ? name + QStringLiteral(" (") + PATHS::logical_path(source()) + QLatin1Char(')') : name;
}

bool ACTION_BILLBOARD::convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &, RULE_CACHE const &, FILE_TABLE const &)
{
    output_line(QStringLiteral("%1: the making of billboards is not built yet").arg(from), 2);
    return false;
}
