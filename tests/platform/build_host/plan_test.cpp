#include "tests/platform/build_host/asset_tree.h"
#include "tests/platform/build_host/test_actions.h"

namespace {

// "A>B" for each dependency, with "!" for a flag, "h" for the host's own and "p" for a product; in list order.
QStringList edges(PLAN const &plan)
{
    QStringList all;
    for (PLANNED_ACTION const &planned : plan.actions)
        for (PLAN_EDGE const &edge : plan.dependencies.of(planned.index))
            all.append(planned.action->get_name(false) + ">" +
                       plan.actions[std::size_t(edge.other)].action->get_name(false) + (edge.flag ? "!" : "") +
                       (edge.by_host ? "h" : "") + (edge.is_product ? "p" : ""));
    return all;
}

QString names(PLAN const &plan)
{
    QString all;
    for (PLANNED_ACTION const &planned : plan.actions)
        all += planned.action->get_name(false);
    return all;
}

}  // namespace

TEST(Plan, ProcessorsSeeTheTargetsOfThoseBefore)
{
    TEST_PROCESSOR first({new TEST_ACTION("A", {"<raw>/a.vx2"}, {"<working>/a.model"}),
                          new TEST_ACTION("B", {"<raw>/a.vx2"}, {"<working>/a.model.xml"})});
    TEST_PROCESSOR second([](FILE_TABLE const &files, RULE_CACHE const &) {
        QVector<ACTION_INTERFACE *> actions;
        for (auto entry = files.begin(); entry != files.end(); ++entry) {
            if (!entry.key().endsWith(".model"))
                continue;
            EXPECT_EQ(entry.value()->state, FILE_ENTRY::PLANNED);
            EXPECT_EQ(entry.value()->actions.size(), 1);
            actions.append(new TEST_ACTION("C", {entry.key()}, {entry.key() + ".agf"}));
        }
        return actions;
    });
    ASSET_TREE tree("", {"a.vx2"});
    PLAN const &plan = tree.plan({&first, &second});
    EXPECT_EQ(names(plan), "ABC");
    EXPECT_EQ(edges(plan), QStringList{"C>Ahp"});
    EXPECT_EQ(plan.actions[2].main_target()->logical, LOGICAL_PATH("<working>/a.model.agf"));
}

TEST(Plan, EdgesOfThePlugInAndOfTheHostAreToldApart)
{
    TEST_ACTION *const a = new TEST_ACTION("A", {}, {"<working>/a"});
    TEST_ACTION *const b = new TEST_ACTION("B", {"<working>/a"}, {"<working>/b"});
    TEST_ACTION *const c = new TEST_ACTION("C", {"<working>/a", "<working>/b"}, {"<working>/c"});
    b->add_dependency(a, true);
    c->add_dependency(a, false);
    TEST_PROCESSOR processor({c, b, a});
    ASSET_TREE tree;
    EXPECT_EQ(edges(tree.plan({&processor})), (QStringList{"C>Ap", "C>Bhp", "B>A!p"}));
}

TEST(Plan, TwoProducersOfOneFileAreWarnedOfAndOrdered)
{
    TEST_ACTION *const a = new TEST_ACTION("A", {}, {"<working>/x"});
    TEST_ACTION *const b = new TEST_ACTION("B", {}, {"<working>/x"});
    TEST_ACTION *const c = new TEST_ACTION("C", {}, {"<working>/y"});
    TEST_ACTION *const d = new TEST_ACTION("D", {}, {"<working>/y"});
    c->add_dependency(d, false);  // against the order of the list: stays the only edge of the two
    TEST_PROCESSOR processor({a, b, c, d});
    ASSET_TREE tree;
    PLAN const &plan = tree.plan({&processor});
    EXPECT_EQ(edges(plan), (QStringList{"B>Ah", "C>D"}));
    EXPECT_EQ(plan.warnings,
              (QStringList{"/tree/working_data/x is written by two actions, A and B; the later one's stays",
                           "/tree/working_data/y is written by two actions, C and D; the later one's stays"}));
}

TEST(Plan, CyclesAreErrorsOfTheirActionsOnly)
{
    TEST_ACTION *const a = new TEST_ACTION("A");
    TEST_ACTION *const b = new TEST_ACTION("B", {"<working>/c"});
    TEST_ACTION *const c = new TEST_ACTION("C", {}, {"<working>/c"});
    TEST_ACTION *const d = new TEST_ACTION("D");
    TEST_ACTION *const e = new TEST_ACTION("E");
    a->add_dependency(b, false);
    c->add_dependency(a, true);
    d->add_dependency(c, false);
    e->add_dependency(e, false);
    TEST_PROCESSOR processor({a, b, c, d, e});
    ASSET_TREE tree;
    PLAN const &plan = tree.plan({&processor});
    EXPECT_EQ(a->error(), "it waits for itself: A -> B -> C -> A");
    EXPECT_EQ(b->error(), "it waits for itself: B -> C -> A -> B");
    EXPECT_EQ(c->error(), "it waits for itself: C -> A -> B -> C");
    EXPECT_EQ(d->error(), "");
    EXPECT_EQ(e->error(), "it waits for itself: E -> E");
    EXPECT_EQ(edges(plan), QStringList{"D>C"});
}

