#include "platform/build_host/run_hooks.h"
#include "platform/build_host/schemas.h"
#include "tests/platform/build_host/asset_tree.h"

namespace {

// Two kinds as a plug-in declares them.
struct KINDS {
    KINDS()
    {
        model.add_property("TargetPath", "where to");
        model.add_property("Category", "");
        model.add_property("Radius", "");
        model.add_property("Tree", "");
        settings.add_property("Enabled", "");
    }
    RULE_SCHEMA model{"Model", "a model"};
    RULE_SCHEMA settings{"Settings", ""};
};

// A value with its type, or the state that it lacks one in.
std::string shown(QVariant const &value)
{
    if (!value.isValid())
        return "absent";
    if (value.isNull())
        return "null";
    return std::string(value.typeName()) + " " + value.toString().toStdString();
}

}  // namespace

TEST(Rules, ValuesKeepTypeAndTheThreeStates)
{
    KINDS const kinds;
    ASSET_TREE tree("[Model]\nTargetPath = ''\nCategory = { null = true }\nRadius = 2.5");
    RULE const rule = tree.rule("<raw>/a.vx2", "Model");
    EXPECT_EQ(shown(rule.value("TargetPath")), "QString ");
    EXPECT_EQ(shown(rule.value("Category")), "null");
    EXPECT_EQ(shown(rule.value("Radius")), "double 2.5");
    EXPECT_EQ(shown(rule.value("Tree")), "absent");

    ASSET_TREE other("[Model]\nTargetPath = 'true'\nCategory = true\nRadius = 2");
    RULE const types = other.rule("<raw>/a.vx2", "Model");
    EXPECT_EQ(shown(types.value("TargetPath")), "QString true");
    EXPECT_EQ(shown(types.value("Category")), "bool true");
    EXPECT_EQ(shown(types.value("Radius")), "qlonglong 2");

    // In the build record all of these are different answers.
    std::set<std::uint64_t> answers;
    for (RULE const &asked : {rule, types})
        for (char const *name : {"TargetPath", "Category", "Radius", "Tree"})
            answers.insert(rule_answer(asked, name));
    EXPECT_EQ(answers.size(), 7u);  // Tree is absent in both
}

TEST(Rules, CascadeFromTheRootToTheNearestFolder)
{
    KINDS const kinds;
    ASSET_TREE tree("[Model]\nTargetPath = 'root'\nCategory = 'root'");
    tree.add_folder_rules("props", "[[Model]]\nCategory = 'props'\n"
                                   "[[Model]]\nfiles = 'tree_*.vx2'\nTree = true\n")
        .add_folder_rules("props/bare", "[Model]\nunset = ['Category']\nRadius = 1\n")
        .add_folder_rules("props/bare/new", "[Model]\ninherit = false\nRadius = 2\n")
        .add_folder_rules("units", "[[Model]]\nfiles = 'men/**/*.vx2'\nCategory = 'men'\n"
                                   "[[Model]]\nfiles = 'men/?an.vx2'\nTree = 1\n");
    struct {
        char const *path, *target, *category, *radius, *tree;
    } const cases[] = {
        {"<raw>/hut.vx2", "QString root", "QString root", "absent", "absent"},
        {"<raw>/props/hut.vx2", "QString root", "QString props", "absent", "absent"},
        {"<raw>/props/tree_a.vx2", "QString root", "QString props", "absent", "bool true"},
        {"<raw>/props/far/tree_b.vx2", "QString root", "QString props", "absent", "bool true"},
        {"<raw>/props/tree_far/c.vx2", "QString root", "QString props", "absent", "absent"},
        {"<raw>/props/bare/hut.vx2", "QString root", "absent", "qlonglong 1", "absent"},
        {"<raw>/props/bare/deep/er/tree_c.vx2", "QString root", "absent", "qlonglong 1", "bool true"},
        {"<raw>/props/bare/new/hut.vx2", "absent", "absent", "qlonglong 2", "absent"},
        {"<raw>/propsy/hut.vx2", "QString root", "QString root", "absent", "absent"},
        {"<raw>/units/men/far/a.vx2", "QString root", "QString men", "absent", "absent"},
        {"<raw>/units/men/man.vx2", "QString root", "QString root", "absent", "qlonglong 1"},
        {"<raw>/units/men/x/man.vx2", "QString root", "QString men", "absent", "absent"},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.path);
        RULE const rule = tree.rule(c.path, "Model");
        ASSERT_TRUE(rule.exists);
        EXPECT_EQ(shown(rule.value("TargetPath")), c.target);
        EXPECT_EQ(shown(rule.value("Category")), c.category);
        EXPECT_EQ(shown(rule.value("Radius")), c.radius);
        EXPECT_EQ(shown(rule.value("Tree")), c.tree);
    }
    EXPECT_FALSE(tree.rule("<working>/hut.vx2", "Model").exists);
    EXPECT_FALSE(tree.rule("<raw>/hut.vx2", "Settings").exists);
}

