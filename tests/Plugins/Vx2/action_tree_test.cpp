#include "Plugins/Vx2/action_tree.h"
#include "Plugins/Vx2/host/vfs.h"
#include "platform/build_host/run.h"
#include "tests/platform/build_host/asset_tree.h"
#include "tests/scene/make_scene.h"

#include <gmock/gmock.h>

namespace {

QStringList calls;     // of the engine, in their order
float box[6];          // of its models
bool has_view, loads;  // what it can do

void note(QString const &call) { calls += call; }

// Nothing is rendered: what the engine is asked for is noted.
class NOTING_ENGINE final : public KESTREL::ENGINE, KESTREL::VIEW {
    KESTREL::RIGID_MODEL_SERVICE *rigid_model_service() override { return nullptr; }
    KESTREL::VIEW *view() override { return has_view ? this : nullptr; }
    void recreate_scene() override { note("recreate"); }
    void set_mode(int mode) override { note(QString("mode %1").arg(mode)); }
    int load_model(KN::String const &name, int materials, KESTREL::TEXTURE_NAME_MAPPER *mapper) override
    {
        note(QString("load %1 %2").arg(QString::fromStdString(name)).arg(materials));
        for (char const *texture : {"tex/oak_Diffuse.png", "tex/bark_diffuse.png"})
            note(QString::fromStdString(mapper->map(KESTREL::TEXTURE_NAME_MAPPER::DIFFUSE, texture)));
        note(QString::fromStdString(mapper->map(KESTREL::TEXTURE_NAME_MAPPER::NORMAL, "tex/oak_diffuse.png")));
        return loads ? 5 : INVALID_MODEL;
    }
    void bounding_box(int model, float out[6]) override
    {
        note(QString("box %1").arg(model));
        std::copy_n(box, 6, out);
    }
    void add_instance(int model, float const m[12]) override
    {
        QString row = QString("instance %1:").arg(model);
        for (int i = 0; i < 12; ++i)
            row += QString(" %1").arg(std::round(m[i] * 100) / 100 + 0.0);
        note(row);
    }
    void begin_frame() override { note("begin"); }
    void end_frame() override { note("end"); }
    void set_clear(KESTREL::VIEW_CLEAR const &clear) override
    {
        note(QString("clear %1 %2 %3").arg(clear.colour, 0, 16).arg(clear.height).arg(clear.normal, 0, 16));
    }
    void set_viewport(int x, int y, int w, int h) override
    {
        note(QString("viewport %1 %2 %3 %4").arg(x).arg(y).arg(w).arg(h));
    }
    void set_camera(SUPPORT::CAMERA *camera) override
    {
        note(QString("camera at %1 %2 %3 to %4 %5 %6 aspect %7 height %8 %9")
                 .arg(camera->eye().x)
                 .arg(camera->eye().y)
                 .arg(camera->eye().z)
                 .arg(camera->target().x)
                 .arg(camera->target().y)
                 .arg(camera->target().z)
                 .arg(camera->aspect())
                 .arg(camera->view_height())
                 .arg(camera->is_orthographic() ? "flat" : "perspective"));
    }
    void save_image(KESTREL::CAPTURE_REQUEST const &image) override
    {
        QString const file = QString::fromStdString(image.file_name).section('/', -1);
        note(QString("save %1 %2 %3x%4").arg(image.kind).arg(file).arg(image.width).arg(image.height));
    }
};

// The temporary model <raw>/trees/oak.rigid_model_v2 of a tree 10 m wide and 20 m high, and a running engine.
class TREES : public testing::Test {
protected:
    TREES()
        : before(ACTION_INIT_KESTREL::set_engine_maker(
              [](bool, bool, bool) -> KESTREL::ENGINE * { return new NOTING_ENGINE; }))
    {
        set_current_roots(usual_roots(root));
        for (char const *folder : {"raw_data/trees", "working_data/tex"})
            std::filesystem::create_directories(scratch.folder / folder);
        scratch.put("raw_data/trees/oak.rigid_model_v2", "model");
        calls.clear();
        has_view = loads = true;
        float const tree[6] = {-3, -1, -2, 5, 20, 4};
        std::copy_n(tree, 6, box);
        run_action(init, nothing.files.table, nothing.rule_cache);
    }
    ~TREES() override { ACTION_INIT_KESTREL::set_engine_maker(before); }

