#include "Plugins/Vx2/action_animation.h"
#include "Plugins/Vx2/action_model.h"
#include "Plugins/Vx2/action_process_tech.h"
#include "Plugins/Vx2/host/action_error.h"
#include "platform/build_host/asset_store.h"
#include "platform/build_host/run.h"
#include "tests/Plugins/Vx2/plan_kit.h"

#include <gmock/gmock.h>

#include <functional>

using ROWS = std::vector<std::string>;

TEST(Vx2Plan, ActionsAndLinksByCase)
{
    std::string const unpatched = "[global.RigidDatabasePatching]\nEnabled = 'FALSE'\n";
    std::string const pose = "ExportTechFiles = true\nAnimationType = ''\n";
    const struct {
        std::string rules;
        ROWS rows;
    } cases[] = {
        {rigid_rule, {"M"}},
        {rigid_rule + with_rows, {"D after M", "L1", "L2", "M pulls D"}},
        {rigid_rule + tech_rule, {"P:1 pulls C", "C:1 after M,T", "T:1 after P!", "M:1 after P!"}},
        {rigid_rule + with_rows + tech_rule,
         {"P:1 pulls C", "C:1 after M,T", "T:1 after P!", "D after M", "L1", "L2", "M:1 after P! pulls D"}},
        {rigid_rule + pose + tech_rule, {"A", "P:1 pulls C", "C:1 after M,T", "T:1 after P!", "M:1 after P!"}},
        {rigid_rule + with_rows + unpatched, {"D after M", "L1 after R pulls R", "L2", "R", "M pulls D"}},
        {rigid_rule + with_rows + "[global.RigidDatabasePatching]\nEnabled = 'no'\n",
         {"D after M", "L1", "L2", "M pulls D"}},

        {"", {}},
        {tech_rule, {}},
        {"[RigidModelV2]\nTextureFolder = 't'\n", {}},
        {rigid_rule + "ExportTechFiles = true\nTechSubFolder = 'x'\n", {"M"}},
        {rigid_rule + "ExportTechFiles = true\nAnimationType = { null = true }\n", {"M"}},
        {rigid_rule + "UpdateDatabase = 'yes'\n", {"M"}},
        {rigid_rule + "UpdateDatabase = 'TRUE'\n", {"D after M", "L1", "L2", "M pulls D"}},
        {rigid_rule + "UpdateDatabase = 1\n", {"D after M", "L1", "L2", "M pulls D"}},

        // What cannot be built yet is an error that stands beside what can.
        {rigid_rule + "Tree = 'yes'\n" + with_rows, {"D after M", "L1", "L2", "E", "M pulls D"}},
        {"[GenericMesh]\nTargetPath = { null = true }\n", {"E"}},
        {"[GenericMesh]\n", {}},
        {"[Animation]\nAnimationType = 'man'\n", {"E"}},
        {"[Animation]\nExportAsReferencePose = true\n", {"E"}},
        {"[Animation]\nFPS = 20\n", {}},
        {"[ComplexAnimation]\n", {"E"}},
        {rigid_rule + "[Animation]\nAnimationType = 'man'\n[ComplexAnimation]\n", {"M", "E", "E"}},
    };
    for (const auto &c : cases)
        EXPECT_EQ(PLAN_KIT(c.rules).rows(), c.rows) << c.rules;
}

TEST(Vx2Plan, FaultsBecomeErrorsOfActions)
{
    QString const no_target = "No target path has been specified in the rule!";
    QString const no_textures = "No texture folder has been specified for the process_model action!";
    std::string const null_target = "[RigidModelV2]\nTargetPath = { null = true }\nTextureFolder = 't'\n";
    const struct {
        std::string rules;
        ROWS rows;
        QStringList errors;
    } cases[] = {
        {"[RigidModelV2]\nTargetPath = 'm'\n" + with_rows, {"M"}, {no_textures}},
        {"[RigidModelV2]\nTargetPath = 'm'\nTextureFolder = { null = true }\n", {"M"}, {no_textures}},
        {"[RigidModelV2]\nTargetPath = 'm'\nTextureFolder = ''\n", {"M"}, {}},
        {"[RigidModelV2]\nTargetPath = ''\nTextureFolder = 't'\n", {"M"}, {}},
        {rigid_rule + "UpdateDatabase = true\n",
         {"D after M", "L1", "L2", "M pulls D"},
         {"Missing rule property 'RigidCategory'!"}},
        {null_target, {"M"}, {no_target}},
        {null_target + with_rows, {"E", "M"}, {no_target}},
        {null_target + with_rows + tech_rule,
         {"P:1 pulls C", "C:1 after M,T", "T:1 after P!", "E", "M:1 after P!"},
         {no_target}},
        {"[RigidModelV2]\nTargetPath = { null = true }\n", {"M"}, {no_textures, no_target}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.rules);
        PLAN_KIT const plan(c.rules);
        EXPECT_EQ(plan.rows(), c.rows);
        QString const error = plan.the<ACTION_MODEL>().error();
        EXPECT_EQ(error.isEmpty(), c.errors.isEmpty()) << error.toStdString();
        for (QString const &text : c.errors)
            EXPECT_TRUE(error.contains(text)) << error.toStdString();
    }

    PLAN_KIT const plan(null_target + with_rows);
    ACTION_ERROR const &error = plan.the<ACTION_ERROR>();
    EXPECT_EQ(error.get_name(false), "Update database");
    EXPECT_EQ(error.error(), "TargetPath property missing from the rule.");
}

