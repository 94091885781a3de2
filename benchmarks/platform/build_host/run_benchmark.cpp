// What the scheduler costs: empty actions in the shape of a real plan, four to a file, beside the same graph as a
// flow graph of oneTBB. Both run on as many threads as the machine has cores.

#include "platform/build_host/run.h"

#include <benchmark/benchmark.h>
#include <tbb/flow_graph.h>

#include <atomic>

namespace {

class EMPTY : public ACTION_INTERFACE {
public:
    explicit EMPTY(std::atomic<int> &counter) : ACTION_INTERFACE(nullptr), runs(counter) {}
    STATUS run(FILE_TABLE const &, RULE_CACHE const &) override
    {
        runs.fetch_add(1, std::memory_order_relaxed);
        return DONE;
    }

private:
    std::atomic<int> &runs;
};

class GIVEN : public PROCESSOR_INTERFACE {
public:
    explicit GIVEN(QVector<ACTION_INTERFACE *> const &list) : actions(list) {}
    QString get_name() const override { return QString(); }
    QVector<ACTION_INTERFACE *> plan_actions(FILE_TABLE const &, RULE_CACHE const &) override { return actions; }

private:
    QVector<ACTION_INTERFACE *> actions;
};

class NO_BOOKS : public RUN_STATE {
public:
    QString stale_reason(PLANNED_ACTION const &) override { return QStringLiteral("benchmark"); }
    bool run_begins(QVector<PLANNED_ACTION const *> const &) override { return true; }
    bool action_begins(PLANNED_ACTION const &) override { return true; }
    int action_ends(PLANNED_ACTION const &, int status) override { return status; }
    void action_left_out(PLANNED_ACTION const &) override {}
    bool run_ends() override { return true; }
};

// prepare, then model and tech, then clean-up.
constexpr struct {
    int later, earlier;
} edges_of_a_file[] = {{1, 0}, {2, 0}, {3, 1}, {3, 2}};

}  // namespace

static void SchedulerEmptyActions(benchmark::State &state)
{
    int const number = int(state.range(0));
    std::atomic<int> runs{0};
    QVector<ACTION_INTERFACE *> list;
    for (int i = 0; i < number; ++i) {
        list.append(new EMPTY(runs));
        if (state.range(1) != 0)
            list.back()->group = 1 + i / 4;
    }
    for (int i = 0; i < number; i += 4)
        for (auto const &edge : edges_of_a_file)
            list[i + edge.later]->add_dependency(list[i + edge.earlier], true);
    GIVEN processor(list);
    FILE_TREE tree;
    RULE_STORE rules;
    PLAN plan;
    make_plan({&processor}, tree, rules, plan);
    NO_BOOKS books;
    std::vector<QString> const reasons = choose_actions(plan, books);
    for (auto _ : state) {
        runs = 0;
        run_plan(plan, reasons, tree, rules, {}, books, nullptr);
        if (runs != number)
            state.SkipWithError("not all actions ran");
    }
    state.counters["s/action"] =
        benchmark::Counter(double(number), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(SchedulerEmptyActions)
    ->ArgNames({"actions", "groups"})
    ->Args({100000, 0})
    ->Args({100000, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

static void FlowGraphEmptyNodes(benchmark::State &state)
{
    using NODE = tbb::flow::continue_node<tbb::flow::continue_msg>;
    int const number = int(state.range(0));
    std::atomic<int> runs{0};
    tbb::flow::graph graph;
    tbb::flow::broadcast_node<tbb::flow::continue_msg> start(graph);
    std::vector<std::unique_ptr<NODE>> nodes;
    for (int i = 0; i < number; ++i)
        nodes.push_back(std::make_unique<NODE>(
            graph, [&runs](tbb::flow::continue_msg const &) { runs.fetch_add(1, std::memory_order_relaxed); }));
    for (int i = 0; i < number; i += 4) {
        tbb::flow::make_edge(start, *nodes[std::size_t(i)]);
        for (auto const &edge : edges_of_a_file)
            tbb::flow::make_edge(*nodes[std::size_t(i + edge.earlier)], *nodes[std::size_t(i + edge.later)]);
    }
    for (auto _ : state) {
        runs = 0;
        start.try_put(tbb::flow::continue_msg());
        graph.wait_for_all();
        if (runs != number)
            state.SkipWithError("not all nodes ran");
    }
    state.counters["s/action"] =
        benchmark::Counter(double(number), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(FlowGraphEmptyNodes)->ArgName("actions")->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