    std::unique_ptr<ACTION_TREE> tree(QStringList const &textures = {})
    {
        ASSET_TREE const files("", textures);
        set_current_roots(usual_roots("/tree"));
        ACTION_TREE const planned(PHYSICAL_PATH("/tree/raw_data/trees/oak.rigid_model_v2"), nullptr, &init,
                                  files.files.table);
        used.clear();
        for (int i = 0; i < ACTION_TREE::SLOT_COUNT; ++i)
            if (planned.slot_used(i))
                used += QString::number(i);
        set_current_roots(usual_roots(root));
        PHYSICAL_PATH const model(root + "/raw_data/trees/oak.rigid_model_v2");
        auto action = std::make_unique<ACTION_TREE>(model, nullptr, &init, nothing.files.table);
        action->set_target_path(root + "/working_data/models");
        return action;
    }
    ACTION_INTERFACE::STATUS run(ACTION_TREE &action)
    {
        return run_action(action, nothing.files.table, nothing.rule_cache);
    }

    TEST_SCENE::SCRATCH_FOLDER scratch;
    QString const root = QString::fromStdString(scratch.folder.string());
    ASSET_TREE nothing;
    KESTREL::ENGINE_MAKER before;
    ACTION_INIT_KESTREL init{nullptr, true, true, true};
    QString used;
};

}  // namespace

TEST_F(TREES, TilesArePowersOfTwoWithinTheirLimits)
{
    EXPECT_EQ(tile_pixels(10, 2048, 4), 128);   // 170
    EXPECT_EQ(tile_pixels(20, 512, 1), 256);    // 340
    EXPECT_EQ(tile_pixels(0.5f, 2048, 4), 64);  // 8.5, doubled until a quarter has 16
    EXPECT_EQ(tile_pixels(40, 2048, 4), 512);   // 680
    EXPECT_EQ(tile_pixels(400, 512, 1), 512);
    EXPECT_EQ(tile_pixels(0, 2048, 4), 64);
    EXPECT_EQ(tile_pixels(-3, 512, 1), 16);
    EXPECT_EQ(tile_pixels(NAN, 512, 1), 16);
}

TEST_F(TREES, TexturesBesideTheModelMarkTheirSeasons)
{
    tree();
    EXPECT_EQ(used, "5");
    tree({"trees/leaf_SUMMER_diffuse.TGA", "trees/sub/bark_br_diffuse.tga"});
    EXPECT_EQ(used, "145");
    tree({"trees/oak_billboard_summer_diffuse.tga", "trees/leaf_summer_diffuse.png", "treesides/leaf_winter.tga",
          "leaf_spring.tga"});
    EXPECT_EQ(used, "5");
}

TEST_F(TREES, TheStripOfTheWholeYearIsRenderedAndTheModelCopied)
{
    auto const action = tree();
    ASSERT_EQ(run(*action), ACTION_INTERFACE::DONE);
    EXPECT_EQ(calls, (QStringList{
                         "recreate",
                         "load " + root + "/raw_data/trees/oak.rigid_model_v2 77",
                         "tex/oak_Diffuse.png",
                         "tex/bark_diffuse.png",
                         "tex/oak_diffuse.png",
                         "mode 1",
                         "clear 808080 0 80808080",
                         "box 5",
                         "viewport 0 0 512 256",
                         "camera at 0 10 10 to 0 10 -10 aspect 2 height 20 flat",
                         "instance 5: 0 0 1 -15 0 1 0 0 -1 0 0 0",
                         "instance 5: -1 0 0 -5 0 1 0 0 0 0 -1 0",
                         "instance 5: 0 0 -1 5 0 1 0 0 1 0 0 0",
                         "instance 5: 1 0 0 15 0 1 0 0 0 0 1 0",
                         "begin",
                         "end",
                         "save 1 oak_billboard_diffuse.tga 512x256",
                         "save 0 oak_billboard_normal.tga 512x256",
                         "save 2 oak_billboard_displacement.tga 512x256",
                     }));
    EXPECT_EQ(scratch.get("working_data/models/oak.rigid_model_v2"), "model");
}

TEST_F(TREES, TargetsAreTheModelAndTheStripsOfUsedSlots)
{
    ASSET_TREE const files("", {"trees/leaf_winter_diffuse.tga"});
    ACTION_TREE action(PHYSICAL_PATH("/tree/raw_data/trees/oak.rigid_model_v2"), nullptr, &init, files.files.table);
    action.set_target_path("/tree/working_data/models");
    QVector<LOGICAL_PATH> sources;
    QVector<TARGET_FILE> targets;
    qint64 time = 0;
    action.get_affected_files(sources, targets, time, files.files.table, files.rule_cache);
    QStringList paths;
    for (TARGET_FILE const &target : targets)
        paths += target.logical + (target.flag ? "*" : "");
    EXPECT_EQ(paths,
              (QStringList{"<working>/models/oak.rigid_model_v2", "<raw>/trees/oak_billboard_winter_diffuse.tga*",
                           "<raw>/trees/oak_billboard_diffuse.tga*", "<raw>/trees/oak_billboard_normal.tga*",
                           "<raw>/trees/oak_billboard_displacement.tga*"}));
}

