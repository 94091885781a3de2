#include "Plugins/Vx2/host/action_convert.h"
#include "Plugins/Vx2/host/action_error.h"
#include "Plugins/Vx2/host/action_remove_from_db.h"
#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "platform/build_host/asset_store.h"
#include "tests/platform/build_host/asset_tree.h"
#include "tests/platform/build_host/test_actions.h"

#include <filesystem>

namespace {

class CONVERTER : public ACTION_CONVERT {
public:
    using ACTION_CONVERT::ACTION_CONVERT;
    bool convert(PHYSICAL_PATH const &, PHYSICAL_PATH const &to, RULE_CACHE const &, FILE_TABLE const &) override
    {
        KN::String error;
        return KN::write_finished_file(to.toStdString(), "made", error);
    }
};

// Notes what is written and staged, in order.
class MEMORY_STORE : public ASSET_STORE {
public:
    QString identity() override { return place; }
    bool apply(UPDATE_DB_TABLE const &table, QString const &key, bool patch, QString &fault) override
    {
        calls.append(QString(patch ? "patch " : "replace ") + table.name + " " + key);
        fault = "full";
        return !is_full;
    }
    bool remove(QString const &key, QString const &table, QString const &column, QString const &value, bool, bool,
                bool &, QString &) override
    {
        calls.append("remove " + key + " " + table + "." + column + "=" + value);
        return true;
    }
    void want_export(QString const &table, bool) override { calls.append("export " + table); }

    QStringList calls;
    QString place = "memory";
    bool is_full = false;
};

struct STORE_SCOPE {
    explicit STORE_SCOPE(ASSET_STORE &store) : before(set_asset_store(&store)) {}
    ~STORE_SCOPE() { set_asset_store(before); }
    ASSET_STORE *before;
};

class REMOVER : public ACTION_REMOVE_FROM_DB {
public:
    REMOVER(QString const &asset, PROCESSOR_INTERFACE *planned_by) : ACTION_REMOVE_FROM_DB(asset, {}, true, planned_by)
    {
        add_table_name_for_export("lods");
    }

protected:
    bool remove_rows() override
    {
        bool found = false;
        return remove("lods", "model", key, true, false, found) && !found;
    }
};

// A model M with rows in two tables, wired as the scene planner wires them.
class ROWS_PROCESSOR : public COMPLEX_ASSET_PROCESSOR {
public:
    QString get_name() const override { return "rows"; }
    QString processor_prefix() const override { return "test_"; }
    QVector<ACTION_INTERFACE *> plan_actions(FILE_TABLE const &files, RULE_CACHE const &) override
    {
        DB_ROW row;
        row["key"] = {"hut", true, false};
        row["category"] = {category, false, false};
        UPDATE_DB_TABLE const main{"models", {row}, {true, true, true, true}};
        UPDATE_DB_TABLE const lods{"lods", {row}, {true, true, false, true}};
        QVector<ACTION_INTERFACE *> rows, all;
        create_db_actions({main, lods}, "hut", patch, rows, files, true);
        model = new TEST_ACTION("M", {}, {"<working>/hut"});
        for (ACTION_INTERFACE *const waiting : waiting_actions) {
            all.append(waiting);
            model->pull(waiting);
            waiting->add_dependency(model, false);
        }
        waiting_actions.clear();
        ACTION_INTERFACE *const removal = new REMOVER("hut", this);
        rows.append(removal);
        rows[0]->add_dependency(removal, false);
        rows[0]->pull(removal);
        return all + rows + QVector<ACTION_INTERFACE *>{model};
    }

    TEST_ACTION *model = nullptr;
    QString category = "house";
    bool patch = true;
};

}  // namespace

TEST(ActionConvert, TargetIsPutTogether)
{
    struct {
        char const *source, *path, *extension, *target;
    } const cases[] = {
        {"/tree/raw_data/a/hut.v2.vx2", nullptr, nullptr, "/tree/raw_data/a/hut.v2.vx2"},
        {"/tree/raw_data/a/hut.v2.vx2", "/tree/working_data/m", nullptr, "/tree/working_data/m/hut.v2.vx2"},
        {"/tree/raw_data/a/hut.v2.vx2", nullptr, ".rigid", "/tree/raw_data/a/hut.v2.rigid"},
        {"/tree/raw_data/a/hut.vx2", "/tree/working_data//m", "", "/tree/working_data//m/hut"},
        {"/tree/raw.data/hut", nullptr, nullptr, "/tree/raw.data/hut"},
    };
    for (auto const &c : cases) {
        CONVERTER action(PHYSICAL_PATH(c.source), nullptr);
        if (c.path)
            action.set_target_path(c.path);
        if (c.extension)
            action.set_target_extension(c.extension);
        EXPECT_EQ(action.get_target(), PHYSICAL_PATH(c.target));
    }
}

