#include "Plugins/Vx2/host/action_engine.h"

#include <utility>

static KESTREL::ENGINE_MAKER make_engine = nullptr;

KESTREL::ENGINE_MAKER ACTION_INIT_KESTREL::set_engine_maker(KESTREL::ENGINE_MAKER maker)
{
    return std::exchange(make_engine, maker);
}

ACTION_INIT_KESTREL::ACTION_INIT_KESTREL(PROCESSOR_INTERFACE *planned_by, bool mount_data, bool start_services,
                                         bool open_view)
    : ACTION_INTERFACE(planned_by), mounts_data(mount_data), starts_services(start_services), opens_view(open_view)
{}

ACTION_INIT_KESTREL::~ACTION_INIT_KESTREL() = default;

void ACTION_INIT_KESTREL::reset()
{
    ACTION_INTERFACE::reset();
    stop();
}

QString ACTION_INIT_KESTREL::get_name(bool) const { return QStringLiteral("Start engine"); }

ACTION_INTERFACE::STATUS ACTION_INIT_KESTREL::run(FILE_TABLE const &, RULE_CACHE const &)
{
    running.reset(make_engine ? make_engine(mounts_data, starts_services, opens_view) : nullptr);
    if (running)
        return DONE;
    output_line(QStringLiteral("the engine cannot be started"), 2);
    return FAILED;
}

ACTION_CLEANUP_KESTREL::ACTION_CLEANUP_KESTREL(ACTION_INIT_KESTREL *started_by, PROCESSOR_INTERFACE *planned_by)
    : ACTION_INTERFACE(planned_by), init(started_by)
{
    add_host_dependency(init, false);
    init->host_pull(this);
}

QString ACTION_CLEANUP_KESTREL::get_name(bool) const { return QStringLiteral("Stop engine"); }

ACTION_INTERFACE::STATUS ACTION_CLEANUP_KESTREL::run(FILE_TABLE const &, RULE_CACHE const &)
{
    init->stop();
    return DONE;
}

bool ACTION_CLEANUP_KESTREL::auto_fail_if_dependency_failed() const { return false; }