// The seasonal picture of the leaves is there, that of the bark is not.
TEST_F(TREES, SeasonsShowTheirOwnTexturesWhereThereAreAny)
{
    scratch.put("working_data/tex/oak_autumn_diffuse.png", "picture");
    UTILITYDLL::vfs().set_roots({KN::String((scratch.folder / "working_data").string())});
    ASSET_TREE files("", {"trees/oak_autumn_diffuse.tga"});
    ACTION_TREE action(PHYSICAL_PATH("/tree/raw_data/trees/oak.rigid_model_v2"), nullptr, &init, files.files.table);
    action.set_target_path(root + "/working_data/models");
    run_action(action, files.files.table, files.rule_cache);
    UTILITYDLL::vfs().set_roots({});
    EXPECT_EQ(calls.filter("tex/"),
              (QStringList{"tex/oak_autumn_diffuse.png", "tex/bark_diffuse.png", "tex/oak_diffuse.png",
                           "tex/oak_Diffuse.png", "tex/bark_diffuse.png", "tex/oak_diffuse.png"}));
    EXPECT_EQ(calls.count("recreate"), 2);
    EXPECT_EQ(calls.filter("save 1").first(), "save 1 oak_billboard_autumn_diffuse.tga 512x256");
}

TEST_F(TREES, NothingToLookAtMakesAnEmptyStripOfTheLeastSize)
{
    box[4] = -1;  // all of it is below the ground
    ASSET_TREE files("", {"trees/oak_autumn_diffuse.tga"});
    ACTION_TREE action(PHYSICAL_PATH("/tree/raw_data/trees/oak.rigid_model_v2"), nullptr, &init, files.files.table);
    action.set_target_path(root + "/working_data/models");
    EXPECT_EQ(run(action), ACTION_INTERFACE::DONE);
    ASSERT_EQ(action.lines().size(), 1) << "not one a season";
    EXPECT_EQ(action.lines()[0].level, 1);
    EXPECT_EQ(calls.filter("instance"), QStringList());
    EXPECT_EQ(calls.filter("save 1"), (QStringList{"save 1 oak_billboard_autumn_diffuse.tga 256x16",
                                                   "save 1 oak_billboard_diffuse.tga 256x16"}));
}

TEST_F(TREES, WithoutAViewOnlyTheModelIsCopied)
{
    has_view = false;
    auto const action = tree();
    EXPECT_EQ(run(*action), ACTION_INTERFACE::DONE);
    EXPECT_TRUE(action->lines().isEmpty());
    EXPECT_EQ(calls, (QStringList{"recreate", "mode 1", "box -1"}));
    EXPECT_EQ(scratch.get("working_data/models/oak.rigid_model_v2"), "model");
}

TEST_F(TREES, AnInterruptedTreeFailsAndLeavesItsModelAway)
{
    auto const action = tree();
    action->abort();
    EXPECT_EQ(run(*action), ACTION_INTERFACE::FAILED);
    EXPECT_FALSE(std::filesystem::exists(scratch.folder / "working_data/models/oak.rigid_model_v2"));
}

TEST_F(TREES, TheEngineLivesFromItsStartToItsStop)
{
    EXPECT_NE(init.engine(), nullptr);
    ACTION_CLEANUP_KESTREL stop(&init, nullptr);
    ASSERT_EQ(stop.dependencies().size(), 1);
    EXPECT_EQ(stop.dependencies()[0].other, &init);
    EXPECT_FALSE(stop.dependencies()[0].flag);
    ASSERT_EQ(init.pulls().size(), 1);
    EXPECT_EQ(init.pulls()[0].other, &stop);
    EXPECT_FALSE(stop.auto_fail_if_dependency_failed());
    EXPECT_EQ(run_action(stop, nothing.files.table, nothing.rule_cache), ACTION_INTERFACE::DONE);
    EXPECT_EQ(init.engine(), nullptr);

    ACTION_INIT_KESTREL::set_engine_maker(nullptr);
    EXPECT_EQ(run_action(init, nothing.files.table, nothing.rule_cache), ACTION_INTERFACE::FAILED);
}
