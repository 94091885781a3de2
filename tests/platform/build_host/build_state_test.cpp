#include "tests/platform/build_host/built_tree.h"

#include <QtCore/QCoreApplication>

namespace {

QString const a_text = QStringLiteral("raw_data/a.txt");

TEST_F(BUILT_TREE, NothingToDoRunsNothingAndReadsNoContents)
{
    write(a_text, "use b.txt\nuse missing.txt\npublish");
    write("raw_data/b.txt", "b");
    EXPECT_EQ(build().run, QStringList({"a", "b"}));
    BUILD const second = build();
    EXPECT_EQ(second.run, QStringList());
    EXPECT_EQ(second.contents_read, 0u);
    EXPECT_TRUE(second.good);
}

TEST_F(BUILT_TREE, WhatIsDeclaredOnlyAfterTheWorkIsNoChange)
{
    write(a_text, "grow");
    EXPECT_EQ(build().run, QStringList("a"));
    EXPECT_EQ(build().run, QStringList());
    QFile::remove(path("working_data/made/a.out.grown"));
    EXPECT_EQ(build().run, QStringList("a"));
    EXPECT_EQ(build().run, QStringList());
}

// Each change of a settled tree, what it makes run, and why.
TEST_F(BUILT_TREE, EveryChangeRunsWhatDependsOnItAndNothingElse)
{
    struct CHANGE {
        char const *what;
        std::function<void()> make;
        QStringList run;
        char const *reason;  // of the first
    };
    CHANGE const changes[] = {
        {"a source", [&] { write("raw_data/c.txt", "C"); }, {"c"}, "<raw>/c.txt has changed"},
        {"a file that others take in", [&] { write("raw_data/b.txt", "B"); }, {"a", "b"}, "<raw>/b.txt has changed"},
        {"a file that was not found", [&] { write("raw_data/late.inc", "!"); }, {"a"}, "<raw>/late.inc has appeared"},
        {"and goes again", [&] { QFile::remove(path("raw_data/late.inc")); }, {"a"}, "<raw>/late.inc is gone"},
        {"a product",
         [&] { QFile::remove(path("working_data/made/b.out")); },
         {"b"},
         "<working>/made/b.out is missing"},
        {"a rule value read while running",
         [&] { write("raw_data/rules.toml", "[Copy]\nTargetPath = \"made\"\nSuffix = \"-\"\n"); },
         {"a", "b", "c"},
         "Copy.Suffix changed from (absent) to '-' (raw_data/rules.toml:3)"},
        {"a rule value that nobody reads",
         [&] { write("raw_data/rules.toml", "[Copy]\nTargetPath = \"made\"\nSuffix = \"-\"\nUnread = 1\n"); },
         {},
         nullptr},
        {"a rule for one file",
         [&] {
             write("raw_data/rules.toml",
                   "[[Copy]]\nTargetPath = \"made\"\nSuffix = \"-\"\n[[Copy]]\nfiles = \"c.*\"\nSuffix = \"+\"\n");
         },
         {"c"},
         "Copy.Suffix changed from '-' to '+' (raw_data/rules.toml:6)"},
        {"a global rule",
         [&] { write("mox.toml", "[global.Copy]\nSuffix = \"x\"\n"); },
         {"a", "b", "c"},
         "Copy.Suffix changed from (absent) to 'x' (mox.toml:2)"},
        {"the converter", [&] { version = 2; }, {"a", "b", "c"}, "converter changed from texts 1 to texts 2"},
    };
    write(a_text, "use b.txt\nuse late.inc\n");
    write("raw_data/b.txt", "b");
    write("raw_data/c.txt", "c");
    ASSERT_EQ(build().run.size(), 3);
    for (CHANGE const &change : changes) {
        SCOPED_TRACE(change.what);
        change.make();
        BUILD const result = build();
        EXPECT_EQ(result.run, change.run);
        EXPECT_EQ(result.reasons.value(0), QString(change.reason));
        EXPECT_EQ(build().run, QStringList());
    }
    EXPECT_EQ(read("working_data/made/a.out"), "use b.txt\nuse late.inc\n-B");
    EXPECT_EQ(read("working_data/made/c.out"), "C+");
}

// "made/c.out.shared" is a file that nobody declares. It comes after `a` has looked for it, and in another case than
// `b` looks for.
TEST_F(BUILT_TREE, LookUpsCountByTheirAnswers)
{
    write(a_text, "look made/C.out\nlook made/C.out.shared\nlook gone");
    write("raw_data/b.txt", "fold MADE/c.out.SHARED\nfold gone");
    write("raw_data/C.txt", "publish");
    BUILD const first = build();
    EXPECT_TRUE(first.good);
    EXPECT_EQ(first.run, QStringList({"C", "a", "b"}));
    struct CHANGE {
        char const *what;
        std::function<void()> make;
        QStringList run;
        char const *a, *b;  // what came out behind the texts
    };
    CHANGE const changes[] = {
        {"nothing", [] {}, {}, "++-", "+-"},
        {"the contents", [&] { write("raw_data/C.txt", "publish more"); }, {"C"}, "++-", "+-"},
        {"a file comes", [&] { write("working_data/Gone", "?"); }, {"b"}, "++-", "++"},
        {"and goes", [&] { QFile::remove(path("working_data/Gone")); }, {"b"}, "++-", "+-"},
        {"one that is only planned", [&] { write("raw_data/gone.txt", ""); }, {"gone"}, "++-", "+-"},
        {"one that nobody declares goes, and is made again",
         [&] { QFile::remove(path("working_data/made/C.out.shared")); },
         {"C", "a", "b"},
         "++-",
         "+-"},
        {"one goes with what made it",
         [&] {
             QFile::remove(path("raw_data/C.txt"));
             QFile::remove(path("working_data/made/C.out"));
             QFile::remove(path("working_data/made/C.out.shared"));
         },
         {"a", "b"},
         "---",
         "--"},
    };
    for (CHANGE const &change : changes) {
        SCOPED_TRACE(change.what);
        change.make();
        EXPECT_EQ(build().run, change.run);
        EXPECT_EQ(read("working_data/made/a.out"), read(a_text) + change.a);
        EXPECT_EQ(read("working_data/made/b.out"), read("raw_data/b.txt") + change.b);
    }
}

// Those that looked for a file run again once it has come, whatever the case of its name.
TEST_F(BUILT_TREE, WhatComesTooLateIsLookedForAgain)
{
    write(a_text, "look made/z.out.shared\nlook made/z.out");
    write("raw_data/b.txt", "fold MADE/z.out.SHARED");
    write("raw_data/z.txt", "publish");
    EXPECT_TRUE(build().good);
    EXPECT_EQ(read("working_data/made/a.out"), read(a_text) + "++");
    EXPECT_EQ(read("working_data/made/b.out"), read("raw_data/b.txt") + "+");
    EXPECT_EQ(build().run, QStringList());
}

TEST_F(BUILT_TREE, AFileOfWhichOnlyTheTimeChangedIsReadOnceAndBuiltNever)
{
    write(a_text, "a");
    build();
    touch(a_text);
    BUILD const touched = build();
    EXPECT_EQ(touched.run, QStringList());
    EXPECT_EQ(touched.contents_read, 1u);
    EXPECT_EQ(build().contents_read, 0u);
}

// What an unfinished build chose to run is run by the next one, rows of the database included.
TEST_F(BUILT_TREE, AKilledBuildLeavesItsActionsOwed)
{
    write("mox.toml", "[global.Copy]\nSuffix = \"rows\"\n");
    write(a_text, "a");
    write("raw_data/b.txt", "b");
    ASSERT_TRUE(build().good);
    write("raw_data/b.txt", "B");
    BUILD const killed = build(true);
    ASSERT_EQ(killed.run.size(), 3);  // the copy, the gate, the row
    write("raw_data/b.txt", "b");
    BUILD const next = build();
    EXPECT_EQ(next.run, killed.run);
    EXPECT_EQ(build().run, QStringList());
}

// All rows that are to come have their numbers before the first one comes.
TEST_F(BUILT_TREE, GeneratedKeysFollowThePlan)
{
    write("mox.toml", "[global.Copy]\nSuffix = \"rows\"\n");
    write(a_text, "fail");
    write("raw_data/b.txt", "b");
    EXPECT_FALSE(build().good);
    EXPECT_EQ(read("working_data/database/texts.txt"), "key\tfilename\n2\tb\n");
}

TEST_F(BUILT_TREE, AFailureIsTriedAgainAndPutsItsTargetsBack)
{
    write(a_text, "a");
    build();
    write(a_text, "fail");
    BUILD const failed = build();
    EXPECT_FALSE(failed.good);
    EXPECT_EQ(failed.lines, QStringList("told to fail"));
    EXPECT_EQ(read("working_data/made/a.out"), "a");

    write("raw_data/new.txt", "fail extra");
    EXPECT_EQ(build().run, QStringList({"a", "new"}));
    EXPECT_EQ(read("working_data/made/new.out"), "(none)");
    EXPECT_EQ(read("working_data/made/new.out.extra"), "(none)");
    EXPECT_FALSE(QDir(path("working_data/.mox/aside")).exists());

    write(a_text, "a");
    QFile::remove(path("raw_data/new.txt"));
    EXPECT_EQ(build().run, QStringList("a"));
    EXPECT_EQ(build().run, QStringList());
}

TEST_F(BUILT_TREE, AnActionDoesNotRunIfItsTargetCannotBeKeptAside)
{
    write(a_text, "a");
    write("raw_data/b.txt", "b");
    build();
    write(a_text, "aa");
    write("raw_data/b.txt", "bb");
    TEXT_ACTION::before_work = [&](TEXT_ACTION &) { QDir(path("working_data/.mox/aside")).removeRecursively(); };
    QStringList const lines = build().lines;
    TEXT_ACTION::before_work = nullptr;
    EXPECT_EQ(lines, QStringList(path("working_data/made/b.out") +
                                 ": cannot be kept aside while the action runs: No such file or directory"));
    EXPECT_EQ(read("working_data/made/a.out") + read("working_data/made/b.out"), "aab");
    EXPECT_EQ(build().run, QStringList("b"));
}

TEST_F(BUILT_TREE, ASuccessWithoutItsProductIsNone)
{
    write(a_text, "forget");
    BUILD const result = build();
    EXPECT_FALSE(result.good);
    EXPECT_EQ(result.lines, QStringList(path("working_data/made/a.out") + ": the action has not written its target"));
}

// A target that is also a source, or that lay below the raw root before, is not the build's to put back or to remove.
TEST_F(BUILT_TREE, AFailureNeverTouchesRawArt)
{
    write("raw_data/rules.toml", "[Copy]\nTargetPath = \"beside\"\n");
    write("raw_data/same.txt", "fail");
    write("raw_data/same.out", "by hand");
    build();
    EXPECT_EQ(read("raw_data/same.txt"), "fail");
    EXPECT_NE(read("raw_data/same.out"), "(none)");
}

TEST_F(BUILT_TREE, CleanRemovesWhatTheBuildWroteAndNothingElse)
{
    write(a_text, "extra");
    write("raw_data/b.txt", "b");
    write("raw_data/found.txt", "found publish");
    write("working_data/by_hand.out", "mine");
    build();
    EXPECT_EQ(read("working_data/.mox/depot.txt"), "add working_data/made/a.out\nadd working_data/made/a.out.extra\n"
                                                   "add working_data/made/b.out\nadd working_data/made/found.out\n"
                                                   "add working_data/made/found.out.shared\n");
    QFile::remove(path("raw_data/b.txt"));
    EXPECT_EQ(build().gone, QStringList("<working>/made/b.out"));

    auto const clean = [&](bool only_gone) {
        SESSION session;
        EXPECT_TRUE(session.open(folder.path(), {}) && session.take_lock() && session.open_record() &&
                    session.list_files());
        TEXT_PROCESSOR processor(version);
        session.make_plan({&processor});
        session.make_state();
        QStringList removed;
        EXPECT_TRUE(session.clean(only_gone, removed));
        for (QString &file : removed)
            file = QDir(path("working_data")).relativeFilePath(file);
        return removed;
    };
    EXPECT_EQ(clean(true), QStringList("made/b.out"));

    // What another action reads is not gone with the one that wrote it.
    write("raw_data/reader.txt", "use ../working_data/made/a.out.extra");
    build();
    QFile::remove(path("raw_data/a.txt"));
    EXPECT_EQ(build().gone, QStringList("<working>/made/a.out"));
    EXPECT_EQ(clean(true), QStringList("made/a.out"));
    QFile::remove(path("raw_data/reader.txt"));
    write(a_text, "extra");
    build();
    EXPECT_EQ(clean(true), QStringList({"made/reader.out", "made/reader.out.extra"}));
    EXPECT_EQ(build().run, QStringList());
    EXPECT_EQ(clean(false), QStringList({"made/a.out", "made/a.out.extra", "made/found.out", "made/found.out.shared"}));
    EXPECT_EQ(read("working_data/by_hand.out"), "mine");
    EXPECT_EQ(build().run, QStringList({"a", "found"}));
}

// The current tree and the old one share their logical paths.
TEST_F(BUILT_TREE, AProductOfTheOldTreeIsNoneOfTheCurrentOne)
{
    write("old_raw_data/a.txt", "a");
    write("raw_data/rules.toml", "[Copy]\nTargetPath = \"root\"\n");
    EXPECT_EQ(build().run, QStringList("a"));
    EXPECT_EQ(read("old_working_data/a.out"), "a");
    EXPECT_EQ(build().run, QStringList());

    // A file by hand of the same logical path stays.
    write("working_data/a.out", "mine");
    {
        SESSION session;
        QStringList removed;
        EXPECT_TRUE(session.open(folder.path(), {}) && session.take_lock() && session.open_record() &&
                    session.list_files() && session.clean(false, removed));
        EXPECT_EQ(removed, QStringList(path("old_working_data/a.out")));
    }
    QFile::remove(path("working_data/a.out"));
    build();

    ASSERT_TRUE(QFile::rename(path("old_raw_data/a.txt"), path("raw_data/a.txt")));
    BUILD const moved = build();
    EXPECT_EQ(moved.run, QStringList("a"));
    EXPECT_EQ(read("working_data/a.out"), "a");
    EXPECT_EQ(moved.gone, QStringList(path("old_working_data/a.out")));
    EXPECT_EQ(build().run, QStringList());

    QFile::remove(path("working_data/a.out"));
    EXPECT_EQ(build().reasons, QStringList("<working>/a.out is missing"));
}

TEST_F(BUILT_TREE, NoProductTakesThePlaceOfTheDatabase)
{
    write("mox.toml", "[database]\nname = \"working_data/made/./a.out\"\n");
    write(a_text, "a");
    BUILD const refused = build();
    EXPECT_FALSE(refused.good);
    EXPECT_EQ(refused.lines, QStringList("its target " + path("working_data/made/a.out") +
                                         " is the asset database; give it another folder or name"));
    EXPECT_EQ(read("working_data/made/a.out"), "(none)");
}

TEST_F(BUILT_TREE, ADamagedRecordIsBegunAnew)
{
    write(a_text, "a");
    build();
    QFile record(path("working_data/.mox/record.sqlite"));
    ASSERT_TRUE(record.open(QIODevice::ReadWrite));
    QByteArray bytes = record.readAll();

    // The row of the action, at the end of the second page, and the head of the file.
    for (int const place : {2 * 16384 - 100, 20}) {
        SCOPED_TRACE(place);
        ASSERT_TRUE(record.resize(0) && record.seek(0));
        QByteArray damaged = bytes;
        for (int i = place; i < place + 64; ++i)
            damaged[i] = char(0x5a);
        record.write(damaged);
        record.flush();
        BUILD const next = build();
        EXPECT_TRUE(next.good);
        EXPECT_EQ(next.run, QStringList("a"));
        EXPECT_EQ(next.warnings.size(), 1);
        EXPECT_EQ(build().run, QStringList());
    }
}

// Neither the lock nor a state folder is needed, nor is one made.
TEST_F(BUILT_TREE, TheRecordKeepsWhatLayersMadeOfFilesUntilTheyForget)
{
    QByteArray const made("a\0b", 3);
    auto const with_record = [&](auto const &work) {
        BUILD_RECORD record;
        QString fault;
        EXPECT_TRUE(record.open(path("kept.sqlite"), fault)) << fault.toStdString();
        work(record);
        EXPECT_TRUE(record.flush(fault)) << fault.toStdString();
    };
    auto const kept = [&] {
        QStringList all;
        with_record([&](BUILD_RECORD &record) {
            for (KEPT_FILE const &file : record.kept_files())
                all +=
                    QStringLiteral("%1 %2 %3 %4").arg(file.name).arg(file.size).arg(file.time).arg(file.made == made);
        });
        return all;
    };
    with_record([&](BUILD_RECORD &record) {
        record.keep({"x", 1, 2, "before"});
        record.keep({"x", std::int64_t(1) << 40, -5, made});
        record.keep({"y", 1, 1, made});
    });
    EXPECT_EQ(kept(), QStringList({"x 1099511627776 -5 1", "y 1 1 1"}));
    with_record([&](BUILD_RECORD &record) { record.keep({"x", 0, 0, {}}); });
    EXPECT_EQ(kept(), QStringList("y 1 1 1"));
}

TEST_F(BUILT_TREE, TheRecordCanBeReadWhileABuildRuns)
{
    write(a_text, "a");
    auto const reason = [&] {
        SESSION session;
        EXPECT_TRUE(session.open(folder.path(), {}) && session.open_record_to_read() && session.list_files());
        TEXT_PROCESSOR processor(version);
        session.make_plan({&processor});
        session.make_state();
        return choose_actions(session.plan(), session.state()).front();
    };
    EXPECT_EQ(reason(), "the build record does not know it");
    EXPECT_FALSE(QDir(path("working_data")).exists());
    build();
    EXPECT_EQ(reason(), "");
    write(a_text, "aa");
    QString meanwhile;
    TEXT_ACTION::before_work = [&](TEXT_ACTION &) { meanwhile = reason(); };
    build();
    TEXT_ACTION::before_work = nullptr;
    EXPECT_EQ(meanwhile, "an earlier build did not bring it to a good end");
}

TEST_F(BUILT_TREE, TwoBuildsExcludeEachOther)
{
    SESSION first;
    ASSERT_TRUE(first.open(folder.path(), {}) && first.take_lock());
    SESSION second;
    ASSERT_TRUE(second.open(folder.path(), {}));
    EXPECT_FALSE(second.take_lock());
    EXPECT_TRUE(second.faults().value(0).contains(QStringLiteral("process %1").arg(QCoreApplication::applicationPid())))
        << second.faults().value(0).toStdString();
}

}  // namespace
