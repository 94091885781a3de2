#include "platform/build_host/run.h"

#include "platform/build_host/action_output.h"
#include "platform/build_host/number_set.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <emmintrin.h>
#include <mutex>
#include <queue>
#include <thread>

using STATUS = ACTION_INTERFACE::STATUS;

namespace {

// Numbers, the smallest first.
using LIST_ORDER = std::priority_queue<int, std::vector<int>, std::greater<int>>;

// One run of a plan. Everything that decides what comes next stands under one lock, which a worker takes once an
// action; actions last milliseconds and more.
class RUN {
public:
    RUN(PLAN const &whole, std::vector<QString> const &why, FILE_TREE &files, RULE_STORE &rules,
        RUN_OPTIONS const &told, RUN_STATE &books, RUN_DISPLAY *shown)
        : plan(whole), reasons(why), table(files.table), cache(rules), options(told), state(books), display(shown),
          turns(whole.actions.size()), ready(whole.actions.size())
    {
        result.statuses.assign(plan.actions.size(), ACTION_INTERFACE::IDLE);
        number_groups();
        for (std::size_t i = 0; i < reasons.size(); ++i)
            turns[i].is_chosen = !reasons[i].isEmpty();
        for (int i = 0; i < int(plan.actions.size()); ++i) {
            if (!is_chosen(i))
                continue;
            chosen.append(&plan.actions[std::size_t(i)]);
            for (PLAN_EDGE const &edge : plan.dependencies.of(i))
                turn(i).open += is_chosen(edge.other);
            if (turn(i).open == 0)
                ready.insert(std::size_t(i));
        }
        left = chosen.size();
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

        int const cores = std::max(1, int(std::thread::hardware_concurrency()));
        workers = std::clamp(options.jobs > 0 ? options.jobs : cores, 1, std::max(1, chosen.size()));
        running.assign(std::size_t(workers), -1);
        std::vector<std::thread> threads;
        for (int i = 0; i < workers; ++i)
            threads.emplace_back([this, i] { work(i); });
        watch_for_interruption();
        for (std::thread &thread : threads)
            thread.join();
        result.books_kept = state.run_ends();
        return std::move(result);
    }

private:
    struct TURN {
        int open = 0;   // dependencies that have not ended
        int group = 0;  // 0: none
        bool is_chosen = false;
        bool dependency_failed = false;
        bool has_begun = false;  // an action that it waits for has run, directly or further back
    };

    struct GROUP {
        bool is_busy = false;
        LIST_ORDER waiting;  // ready but for the group
    };

    bool is_chosen(int action) const { return turns[std::size_t(action)].is_chosen; }
    TURN &turn(int action) { return turns[std::size_t(action)]; }
    GROUP &group_of(int action) { return groups[std::size_t(turn(action).group)]; }

    // Group numbers of the process become places in a list.
    void number_groups()
    {
        std::vector<int> numbers;
        for (PLANNED_ACTION const &planned : plan.actions)
            if (planned.action->group != 0)
                numbers.push_back(planned.action->group);
        std::sort(numbers.begin(), numbers.end());
        numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
        groups.resize(numbers.size() + 1);
        for (PLANNED_ACTION const &planned : plan.actions)
            if (planned.action->group != 0)
                turn(planned.index).group =
                    1 + int(std::lower_bound(numbers.begin(), numbers.end(), planned.action->group) - numbers.begin());
    }

    // The lock is held for less time than it takes to go to sleep and come back.
    static void lock_soon(std::unique_lock<std::mutex> &guard)
    {
        for (int tries = 0; tries < 200; ++tries) {
            if (guard.try_lock())
                return;
            _mm_pause();
        }
        guard.lock();
    }

    void work(int worker)
    {
        std::unique_lock guard(lock);
        int next = -1;
        for (;;) {
            if (next < 0)
                next = take();
            if (next < 0) {
                if (left == 0)
                    break;
                ++sleeping;
                changed.wait(guard);
                --sleeping;
                continue;
            }
            int const action = next;
            bool const runs = decide(action);
            if (runs)
                running[std::size_t(worker)] = action;
            if (sleeping > 0 && !ready.empty())
                changed.notify_one();
            guard.unlock();
            STATUS const status = runs ? execute(action) : leave_out(action);
            lock_soon(guard);
            running[std::size_t(worker)] = -1;
            next = end(action, status, runs);
        }
        changed.notify_all();
        ended.notify_all();
    }