TEST(Plan, FaultsBecomeErrorsOfTheirActions)
{
    TEST_ACTION stranger("S");
    TEST_ACTION *const a = new TEST_ACTION("A");
    a->add_dependency(&stranger, false);
    TEST_ACTION *const b = new TEST_ACTION("B", {}, {"<working>/../../etc/passwd"});
    TEST_ACTION *const c = new TEST_ACTION("C", {}, {"/etc/passwd"});
    TEST_ACTION *const d = new TEST_ACTION("D", {"<raw>/x"}, {"<raw>/x"});  // its own source: no product
    TEST_ACTION *const e = new TEST_ACTION("E", {}, {"<working>/.mox/record.sqlite"});
    TEST_PROCESSOR processor({a, b, c, d, e});
    ASSET_TREE tree("", {"x"});
    PLAN const &plan = tree.plan({&processor});
    EXPECT_EQ(a->error(), "it is linked to an action that is not part of the plan");
    EXPECT_EQ(b->error(), "its target /tree/working_data/../../etc/passwd lies outside the tree");
    EXPECT_EQ(c->error(), "its target /etc/passwd lies outside the tree");
    EXPECT_EQ(d->error(), "");
    EXPECT_FALSE(plan.actions[3].has_products);
    EXPECT_EQ(e->error(),
              "its target /tree/working_data/.mox/record.sqlite is hidden by a name that begins with a dot");
    EXPECT_TRUE(tree.files.table.value(LOGICAL_PATH("<raw>/x"))->actions.isEmpty());
}

namespace {

// Plans one action for each raw file, reading one rule and one global rule; the signatures, by name.
QMap<QString, quint64> signatures(char const *rules, char const *folder_rules)
{
    TEST_PROCESSOR processor([](FILE_TABLE const &files, RULE_CACHE const &cache) {
        QVector<ACTION_INTERFACE *> actions;
        (void)cache.get_global("Settings").value("Enabled");
        for (auto entry = files.begin(); entry != files.end(); ++entry) {
            if (!entry.key().startsWith("<raw>"))
                continue;
            (void)cache.get(entry.key(), "Model").value("TargetPath");
            QString const name = entry.key().section('/', -1);
            TEST_ACTION *const main = new TEST_ACTION(name, {entry.key()}, {"<working>/" + name});
            actions.append(main);
        }
        return actions;
    });
    ASSET_TREE tree(rules, {"a", "f/b"});
    tree.add_folder_rules("f", folder_rules);
    QMap<QString, quint64> all;
    for (PLANNED_ACTION const &planned : tree.plan({&processor}).actions)
        all.insert(planned.action->get_name(false), planned.signature);
    return all;
}

}  // namespace

// What planning reads of the rules decides who is out of date: no more and no less.
TEST(Plan, SignaturesFollowTheRulesThatWereRead)
{
    RULE_SCHEMA model("Model", ""), settings("Settings", "");
    model.add_property("TargetPath", "");
    model.add_property("Other", "");
    settings.add_property("Enabled", "");

    auto const base = signatures("[Model]\nTargetPath = 'x'", "");
    EXPECT_NE(base["a"], base["b"]);
    struct {
        char const *change, *rules, *folder_rules;
        bool a_changes, b_changes;
    } const cases[] = {
        {"nothing", "[Model]\nTargetPath = 'x'", "", false, false},
        {"a property that nobody reads", "[Model]\nTargetPath = 'x'\nOther = 1", "", false, false},
        {"another value", "[Model]\nTargetPath = 'y'", "", true, true},
        {"the value of one folder", "[Model]\nTargetPath = 'x'", "[Model]\nTargetPath = 'y'", false, true},
        {"the same value from another place", "[Model]\nTargetPath = 'x'", "[Model]\nTargetPath = 'x'", false, false},
        {"null instead of a text", "[Model]\nTargetPath = { null = true }", "", true, true},
        {"no rule", "", "", true, true},
        {"a global rule", "[Model]\nTargetPath = 'x'\n[global.Settings]\nEnabled = 0", "", true, true},
    };
    for (auto const &c : cases) {
        auto const now = signatures(c.rules, c.folder_rules);
        EXPECT_EQ(now["a"] != base["a"], c.a_changes) << c.change;
        EXPECT_EQ(now["b"] != base["b"], c.b_changes) << c.change;
    }
}
