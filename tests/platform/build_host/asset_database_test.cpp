#include "platform/build_host/asset_database.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

QString const rigid = QStringLiteral("kestrel_rigid");
QString const lods = QStringLiteral("kestrel_rigid_lod");

// In SQLite, or with MOX_TEST_SERVER set on the PostgreSQL server that the usual variables tell, in its default schema.
class AssetDatabaseTest : public testing::Test {
protected:
    AssetDatabaseTest()
    {
        settings.export_folder = folder.path() + "/export";
        if (!is_on_server)
            return;
        settings.driver = "postgresql";
        settings.host = qEnvironmentVariable("PGHOST");
        settings.port = qEnvironmentVariableIntValue("PGPORT");
        settings.user = qEnvironmentVariable("PGUSER");
        settings.password_variable = "PGPASSWORD";
        EXPECT_EQ(std::system("psql -q -c 'DROP SCHEMA public CASCADE' -c 'CREATE SCHEMA public' 2>&1"), 0);
    }

    std::unique_ptr<ASSET_DATABASE> open(QString const &sqlite_name = QStringLiteral(":memory:"))
    {
        settings.name = is_on_server ? qEnvironmentVariable("PGDATABASE") : sqlite_name;
        return std::make_unique<ASSET_DATABASE>(settings, folder.path());
    }
    static UPDATE_DB_TABLE rigid_row(QString const &key, QString const &category)
    {
        DB_ROW row;
        row["key"] = {key, true, false};
        row["texture_directory"] = {"rigidmodels/tex"};
        row["category"] = {category};
        return {rigid, {row}, {true, true, true, true}};
    }
    // With `patch`, the key column is there, as a place for a generated key.
    static UPDATE_DB_TABLE lod_row(QString const &key, bool patch)
    {
        DB_ROW row;
        if (patch)
            row["key"] = {"0", true, true};
        row["filename"] = {"rigidmodels/" + key + ".rigid_model_v2"};
        row["range"] = {"1_1"};
        row["rigid"] = {key};
        return {lods, {row}, {true, true, true, true}};
    }
    static void apply(ASSET_DATABASE &database, UPDATE_DB_TABLE const &table, bool patch = true)
    {
        QString fault;
        EXPECT_TRUE(database.apply(table, "hut", patch, fault)) << fault.toStdString();
    }
    static std::string text(ASSET_DATABASE &database, QString const &table)
    {
        QString lines, fault;
        EXPECT_TRUE(database.table_text(table, lines, fault)) << fault.toStdString();
        return lines.toStdString();
    }
    static std::string file(QString const &name)
    {
        QFile in(name);
        return in.open(QIODevice::ReadOnly) ? in.readAll().toStdString() : "(none)";
    }

    bool const is_on_server = qEnvironmentVariableIsSet("MOX_TEST_SERVER");
    QTemporaryDir folder;
    DATABASE_SETTINGS settings;
};

TEST_F(AssetDatabaseTest, RowsAreEnteredChangedInPlaceAndNotDoubled)
{
    auto const database = open();
    for (char const *category : {"building", "building", "ruin"}) {
        apply(*database, rigid_row("hut", category));
        apply(*database, lod_row("hut", true));
    }
    apply(*database, rigid_row("axe", "tool"));
    apply(*database, lod_row("axe", true));
    EXPECT_EQ(text(*database, rigid), "key\tcategory\ttexture_directory\n"
                                      "axe\ttool\trigidmodels/tex\n"
                                      "hut\truin\trigidmodels/tex\n");
    EXPECT_EQ(text(*database, lods), "key\tfilename\trange\trigid\n"
                                     "1\trigidmodels/hut.rigid_model_v2\t1_1\thut\n"
                                     "2\trigidmodels/axe.rigid_model_v2\t1_1\taxe\n");
}

// Without patching the old LOD rows of a model go in one transaction with its main row; a failed model keeps them.
TEST_F(AssetDatabaseTest, StagedRemovalsTakePlaceWithTheFirstRowOfTheirKeyOnly)
{
    auto const database = open();
    QString fault;
    bool found = false;
    EXPECT_TRUE(database->remove("hut", lods, "rigid", "hut", true, false, found, fault)) << "no such table yet";
    apply(*database, rigid_row("hut", "c"));
    UPDATE_DB_TABLE old_row = lod_row("hut", true);
    old_row.rows[0]["filename"].value = "elsewhere/Hut.rigid_model_v2";
    old_row.rows[0]["rigid"].value = "HUT";
    apply(*database, old_row);
    std::string const before = text(*database, lods);

    EXPECT_TRUE(database->remove("hut", lods, "rigid", "hut", false, true, found, fault));
    EXPECT_FALSE(found) << "case counts";
    EXPECT_TRUE(database->remove("hut", lods, "rigid", "hut", true, true, found, fault));
    EXPECT_TRUE(found) << "a dry run leaves them there";
    found = false;
    EXPECT_TRUE(database->remove("hut", lods, "rigid", "hut", true, false, found, fault));
    EXPECT_FALSE(found);
    EXPECT_EQ(text(*database, lods), before);

    QStringList booked;
    EXPECT_TRUE(database->finish(booked, fault));  // the model failed: no row followed
    apply(*database, rigid_row("hut", "c"));
    EXPECT_EQ(text(*database, lods), before);

    EXPECT_TRUE(database->remove("hut", lods, "rigid", "hut", true, false, found, fault));
    apply(*database, rigid_row("hut", "c"), false);
    EXPECT_EQ(text(*database, lods), "key\tfilename\trange\trigid\n");
    apply(*database, lod_row("hut", false), false);
    EXPECT_EQ(text(*database, lods), "key\tfilename\trange\trigid\n1\trigidmodels/hut.rigid_model_v2\t1_1\thut\n");
}