    // The first ready action whose group is free; -1 if there is none.
    int take()
    {
        while (!ready.empty()) {
            int const action = int(ready.take_first());
            if (turn(action).group == 0)
                return action;
            GROUP &group = group_of(action);
            if (!group.is_busy) {
                group.is_busy = true;
                return action;
            }
            group.waiting.push(action);
        }
        return -1;
    }

    // Clean-ups run whatever has happened, if there is anything to clean up.
    bool decide(int action)
    {
        if (!plan.actions[std::size_t(action)].action->auto_fail_if_dependency_failed())
            return !is_stopping || turn(action).has_begun;
        return !is_stopping && !turn(action).dependency_failed;
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
    STATUS leave_out(int index)
    {
        PLANNED_ACTION const &planned = plan.actions[std::size_t(index)];
        STATUS const status = turn(index).dependency_failed ? ACTION_INTERFACE::FAILED : ACTION_INTERFACE::SKIPPED;
        planned.action->reset();
        state.action_left_out(planned);
        if (display) {
            std::lock_guard const guard(display_lock);
            display->action_ends(planned, status);
        }
        return status;
    }

    // What the worker does next, if it should go on with the same group; else -1. Under the lock.
    int end(int action, STATUS status, bool ran)
    {
        result.statuses[std::size_t(action)] = status;
        int &count = status == ACTION_INTERFACE::DONE ? result.done : ran ? result.failed : result.left_out;
        ++count;
        if (status == ACTION_INTERFACE::FAILED && ran && !options.keep_going)
            is_stopping = true;

        for (PLAN_EDGE const &edge : plan.dependants.of(action)) {
            if (!is_chosen(edge.other))
                continue;
            TURN &other = turn(edge.other);
            other.dependency_failed |= status == ACTION_INTERFACE::FAILED;
            other.has_begun |= ran || turn(action).has_begun;
            if (--other.open != 0)
                continue;
            if (other.group != 0 && other.group == turn(action).group)
                group_of(action).waiting.push(edge.other);
            else
                ready.insert(std::size_t(edge.other));
        }
        if (--left == 0) {
            changed.notify_all();
            ended.notify_all();
        }
        return turn(action).group == 0 ? -1 : next_of_group(group_of(action));
    }

    int next_of_group(GROUP &group)
    {
        group.is_busy = false;
        if (group.waiting.empty())
            return -1;
        int const next = group.waiting.top();
        group.waiting.pop();
        if (workers == 1) {
            // In list order among all that are ready.
            ready.insert(std::size_t(next));
            return -1;
        }
        group.is_busy = true;
        return next;
    }

    void watch_for_interruption()
    {
        std::unique_lock guard(lock);
        while (left > 0) {
            ended.wait_for(guard, std::chrono::milliseconds(100));
            if (!result.interrupted && !(options.interrupted && options.interrupted()))
                continue;
            result.interrupted = is_stopping = true;
            // Time and again: an action that is only beginning may reset itself after it was told.
            for (int const action : running)
                if (action >= 0)
                    plan.actions[std::size_t(action)].action->abort();
        }
    }

    PLAN const &plan;
    std::vector<QString> const &reasons;
    FILE_TABLE const &table;
    RULE_CACHE const cache;
    RUN_OPTIONS const &options;
    RUN_STATE &state;
    RUN_DISPLAY *const display;
    std::mutex display_lock;

    QVector<PLANNED_ACTION const *> chosen;
    int workers = 1;

    std::mutex lock;  // of all that follows
    std::condition_variable changed, ended;
    std::vector<TURN> turns;
    std::vector<GROUP> groups;  // the first is not used
    NUMBER_SET ready;
    std::vector<int> running;  // by worker; -1: none
    int left = 0;
    int sleeping = 0;
    bool is_stopping = false;
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
        action.output_line(QStringLiteral("failed without saying why"), 2);
    return ACTION_INTERFACE::FAILED;
}

std::vector<QString> choose_actions(PLAN const &plan, RUN_STATE &state)
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
        if (!planned.action->error().isEmpty()) {
            choose(planned.index, QStringLiteral("it cannot be planned"));
        } else {
            QString const reason = state.stale_reason(planned);
            if (!reason.isEmpty())
                choose(planned.index, reason);
        }
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

RUN_RESULT run_plan(PLAN const &plan, std::vector<QString> const &reasons, FILE_TREE &files, RULE_STORE &rules,
                    RUN_OPTIONS const &options, RUN_STATE &state, RUN_DISPLAY *display)
{
    RUN_RESULT const result = RUN(plan, reasons, files, rules, options, state, display).run();
    files.table.settle();
    return result;
}
