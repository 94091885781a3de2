#include "Plugins/Vx2/action_animation.h"
#include "Plugins/Vx2/action_complex_animation.h"
#include "Plugins/Vx2/action_genericmesh.h"
#include "Plugins/Vx2/action_model.h"
#include "Plugins/Vx2/action_process_tech.h"
#include "Plugins/Vx2/action_tree.h"
#include "Plugins/Vx2/host/action_error.h"
#include "Plugins/Vx2/host/host_messages.h"
#include "platform/build_host/asset_store.h"
#include "platform/build_host/run.h"
#include "tests/Plugins/Vx2/plan_kit.h"

#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <functional>

using ROWS = std::vector<std::string>;

static QStringList targets_of(ACTION_INTERFACE const &action, PLAN_KIT const &plan)
{
    QVector<LOGICAL_PATH> sources;
    QVector<TARGET_FILE> targets;
    qint64 time = 0;
    action.get_affected_files(sources, targets, time, plan.tree.files.table, plan.tree.rule_cache);
    QStringList paths;
    for (TARGET_FILE const &target : qAsConst(targets))
        paths += target.physical;
    return paths;
}

TEST(Vx2Plan, ActionsAndLinksByCase)
{
    std::string const unpatched = "[global.RigidDatabasePatching]\nEnabled = 'FALSE'\n";
    std::string const pose = "ExportTechFiles = true\nAnimationType = ''\n";
    const struct {
        std::string rules;
        ROWS rows;
    } cases[] = {
        {rigid_rule, {"M"}},
        {rigid_rule + with_rows, {"D after M", "L", "L2", "M pulls D"}},
        {rigid_rule + tech_rule, {"P:1 pulls C", "C:1 after M,T", "T:1 after P!", "M:1 after P!"}},
        {rigid_rule + with_rows + tech_rule,
         {"P:1 pulls C", "C:1 after M,T", "T:1 after P!", "D after M", "L", "L2", "M:1 after P! pulls D"}},
        {rigid_rule + pose + tech_rule, {"A", "P:1 pulls C", "C:1 after M,T", "T:1 after P!", "M:1 after P!"}},
        {rigid_rule + with_rows + unpatched, {"D after M", "L after R pulls R", "L2", "R", "M pulls D"}},
        {rigid_rule + with_rows + "[global.RigidDatabasePatching]\nEnabled = 'no'\n",
         {"D after M", "L", "L2", "M pulls D"}},

        {"", {}},
        {tech_rule, {}},
        {"[RigidModelV2]\nTextureFolder = 't'\n", {}},
        {rigid_rule + "ExportTechFiles = true\nTechSubFolder = 'x'\n", {"M"}},
        {rigid_rule + "ExportTechFiles = true\nAnimationType = { null = true }\n", {"M"}},
        {rigid_rule + "UpdateDatabase = 'yes'\n", {"M"}},
        {rigid_rule + "UpdateDatabase = 'TRUE'\n", {"D after M", "L", "L2", "M pulls D"}},
        {rigid_rule + "UpdateDatabase = 1\n", {"D after M", "L", "L2", "M pulls D"}},

        {"[GenericMesh]\nTargetPath = 'm'\n", {"G"}},
        {"[GenericMesh]\n", {}},
        {"[Animation]\nAnimationType = 'man'\n", {"A"}},
        {"[Animation]\nExportAsReferencePose = true\n", {"A"}},
        {"[Animation]\nExportAsReferencePose = false\nAnimationType = ''\nFPS = 20\n", {}},
        {"[ComplexAnimation]\n", {"Z"}},
        {rigid_rule + "[ComplexAnimation]\n[Animation]\nAnimationType = 'man'\n[GenericMesh]\nTargetPath = 'm'\n",
         {"M", "G", "A", "Z"}},
    };
    for (const auto &c : cases)
        EXPECT_EQ(PLAN_KIT(c.rules).rows(), c.rows) << c.rules;
}

