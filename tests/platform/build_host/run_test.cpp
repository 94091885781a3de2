#include "foundation/messages.h"
#include "tests/platform/build_host/asset_tree.h"
#include "tests/platform/build_host/test_actions.h"

#include <atomic>
#include <thread>

namespace {

using STATUS = ACTION_INTERFACE::STATUS;

STATUS fail() { return ACTION_INTERFACE::FAILED; }

// A plan of actions A, B, ..., each with a product of its own unless said otherwise, and what came of running it.
class ACTIONS {
public:
    explicit ACTIONS(int number)
    {
        for (int i = 0; i < number; ++i)
            add(QString(QChar('A' + i)), {"<working>/" + QString(QChar('A' + i))});
    }

    void add(QString const &name, QStringList const &targets) { all.push_back(new TEST_ACTION(name, {}, targets)); }

    TEST_ACTION &operator[](char name) { return *all[std::size_t(name - 'A')]; }

    // With one worker unless `options` say otherwise.
    RUN_RESULT run(RUN_STATE &state, RUN_OPTIONS const &options = {.jobs = 1, .keep_going = true, .interrupted = {}})
    {
        TEST_PROCESSOR processor(QVector<ACTION_INTERFACE *>(all.begin(), all.end()));
        PLAN const &plan = tree.plan({&processor});
        reasons = choose_actions(plan, state);
        return run_plan(plan, reasons, tree.files, tree.rules, options, state, nullptr);
    }

    std::vector<QString> reasons;

private:
    ASSET_TREE tree;
    std::vector<TEST_ACTION *> all;
};

}  // namespace

// One worker runs what is ready in list order, so that two builds print the same.
TEST(Run, OneWorkerKeepsListOrderAmongTheReady)
{
    ACTIONS actions(6);
    actions['A'].add_dependency(&actions['F'], false);
    actions['C'].add_dependency(&actions['E'], true);
    actions['B'].group = actions['E'].group = actions['F'].group = 7;  // says nothing about the order
    MEMORY_STATE state;
    RUN_RESULT const result = actions.run(state);
    EXPECT_EQ(state.began(), "BDECFA");
    EXPECT_EQ(result.done, 6);
    EXPECT_TRUE(result.good());
}

TEST(Run, WhatIsChosen)
{
    // Wiring of A to E; then which are stale, and what has to run for that, in list order.
    struct {
        char const *what;
        void (*wire)(ACTIONS &);
        QStringList stale;
        char const *run;
    } const cases[] = {
        {"nothing stale", [](ACTIONS &a) { a['A'].pull(&a['B']); }, {}, ""},
        {"a pull", [](ACTIONS &a) { a['A'].pull(&a['B']); }, {"A"}, "AB"},
        {"not back along a pull", [](ACTIONS &a) { a['A'].pull(&a['B']); }, {"B"}, "B"},
        {"a pull both ways", [](ACTIONS &a) { a['A'].pull_both_ways(&a['B']); }, {"B"}, "AB"},
        {"what is needed in memory", [](ACTIONS &a) { a['A'].add_dependency(&a['B'], true); }, {"A"}, "BA"},
        {"not who needs it", [](ACTIONS &a) { a['A'].add_dependency(&a['B'], true); }, {"B"}, "B"},
        {"order only", [](ACTIONS &a) { a['A'].add_dependency(&a['B'], false); }, {"A"}, "A"},
        {"order of both", [](ACTIONS &a) { a['A'].add_dependency(&a['B'], false); }, {"A", "B"}, "BA"},
        {"a chain",
         [](ACTIONS &a) {
             a['A'].add_dependency(&a['B'], true);
             a['B'].pull(&a['C']);
             a['C'].add_dependency(&a['D'], true);
             a['C'].add_dependency(&a['A'], false);
         },
         {"A"},
         "BADC"},
        {"an error", [](ACTIONS &a) { a['C'].set_error("wrong"); }, {}, "C"},
    };
    for (auto const &c : cases) {
        ACTIONS actions(5);
        c.wire(actions);
        MEMORY_STATE state(c.stale);
        actions.run(state);
        EXPECT_EQ(state.began(), c.run) << c.what;
    }
}

