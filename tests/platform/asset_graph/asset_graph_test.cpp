#include "Plugins/Vx2/host/asset_graph.h"

#include "foundation/messages.h"
#include "platform/asset_graph/agf_file.h"
#include "platform/asset_graph/fragment_id.h"
#include "platform/asset_graph/reach.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <gtest/gtest.h>

#include <filesystem>

using namespace QTSHARED;

namespace {

QString const all = QStringLiteral("all");

ASSET_FRAGMENT_BUILDER builder(QTemporaryDir const &tree, char const *agf)
{
    return ASSET_FRAGMENT_BUILDER(tree.filePath(QLatin1String(agf)));
}

QStringList steps(ASSET_GRAPH const &graph, QString const &id, REACH direction, bool everything)
{
    QStringList lines;
    for (GRAPH_STEP const &step : reach(graph.asset_fragments(), id, direction, everything))
        lines += QString::number(step.distance) + " " + step.from + " > " + step.to;
    return lines;
}

struct COUNTING_SINK final : KN::MessageSink {
    void message(KN::String const &, int level) override { warnings += level == 1; }
    int warnings = 0;
};

}  // namespace

TEST(AssetGraph, RemembersFragmentsAcrossProcessesAndReplacesThoseOfAFile)
{
    QTemporaryDir const tree;
    QDir(tree.path()).mkpath(QStringLiteral("props"));
    QString error;
    ASSET_FRAGMENT_BUILDER hut = builder(tree, "props/hut.agf");
    hut.add_fragment("Props/Hut", tree.filePath("props/hut.rigid_model_v2"), "");
    hut.add_dependency("Props/Hut", "textures/wood & <nails>", all, "");
    hut.add_dependency("Props/Hut", "props/door", all, "");
    hut.add_dependency("Props/Hut", "props/door", all, "");
    {
        ASSET_GRAPH graph(tree.path());
        EXPECT_TRUE(graph.asset_fragments().isEmpty());
        ASSERT_TRUE(graph.replace_and_save(hut, error)) << error.toStdString();
    }

    ASSET_GRAPH graph(tree.path());
    ASSERT_TRUE(graph.asset_fragments().contains("props/hut"));
    auto const dependencies = graph.asset_fragments()["props/hut"].dependencies;
    ASSERT_EQ(dependencies.size(), 2);
    EXPECT_EQ(dependencies[0].id, "textures/wood & <nails>");
    EXPECT_EQ(graph.fragment_id_from_asset_filename("PROPS/hut.rigid_model_v2"), "Props/Hut");
    EXPECT_EQ(steps(graph, "props/DOOR", REACH::NEEDED_BY, false), QStringList("1 props/hut > props/door"));

    ASSET_FRAGMENT_BUILDER smaller = builder(tree, "props/hut.agf");
    smaller.add_fragment("props/shed", "props/shed.rigid_model_v2", "");
    ASSERT_TRUE(graph.replace_and_save(smaller, error));
    EXPECT_FALSE(graph.asset_fragments().contains("props/hut"));
    EXPECT_TRUE(graph.fragment_id_from_asset_filename("props/hut.rigid_model_v2").isEmpty());
    EXPECT_TRUE(steps(graph, "props/door", REACH::NEEDED_BY, false).isEmpty());

    ASSET_FRAGMENT_BUILDER nowhere = builder(tree, "no such folder/x.agf");
    nowhere.add_fragment("x", "x", "");
    EXPECT_FALSE(graph.replace_and_save(nowhere, error));
    EXPECT_FALSE(graph.asset_fragments().contains("x"));
}

TEST(AssetGraph, IsFollowedBothWaysAndCyclesOnce)
{
    QTemporaryDir const tree;
    ASSET_GRAPH graph(tree.path());
    QString error;
    ASSET_FRAGMENT_BUILDER village = builder(tree, "village.agf");
    for (char const *const edge : {"yard>hut", "yard>Well", "hut>wood", "hut>door", "door>Wood", "wood>hut"})
        village.add_dependency(QString(edge).section('>', 0, 0), QString(edge).section('>', 1), all, "");
    ASSERT_TRUE(graph.replace_and_save(village, error));

    EXPECT_EQ(steps(graph, "YARD", REACH::NEEDS, false), QStringList({"1 yard > hut", "1 yard > well"}));
    EXPECT_EQ(steps(graph, "yard", REACH::NEEDS, true), QStringList({"1 yard > hut", "1 yard > well", "2 hut > door",
                                                                     "2 hut > wood", "3 door > wood", "3 wood > hut"}));
    EXPECT_EQ(steps(graph, "Door", REACH::NEEDED_BY, true),
              QStringList({"1 hut > door", "2 wood > hut", "2 yard > hut", "3 door > wood", "3 hut > wood"}));
    EXPECT_TRUE(steps(graph, "gate", REACH::NEEDS, true).isEmpty());
}

namespace {

struct MEMORY final : AGF_MEMORY {
    QVector<ENTRY> recall() override { return entries.values().toVector(); }
    void remember(ENTRY const &entry) override
    {
        if (entry.fragments.isEmpty())
            entries.remove(entry.agf);
        else
            entries[entry.agf] = entry;
    }
    QMap<QString, ENTRY> entries;
};

}  // namespace