TEST(Rules, OriginsNameFileLineAndFolder)
{
    KINDS const kinds;
    ASSET_TREE tree("# head\n[Model]\nTargetPath = 'a'\n\nCategory = 'b'\n");
    tree.add_folder_rules("props", "[Model]\nCategory = 'c'\n");
    RULE_DATA const &data = *tree.rule("<raw>/props/x.vx2", "Model").data();
    ASSERT_EQ(data.rules.size(), 2u);
    EXPECT_EQ(data.rules[0]->line, 2);
    RULE_ORIGIN const &target = *data.find("TargetPath")->origin;
    EXPECT_EQ(target.file + ":" + QString::number(target.line) + " " + target.folder, "mox.toml:3 <raw>");
    RULE_ORIGIN const &category = *data.find("Category")->origin;
    EXPECT_EQ(category.file + ":" + QString::number(category.line) + " " + category.folder,
              "props/rules.toml:2 <raw>/props");
}

TEST(Rules, GlobalRulesHoldForTheWholeTree)
{
    KINDS const kinds;
    ASSET_TREE tree("[global.Settings]\nEnabled = false");
    EXPECT_EQ(shown(tree.rules.get_global("Settings").value("Enabled")), "bool false");
    EXPECT_FALSE(tree.rules.get_global("Model").exists);
    EXPECT_FALSE(tree.rule("<raw>/a", "Settings").exists);
}

TEST(Rules, FaultsNamePlaceAndWayOut)
{
    KINDS const kinds;
    struct {
        char const *text, *fault;
    } const cases[] = {
        {"[Modle]\n", "f/rules.toml:1: there is no rule kind 'Modle'; did you mean 'Model'?"},
        {"[Model]\n\nTargtPath = 'x'",
         "f/rules.toml:3: rule Model has no property 'TargtPath'; did you mean 'TargetPath'?"},
        {"[Model]\nunset = ['Tre']", "f/rules.toml:2: rule Model has no property 'Tre'; did you mean 'Tree'?"},
        {"[Model]\nSomethingElse = 1", "f/rules.toml:2: rule Model has no property 'SomethingElse'"},
        {"[Model]\nTree = [1]", "f/rules.toml:2: 'Tree' is neither text nor number nor true or false"},
        {"[Model]\nTree = 1979-05-27", "f/rules.toml:2: 'Tree' is neither text nor number nor true or false"},
        {"[Model]\nTree = { null = false }", "f/rules.toml:2: a table as a value can only be { null = true }"},
        {"[Model]\nfiles = ''", "f/rules.toml:2: files is a pattern such as \"*.vx2\""},
        {"[Model]\ninherit = 'no'", "f/rules.toml:2: inherit is true or false"},
        {"Model = 3", "f/rules.toml:1: 'Model' is no rule; a rule is written [KIND] or [[KIND]]"},
        {"[global.Settings]\nEnabled = 1", "f/rules.toml:1: global rules stand in mox.toml"},
        {"[paths]\nraw = 'x'", "f/rules.toml:1: there is no rule kind 'paths'"},
        {"[a.a.a.a.a.a.a.a.a.a.a.a.a.a.a.a.a]", "f/rules.toml: a key has more than 16 sections"},
        {"x = [\"\"\"a\"\"\"\", { 'a' . a.a.a.a.a.a.a.a.a.a.a.a.a.a.a.a = 1 }]",
         "f/rules.toml: a key has more than 16 sections"},
    };
    for (auto const &c : cases) {
        ASSET_TREE tree;
        tree.add_folder_rules("f", c.text);
        EXPECT_EQ(tree.faults, QStringList{c.fault}) << c.text;
    }
    // Dots that separate no sections.
    ASSET_TREE dotted;
    dotted.add_folder_rules("f", "# ....................\n[Model]\nTargetPath = \"\\\"....................\"\n"
                                 "Tree = '''...\n'.................'''\n");
    EXPECT_EQ(dotted.faults, QStringList());
    ASSET_TREE percent;
    percent.add_folder_rules("%2%3", "Model = 3");
    EXPECT_EQ(percent.faults,
              QStringList("%2%3/rules.toml:1: 'Model' is no rule; a rule is written [KIND] or [[KIND]]"));
    // What is no TOML is told with its line, in the parser's words, which may name a control character.
    for (char const *text : {"[Model]\nTree = \n", "[Model]\nTree = t\n", "[Model]\nTree = \"\x1b[31m\"\n"}) {
        ASSET_TREE tree;
        tree.add_folder_rules("f", text);
        ASSERT_EQ(tree.faults.size(), 1);
        EXPECT_TRUE(tree.faults[0].startsWith("f/rules.toml:2: ")) << tree.faults[0].toStdString();
        EXPECT_TRUE(std::none_of(tree.faults[0].begin(), tree.faults[0].end(), [](QChar c) { return c < ' '; }))
            << text;
    }
}

// A plug-in that leaves takes its kinds along; what planners read without a schema stays allowed.
TEST(Rules, SchemasComeAndGoWithTheirObjects)
{
    {
        KINDS const kinds;
        ASSERT_EQ(schemas().size(), 2);
        EXPECT_EQ(schemas()[0].properties[0].help, "where to");
    }
    EXPECT_TRUE(schemas().isEmpty());
    EXPECT_EQ(check_rule_kind("RigidNodeV2"), "");
    EXPECT_EQ(check_rule_property("RigidNodeV2", "CanBurn"), "");
    EXPECT_NE(check_rule_property("RigidNodeV2", "CanFly"), "");
}
