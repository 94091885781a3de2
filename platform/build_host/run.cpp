#include "platform/build_host/run.h"

#include "platform/build_host/action_output.h"
#include "platform/build_host/scheduler.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

using STATUS = ACTION_INTERFACE::STATUS;

namespace {

// One run of a plan. The scheduler says who does what; here it is done, shown and counted.
class RUN {
public:
    RUN(PLAN const &whole, std::vector<QString> const &why, QVector<PLANNED_ACTION const *> const &chosen_ones,
        FILE_TREE &files, RULE_STORE &rules, RUN_OPTIONS const &told, RUN_STATE &books, RUN_DISPLAY *shown)
        : plan(whole), reasons(why), chosen(chosen_ones), table(files.table), cache(rules), options(told), state(books),
          display(shown), scheduler(whole, chosen_ones, worker_count(told, chosen_ones.size())),
          tallies(std::size_t(scheduler.worker_count())), has_begun(whole.actions.size(), 0)
    {
        result.statuses.assign(plan.actions.size(), ACTION_INTERFACE::IDLE);
    }

    RUN_RESULT run()
    {
        if (!state.run_begins(chosen)) {
            result.left_out = chosen.size();
            result.books_kept = false;
            return std::move(result);
        }
        if (display)
            display->run_begins(chosen.size(), int(plan.actions.size()));
        std::vector<std::thread> threads;
        for (int i = 0; i < scheduler.worker_count(); ++i)
            threads.emplace_back([this, i] { work(i); });
        watch_for_interruption();
        for (std::thread &thread : threads)
            thread.join();
        for (TALLY const &tally : tallies) {
            result.done += tally.done;
            result.failed += tally.failed;
            result.left_out += tally.left_out;
        }
        return std::move(result);
    }

private:
    // Of one worker, on a cache line of its own.
    struct alignas(64) TALLY {
        std::atomic<int> running = -1;  // -1: none
        int done = 0, failed = 0, left_out = 0;
    };

    static int worker_count(RUN_OPTIONS const &options, int actions)
    {
        int const cores = std::max(1, int(std::thread::hardware_concurrency()));
        return std::clamp(options.jobs > 0 ? options.jobs : cores, 1, std::max(1, actions));
    }

    void work(int worker)
    {
        TALLY &tally = tallies[std::size_t(worker)];
        for (int action = scheduler.next(worker); action >= 0; action = scheduler.next(worker)) {
            bool const has_failed_dependency = look_back(action);
            bool const runs = decide(action, has_failed_dependency);
            STATUS status;
            if (runs) {
                tally.running.store(action, std::memory_order_relaxed);
                status = execute(action);
                tally.running.store(-1, std::memory_order_relaxed);
                has_begun[std::size_t(action)] = true;
            } else {
                status = leave_out(action, has_failed_dependency);
            }
            result.statuses[std::size_t(action)] = status;
            ++(status == ACTION_INTERFACE::DONE ? tally.done : runs ? tally.failed : tally.left_out);
            if (status == ACTION_INTERFACE::FAILED && runs && !options.keep_going)
                is_stopping.store(true, std::memory_order_relaxed);
            scheduler.end(worker, action);
        }
    }

    // Whether an action that this one waits for has failed; notes whether one has run, directly or further back.
    bool look_back(int action)
    {
        bool has_failed = false;
        for (PLAN_EDGE const &edge : plan.dependencies.of(action)) {
            has_failed |= result.statuses[std::size_t(edge.other)] == ACTION_INTERFACE::FAILED;
            has_begun[std::size_t(action)] |= has_begun[std::size_t(edge.other)];
        }
        return has_failed;
    }

    // Clean-ups run whatever has happened, if there is anything to clean up.
    bool decide(int action, bool has_failed_dependency)
    {
        bool const goes_on = !is_stopping.load(std::memory_order_relaxed);
        if (!plan.actions[std::size_t(action)].action->auto_fail_if_dependency_failed())
            return goes_on || has_begun[std::size_t(action)];
        return goes_on && !has_failed_dependency;
    }

    STATUS execute(int index)
    {
        PLANNED_ACTION const &planned = plan.actions[std::size_t(index)];
        ACTION_INTERFACE &action = *planned.action;
        action.reset();
        if (display) {
            std::lock_guard const guard(display_lock);
            display->action_begins(planned, reasons[std::size_t(index)]);
        }
        STATUS const worked =
            state.action_begins(planned) ? run_action(action, table, cache) : ACTION_INTERFACE::FAILED;
        STATUS const status = STATUS(state.action_ends(planned, worked));
        if (display) {
            std::lock_guard const guard(display_lock);
            for (ACTION_LINE const &line : action.lines())
                display->line(planned, line.text, line.level);
            display->action_ends(planned, status);
        }
        return status;
    }

    // Failed with what it depends on, or skipped because the run is broken off.
    STATUS leave_out(int index, bool has_failed_dependency)
    {
        PLANNED_ACTION const &planned = plan.actions[std::size_t(index)];
        STATUS const status = has_failed_dependency ? ACTION_INTERFACE::FAILED : ACTION_INTERFACE::SKIPPED;
        planned.action->reset();
        state.action_left_out(planned);
        if (display) {
            std::lock_guard const guard(display_lock);
            display->action_ends(planned, status);
        }
        return status;
    }