// A reader of a product that is made anew runs in the same build, not in the next.
TEST(Run, ReadersOfNewProductsRunAfterTheirMakers)
{
    TEST_ACTION *const maker = new TEST_ACTION("A", {"<raw>/a"}, {"<working>/a"});
    TEST_ACTION *const reader = new TEST_ACTION("B", {"<working>/a"}, {"<working>/b"});
    TEST_PROCESSOR processor({reader, maker});
    ASSET_TREE tree("", {"a"});
    PLAN const &plan = tree.plan({&processor});
    MEMORY_STATE state({"A"});
    std::vector<QString> const reasons = choose_actions(plan, state);
    EXPECT_EQ(reasons[0], "reads what is made by: A");
    run_plan(plan, reasons, tree.files, tree.rules, {.jobs = 1, .keep_going = false, .interrupted = {}}, state,
             nullptr);
    EXPECT_EQ(state.began(), "AB");
}

TEST(Run, AFailureFailsWhatDependsOnItButCleanUpsRun)
{
    ACTIONS actions(6);
    actions['A'].work = fail;
    actions['B'].add_dependency(&actions['A'], true);
    actions['C'].add_dependency(&actions['B'], false);
    actions['D'].add_dependency(&actions['A'], false);
    actions['D'].add_dependency(&actions['B'], false);
    actions['D'].auto_fail = false;
    actions['E'].add_dependency(&actions['D'], false);
    MEMORY_STATE state;
    RUN_RESULT const result = actions.run(state);
    EXPECT_EQ(state.events.join(' '), "+A -A xB xC +D -D +E -E +F -F");
    STATUS const expected[] = {ACTION_INTERFACE::FAILED, ACTION_INTERFACE::FAILED, ACTION_INTERFACE::FAILED,
                               ACTION_INTERFACE::DONE,   ACTION_INTERFACE::DONE,   ACTION_INTERFACE::DONE};
    EXPECT_TRUE(std::equal(result.statuses.begin(), result.statuses.end(), std::begin(expected), std::end(expected)));
    EXPECT_EQ(result.failed, 1);
    EXPECT_EQ(result.left_out, 2);
    EXPECT_FALSE(result.good());
}

TEST(Run, WithoutKeepGoingAFailureEndsTheRunAfterItsCleanUp)
{
    ACTIONS actions(7);
    actions['B'].work = fail;
    actions['D'].add_dependency(&actions['B'], false);
    actions['D'].auto_fail = false;
    actions['E'].add_dependency(&actions['C'], false);
    actions['E'].auto_fail = false;  // nothing to clean up: C did not run
    actions['F'].add_dependency(&actions['B'], true);
    actions['G'].add_dependency(&actions['F'], false);
    actions['G'].auto_fail = false;  // F did not run, but what B left is there
    MEMORY_STATE state;
    RUN_RESULT const result = actions.run(state, {.jobs = 1, .keep_going = false, .interrupted = {}});
    EXPECT_EQ(state.events.join(' '), "+A -A +B -B xC +D -D xE xF +G -G");
    EXPECT_EQ(result.statuses[2], ACTION_INTERFACE::SKIPPED);
}

TEST(Run, AnInterruptionAbortsWhatRunsAndLeavesOutTheRest)
{
    ACTIONS actions(3);
    std::atomic<bool> begun{false};
    TEST_ACTION *const long_work = &actions['A'];
    long_work->work = [&] {
        begun = true;
        while (long_work->add_progress(1) || KN::goes_on())  // as the action asks, and the libraries below it
            std::this_thread::yield();
        return ACTION_INTERFACE::FAILED;
    };
    actions['B'].add_dependency(long_work, false);
    actions['B'].auto_fail = false;
    MEMORY_STATE state;
    RUN_RESULT const result =
        actions.run(state, {.jobs = 1, .keep_going = true, .interrupted = [&] { return begun.load(); }});
    EXPECT_EQ(state.events.join(' '), "+A -A +B -B xC");
    EXPECT_TRUE(result.interrupted);
    EXPECT_FALSE(result.good());
    ASSERT_EQ(long_work->lines().size(), 1);
    EXPECT_EQ(long_work->lines()[0].text, "interrupted");
}