TEST_F(AssetDatabaseTest, FaultyRowsChangeNothing)
{
    auto const database = open();
    apply(*database, rigid_row("hut", "c"));
    std::string const before = text(*database, rigid);
    struct {
        char const *what;
        std::function<void(UPDATE_DB_TABLE &)> spoil;
    } const cases[] = {
        {"a table's name", [](UPDATE_DB_TABLE &table) { table.name = "x\"; DROP TABLE kestrel_rigid; --"; }},
        {"a column that the table lacks", [](UPDATE_DB_TABLE &table) { table.rows[0]["colour"] = {"red"}; }},
        {"the second of two rows",
         [](UPDATE_DB_TABLE &table) {
             table.rows += table.rows[0];
             table.rows[0]["category"].value = "changed";
             table.rows[1]["colour"] = {"red"};
         }},
        {"a new table's column",
         [](UPDATE_DB_TABLE &table) {
             table.name = "fresh";
             table.rows[0]["a b"] = {"red"};
         }},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.what);
        UPDATE_DB_TABLE table = rigid_row("hut", "c");
        c.spoil(table);
        QString fault;
        EXPECT_FALSE(database->apply(table, "hut", true, fault));
        EXPECT_FALSE(fault.isEmpty());
        EXPECT_EQ(text(*database, rigid), before);
    }
    apply(*database, rigid_row("o'hara\t\"x\"", "; DROP TABLE kestrel_rigid"));
    EXPECT_NE(text(*database, rigid).find("o'hara\\t\"x\"\t; DROP TABLE kestrel_rigid\t"), std::string::npos);
}

// The numbers of generated keys do not show which row came first, but which was announced first, until the run ends.
TEST_F(AssetDatabaseTest, GeneratedKeysFollowTheOrderOfAnnouncement)
{
    auto const database = open();
    apply(*database, lod_row("tower", true));
    for (char const *key : {"hut", "tower", "axe", "hut"})
        database->announce(lod_row(key, true));
    for (char const *key : {"well", "axe", "hut"})
        apply(*database, lod_row(key, true));
    auto const lines = [](std::vector<std::string> const &keys) {
        std::string all = "key\tfilename\trange\trigid\n";
        for (std::size_t i = 0; i < keys.size(); ++i)
            all += std::to_string(i + 1) + "\trigidmodels/" + keys[i] + ".rigid_model_v2\t1_1\t" + keys[i] + "\n";
        return all;
    };
    EXPECT_EQ(text(*database, lods), lines({"tower", "hut", "axe", "well"}));

    QString fault;
    QStringList booked;
    bool found = false;
    EXPECT_TRUE(database->remove("hut", lods, "rigid", "tower", false, false, found, fault));
    apply(*database, lod_row("hut", true));
    apply(*database, lod_row("tower", false), false);
    EXPECT_EQ(text(*database, lods), lines({"tower", "hut", "axe", "well"})) << "entered anew under its old number";

    database->announce(lod_row("gone", true));
    EXPECT_TRUE(database->finish(booked, fault));
    apply(*database, lod_row("barn", true));
    EXPECT_EQ(text(*database, lods), lines({"tower", "hut", "axe", "well", "barn"}));
}

// A table is written once, at the end, if it has changed; also when the run that changed it was killed before.
TEST_F(AssetDatabaseTest, ChangedTablesAreExportedOnceAlsoAfterAKill)
{
    QString const name = folder.path() + "/assets.sqlite";
    QString const exported = settings.export_folder + "/kestrel_rigid.txt";
    QString fault;
    QStringList booked;
    {
        auto const database = open(name);
        apply(*database, rigid_row("hut", "c"));
    }
    EXPECT_EQ(file(exported), "(none)");
    {
        auto const database = open(name);
        EXPECT_TRUE(database->finish(booked, fault)) << fault.toStdString();
        EXPECT_EQ(booked, QStringList(exported));
        EXPECT_EQ(file(exported), "key\tcategory\ttexture_directory\nhut\tc\trigidmodels/tex\n");
    }
    QFile::remove(exported);
    booked.clear();
    auto const database = open(name);
    apply(*database, rigid_row("hut", "c"));
    EXPECT_TRUE(database->finish(booked, fault));
    EXPECT_EQ(booked, QStringList()) << "nothing has changed";
}

TEST_F(AssetDatabaseTest, AFileMadeAnewIsAnotherDatabase)
{
    if (is_on_server)
        GTEST_SKIP() << "a server has no file of ours";
    QString const name = folder.path() + "/assets.sqlite";
    auto const identity = [&] {
        auto const database = open(name);
        database->allow_making();
        return database->identity();
    };
    QString const first = identity();
    EXPECT_EQ(identity(), first);
    {
        auto const database = open(name);
        apply(*database, rigid_row("hut", "c"));
    }
    EXPECT_EQ(identity(), first);
    QFile::remove(name);
    EXPECT_NE(identity(), first);
}

}  // namespace