    void watch_for_interruption()
    {
        while (!scheduler.wait_for_all(std::chrono::milliseconds(100))) {
            if (!result.interrupted && !(options.interrupted && options.interrupted()))
                continue;
            result.interrupted = true;
            is_stopping.store(true, std::memory_order_relaxed);
            // Time and again: an action that is only beginning may reset itself after it was told.
            for (TALLY const &tally : tallies)
                if (int const action = tally.running.load(std::memory_order_relaxed); action >= 0)
                    plan.actions[std::size_t(action)].action->abort();
        }
    }

    PLAN const &plan;
    std::vector<QString> const &reasons;
    QVector<PLANNED_ACTION const *> const &chosen;
    FILE_TABLE const &table;
    RULE_CACHE const cache;
    RUN_OPTIONS const &options;
    RUN_STATE &state;
    RUN_DISPLAY *const display;
    std::mutex display_lock;

    SCHEDULER scheduler;
    std::vector<TALLY> tallies;  // by worker
    std::atomic<bool> is_stopping = false;
    // By index in the plan, as result.statuses: written by the worker that has the action, read by those of its
    // dependants. The action or one that it waits for has run.
    std::vector<char> has_begun;
    RUN_RESULT result;
};

}  // namespace

STATUS run_action(ACTION_INTERFACE &action, FILE_TABLE const &files, RULE_CACHE const &rules)
{
    ACTION_OUTPUT_SCOPE const scope(action);
    if (!action.error().isEmpty()) {
        for (QString const &line : action.error().split(QLatin1Char('\n')))
            action.output_line(line, 2);
        return ACTION_INTERFACE::FAILED;
    }
    STATUS status = ACTION_INTERFACE::FAILED;
    try {
        status = action.run(files, rules);
    } catch (std::exception const &error) {
        action.output_line(QStringLiteral("internal error: ") + QString::fromUtf8(error.what()), 2);
    } catch (...) {
        action.output_line(QStringLiteral("internal error"), 2);
    }
    if (status == ACTION_INTERFACE::DONE)
        return status;
    auto const is_error = [](ACTION_LINE const &line) { return line.level >= 2; };
    if (std::none_of(action.lines().begin(), action.lines().end(), is_error))
        action.output_line(
            action.is_aborted() ? QStringLiteral("interrupted") : QStringLiteral("failed without saying why"), 2);
    return ACTION_INTERFACE::FAILED;
}

// `reason_of`: why an action has to run by itself, or an empty text.
template <class REASON>
static std::vector<QString> chosen_with_others(PLAN const &plan, REASON const &reason_of)
{
    std::vector<QString> reasons(plan.actions.size());
    std::vector<int> chosen;
    auto const choose = [&](int action, QString const &reason) {
        if (reasons[std::size_t(action)].isEmpty()) {
            reasons[std::size_t(action)] = reason;
            chosen.push_back(action);
        }
    };
    for (PLANNED_ACTION const &planned : plan.actions) {
        QString const reason = reason_of(planned);
        if (!reason.isEmpty())
            choose(planned.index, reason);
    }
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        QString const name = plan.actions[std::size_t(chosen[i])].action->get_name(true);
        for (PLAN_EDGE const &edge : plan.pulls.of(chosen[i]))
            choose(edge.other, QStringLiteral("goes with: ") + name);
        for (PLAN_EDGE const &edge : plan.dependencies.of(chosen[i]))
            if (edge.flag)
                choose(edge.other, QStringLiteral("needed by: ") + name);
        for (PLAN_EDGE const &edge : plan.dependants.of(chosen[i]))
            if (edge.is_product)
                choose(edge.other, QStringLiteral("reads what is made by: ") + name);
    }
    return reasons;
}

std::vector<QString> choose_actions(PLAN const &plan, RUN_STATE &state)
{
    return chosen_with_others(plan, [&](PLANNED_ACTION const &planned) {
        return planned.action->error().isEmpty() ? state.stale_reason(planned) : QStringLiteral("it cannot be planned");
    });
}

static QVector<PLANNED_ACTION const *> chosen_actions(PLAN const &plan, std::vector<QString> const &reasons)
{
    QVector<PLANNED_ACTION const *> chosen;
    for (PLANNED_ACTION const &planned : plan.actions)
        if (!reasons[std::size_t(planned.index)].isEmpty())
            chosen.append(&planned);
    return chosen;
}

RUN_RESULT run_plan(PLAN const &plan, std::vector<QString> const &reasons, FILE_TREE &files, RULE_STORE &rules,
                    RUN_OPTIONS const &options, RUN_STATE &state, RUN_DISPLAY *display)
{
    auto const run = [&](std::vector<QString> const &why, QVector<PLANNED_ACTION const *> const &chosen) {
        RUN_RESULT result = RUN(plan, why, chosen, files, rules, options, state, display).run();
        files.table.settle();
        return result;
    };
    RUN_RESULT result = run(reasons, chosen_actions(plan, reasons));
    if (!result.books_kept)
        return result;
    if (result.good()) {
        std::vector<QString> const why =
            chosen_with_others(plan, [&](PLANNED_ACTION const &planned) { return state.late_reason(planned); });
        QVector<PLANNED_ACTION const *> const late = chosen_actions(plan, why);
        if (!late.isEmpty()) {
            RUN_RESULT const again = run(why, late);
            result.done -= late.size() - again.done;
            result.failed = again.failed;
            result.left_out = again.left_out;
            result.interrupted = again.interrupted;
            result.books_kept = again.books_kept;
            for (PLANNED_ACTION const *const action : late)
                result.statuses[std::size_t(action->index)] = again.statuses[std::size_t(action->index)];
        }
    }
    result.books_kept &= state.run_ends();
    return result;
}