// Any number of workers: each action once, after all it waits for, and never beside one of its group.
TEST(Run, ManyWorkersKeepEdgesAndGroups)
{
    constexpr int number = 2000, groups = 20;
    std::vector<std::atomic<int>> ended(number);
    std::vector<std::atomic<int>> busy(groups);
    std::atomic<int> faults{0};
    QVector<ACTION_INTERFACE *> list;
    std::uint32_t random = 1;
    for (int i = 0; i < number; ++i) {
        TEST_ACTION *const action = new TEST_ACTION(QString::number(i), {}, {"<working>/" + QString::number(i)});
        action->group = i % 3 == 0 ? 0 : 1 + i % groups;
        std::vector<int> waits_for;
        for (int k = 0; k < 3 && i > 0; ++k) {
            random = random * 1664525 + 1013904223;
            waits_for.push_back(int(random >> 8) % i);
            action->add_dependency(list[waits_for.back()], false);
        }
        action->work = [&, i, waits_for, group = action->group] {
            for (int const earlier : waits_for)
                faults += ended[std::size_t(earlier)] != 1;
            if (group != 0)
                faults += busy[std::size_t(group) - 1]++ != 0;
            std::this_thread::yield();
            if (group != 0)
                --busy[std::size_t(group) - 1];
            ++ended[std::size_t(i)];
            return ACTION_INTERFACE::DONE;
        };
        list.append(action);
    }
    TEST_PROCESSOR processor(list);
    ASSET_TREE tree;
    MEMORY_STATE state;
    PLAN const &plan = tree.plan({&processor});
    RUN_RESULT const result = run_plan(plan, choose_actions(plan, state), tree.files, tree.rules,
                                       {.jobs = 8, .keep_going = false, .interrupted = {}}, state, nullptr);
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(result.done, number);
    for (auto const &times : ended)
        EXPECT_EQ(times, 1);
}

// A second run of the same plan finds the actions as new.
TEST(Run, ActionsAreResetBeforeTheyRun)
{
    TEST_ACTION *const action = new TEST_ACTION("A", {}, {"<working>/a"});
    action->work = [action] {
        action->output_line("line", 1);
        action->abort();
        return action->add_progress(5) ? ACTION_INTERFACE::FAILED : ACTION_INTERFACE::DONE;
    };
    TEST_PROCESSOR processor({action});
    ASSET_TREE tree;
    MEMORY_STATE state;
    PLAN const &plan = tree.plan({&processor});
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(run_plan(plan, {"again"}, tree.files, tree.rules, {}, state, nullptr).done, 1);
    EXPECT_EQ(action->lines().size(), 1);
    EXPECT_EQ(action->progress(), 5);
}

namespace {

class TALKER : public ACTION_TDB {
public:
    explicit TALKER(std::function<void(TALKER &)> told) : ACTION_TDB(nullptr), work(std::move(told)) {}
    STATUS run(FILE_TABLE const &, RULE_CACHE const &) override
    {
        output_line("before", 2);  // not counted: nothing is set up yet
        set_up_tdb_output();
        work(*this);
        return get_status_by_output();
    }
    std::function<void(TALKER &)> work;
};

}  // namespace

TEST(Run, ErrorLinesFailAnActionAndWarningsDoNot)
{
    ASSET_TREE tree;
    struct {
        char const *what;
        void (*work)(TALKER &);
        STATUS status;
        int lines;
    } const cases[] = {
        {"nothing", [](TALKER &) {}, ACTION_INTERFACE::DONE, 1},
        {"a warning", [](TALKER &action) { action.output_line("hm", 1); }, ACTION_INTERFACE::DONE, 2},
        {"a library's warning", [](TALKER &) { KN::message(1, "hm"); }, ACTION_INTERFACE::DONE, 2},
        {"an error", [](TALKER &action) { action.output_line("no", 2); }, ACTION_INTERFACE::FAILED, 2},
        {"a library's error", [](TALKER &) { KN::message(2, "no"); }, ACTION_INTERFACE::FAILED, 2},
        {"an exception", [](TALKER &) { throw std::runtime_error("thrown"); }, ACTION_INTERFACE::FAILED, 2},
    };
    for (auto const &c : cases) {
        TALKER action(c.work);
        EXPECT_EQ(run_action(action, tree.files.table, tree.rule_cache), c.status) << c.what;
        EXPECT_EQ(action.lines().size(), c.lines) << c.what;
        EXPECT_EQ(KN::set_thread_message_sink(nullptr), nullptr) << c.what;  // the thread is its own again
    }

    TEST_ACTION silent("A");
    silent.work = fail;
    EXPECT_EQ(run_action(silent, tree.files.table, tree.rule_cache), ACTION_INTERFACE::FAILED);
    ASSERT_EQ(silent.lines().size(), 1);
    EXPECT_EQ(silent.lines()[0].text, "failed without saying why");
}
