#include "Plugins/Vx2/host/action_engine.h"

ACTION_INIT_KESTREL::ACTION_INIT_KESTREL(PROCESSOR_INTERFACE *planned_by, bool first, bool second, bool third)
    : ACTION_INTERFACE(planned_by), switches{first, second, third}
{}

QString ACTION_INIT_KESTREL::get_name(bool) const { return QStringLiteral("Start engine"); }

ACTION_INTERFACE::STATUS ACTION_INIT_KESTREL::run(FILE_TABLE const &, RULE_CACHE const &)
{
    output_line(QStringLiteral("the engine is not built yet"), 2);
    return FAILED;
}

ACTION_CLEANUP_KESTREL::ACTION_CLEANUP_KESTREL(ACTION_INIT_KESTREL *started_by, PROCESSOR_INTERFACE *planned_by)
    : ACTION_INTERFACE(planned_by), init(started_by)
{}

QString ACTION_CLEANUP_KESTREL::get_name(bool) const { return QStringLiteral("Stop engine"); }

ACTION_INTERFACE::STATUS ACTION_CLEANUP_KESTREL::run(FILE_TABLE const &, RULE_CACHE const &)
{
    if (!init->engine())
        return DONE;
    output_line(QStringLiteral("the engine is not built yet"), 2);
    return FAILED;
}

bool ACTION_CLEANUP_KESTREL::auto_fail_if_dependency_failed() const { return false; }
