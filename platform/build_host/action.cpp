#include "Plugins/Vx2/host/action.h"

#include "Plugins/Vx2/host/asset_graph_store.h"
#include "platform/build_host/action_output.h"
#include "platform/build_host/disk_name.h"
#include "platform/build_host/run_watch.h"

#include <atomic>
#include <cstdio>

QTSHARED::ASSET_GRAPH *ACTION_INTERFACE::s_asset_graph = nullptr;

namespace {

ASSET_GRAPH_STORE *graph_store = nullptr;

// The sink of a worker's thread: one per thread, so that an action stays free of members that cannot be copied.
class LINES_TO_ACTION final : public KN::MessageSink {
public:
    void message(KN::String const &line, int level) override
    {
        action->output_line(QString::fromUtf8(line.data(), int(line.size())), level);
    }
    bool goes_on() const override { return !action->is_aborted(); }

    ACTION_INTERFACE *action = nullptr;
};
thread_local LINES_TO_ACTION thread_sink;

}  // namespace

ASSET_GRAPH_STORE *set_asset_graph_store(ASSET_GRAPH_STORE *store)
{
    ACTION_INTERFACE::s_asset_graph = store ? store->graph() : nullptr;
    return std::exchange(graph_store, store);
}

ACTION_OUTPUT_SCOPE::ACTION_OUTPUT_SCOPE(ACTION_INTERFACE &action) : before(thread_sink.action)
{
    thread_sink.action = &action;
    sink_before = KN::set_thread_message_sink(&thread_sink);
}

ACTION_OUTPUT_SCOPE::~ACTION_OUTPUT_SCOPE()
{
    thread_sink.action = before;
    KN::set_thread_message_sink(sink_before);
}

// An action that was run without the host may still be the sink of this thread.
ACTION_INTERFACE::~ACTION_INTERFACE()
{
    if (thread_sink.action == this) {
        thread_sink.action = nullptr;
        KN::set_thread_message_sink(nullptr);
    }
}

void ACTION_INTERFACE::abort() { std::atomic_ref(abort_wanted).store(1, std::memory_order_relaxed); }

bool ACTION_INTERFACE::is_aborted() const { return std::atomic_ref(abort_wanted).load(std::memory_order_relaxed) != 0; }

int ACTION_INTERFACE::progress() const { return std::atomic_ref(progress_now).load(std::memory_order_relaxed); }

void ACTION_INTERFACE::reset()
{
    output_lines.clear();
    std::atomic_ref(progress_now).store(0, std::memory_order_relaxed);
    std::atomic_ref(abort_wanted).store(0, std::memory_order_relaxed);
}

bool ACTION_INTERFACE::ignore_assert() { return false; }

QString ACTION_INTERFACE::get_name(bool) const { return QStringLiteral("Action"); }

void ACTION_INTERFACE::get_affected_files(QVector<LOGICAL_PATH> &, QVector<TARGET_FILE> &, qint64 &, FILE_TABLE const &,
                                          RULE_CACHE const &) const
{}

void ACTION_INTERFACE::add_external_dependencies(FILE_TABLE const &, RULE_CACHE const &) {}

ACTION_INTERFACE::STATUS ACTION_INTERFACE::run(FILE_TABLE const &, RULE_CACHE const &) { return DONE; }

bool ACTION_INTERFACE::auto_fail_if_dependency_failed() const { return true; }

bool ACTION_INTERFACE::auto_fail_if_asserts_occured() const { return true; }

bool ACTION_INTERFACE::revert_target_files_if_failed() const { return true; }

void ACTION_INTERFACE::add_dependency(ACTION_INTERFACE *other, bool flag) { depends_on.append({other, flag, false}); }

void ACTION_INTERFACE::pull(ACTION_INTERFACE *other) { pulled.append({other, false, false}); }

void ACTION_INTERFACE::pull_both_ways(ACTION_INTERFACE *other)
{
    pull(other);
    other->pull(this);
}

void ACTION_INTERFACE::add_host_dependency(ACTION_INTERFACE *other, bool flag)
{
    depends_on.append({other, flag, true});
}

void ACTION_INTERFACE::host_pull(ACTION_INTERFACE *other) { pulled.append({other, false, true}); }

void ACTION_INTERFACE::set_error(QString const &text)
{
    if (!error_text.isEmpty())
        error_text += QLatin1Char('\n');
    error_text += text;
}

void ACTION_INTERFACE::output_line(QString const &line, int level) { output_lines.append({line, level}); }

bool ACTION_INTERFACE::add_progress(int amount)
{
    std::atomic_ref(progress_now).fetch_add(amount, std::memory_order_relaxed);
    return !is_aborted();
}

void ACTION_INTERFACE::add_to_perforce(PHYSICAL_PATH const &file, FILE_TABLE const &files, bool, QString const &)
{
    if (!KN::exists(disk_name(file))) {
        output_line(QStringLiteral("%1: is not there, so it is not booked").arg(file), 1);
        return;
    }
    LOGICAL_PATH const logical = PATHS::logical_path(file);
    FILE_ENTRY const *entry = files.peek(logical);
    if (RUN_WATCH *const watch = run_watch())
        watch->file_booked(file, entry && entry->state == FILE_ENTRY::PRESENT);
    if (!entry) {
        FILE_ENTRY *const fresh = new FILE_ENTRY;
        fresh->physical = file;
        if (files.insert(logical, fresh) != fresh)
            delete fresh;  // another action was quicker
    }
}

void ACTION_INTERFACE::remove_from_perforce(PHYSICAL_PATH const &file, FILE_TABLE const &)
{
    if (RUN_WATCH *const watch = run_watch())
        watch->file_removed(file);
    KN::String const name = disk_name(file);
    if (KN::exists(name) && std::remove(name.c_str()) != 0)
        output_line(QStringLiteral("%1: cannot be removed").arg(file), 2);
}

bool ACTION_INTERFACE::add_to_asset_graph_and_save(QTSHARED::ASSET_FRAGMENT_BUILDER &builder, FILE_TABLE const &files,
                                                   RULE_CACHE const &rules)
{
    if (graph_store)
        return graph_store->add_and_save(builder, *this, files, rules);
    output_line(QStringLiteral("there is no asset graph to enter fragments in"), 2);
    return false;
}

QString ACTION_INTERFACE::asset_fragment_id(LOGICAL_PATH const &asset, RULE_CACHE const &rules)
{
    return graph_store ? graph_store->fragment_id(asset, rules) : QString();
}

void ACTION_TDB::reset()
{
    ACTION_INTERFACE::reset();
    first_line = 0;
}

void ACTION_TDB::set_up_tdb_output()
{
    first_line = lines().size();
    thread_sink.action = this;
    KN::set_thread_message_sink(&thread_sink);
}

ACTION_INTERFACE::STATUS ACTION_TDB::get_status_by_output() const
{
    for (int i = first_line; i < lines().size(); ++i)
        if (lines()[i].level >= 2)
            return FAILED;
    return DONE;
}