TEST(Vx2Plan, PropertiesReachTheActions)
{
    auto const textures = [](PLAN_KIT const &plan) -> QString { return plan.the<ACTION_MODEL>().texture_folder; };
    auto const target = [](PLAN_KIT const &plan) -> QString { return plan.the<ACTION_MODEL>().get_target(); };
    auto const lod = [](PLAN_KIT const &plan) { return QString::number(plan.the<ACTION_MODEL>().single_lod); };
    auto const pose = [](PLAN_KIT const &plan) -> QString { return plan.the<ACTION_ANIMATION>().get_target(); };
    auto const radius = [](PLAN_KIT const &plan) {
        return QString::number(double(plan.the<ACTION_PROCESS_TECH>().incendiary_radius));
    };
    auto const tech = [](PLAN_KIT const &plan) -> QString {
        QVector<LOGICAL_PATH> sources;
        QVector<TARGET_FILE> targets;
        qint64 time = 0;
        plan.the<ACTION_PROCESS_TECH>().get_affected_files(sources, targets, time, plan.tree.files.table,
                                                           plan.tree.rule_cache);
        return targets.at(0).physical;
    };
    std::string const with_pose = "ExportTechFiles = 1\nAnimationType = 'man'\n";
    const struct {
        std::string rules;
        std::function<QString(PLAN_KIT const &)> read;
        char const *expected;
    } cases[] = {
        {rigid_rule, textures, "<working>/textures/props"},
        {rigid_rule + "TextureSubFolder = '\\A\\b\\/'\n", textures, "<working>/textures/props/a/b"},
        {rigid_rule + "TextureSubFolder = '//\\'\n", textures, "<working>/textures/props/"},
        {rigid_rule + "TextureSubFolder = ''\n", textures, "<working>/textures/props"},
        {rigid_rule, target, "/tree/working_data/models/props/hut.rigid_model_v2"},
        // The extension stands in one rule only, and is still read after the other has been looked up.
        {rigid_rule + "TargetExtension = ' big\t'\n" + tech_rule, target, "/tree/working_data/models/props/hut.big"},
        {rigid_rule + "TargetExtension = '.big'\n", target, "/tree/working_data/models/props/hut.big"},
        {rigid_rule + "TargetExtension = '  '\n", target, "/tree/working_data/models/props/hut.rigid_model_v2"},
        {rigid_rule + "SingleLOD = 'yes'\n", lod, "0"},
        {rigid_rule + "SingleLOD = 'True'\n", lod, "1"},
        {rigid_rule + with_pose, pose, "/tree/working_data/models/props/hut.anim"},
        {rigid_rule + with_pose + "TechSubFolder = '/t\\'\n", pose, "/tree/working_data/models/props/t/hut.anim"},
        {rigid_rule + tech_rule, tech, "/tree/working_data/models/props/hut_tech.vx2.parsed"},
        {rigid_rule + tech_rule + "Vx2TechSubFolder = '/T\\x'\n", tech,
         "/tree/working_data/models/props//T/x/hut_tech.vx2.parsed"},
        {rigid_rule + tech_rule, radius, "2"},
        {rigid_rule + "IncendiaryRadius = { null = true }\n" + tech_rule, radius, "0"},
        {rigid_rule + "IncendiaryRadius = 'far'\n" + tech_rule, radius, "0"},
        {rigid_rule + "IncendiaryRadius = ' 2.5 '\n" + tech_rule, radius, "2.5"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.read(PLAN_KIT(c.rules)).toStdString(), c.expected) << c.rules;

    PLAN_KIT const plan(rigid_rule + with_pose);
    ACTION_ANIMATION const &animation = plan.the<ACTION_ANIMATION>();
    EXPECT_EQ(animation.animation_type, "man");
    EXPECT_TRUE(animation.reference_pose && animation.rigid_reference && animation.fps == 0.0f);
}

TEST(Vx2Plan, WalksSceneFilesInOrder)
{
    QStringList const files = {"b.vx2", "a/z.vx2", "B.vx2", "c.VX2", "d.vx2.bak"};
    PLAN_KIT const plan(rigid_rule + tech_rule, files);
    QStringList sources;
    for (ACTION_INTERFACE const *const action : plan.actions)
        if (auto const *const model = dynamic_cast<ACTION_MODEL const *>(action))
            sources += model->source().section('/', 3);
    EXPECT_EQ(sources, QStringList({"B.vx2", "a/z.vx2", "b.vx2"}));
    EXPECT_NE(plan.actions.first()->group, plan.actions.last()->group);

    EXPECT_TRUE(PLAN_KIT(rigid_rule, files, FILE_ENTRY::DELETED).actions.isEmpty());
    EXPECT_EQ(PLAN_KIT(rigid_rule, {"b.vx2"}, FILE_ENTRY::PLANNED).rows(), ROWS{"M"});
}

// The planner's list of waiting actions outlives the file that filled it.
TEST(Vx2Plan, AFileWithoutRowsDoesNotGetThoseOfTheFileBefore)
{
    PLAN_KIT const plan("[[RigidModelV2]]\nTargetPath = 'm'\nTextureFolder = 't'\n" + with_rows +
                            "[[RigidModelV2]]\nfiles = 'b.vx2'\nTargetPath = { null = true }\n",
                        {"a.vx2", "b.vx2"});
    EXPECT_EQ(plan.rows(), (ROWS{"D after M", "L1", "L2", "M pulls D", "E", "M"}));
}

// Keeps what the row actions of a plan hand to the database, in the order of the plan.
class ROWS_RECORDER : public ASSET_STORE {
public:
    ROWS written;

    explicit ROWS_RECORDER(PLAN_KIT const &plan)
    {
        ASSET_STORE *const before = set_asset_store(this);
        for (ACTION_INTERFACE *const action : plan.actions) {
            if (!dynamic_cast<ACTION_CONVERT *>(action) && !dynamic_cast<ACTION_PROCESS_TECH *>(action)) {
                EXPECT_EQ(run_action(*action, plan.tree.files.table, plan.tree.rule_cache), ACTION_INTERFACE::DONE);
            }
        }
        set_asset_store(before);
    }

private:
    QString identity() override { return {}; }
    bool apply(UPDATE_DB_TABLE const &table, QString const &, bool patch, QString &) override
    {
        written.push_back((table.name + (patch ? " patched" : "")).toStdString());
        EXPECT_EQ(table.rows.size(), 1);
        EXPECT_THAT(table.flags, testing::Each(true));
        for (auto column = table.rows[0].begin(); column != table.rows[0].end(); ++column)
            written.push_back((column.key() + "=" + column->value.typeName() + ":" + column->value.toString() +
                               (column->flag1 ? "*" : "") + (column->flag2 ? "*" : ""))
                                  .toStdString());
        return true;
    }
    bool remove(QString const &, QString const &table, QString const &column, QString const &value, bool folded,
                bool dry_run, bool &, QString &) override
    {
        EXPECT_TRUE(folded && !dry_run);
        written.push_back(("remove " + table + " " + column + "=" + value).toStdString());
        return true;
    }
    void want_export(QString const &, bool) override {}
};

TEST(Vx2Plan, RowsOfAModel)
{
    PLAN_KIT const hut(rigid_rule + with_rows + tech_rule + "Vx2TechSubFolder = ''\n");
    EXPECT_EQ(ROWS_RECORDER(hut).written,
              (ROWS{"kestrel_rigid patched", "category=QString:c", "key=QString:hut*",
                    "texture_directory=QString:Textures/props",  //
                    "kestrel_rigid_lod patched", "filename=QString:models/props/hut.rigid_model_v2", "key=QString:0**",
                    "range=QString:1_1", "rigid=QString:hut"}));

    PLAN_KIT const man(rigid_rule + with_rows + "AnimationType = 'man'\nTargetExtension = 'v2'\n" +
                           "[global.RigidDatabasePatching]\nEnabled = 0\n",
                       {"a.b/Man.old.vx2"});
    EXPECT_EQ(ROWS_RECORDER(man).written,
              (ROWS{"kestrel_animated", "category=QString:c", "key=QString:man*",
                    "texture_filename_base=QString:Textures/a.b",  //
                    "kestrel_animated_lod", "animated=QString:man", "filename=QString:models/a.b/Man.old.v2",
                    "range=int:0",  //
                    "remove kestrel_animated_lod animated=man", "remove kestrel_rigid_lod rigid=man"}));
}
