#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "platform/build_host/run_hooks.h"
#include "tests/platform/build_host/asset_tree.h"

#include <filesystem>
#include <thread>

namespace {

QStringList keys(FILE_TABLE const &files)
{
    QStringList all;
    for (auto entry = files.begin(); entry != files.end(); ++entry)
        all.append(entry.key());
    return all;
}

class LOOK_UPS final : public RUN_WATCH {
public:
    void file_looked_up(LOGICAL_PATH const &path, LOOK_UP answer) override
    {
        seen.append((answer == LOOK_UP::FOUND ? "+" : "-") + path);
    }
    void rule_asked(LOGICAL_PATH const &, QString const &, RULE const &) override {}
    void property_read(RULE_DATA const &, QString const &) override {}
    void file_booked(PHYSICAL_PATH const &, bool) override {}
    void file_removed(PHYSICAL_PATH const &) override {}

    QStringList seen;
};

}  // namespace

// An order that folded case or took "-" or "X" for less would split the run of a folder's files.
TEST(FileTable, AFolderIsOneRunInTheOrderOfCodeUnits)
{
    ASSET_TREE tree("", {"skeletonsX", "skeletons/B", "skeletons/a", "skeletons-x", "Skeletons/c", "z"});
    EXPECT_EQ(keys(tree.files.table), (QStringList{"<raw>/Skeletons/c", "<raw>/skeletons-x", "<raw>/skeletons/B",
                                                   "<raw>/skeletons/a", "<raw>/skeletonsX", "<raw>/z"}));
    QString const prefix = "<raw>/skeletons/";
    QStringList run;
    auto entry = tree.files.table.lowerBound(LOGICAL_PATH(prefix));
    for (; entry != tree.files.table.end() && entry.key().startsWith(prefix); ++entry)
        run.append(entry.key());
    EXPECT_EQ(run, (QStringList{"<raw>/skeletons/B", "<raw>/skeletons/a"}));
}

// Actions enter files while others walk: look-ups see them at once, walks after the run.
TEST(FileTable, InsertedFilesAreFoundAtOnceAndWalkedLater)
{
    ASSET_TREE tree("", {"b"});
    FILE_TABLE &files = tree.files.table;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&files, t] {
            for (int i = 0; i < 200; ++i) {
                LOGICAL_PATH const path(QString("<raw>/%1").arg(t % 2 * 1000 + i));
                FILE_ENTRY *const entry = new FILE_ENTRY;
                if (files.insert(path, entry) != entry)
                    delete entry;
                EXPECT_TRUE(files.contains(path));
                EXPECT_EQ(keys(files).size(), 1);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    files.settle();
    QStringList const all = keys(files);
    EXPECT_EQ(all.size(), 401);
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
    for (QString const &key : all)
        EXPECT_TRUE(files.find(LOGICAL_PATH(key)) != files.end()) << key.toStdString();
}

TEST(FileTable, LookUpsOfARunningActionAreNoted)
{
    ASSET_TREE tree("", {"a"});
    LOOK_UPS watch;
    RUN_WATCH *const before = set_run_watch(&watch);
    (void)tree.files.table.contains(LOGICAL_PATH("<raw>/a"));
    (void)tree.files.table.value(LOGICAL_PATH("<raw>/b"));
    (void)tree.files.table.find(LOGICAL_PATH("<raw>/c"));
    (void)tree.files.table.peek(LOGICAL_PATH("<raw>/d"));
    set_run_watch(before);
    (void)tree.files.table.contains(LOGICAL_PATH("<raw>/a"));
    EXPECT_EQ(watch.seen, (QStringList{"+<raw>/a", "-<raw>/b", "-<raw>/c"}));
}

TEST(FileTable, ScanOfATreeOnDisk)
{
    std::string const folder = testing::TempDir() + "mox_scan_test";
    std::filesystem::remove_all(folder);
    auto const write = [&](std::string const &name, char const *text = "x") {
        KN::String error;
        ASSERT_TRUE(KN::make_directories((folder + "/" + name).substr(0, (folder + "/" + name).rfind('/'))));
        ASSERT_TRUE(KN::write_finished_file(folder + "/" + name, text, error)) << error;
    };
    write("raw_data/a/x.vx2", "12345");
    write("raw_data/a.b");
    write("raw_data/a/rules.toml");
    write("raw_data/rules.toml");
    write("raw_data/.hidden/file");
    write("raw_data/.file");
    write("raw_data/Z\xc3\xbc.vx2");
    write("old_raw_data/a/x.vx2");
    write("old_raw_data/a/y.vx2");
    write("working_data/m.rigid_model_v2");
    write("elsewhere/secret.vx2");
    std::filesystem::create_directory_symlink(folder + "/elsewhere", folder + "/raw_data/link");
    std::filesystem::create_symlink(folder + "/nowhere", folder + "/raw_data/dangling");

    TREE_ROOTS const roots = usual_roots(QString::fromStdString(folder));
    FILE_TREE tree;
    QStringList faults;
    tree.scan(roots, faults);
    EXPECT_EQ(faults, QStringList());
    EXPECT_EQ(keys(tree.table), (QStringList{QString::fromUtf8("<raw>/Z\xc3\xbc.vx2"), "<raw>/a.b", "<raw>/a/x.vx2",
                                             "<raw>/a/y.vx2", "<working>/m.rigid_model_v2"}));
    EXPECT_EQ(tree.table.value(LOGICAL_PATH("<raw>/a/x.vx2"))->physical, PHYSICAL_PATH(roots.raw + "/a/x.vx2"));
    EXPECT_EQ(tree.table.value(LOGICAL_PATH("<raw>/a/x.vx2"))->size, 5);
    EXPECT_EQ(tree.table.value(LOGICAL_PATH("<raw>/a/y.vx2"))->physical, PHYSICAL_PATH(roots.old_raw + "/a/y.vx2"));
    ASSERT_EQ(tree.rule_files.size(), 2u);
    EXPECT_EQ(tree.rule_files[0].folder, LOGICAL_PATH("<raw>"));
    EXPECT_EQ(tree.rule_files[1].folder, LOGICAL_PATH("<raw>/a"));
}