TEST(ActionConvert, RunMakesTheFolderAndEntersTheTarget)
{
    std::string const folder = testing::TempDir() + "mox_convert_test";
    std::filesystem::remove_all(folder);
    ASSET_TREE tree;
    set_current_roots(usual_roots(QString::fromStdString(folder)));
    CONVERTER action(PHYSICAL_PATH(QString::fromStdString(folder + "/raw_data/a.vx2")), nullptr);
    action.set_target_path(QString::fromStdString(folder + "/working_data/new/folder"));

    CONVERTER wrong(action);
    wrong.set_error("No target path");
    EXPECT_EQ(static_cast<ACTION_INTERFACE &>(wrong).run(tree.files.table, tree.rule_cache), ACTION_INTERFACE::FAILED);
    ASSERT_EQ(wrong.lines().size(), 1);
    EXPECT_EQ(wrong.lines()[0].text, "No target path");
    EXPECT_FALSE(KN::exists(folder + "/working_data"));

    EXPECT_EQ(run_action(action, tree.files.table, tree.rule_cache), ACTION_INTERFACE::DONE);
    FILE_ENTRY const *const entry = tree.files.table.value(LOGICAL_PATH("<working>/new/folder/a.vx2"));
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->physical, action.get_target());
}

TEST(ActionError, IsAlwaysRunAndFailsWithItsText)
{
    ACTION_ERROR *const action = new ACTION_ERROR("Update", "no path", nullptr);
    action->add_source_file(LOGICAL_PATH("<raw>/a"));
    TEST_PROCESSOR processor({action});
    ASSET_TREE tree("", {"a"});
    MEMORY_STATE state{QStringList()};
    PLAN const &plan = tree.plan({&processor});
    EXPECT_EQ(run_plan(plan, choose_actions(plan, state), tree.files, tree.rules, {}, state, nullptr).failed, 1);
    ASSERT_EQ(action->lines().size(), 1);
    EXPECT_EQ(action->lines()[0].text, "no path");
    EXPECT_EQ(action->get_name(true), "Update (<raw>/a)");
}

TEST(DatabaseActions, RowsAreWrittenAfterAGoodModelOnly)
{
    for (bool const model_fails : {false, true}) {
        SCOPED_TRACE(model_fails ? "model fails" : "model is good");
        MEMORY_STORE store;
        STORE_SCOPE const scope(store);
        ROWS_PROCESSOR processor;
        ASSET_TREE tree;
        PLAN const &plan = tree.plan({&processor});
        if (model_fails)
            processor.model->work = [] { return ACTION_INTERFACE::FAILED; };
        MEMORY_STATE state;
        RUN_RESULT const result = run_plan(plan, choose_actions(plan, state), tree.files, tree.rules,
                                           {.jobs = 1, .keep_going = true, .interrupted = {}}, state, nullptr);
        QStringList const removal{"remove test_hut lods.model=hut", "export lods"};
        QStringList const rows{"patch models test_hut", "export models", "patch lods test_hut"};
        EXPECT_EQ(store.calls, model_fails ? removal : removal + rows);
        EXPECT_EQ(result.left_out, model_fails ? 3 : 0);
    }
}

TEST(DatabaseActions, FaultsOfTheDatabaseFailThem)
{
    MEMORY_STORE store;
    store.is_full = true;
    ROWS_PROCESSOR processor;
    ASSET_TREE tree;
    PLAN const &plan = tree.plan({&processor});
    MEMORY_STATE state;
    auto const run = [&] {
        return run_plan(plan, choose_actions(plan, state), tree.files, tree.rules,
                        {.jobs = 1, .keep_going = true, .interrupted = {}}, state, nullptr);
    };
    ACTION_INTERFACE const &removal = *plan.actions[3].action, &main_row = *plan.actions[1].action;
    EXPECT_EQ(run().statuses[3], ACTION_INTERFACE::FAILED);
    EXPECT_EQ(removal.lines()[0].text, "there is no asset database to write to");
    STORE_SCOPE const scope(store);
    RUN_RESULT const result = run();
    EXPECT_EQ(result.statuses[3], ACTION_INTERFACE::DONE);
    EXPECT_EQ(main_row.lines()[0].text, "full");
    EXPECT_EQ(result.left_out, 1);  // the second table
}

// Rows have no files of their own, so the model's signature has to tell when they change.
TEST(DatabaseActions, RowsCountForTheModelThatPullsThem)
{
    auto const signature = [](char const *category, bool patch, char const *place) {
        MEMORY_STORE store;
        store.place = place;
        STORE_SCOPE const scope(store);
        ROWS_PROCESSOR processor;
        processor.category = category;
        processor.patch = patch;
        ASSET_TREE tree;
        return tree.plan({&processor}).actions.back().signature;
    };
    quint64 const base = signature("house", true, "here");
    EXPECT_EQ(signature("house", true, "here"), base);
    EXPECT_NE(signature("barn", true, "here"), base);
    EXPECT_NE(signature("house", false, "here"), base);
    EXPECT_NE(signature("house", true, "there"), base);
}
