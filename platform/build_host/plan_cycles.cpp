#include "platform/build_host/plan_cycles.h"

#include <algorithm>

namespace {

// The same edges from the other end.
EDGE_LISTS reversed(EDGE_LISTS const &lists)
{
    std::size_t const actions = lists.starts.size() - 1;
    EDGE_LISTS back;
    back.starts.assign(actions + 1, 0);
    back.edges.resize(lists.edges.size());
    for (PLAN_EDGE const &edge : lists.edges)
        ++back.starts[std::size_t(edge.other) + 1];
    for (std::size_t i = 0; i < actions; ++i)
        back.starts[i + 1] += back.starts[i];
    std::vector<std::uint32_t> next(back.starts.begin(), back.starts.end() - 1);
    for (std::size_t i = 0; i < actions; ++i) {
        for (PLAN_EDGE const &edge : lists.of(int(i))) {
            PLAN_EDGE turned = edge;
            turned.other = int(i);
            back.edges[next[std::size_t(edge.other)]++] = turned;
        }
    }
    return back;
}

// Actions that wait for themselves, or for such: what is left when all are taken away whose predecessors are gone.
std::vector<int> waiting_for_ever(PLAN const &plan)
{
    int const actions = int(plan.actions.size());
    std::vector<std::uint32_t> open;
    std::vector<int> ready;
    for (int i = 0; i < actions; ++i) {
        open.push_back(std::uint32_t(plan.dependencies.of(i).size()));
        if (open.back() == 0)
            ready.push_back(i);
    }
    for (std::size_t i = 0; i < ready.size(); ++i)
        for (PLAN_EDGE const &edge : plan.dependants.of(ready[i]))
            if (--open[std::size_t(edge.other)] == 0)
                ready.push_back(edge.other);
    std::vector<int> left;
    if (int(ready.size()) < actions)
        for (int i = 0; i < actions; ++i)
            if (open[std::size_t(i)] != 0)
                left.push_back(i);
    return left;
}

// Strongly connected components after Tarjan, with a stack of its own instead of recursion.
class COMPONENTS {
public:
    COMPONENTS(PLAN const &whole, std::vector<int> const &roots)
        : plan(whole), number(whole.actions.size(), 0), low(whole.actions.size(), 0),
          component(whole.actions.size(), -1)
    {
        for (int const root : roots)
            if (number[std::size_t(root)] == 0)
                visit(root);
    }

    // -1: the action was not reached.
    int of(int action) const { return component[std::size_t(action)]; }

private:
    struct FRAME {
        int action;
        std::size_t edge;
    };

    void visit(int root)
    {
        std::vector<FRAME> frames{enter(root)};
        while (!frames.empty()) {
            FRAME &frame = frames.back();
            std::size_t const action = std::size_t(frame.action);
            auto const edges = plan.dependencies.of(frame.action);
            if (frame.edge < edges.size()) {
                std::size_t const other = std::size_t(edges[frame.edge++].other);
                if (number[other] == 0)
                    frames.push_back(enter(int(other)));
                else if (component[other] < 0)
                    low[action] = std::min(low[action], number[other]);
                continue;
            }
            if (low[action] == number[action])
                leave(frame.action);
            frames.pop_back();
            if (!frames.empty())
                low[std::size_t(frames.back().action)] = std::min(low[std::size_t(frames.back().action)], low[action]);
        }
    }

    FRAME enter(int action)
    {
        number[std::size_t(action)] = low[std::size_t(action)] = ++last_number;
        stack.push_back(action);
        return {action, 0};
    }

    void leave(int root)
    {
        int member;
        do {
            member = stack.back();
            stack.pop_back();
            component[std::size_t(member)] = components;
        } while (member != root);
        ++components;
    }

    PLAN const &plan;
    std::vector<int> number, low;  // order of the visit; 0: none yet
    std::vector<int> component;
    std::vector<int> stack;
    int last_number = 0;
    int components = 0;
};

// A way along dependencies inside the component from the action back to itself, as names.
QString way_round(PLAN const &plan, COMPONENTS const &components, int action)
{
    constexpr int longest = 8;  // names
    std::vector<int> way{action}, before(plan.actions.size(), -1);
    for (std::size_t i = 0; i < way.size(); ++i) {
        for (PLAN_EDGE const &edge : plan.dependencies.of(way[i])) {
            if (components.of(edge.other) != components.of(action))
                continue;
            if (edge.other == action) {
                QStringList names;
                for (int at = way[i]; at >= 0 && names.size() < longest; at = before[std::size_t(at)])
                    names.prepend(plan.actions[std::size_t(at)].action->get_name(true));
                names.append(plan.actions[std::size_t(action)].action->get_name(true));
                return names.join(QStringLiteral(" -> "));
            }
            if (before[std::size_t(edge.other)] < 0) {
                before[std::size_t(edge.other)] = way[i];
                way.push_back(edge.other);
            }
        }
    }
    return {};
}

}  // namespace

void break_cycles(PLAN &plan)
{
    plan.dependants = reversed(plan.dependencies);
    std::vector<int> const left = waiting_for_ever(plan);
    if (left.empty())
        return;

    COMPONENTS const components(plan, left);
    auto const is_inside = [&](int action, PLAN_EDGE const &edge) {
        return components.of(action) >= 0 && components.of(action) == components.of(edge.other);
    };
    for (int const action : left) {
        auto const edges = plan.dependencies.of(action);
        if (std::any_of(edges.begin(), edges.end(), [&](PLAN_EDGE const &edge) { return is_inside(action, edge); }))
            plan.actions[std::size_t(action)].action->set_error(QStringLiteral("it waits for itself: ") +
                                                                way_round(plan, components, action));
    }
    EDGE_LISTS kept;
    for (int i = 0; i < int(plan.actions.size()); ++i) {
        for (PLAN_EDGE const &edge : plan.dependencies.of(i))
            if (!is_inside(i, edge))
                kept.edges.push_back(edge);
        kept.end_list();
    }
    plan.dependencies = std::move(kept);
    plan.dependants = reversed(plan.dependencies);
}
