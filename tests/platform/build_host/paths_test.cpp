#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "tests/platform/build_host/asset_tree.h"

// Where paths of the four roots are seen in the tree.
TEST(Paths, LogicalPath)
{
    set_current_roots(usual_roots("/tree"));
    struct {
        char const *physical, *logical;
    } const cases[] = {
        {"/tree/raw_data/props/Hut.vx2", "<raw>/props/Hut.vx2"},
        {"/tree/old_raw_data/props/hut.vx2", "<raw>/props/hut.vx2"},
        {"/tree/working_data/a/b", "<working>/a/b"},
        {"/tree/old_working_data/a", "<working>/a"},
        {"/tree/working_data", "<working>"},
        {"/tree/raw_data/", "<raw>"},
        {"/tree/raw_data\\props\\hut.vx2", "<raw>/props/hut.vx2"},
        {"/tree/working_data//props//hut", "<working>/props/hut"},
        {"/tree/working_data/./props\\.\\./hut.d", "<working>/props/hut.d"},
        {"/tree/raw_database/hut.vx2", "/tree/raw_database/hut.vx2"},
        {"/elsewhere/hut.vx2", "/elsewhere/hut.vx2"},
    };
    for (auto const &c : cases)
        EXPECT_EQ(PATHS::logical_path(PHYSICAL_PATH(c.physical)), LOGICAL_PATH(c.logical)) << c.physical;
}

TEST(Paths, OldSourcesHaveOldTargets)
{
    set_current_roots(usual_roots("/tree"));
    EXPECT_EQ(PATHS::target_working_data(PHYSICAL_PATH("/tree/raw_data/a.vx2")), "/tree/working_data");
    EXPECT_EQ(PATHS::target_working_data(PHYSICAL_PATH("/tree/old_raw_data/a.vx2")), "/tree/old_working_data");
    // Files of the current tree are told from those of the old one by this text.
    EXPECT_FALSE(QString("/tree/raw_data/a.vx2").contains(PATHS::old_raw_data()));
    EXPECT_FALSE(PATHS::old_raw_data().isEmpty());
}

TEST(Paths, TargetFolderFromRule)
{
    struct {
        char const *folder, *value, *file, *expected;
    } const cases[] = {
        {"", "'models'", "<raw>/props/huts/hut.vx2", "models/props/huts"},
        {"", "'models'", "<raw>/hut.vx2", "models"},
        {"props", "'models'", "<raw>/props/huts/hut.vx2", "models/huts"},
        {"props", "'\\Models\\Old\\'", "<raw>/props/huts/hut.vx2", "Models/Old"},
        {"props", "'models\\old'", "<raw>/props/huts/hut.vx2", "models/old/huts"},
        {"props", "'/models'", "<raw>/props/huts/hut.vx2", "models"},
        {"props", "'<working>/models/'", "<raw>/props/huts/hut.vx2", "models"},
        {"props", "'<working>\\models\\old'", "<raw>/props/huts/hut.vx2", "models/old"},
        {"props", "'<working>'", "<raw>/props/huts/hut.vx2", ""},
        {"props", "''", "<raw>/props/huts/hut.vx2", "huts"},
        {"props", "{ null = true }", "<raw>/props/huts/hut.vx2", ""},
    };
    RULE_SCHEMA schema("Kind", "");
    schema.add_property("TargetPath", "");
    for (auto const &c : cases) {
        SCOPED_TRACE(std::string(c.folder) + ": " + c.value);
        QByteArray const text = QByteArray("[Kind]\nTargetPath = ") + c.value;
        ASSET_TREE tree(*c.folder ? "" : text.constData());
        if (*c.folder)
            tree.add_folder_rules(c.folder, text.constData());
        LOGICAL_PATH const file(c.file);
        RULE const rule = tree.rules.get(file, "Kind");
        ASSERT_TRUE(rule.exists);
        EXPECT_EQ(PATHS::relative_target_path_from_rule_path(rule, "TargetPath", file, tree.physical(file)),
                  c.expected);
        EXPECT_EQ(PATHS::relative_target_path_from_rule_path(rule, "Other", file, tree.physical(file)), "");
    }
}

TEST(Paths, ProjectFile)
{
    // Each faulty mox.toml with the line that it has to give.
    struct {
        char const *text, *fault;
    } const cases[] = {
        {"[paths]\nrwa = 'raw'", "mox.toml:2: [paths] has no 'rwa'; did you mean 'raw'?"},
        {"[paths]\nraw = 3", "mox.toml:2: raw is a text"},
        {"[database]\nport = 70000", "mox.toml:2: port is a number below 65536"},
        {"[depot]\n\nadd = ['a', 2]", "mox.toml:3: add is a list of texts"},
        {"depot = 1", "mox.toml:1: depot is a table; write [depot]"},
    };
    std::string const folder = testing::TempDir() + "mox_project_test";
    ASSERT_TRUE(KN::make_directories(folder));
    KN::String error;
    PROJECT project;
    for (auto const &c : cases) {
        ASSERT_TRUE(KN::write_finished_file(folder + "/mox.toml", c.text, error)) << error;
        QStringList faults;
        EXPECT_FALSE(read_project(QString::fromStdString(folder), project, faults)) << c.text;
        EXPECT_EQ(faults, QStringList{c.fault});
    }

    ASSERT_TRUE(
        KN::write_finished_file(folder + "/mox.toml", "[paths]\nraw = 'art/raw'\nworking = 'art/raw/out'", error));
    QStringList faults;
    EXPECT_FALSE(read_project(QString::fromStdString(folder), project, faults));
    ASSERT_EQ(faults.size(), 1);
    EXPECT_TRUE(faults[0].contains("of working is or lies in that of raw"));

    ASSERT_TRUE(
        KN::write_finished_file(folder + "/mox.toml", "[paths]\nraw = '../art/'\n[depot]\nkind = 'git'", error));
    faults.clear();
    EXPECT_TRUE(read_project(QString::fromStdString(folder), project, faults)) << faults.join('\n').toStdString();
    EXPECT_EQ(project.roots.raw.toStdString(), testing::TempDir() + "art");
    EXPECT_EQ(project.roots.working.toStdString(), folder + "/working_data");
    EXPECT_EQ(project.depot.kind, "git");
}
