#include "Plugins/Vx2/host/action_error.h"

ACTION_ERROR::ACTION_ERROR(QString const &action_name, QString const &text, PROCESSOR_INTERFACE *planned_by)
    : ACTION_INTERFACE(planned_by), name(action_name)
{
    set_error(text);
}

QString ACTION_ERROR::get_name(bool with_source) const
{
    if (!with_source || source_files.isEmpty())
        return name;
    return name + QStringLiteral(" (") + source_files.first() + QLatin1Char(')');
}

void ACTION_ERROR::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &, qint64 &,
                                      FILE_TABLE const &, RULE_CACHE const &) const
{
    sources += source_files;
}
