// The program itself on the example tree: what a user sees, and what a kill leaves behind.

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include <signal.h>

namespace {

namespace fs = std::filesystem;

// The programs stand beside this one.
QString program(char const *name)
{
    return QString::fromStdString((fs::read_symlink("/proc/self/exe").parent_path() / name).string());
}

struct RESULT {
    int code;
    QString out, error;
};

class MoxTest : public testing::Test {
protected:
    MoxTest() { EXPECT_EQ(run(program("make_examples"), {tree()}).code, 0); }

    QString tree() const { return folder.path() + "/tree"; }
    static RESULT run(QString const &name, QStringList const &arguments)
    {
        QProcess process;
        process.start(name, arguments);
        process.waitForFinished(-1);
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }
    RESULT mox(QStringList const &arguments) const
    {
        return run(program("mox"), QStringList{"-C", tree()} + arguments);
    }
    // The last event of a build; its fields count actions.
    QJsonObject build() const
    {
        RESULT const result = mox({"build", "--json", "--jobs", "1"});
        EXPECT_EQ(result.code, 0) << result.error.toStdString();
        QString const last = result.out.trimmed().section('\n', -1);
        return QJsonDocument::fromJson(last.toUtf8()).object();
    }
    // Every file below a folder of the tree by its path; what the host keeps for itself apart.
    std::map<QString, QByteArray> files(QString const &below) const
    {
        std::map<QString, QByteArray> found;
        for (QDirIterator at(tree() + '/' + below, QDir::Files, QDirIterator::Subdirectories); at.hasNext();) {
            QFile file(at.next());
            if (file.fileName().contains("assets.sqlite") || !file.open(QIODevice::ReadOnly))
                continue;
            found[QDir(tree()).relativeFilePath(file.fileName())] = file.readAll();
        }
        return found;
    }

