#include "platform/build_host/scheduler.h"

#include <algorithm>
#include <utility>

SCHEDULER::SCHEDULER(PLAN const &whole, QVector<PLANNED_ACTION const *> const &chosen, int worker_count)
    : plan(whole), turns(whole.actions.size()), workers(std::size_t(worker_count)), left(chosen.size())
{
    number_groups(chosen);
    for (PLANNED_ACTION const *planned : chosen)
        turns[std::size_t(planned->index)].is_chosen = true;
    for (PLANNED_ACTION const *planned : chosen) {
        int open = 0;
        for (PLAN_EDGE const &edge : plan.dependencies.of(planned->index))
            open += turns[std::size_t(edge.other)].is_chosen;
        turns[std::size_t(planned->index)].open.store(open, std::memory_order_relaxed);
        if (open == 0)
            roots.push_back(planned->index);
    }
}

// Group numbers of the process become places in a list. Neighbours in the plan mostly share theirs.
void SCHEDULER::number_groups(QVector<PLANNED_ACTION const *> const &chosen)
{
    std::vector<int> numbers;
    for (PLANNED_ACTION const *planned : chosen) {
        int const number = planned->action->group;
        if (number != 0 && (numbers.empty() || numbers.back() != number))
            numbers.push_back(number);
    }
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    groups = std::vector<GROUP>(numbers.size() + 1);

    int last = 0, place = 0;
    for (PLANNED_ACTION const *planned : chosen) {
        int const number = planned->action->group;
        if (number != last) {
            place =
                number == 0 ? 0 : 1 + int(std::lower_bound(numbers.begin(), numbers.end(), number) - numbers.begin());
            last = number;
        }
        turns[std::size_t(planned->index)].group = place;
    }
}

int SCHEDULER::next(int worker)
{
    WORKER &own = workers[std::size_t(worker)];
    if (own.preferred >= 0)
        return std::exchange(own.preferred, -1);
    do {
        for (std::size_t i = 0; i < workers.size(); ++i)
            if (int const action = take(workers[(std::size_t(worker) + i) % workers.size()]); action >= 0)
                return action;
    } while (sleep(own));
    return -1;
}

void SCHEDULER::end(int worker, int action)
{
    WORKER &own = workers[std::size_t(worker)];
    int const group = turns[std::size_t(action)].group;
    std::size_t offered = 0;
    {
        std::lock_guard const guard(own.lock);
        for (PLAN_EDGE const &edge : plan.dependants.of(action)) {
            TURN &other = turns[std::size_t(edge.other)];
            if (!other.is_chosen || other.open.fetch_sub(1, std::memory_order_acq_rel) != 1)
                continue;
            if (group != 0 && other.group == group) {
                std::lock_guard const group_guard(groups[std::size_t(group)].lock);
                groups[std::size_t(group)].waiting.push(edge.other);
            } else {
                own.ready.push(edge.other);
            }
        }
        if (int const following = leave_group(group); following >= 0) {
            if (workers.size() > 1)
                own.preferred = following;
            else
                own.ready.push(following);  // in list order among all that are ready
        }
        offered = own.ready.size();
    }
    ++own.ended;
    if (offered > (own.preferred < 0 ? 1u : 0u))
        wake_one();
}

bool SCHEDULER::wait_for_all(std::chrono::milliseconds time)
{
    std::unique_lock guard(lock);
    return all_ended.wait_for(guard, time, [this] { return left == 0; });
}

// The first action of that worker's, or from the start, whose group is free; -1 if there is none.
int SCHEDULER::take(WORKER &from)
{
    for (;;) {
        int action = -1;
        bool is_more = false;
        {
            std::lock_guard const guard(from.lock);
            claim_roots(from);
            if (from.ready.empty())
                return -1;
            action = from.ready.top();
            from.ready.pop();
            is_more = !from.ready.empty();
        }
        if (is_more)
            wake_one();
        if (enter_group(action))
            return action;
    }
}

// While many are left, several neighbours at once: what a plan holds side by side then stays with one core. Others may
// still take them away.
void SCHEDULER::claim_roots(WORKER &to)
{
    std::size_t place = next_root.load(std::memory_order_relaxed);
    while (place < roots.size() && (to.ready.empty() || roots[place] < to.ready.top())) {
        std::size_t const count = std::clamp<std::size_t>((roots.size() - place) / (4 * workers.size()), 1, 16);
        if (!next_root.compare_exchange_weak(place, place + count, std::memory_order_relaxed))
            continue;
        for (std::size_t i = place; i < place + count; ++i)
            to.ready.push(roots[i]);
        return;
    }
}

// False: the group is busy, and whoever serves it will go on with the action.
bool SCHEDULER::enter_group(int action)
{
    int const number = turns[std::size_t(action)].group;
    if (number == 0)
        return true;
    GROUP &group = groups[std::size_t(number)];
    std::lock_guard const guard(group.lock);
    if (!group.is_busy)
        return group.is_busy = true;
    group.waiting.push(action);
    return false;
}

// What to do next in the group; the group stays busy for it if there are others who could come in between.
int SCHEDULER::leave_group(int number)
{
    if (number == 0)
        return -1;
    GROUP &group = groups[std::size_t(number)];
    std::lock_guard const guard(group.lock);
    group.is_busy = !group.waiting.empty() && workers.size() > 1;
    if (group.waiting.empty())
        return -1;
    int const following = group.waiting.top();
    group.waiting.pop();
    return following;
}

// False: all have ended.
bool SCHEDULER::sleep(WORKER &own)
{
    std::unique_lock guard(lock);
    left -= std::exchange(own.ended, 0);
    if (left == 0) {
        changed.notify_all();
        all_ended.notify_all();
        return false;
    }
    // Counted before the last look round: who makes something ready later sees a sleeper, and wakes it.
    sleeping.fetch_add(1, std::memory_order_seq_cst);
    if (!is_anything_ready())
        changed.wait(guard);
    sleeping.fetch_sub(1, std::memory_order_relaxed);
    return true;
}

bool SCHEDULER::is_anything_ready()
{
    return std::any_of(workers.begin(), workers.end(), [](WORKER &worker) {
        std::lock_guard const guard(worker.lock);
        return !worker.ready.empty();
    });
}

void SCHEDULER::wake_one()
{
    if (sleeping.load(std::memory_order_seq_cst) == 0)
        return;
    std::lock_guard const guard(lock);
    changed.notify_one();
}