// What a file holds is changed behind the memory's back, which shows whether the file was read.
TEST(AssetGraph, ReadsOnlyFilesThatTheMemoryDoesNotHaveAsTheyAre)
{
    QTemporaryDir const tree;
    MEMORY memory;
    auto const save = [&](char const *id, char const *needed, AGF_MEMORY *keeper) {
        ASSET_FRAGMENT_BUILDER fragment = builder(tree, "x.agf");
        fragment.add_fragment(id, "x & y", "n");
        fragment.add_dependency(id, needed, all, "m");
        QString error;
        return ASSET_GRAPH(tree.path(), {}, keeper).replace_and_save(fragment, error);
    };
    auto const file = std::filesystem::path(tree.filePath("x.agf").toStdString());
    auto const read = [&] { return ASSET_GRAPH(tree.path(), {}, &memory).asset_fragments(); };

    ASSERT_TRUE(save("One", "Wood", &memory));
    auto const time = std::filesystem::last_write_time(file);
    ASSERT_TRUE(save("two", "iron", nullptr));
    std::filesystem::last_write_time(file, time);
    QMap<QString, ASSET_FRAGMENT> const known = read();
    ASSERT_EQ(known.keys(), QStringList("one"));
    EXPECT_EQ(known["one"].asset + known["one"].note, "x & yn");
    EXPECT_EQ(known["one"].dependencies, (QVector<ASSET_DEPENDENCY>{{"Wood", all, "m"}}));

    QByteArray const whole = memory.entries["x.agf"].fragments;
    for (int size = 0; size < whole.size(); ++size) {  // a damaged memory is none
        memory.entries["x.agf"].fragments = whole.left(size);
        EXPECT_EQ(read().keys(), QStringList("two")) << size;
        EXPECT_NE(memory.entries["x.agf"].fragments, whole);
    }
    memory.entries["x.agf"].fragments = whole;
    std::filesystem::last_write_time(file, time + std::chrono::seconds(1));
    EXPECT_EQ(read().keys(), QStringList("two"));
    std::filesystem::remove(file);
    EXPECT_TRUE(read().isEmpty() && memory.entries.isEmpty());
}

TEST(AssetGraph, PathsOfTheOldTreeAreKeptWithoutItsRoot)
{
    QTemporaryDir const tree;
    QTemporaryDir const old;
    QString error;
    ASSET_FRAGMENT_BUILDER hut = builder(old, "hut.agf");
    hut.add_fragment("hut", old.filePath("hut.rigid_model_v2"), "");
    ASSERT_TRUE(ASSET_GRAPH(tree.path(), old.path()).replace_and_save(hut, error)) << error.toStdString();
    ASSET_GRAPH const graph(tree.path(), old.path());
    EXPECT_EQ(graph.asset_fragments()["hut"].asset, "hut.rigid_model_v2");
    EXPECT_EQ(graph.fragment_id_from_asset_filename(old.filePath("hut.rigid_model_v2")), "hut");
}

TEST(AssetGraph, DamagedFilesAreWarningsAndNothingMore)
{
    QTemporaryDir const tree;
    QMap<QString, ASSET_FRAGMENT> fragments;
    fragments["a"].asset = "a.anim";
    QByteArray const good = agf_bytes(fragments);
    QByteArray const nested = QByteArray("<asset_fragments>").append(QByteArray("<fragment>").repeated(300));
    QString error;
    QMap<QString, ASSET_FRAGMENT> read;
    EXPECT_TRUE(read_agf(good, read, error));
    // The tag that closes the list is the last thing that counts.
    for (int size = 0; size < good.lastIndexOf('>'); ++size)
        EXPECT_FALSE(read_agf(good.left(size), read, error)) << size;
    for (QByteArray const &bytes : {QByteArray("<other/>"), nested, QByteArray(largest_agf + 1, ' ')})
        EXPECT_FALSE(read_agf(bytes, read, error));

    int number = 0;
    for (QByteArray const &bytes : {good, nested, QByteArray("text")}) {
        QFile file(tree.filePath(QString::number(number++) + ".agf"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    COUNTING_SINK sink;
    KN::MessageSink *const before = KN::set_thread_message_sink(&sink);
    EXPECT_EQ(ASSET_GRAPH(tree.path()).asset_fragments().keys(), QStringList("a"));
    EXPECT_EQ(sink.warnings, 2);
    KN::set_thread_message_sink(before);
}

TEST(FragmentIds, FollowFromThePathAndTheFilesBeside)
{
    FILE_ENTRY present, deleted;
    deleted.state = FILE_ENTRY::DELETED;
    FILE_TABLE files;
    files.assign({{LOGICAL_PATH("<working>/a/Hut.rigid_model_v2"), &present},
                  {LOGICAL_PATH("<working>/a/tower.klmodel"), &present},
                  {LOGICAL_PATH("<working>/a/tower.rigid_model_v2"), &present},
                  {LOGICAL_PATH("<working>/b.v2/x.y.xml.material"), &present},
                  {LOGICAL_PATH("<working>/Tech/hut_tech.vx2.parsed"), &present},
                  {LOGICAL_PATH("<working>/t/wood.dds"), &present},
                  {LOGICAL_PATH("<working>/t/gone.dds"), &deleted}});
    FRAGMENT_IDS ids(files);
    struct {
        char const *asset, *id;
    } const cases[] = {
        {"a/hut.RIGID_model_v2", "a/Hut"},
        {"a/tower.klmodel", "a/tower"},
        {"a/tower.rigid_model_v2", "a/tower.rigid_model_v2"},
        {"b.v2/x.y.xml.material", "b.v2/x.y"},
        {"Tech/hut_tech.vx2.parsed", "battle/tech/hut/tech"},
        {"t/wood.dds", "t/wood.dds"},
        {"t/gone.dds", ""},
        {"t/never.dds", ""},
    };
    for (auto const &c : cases)
        EXPECT_EQ(ids.id_of(LOGICAL_PATH(QStringLiteral("<working>/") + c.asset)), c.id) << c.asset;
}