    QTemporaryDir folder;
};

TEST_F(MoxTest, ASecondBuildDoesNothingAndCleanLeavesTheArtAlone)
{
    auto const raw = files("raw_data"), given = files("working_data");
    EXPECT_GT(build()["done"].toInt(), 20);
    auto const products = files("working_data");
    QJsonObject const second = build();
    EXPECT_EQ(second["done"].toInt(), 0);
    EXPECT_GT(second["up_to_date"].toInt(), 20);
    EXPECT_EQ(files("working_data"), products);

    EXPECT_EQ(mox({"clean"}).code, 0);
    EXPECT_EQ(files("raw_data"), raw);
    for (auto const &file : files("working_data"))
        EXPECT_TRUE(file.first.startsWith("working_data/database/") || given.count(file.first) == 1)
            << file.first.toStdString();
    build();
    EXPECT_EQ(files("working_data"), products);

    // What somebody has made of a product since is not the build's to remove, also after a further build.
    QString const edited = tree() + "/working_data/animations/meetings/meeting/user_spec.xml";
    QFile file(edited);
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write("<!-- by hand -->\n");
    file.close();
    build();
    EXPECT_EQ(mox({"clean"}).code, 0);
    EXPECT_TRUE(QFile::exists(edited));
    EXPECT_FALSE(QFile::exists(tree() + "/working_data/animations/meetings/meeting/tool_spec.xml"));
}

// Rebuilt are the scene and those that refer to it, nothing else, and `explain` says so beforehand.
TEST_F(MoxTest, AChangedSceneRebuildsItselfAndWhatRefersToIt)
{
    build();
    QString const barrel = tree() + "/raw_data/props/barrel.vx2";
    QFile scene(barrel);
    ASSERT_TRUE(scene.open(QIODevice::ReadWrite | QIODevice::Append));
    scene.write(QByteArray("\x08\0\0\0\xff\xff\xff\x7f", 8));  // an empty chunk of a type that nobody knows
    scene.close();
    EXPECT_EQ(mox({"explain", "<raw>/no such.vx2"}).code, 1);
    EXPECT_TRUE(mox({"explain", barrel}).out.contains("will run: <raw>/props/barrel.vx2 has changed"));
    // Read without being declared as a source.
    EXPECT_TRUE(mox({"explain", "<raw>/animations/skeletons/horse.bone_table"}).out.contains("meetings/meeting.vx2)"));
    RESULT const result = mox({"build", "--json"});
    EXPECT_EQ(result.code, 0) << result.error.toStdString();
    for (QString const &line : result.out.split('\n', Qt::SkipEmptyParts)) {
        QJsonObject const event = QJsonDocument::fromJson(line.toUtf8()).object();
        if (event["event"] != "start")
            continue;
        QString const told = event["reason"].toString() + event["name"].toString();
        EXPECT_TRUE(told.contains("barrel") || told.contains("yard") || told.contains("engine")) << line.toStdString();
    }
    EXPECT_EQ(build()["done"].toInt(), 0);
}

// What is made of a product goes with it, although the product is still there when the build is planned.
TEST_F(MoxTest, WhatASceneLeavesBehindIsRemovedAtOnce)
{
    build();
    auto const of_tower = [this] {
        int count = 0;
        for (auto const &file : files("working_data"))
            count += file.first.contains("tower") && !file.first.startsWith("working_data/database/");
        return count;
    };
    EXPECT_GT(of_tower(), 2);  // model, statistics, fragment
    ASSERT_TRUE(QFile::remove(tree() + "/raw_data/castle/tower.vx2"));
    build();
    EXPECT_GT(of_tower(), 2);
    EXPECT_EQ(mox({"clean", "--gone"}).code, 0);
    EXPECT_EQ(of_tower(), 0);
    EXPECT_EQ(build()["done"].toInt(), 0);
}

// One build is enough for fragments too, whatever the number of jobs, and one after a change of the files beside a
// model leaves what a build from nothing does.
TEST_F(MoxTest, FragmentsAreThoseOfABuildFromNothing)
{
    auto const build_with = [&](char const *jobs) {
        EXPECT_EQ(mox({"build", "--quiet", "--jobs", jobs}).code, 0);
        EXPECT_EQ(mox({"clean", "--gone"}).code, 0);
        return files("working_data");
    };
    QString const twin = tree() + "/working_data/models/props/barrel.klmodel", aside = folder.path() + "/aside";
    QByteArray const agf = "working_data/models/props/barrel.rigid_model_v2.agf";
    auto const with_twin = build_with("1");
    EXPECT_TRUE(with_twin.at(agf).contains("id=\"models/props/barrel.rigid_model_v2\""));
    EXPECT_TRUE(with_twin.at(agf).contains("textures/props/timber.png"));
    EXPECT_TRUE(with_twin.at("working_data/materials/staves.xml.material.agf").contains("textures/props/timber.png"));
    EXPECT_EQ(build()["done"].toInt(), 0);
    EXPECT_EQ(mox({"clean"}).code, 0);
    EXPECT_EQ(build_with("4"), with_twin);

    ASSERT_TRUE(QFile::rename(twin, aside));
    auto const without = build_with("2");
    EXPECT_TRUE(without.at(agf).contains("id=\"models/props/barrel\""));
    EXPECT_EQ(mox({"clean"}).code, 0);
    EXPECT_EQ(build_with("4"), without);
    ASSERT_TRUE(QFile::rename(aside, twin));
    EXPECT_EQ(build_with("2"), with_twin);
}

TEST_F(MoxTest, TheGraphIsFollowedFromAnyNameOfAnAsset)
{
    build();
    QString const path = "models/props/barrel";
    for (QString const &name : {path, path.toUpper(), path + ".klmodel", "<working>/" + path + ".klmodel",
                                tree() + "/working_data/" + path + ".klmodel"}) {
        EXPECT_EQ(mox({"graph", name}).out, "models/props/barrel  (models/props/barrel.klmodel)\n"
                                            "needs\n"
                                            "    materials/hoops  (not known)\n"
                                            "    materials/staves  (materials/staves.xml.material)\n"
                                            "    models/props/barrel.rigid_model_v2\n"
                                            "needed by nothing\n")
            << name.toStdString();
    }
    EXPECT_EQ(mox({"graph", "Textures/Props/Timber.png", "--all"}).out,
              "textures/props/timber.png  (a file)\n"
              "needs nothing\n"
              "needed by\n"
              "    materials/staves  (materials/staves.xml.material)\n"
              "    models/props/barrel.rigid_model_v2\n"
              "        models/props/barrel  (models/props/barrel.klmodel)\n");
    EXPECT_EQ(mox({"graph", "materials/staves", "--graph", "dot"}).out.count(" -> "), 2);
    EXPECT_EQ(mox({"graph", "no such asset"}).code, 1);

    RESULT const cache = mox({"cache"});
    EXPECT_EQ(cache.code, 0) << cache.error.toStdString();
    EXPECT_TRUE(files("working_data").at("working_data/rigid_db.bin").startsWith("RHDB"));
    EXPECT_EQ(build()["done"].toInt(), 0);
    QFile model(tree() + "/working_data/models/props/barrel.rigid_model_v2");
    ASSERT_TRUE(model.open(QIODevice::WriteOnly));
    model.close();
    RESULT const damaged = mox({"cache"});
    EXPECT_EQ(damaged.code, 1);
    EXPECT_TRUE(damaged.error.contains("barrel.rigid_model_v2")) << damaged.error.toStdString();
}

// A kill at any moment leaves whole products only, and the next build ends like one that nobody disturbed.
TEST_F(MoxTest, AKillLeavesNothingHalfWrittenAndTheNextBuildCompletes)
{
    auto const start = std::chrono::steady_clock::now();
    build();
    auto const whole = std::chrono::steady_clock::now() - start;
    auto const expected = files("working_data");

    constexpr int places = 12;
    for (int place = 0; place < places; ++place) {
        SCOPED_TRACE(place);
        QDir(tree()).removeRecursively();
        ASSERT_EQ(run(program("make_examples"), {tree()}).code, 0);
        QProcess process;
        process.start(program("mox"), {"-C", tree(), "build", "--jobs", "1"});
        ASSERT_TRUE(process.waitForStarted());
        auto const moment = std::chrono::duration_cast<std::chrono::milliseconds>(whole * (place + 1) / (places + 1));
        if (!process.waitForFinished(int(moment.count())))
            process.kill();
        process.waitForFinished(-1);
        for (auto const &[name, bytes] : files("working_data"))
            if (!name.endsWith(".unfinished") && !name.startsWith("working_data/database/")) {
                ASSERT_TRUE(expected.count(name)) << name.toStdString();
                EXPECT_EQ(expected.at(name), bytes) << name.toStdString();
            }
        build();
        EXPECT_EQ(files("working_data"), expected);
    }
}

TEST_F(MoxTest, AnInterruptionEndsInOrderAndTheNextBuildGoesOn)
{
    QProcess process;
    process.start(program("mox"), {"-C", tree(), "build", "--jobs", "1"});
    ASSERT_TRUE(process.waitForReadyRead(-1));  // the first action has ended
    ::kill(pid_t(process.processId()), SIGINT);
    process.waitForFinished(-1);
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    QString const said = process.readAllStandardOutput();
    if (process.exitCode() != 0) {  // else the build was quicker than the signal
        EXPECT_EQ(process.exitCode(), 1);
        EXPECT_TRUE(said.contains("interrupted: ")) << said.toStdString();
        EXPECT_GT(build()["done"].toInt(), 0);
    }
    EXPECT_EQ(build()["done"].toInt(), 0);
}

TEST_F(MoxTest, ThePlanPrintsEachActionWithItsEdges)
{
    QJsonArray const plan = QJsonDocument::fromJson(mox({"plan", "--format", "json"}).out.toUtf8()).array();
    QJsonObject model, prepare;
    for (QJsonValue const &action : plan) {
        EXPECT_EQ(action.toObject().keys(), QStringList({"class", "dependencies", "errors", "extension", "group",
                                                         "index", "name", "pulls", "source", "target"}));
        if (action["source"] == "<raw>/buildings/hut.vx2" && action["class"] == "ACTION_MODEL")
            model = action.toObject();
        if (action["source"] == "<raw>/buildings/hut.vx2" && action["class"] == "ACTION_PREPARE_VEX2")
            prepare = action.toObject();
    }
    EXPECT_EQ(model["target"], "<working>/models/buildings/hut.rigid_model_v2");
    EXPECT_EQ(model["extension"], ".rigid_model_v2");
    EXPECT_EQ(model["group"], prepare["group"]);
    EXPECT_EQ(model["dependencies"],
              QJsonArray({QJsonObject{{"on", prepare["index"]}, {"flag", true}, {"by", "plugin"}}}));
    EXPECT_EQ(prepare["target"], "");
    EXPECT_TRUE(mox({"plan", "--graph", "dot"}).out.startsWith("digraph plan {"));
}

TEST_F(MoxTest, EachLineOfAMessageNamesItsAction)
{
    QString const model = tree() + "/working_data/models/broken.klmodel";
    ASSERT_TRUE(QDir().mkpath(tree() + "/working_data/models"));
    QFile file(model);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<model>\n<geometry></model>");
    file.close();
    RESULT const result = mox({"build", "--quiet", "--keep-going"});
    EXPECT_EQ(result.code, 1);
    QStringList const lines = result.error.trimmed().split('\n');
    ASSERT_EQ(lines.size(), 2) << result.error.toStdString();
    QString const head = "KLModel AGF (<working>/models/broken.klmodel): ";
    EXPECT_EQ(lines[0], head + "Could not parse file: ");
    EXPECT_TRUE(lines[1].startsWith(head) && lines[1].endsWith(" (line 2)")) << lines[1].toStdString();
    QString const why = "    error: ";
    EXPECT_TRUE(mox({"explain", model})
                    .out.endsWith(why + "Could not parse file: \n" + why + lines[1].mid(head.size()) + "\n"));
}

TEST_F(MoxTest, FaultsOfUseAndOfTheProjectHaveTheirExitCodes)
{
    QString const nowhere = folder.path() + "/nowhere";
    struct {
        QStringList arguments;
        int code;
        QString said;
    } const cases[] = {
        {{"biuld", "--jobs", "2"}, 2, "no command 'biuld'; did you mean 'build'?"},
        {{"build", "--jobs", "0"}, 2, "--jobs"},
        {{"build", "--tweak", "NO_SUCH=1"}, 2, "TREEBILLBOARD_PIXELSPERMETER"},
        {{"-C", nowhere, "build"}, 1, "mox init"},
        {{"init", tree()}, 1, "is there already"},
        {{"db", "no_such_table"}, 1, "no table"},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        RESULT const result = c.arguments[0] == "-C" ? run(program("mox"), c.arguments) : mox(c.arguments);
        EXPECT_EQ(result.code, c.code);
        EXPECT_TRUE((result.out + result.error).contains(c.said)) << result.error.toStdString();
    }
    QFile settings(tree() + "/mox.toml");
    ASSERT_TRUE(settings.open(QIODevice::ReadWrite));
    QByteArray const before = settings.readAll();
    settings.write("\n[plug_ins]\nfiles = [\"more/absent.so\"]\n");
    settings.close();
    RESULT const absent = mox({"build"});
    EXPECT_EQ(absent.code, 1);
    EXPECT_TRUE(absent.error.contains(tree() + "/more/absent.so")) << absent.error.toStdString();
    ASSERT_TRUE(settings.open(QIODevice::WriteOnly | QIODevice::Truncate));
    settings.write(before);
    settings.close();

    QFile rules(tree() + "/raw_data/props/rules.toml");
    ASSERT_TRUE(rules.open(QIODevice::Append));
    rules.write("\n[RigidModelV2x]\n");
    rules.close();
    RESULT const result = mox({"build"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(result.error.contains("raw_data/props/rules.toml:")) << result.error.toStdString();
    EXPECT_EQ(result.error.count('\n'), 1);
}

}  // namespace