// One engine serves all trees of a plan, and each tree's pictures follow it. Rows and textures are planned as for other
// models.
TEST(Vx2Plan, Trees)
{
    std::string const tree_rule = rigid_rule + "Tree = 'yes'\n";
    ROWS const engine = {"I:1", "K:1 after B"};
    ROWS const strip = {"B:1 after I!,M pulls M,X,Y", "X after B pulls B", "Y after B pulls B"};
    auto const joined = [](std::initializer_list<ROWS> const &parts) {
        ROWS all;
        for (ROWS const &part : parts)
            all.insert(all.end(), part.begin(), part.end());
        return all;
    };
    EXPECT_EQ(PLAN_KIT(tree_rule).rows(), joined({engine, strip, {"M pulls B"}}));
    EXPECT_EQ(PLAN_KIT(tree_rule + with_rows).rows(),
              joined({{"D after M", "L", "L2"}, engine, strip, {"M pulls B,D"}}));
    EXPECT_EQ(PLAN_KIT(tree_rule, {"a.vx2", "b.vx2"}).rows(),
              joined({{"I:1", "K:1 after B,B2"},
                      strip,
                      {"M pulls B", "B2:1 after I!,M2 pulls M2,X2,Y2", "X2 after B2 pulls B2", "Y2 after B2 pulls B2",
                       "M2 pulls B2"}}));
    EXPECT_EQ(PLAN_KIT(tree_rule + tech_rule).rows(),
              joined({{"P:1 pulls C", "C:1 after M,T", "T:1 after P!"},
                      {"I:2", "K:2 after B", "B:2 after I!,M pulls M,X,Y", "X after B pulls B", "Y after B pulls B",
                       "M:1 after P! pulls B"}}));

    // The season's textures stand beside the model.
    PLAN_KIT const seasons(tree_rule, {"props/hut.vx2", "props/bark_BR_diffuse.TGA"});
    QStringList targets;
    for (ACTION_INTERFACE const *const action : seasons.actions)
        if (auto const *const picture = dynamic_cast<ACTION_CONVERT const *>(action))
            targets += picture->source().section('/', 2) + " > " + picture->get_target().section('/', 2) +
                       (picture->is_target_temporary() ? " temporary" : "");
    QString const textures = " > working_data/Textures/props/hut_billboard";
    EXPECT_EQ(targets, QStringList({
                           "raw_data/props/hut.rigid_model_v2 > working_data/models/props/hut.rigid_model_v2 temporary",
                           "raw_data/props/hut_billboard_br_diffuse.tga" + textures + "_br_diffuse.dds",
                           "raw_data/props/hut_billboard_diffuse.tga" + textures + "_diffuse.dds",
                           "raw_data/props/hut_billboard" + textures + ".billboard.xml",
                           "raw_data/props/hut.vx2 > raw_data/props/hut.rigid_model_v2 temporary",
                       }));
    // Statistics are declared where the tree ends up.
    EXPECT_EQ(targets_of(seasons.the<ACTION_MODEL>(), seasons)[1],
              "/tree/working_data/models/props/hut.rigid_model_v2.model_statistics");

    PLAN_KIT const null_target("[RigidModelV2]\nTree = true\nTargetPath = { null = true }\nTextureFolder = 't'\n");
    EXPECT_EQ(null_target.the<ACTION_TREE>().error(), "No target path has been specified in the rule!");
    EXPECT_TRUE(null_target.the<ACTION_MODEL>().error().isEmpty());
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
         {"D after M", "L", "L2", "M pulls D"},
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
    auto const tech = [](PLAN_KIT const &plan) { return targets_of(plan.the<ACTION_PROCESS_TECH>(), plan)[0]; };
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

TEST(Vx2Plan, TargetsOfGenericMeshesAndAnimations)
{
    QString const no_target = "No target path has been specified in the rule!";
    struct {
        std::string rules;
        QString target, error;
    } const cases[] = {
        {"[GenericMesh]\nTargetPath = 'm'\n", "working_data/m/props/hut.generic_mesh", ""},
        {"[GenericMesh]\nTargetPath = { null = true }\n", "raw_data/props/hut.generic_mesh", no_target},
        {"[Animation]\nAnimationType = 'man'\nTargetPath = 'm'\n", "working_data/m/props/hut.anim", ""},
        {"[Animation]\nAnimationType = 'man'\nTargetPath = { null = true }\n", "raw_data/props/hut.anim", ""},
        {"[Animation]\nAnimationType = 'man'\n", "raw_data/props/hut.anim", ""},
        {"[ComplexAnimation]\nTargetPath = 'm'\n", "working_data/m/props/hut", ""},
        {"[ComplexAnimation]\n", "raw_data/props/hut", no_target},
    };
    for (auto const &c : cases) {
        PLAN_KIT const plan(c.rules);
        EXPECT_EQ(plan.the<ACTION_CONVERT>().get_target(), "/tree/" + c.target) << c.rules;
        EXPECT_EQ(plan.the<ACTION_CONVERT>().error(), c.error) << c.rules;
    }

    PLAN_KIT const plan("[Animation]\nAnimationType = 'Man'\nFPS = '12.5'\n");
    ACTION_ANIMATION const &clip = plan.the<ACTION_ANIMATION>();
    EXPECT_EQ(clip.animation_type, "Man");
    EXPECT_EQ(clip.fps, 12.5f);
    EXPECT_FALSE(clip.reference_pose || clip.rigid_reference);

    PLAN_KIT const pose("[Animation]\nExportAsReferencePose = true\n");
    EXPECT_TRUE(pose.the<ACTION_ANIMATION>().reference_pose && !pose.the<ACTION_ANIMATION>().rigid_reference);
    EXPECT_TRUE(pose.the<ACTION_ANIMATION>().animation_type.isEmpty());
}

namespace {

class WARNINGS final : public HOST_MESSAGES::SINK {
public:
    WARNINGS() : before(HOST_MESSAGES::set_sink(this)) {}
    ~WARNINGS() { HOST_MESSAGES::set_sink(before); }
    void warning(QString const &title, QString const &text) override { told += title + ": " + text; }
    QStringList take() { return std::exchange(told, {}); }

private:
    HOST_MESSAGES::SINK *before;
    QStringList told;
};

}  // namespace

// The warnings come also where the rule then asks for nothing, but not for old data.
TEST(Vx2Plan, DeprecatedPropertiesOfAnimationsAreWarnings)
{
    std::string const rules = "[Animation]\nCinematicRightHandRotations = ''\nCoreTranslations = { null = true }\n"
                              "FaceRotations = 'x'\n";
    auto const told = [](QString const &property) {
        return QString("Animation: Rule value " + property +
                       " is deprecated while processing "
                       "/tree/raw_data/a%2b.vx2!");
    };
    WARNINGS warnings;
    EXPECT_EQ(PLAN_KIT(rules, {"a%2b.vx2", "tree/OLD_raw_data.copy/b.vx2"}).rows(), ROWS{});
    EXPECT_EQ(warnings.take(),
              QStringList({told("CoreTranslations"), told("FaceRotations"), told("CinematicRightHandRotations")}));
}

// The list of skeletons is made once a process, as soon as it holds one.
TEST(Vx2Plan, SkeletonsThatDoNotReadAreWarningsUntilOneDoes)
{
    PLAN_KIT kit("[ComplexAnimation]\n", {"a.vx2", "b.vx2"});
    QTemporaryDir const folder;
    set_current_roots(usual_roots(folder.path()));
    auto const add = [&](QString const &name, char const *text) {
        QDir(folder.path()).mkpath("raw_data/animations/skeletons");
        QFile file(folder.filePath("raw_data/animations/skeletons/" + name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    };
    WARNINGS warnings;
    auto const told_by_a_plan = [&] {
        qDeleteAll(kit.processor.plan_actions(kit.tree.files.table, kit.tree.rule_cache));
        return warnings.take();
    };
    QString const worse = "Complex Animations: worse.Bone_Table is invalid!";
    QString const broken = "Complex Animations: broken.bone_table is invalid!";

    EXPECT_EQ(told_by_a_plan(), QStringList());
    add("worse.Bone_Table", "bones =");
    add("broken.bone_table", "");
    add("readme.txt", "");
    EXPECT_EQ(told_by_a_plan(), QStringList({broken, worse, broken, worse}));
    add("man.bone_table", "root = 'root'\nbones = [['root', '']]\n");
    EXPECT_EQ(told_by_a_plan(), QStringList({broken, worse}));
    EXPECT_EQ(told_by_a_plan(), QStringList());
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
    EXPECT_EQ(plan.rows(), (ROWS{"D after M", "L", "L2", "M pulls D", "E", "M2"}));
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
