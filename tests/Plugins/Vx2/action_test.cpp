#include "Plugins/Vx2/action_animation.h"
#include "Plugins/Vx2/action_clean_up_vex2.h"
#include "Plugins/Vx2/action_complex_animation.h"
#include "Plugins/Vx2/action_genericmesh.h"
#include "Plugins/Vx2/action_model.h"
#include "Plugins/Vx2/action_prepare_vex2.h"
#include "Plugins/Vx2/action_process_tech.h"
#include "Plugins/Vx2/host/asset_fragment_builder.h"
#include "Plugins/Vx2/host/asset_graph_store.h"
#include "Plugins/Vx2/mesh_filters.h"
#include "platform/build_host/run.h"
#include "scene/material_names.h"
#include "tests/platform/build_host/asset_tree.h"
#include "tests/scene/make_scene.h"

#include <gmock/gmock.h>

#include <QtCore/QDir>
#include <QtCore/QRegularExpression>

using namespace TEST_SCENE;

// A tree on disk with the scene <raw>/props/hut.vx2, and the rules that its actions ask for while they run.
class ACTIONS : public testing::Test, private ASSET_GRAPH_STORE {
protected:
    ACTIONS()
    {
        set_current_roots(usual_roots(root));
        std::filesystem::create_directories(scratch.folder / "raw_data/props");
        store_before = set_asset_graph_store(this);
    }
    ~ACTIONS() override { set_asset_graph_store(store_before); }

    void put_scene(std::string const &bytes) { scratch.put("raw_data/props/hut.vx2", bytes); }
    ACTION_INTERFACE::STATUS run(ACTION_INTERFACE &action)
    {
        return run_action(action, tree.files.table, tree.rule_cache);
    }
    // The lines that the action itself has output, those of the libraries between them left out.
    static QStringList lines(ACTION_INTERFACE const &action)
    {
        QStringList texts;
        for (ACTION_LINE const &line : action.lines())
            texts += line.text;
        return texts;
    }
    // What get_affected_files gives, in its order: sources as they are, targets below the root, "*" for the flag.
    QStringList affected(ACTION_INTERFACE const &action, char const *rules = "")
    {
        ASSET_TREE nowhere(rules);
        set_current_roots(usual_roots(root));
        QVector<LOGICAL_PATH> sources;
        QVector<TARGET_FILE> targets;
        qint64 time = 0;
        action.get_affected_files(sources, targets, time, nowhere.files.table, nowhere.rule_cache);
        QStringList all;
        for (LOGICAL_PATH const &source : sources)
            all += source;
        for (TARGET_FILE const &target : targets)
            all += target.physical.mid(root.size() + 1) + (target.flag ? "*" : "");
        return all;
    }

    SCRATCH_FOLDER scratch;
    QString const root = QString::fromStdString(scratch.folder.string());
    PHYSICAL_PATH const hut{root + "/raw_data/props/hut.vx2"};
    ASSET_TREE tree{"[RigidModelV2]\nTargetPath = 'm'\n[RigidNodeV2]\nCanBurn = true\n"};
    QMap<QString, QTSHARED::ASSET_FRAGMENT> stored;  // the fragments of the last file

private:
    bool add_and_save(QTSHARED::ASSET_FRAGMENT_BUILDER &builder, ACTION_INTERFACE &, FILE_TABLE const &,
                      RULE_CACHE const &) override
    {
        stored = builder.fragments();
        return true;
    }
    QString fragment_id(LOGICAL_PATH const &, RULE_CACHE const &) override { return {}; }
    QTSHARED::ASSET_GRAPH *graph() override { return nullptr; }

    ASSET_GRAPH_STORE *store_before;
};

static VEX2_STATIC_MESH *static_triangle(char16_t const *class_type)
{
    VEX2_STATIC_MESH *const mesh = triangle_mesh<VEX2_STATIC_MESH>(u"mesh", [](auto &, unsigned) {});
    mesh->attributes = VEX2_ATTRIBUTES();
    mesh->attributes.add_string(u"class_TYPE", class_type);
    return mesh;
}

// A mesh to be seen and one that is only collided with.
static std::string hut_scene()
{
    VEX2 scene;
    scene.hierarchy.nodes.append().name = u"root";
    scene.static_meshes.append(static_triangle(u"DISPLAY"));
    scene.static_meshes.append(static_triangle(u"TECH"));
    return file_of(scene);
}

TEST_F(ACTIONS, Names)
{
    VEX2 *scene = nullptr;
    ACTION_PREPARE_VEX2 const prepare(hut, nullptr);
    ACTION_CLEAN_UP_VEX2 const clean_up(hut, scene, nullptr);
    ACTION_MODEL const model(hut, LOGICAL_PATH(), "", false, nullptr);
    ACTION_ANIMATION const animation(hut, nullptr, "", "", "", 0, false, false);
    ACTION_GENERICMESH const generic(hut, nullptr);
    ACTION_COMPLEX_ANIMATION const complex(hut, {}, nullptr);
    ACTION_PROCESS_TECH const tech(scene, hut, nullptr, 2, "");
    const struct {
        ACTION_INTERFACE const &action;
        QString name, with_source;
    } cases[] = {
        {prepare, "Prepare vex2", "Prepare vex2 (" + hut + ")"},
        {clean_up, "Clean up vex2", "Clean up vex2 (Clean up vex2)"},
        {model, "Convert vex2", "Convert vex2 (props/hut.vx2)"},
        {animation, "Convert vex2", "Convert vex2 (props/hut.vx2)"},
        {generic, "Convert vex2", "Convert vex2 (props/hut.vx2)"},
        {complex, "Convert vex2", "Convert vex2 (props/hut.vx2)"},
        {tech, "Process tech", "Process tech (" + hut + ")"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(c.action.get_name(false), c.name);
        EXPECT_EQ(c.action.get_name(true), c.with_source);
        EXPECT_EQ(c.action.progress_max(), 1000);
    }
}

TEST_F(ACTIONS, FailedPrepareLeavesASceneToCleanUp)
{
    VEX2 uneven;
    uneven.static_meshes.append(static_triangle(u"DISPLAY"))->vertices[1].uvws.clear();
    const struct {
        char const *fault;
        std::string bytes;
        QString line;  // empty: the library's own
    } cases[] = {
        {"no file", "", "Failed to open '" + hut + "' for reading!"},
        {"empty file", "", "Failed to open '" + hut + "' for reading!"},
        {"no scene", "VEX2 it is not", "Failed to load vex2 file '" + hut + "'!"},
        {"UVWs", file_of(uneven), ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.fault);
        if (&c != cases)
            put_scene(c.bytes);
        ACTION_PREPARE_VEX2 prepare(hut, nullptr);
        ACTION_CLEAN_UP_VEX2 clean_up(hut, prepare.scene, nullptr);
        EXPECT_EQ(run(prepare), ACTION_INTERFACE::FAILED);
        EXPECT_TRUE(prepare.scene);
        QStringList const texts = lines(prepare);
        EXPECT_EQ(texts.first(), "Loading vex2...");
        EXPECT_TRUE(c.line.isEmpty() || texts.last() == c.line) << texts.last().toStdString();
        EXPECT_FALSE(texts.contains("Removing duplicate vertices..."));

        EXPECT_FALSE(clean_up.auto_fail_if_dependency_failed());
        EXPECT_EQ(run(clean_up), ACTION_INTERFACE::DONE);
        EXPECT_FALSE(prepare.scene);
        prepare.reset();  // nothing is left to be destroyed
    }
}

TEST_F(ACTIONS, OneSceneFeedsModelAndTech)
{
    put_scene(hut_scene());
    QString const target = root + "/working_data/m";
    ACTION_PREPARE_VEX2 prepare(hut, nullptr);
    ACTION_MODEL model(prepare.scene, hut, LOGICAL_PATH("<working>/t"), "", false, nullptr);
    ACTION_PROCESS_TECH tech(prepare.scene, hut, nullptr, 2, "M");
    ACTION_CLEAN_UP_VEX2 clean_up(hut, prepare.scene, nullptr);
    model.set_target_path(target);

    ASSERT_EQ(run(prepare), ACTION_INTERFACE::DONE) << lines(prepare).join("\n").toStdString();
    EXPECT_EQ(lines(prepare), QStringList({"Loading vex2...", "Testing uvws...", "Removing duplicate vertices...",
                                           "Generating binormals and tangents..."}));
    ASSERT_EQ(run(model), ACTION_INTERFACE::DONE) << lines(model).join("\n").toStdString();
    EXPECT_TRUE(scratch.holds("working_data/m/hut.rigid_model_v2"));
    EXPECT_TRUE(scratch.holds("working_data/m/hut.rigid_model_v2.model_statistics"));
    EXPECT_TRUE(lines(model).contains("Texture folder: t"));

    scratch.put("raw_data/props/hut.vx2.parsed", "of a build that was broken off");
    ASSERT_EQ(run(tech), ACTION_INTERFACE::DONE) << lines(tech).join("\n").toStdString();
    QStringList const own = lines(tech).filter(QRegularExpression("^(Parsing|  )"));
    EXPECT_EQ(own.mid(0, 4), QStringList({"Parsing tech vx2...", "  Removing duplicate vertices...",
                                          "  Converting vex2...", "  Converting vex2..."}));
    EXPECT_TRUE(scratch.holds("working_data/M/hut_tech.vx2.parsed"));
    EXPECT_FALSE(scratch.holds("raw_data/props/hut.vx2.parsed"));
    EXPECT_EQ(stored.keys(), QStringList("battle/m/hut/tech"));

    EXPECT_EQ(run(clean_up), ACTION_INTERFACE::DONE);
    EXPECT_EQ(run(tech), ACTION_INTERFACE::FAILED);  // the scene is gone
}

TEST_F(ACTIONS, AModelWithoutAPreparedSceneLoadsItsFile)
{
    put_scene(hut_scene());
    ACTION_MODEL model(hut, LOGICAL_PATH("<working>/t"), "", false, nullptr);
    model.set_target_path(root + "/working_data/m");
    EXPECT_EQ(run(model), ACTION_INTERFACE::DONE) << lines(model).join("\n").toStdString();
    EXPECT_TRUE(scratch.holds("working_data/m/hut.rigid_model_v2"));

    ACTION_MODEL outside(hut, LOGICAL_PATH("<working>/../t"), "", false, nullptr);
    outside.set_target_path(root + "/working_data/m");
    EXPECT_EQ(run(outside), ACTION_INTERFACE::FAILED);
    EXPECT_EQ(lines(outside).last(), "the texture folder '../t' lies outside the tree");
    put_scene("");
    EXPECT_EQ(run(model), ACTION_INTERFACE::FAILED);
}

TEST_F(ACTIONS, AffectedFilesStandInOrder)
{
    QStringList const sources = {"<raw>/props/hut.vx2", "<raw>/lighting/rigid_materials.xml",
                                 "<raw>/lighting/lod_types_table.xml"};
    char const *const described = "[RigidModelV2]\nTargetPath = 'm'\nCreateRigidModelDescriptionFile = 'yes'\n";
    ACTION_MODEL model(hut, LOGICAL_PATH(), "", false, nullptr);
    model.set_target_path(root + "/w");
    EXPECT_EQ(affected(model), sources + QStringList({"w/hut.rigid_model_v2",  //
                                                      "w/hut.rigid_model_v2.model_statistics"}));
    model.set_final_target_path(PHYSICAL_PATH(root + "/myTiles"));
    EXPECT_EQ(affected(model, described),
              sources + QStringList({"w/hut.rigid_model_v2", "myTiles/hut.rigid_model_v2.model_statistics",
                                     "myTiles\\hut_tech.vx2.parsed*", "myTiles/hf_height_map.data*",
                                     "myTiles/hf_height_map_mesh_delta.data*", "myTiles/terrain_outlines.xml*"}));

    VEX2 *scene = nullptr;
    PHYSICAL_PATH const dotted(root + "/raw_data/props/hut.a.vx2");
    EXPECT_EQ(affected(ACTION_PROCESS_TECH(scene, dotted, nullptr, 2, "R/t")),
              QStringList({"<raw>/props/hut.a.vx2", "working_data/R/t/hut.a_tech.vx2.parsed",
                           "raw_data/CorvaneDesignData/hut.a_tech.vx2", "working_data/R/t/hut.a_tech.agf"}));
    EXPECT_TRUE(affected(ACTION_CLEAN_UP_VEX2(hut, scene, nullptr)).isEmpty());
}

TEST_F(ACTIONS, AGenericMeshIsOneFileWithStatistics)
{
    VEX2 scene;
    scene.static_meshes.append(static_triangle(u"DISPLAY"));
    VEX2_SHADER_MATERIAL *const material = new VEX2_SHADER_MATERIAL;
    material->name = u"paint";
    material->textures.append().slot = MATERIAL_NAME::diffuse_slot;
    material->textures[0].file = u"paint.tga";
    scene.materials.append(material);
    put_scene(file_of(scene));
    scratch.put("raw_data/props/paint.tga", "no picture");  // and not looked at

    ACTION_GENERICMESH mesh(hut, nullptr);
    mesh.set_target_path(root + "/working_data/tiles");
    EXPECT_EQ(affected(mesh), QStringList({"<raw>/props/hut.vx2", "working_data/tiles/hut.generic_mesh",
                                           "working_data/tiles/hut.generic_mesh.model_statistics"}));
    EXPECT_EQ(run(mesh), ACTION_INTERFACE::DONE);
    EXPECT_EQ(lines(mesh), QStringList("Attempting to write XML file..."));
    EXPECT_EQ(QDir(root + "/working_data/tiles").entryList(QDir::Files),
              QStringList({"hut.generic_mesh", "hut.generic_mesh.model_statistics"}));

    // Statistics that cannot be written are no failure.
    std::filesystem::remove(scratch.folder / "working_data/tiles/hut.generic_mesh.model_statistics");
    std::filesystem::create_directories(scratch.folder / "working_data/tiles/hut.generic_mesh.model_statistics/x");
    EXPECT_EQ(run(mesh), ACTION_INTERFACE::DONE);
    EXPECT_EQ(lines(mesh).last(), "Failed to write statistics XML file.");
    EXPECT_EQ(mesh.lines().last().level, 1);

    put_scene("VEX2 it is not");
    EXPECT_EQ(run(mesh), ACTION_INTERFACE::FAILED);
    EXPECT_EQ(lines(mesh).last(), "Failed to load vex2 file '" + hut + "'!");
}

TEST(Vx2MeshFilters, TheFirstClassWithOneValueDecides)
{
    const struct {
        std::vector<std::pair<std::u16string, std::vector<KN::UniString>>> attributes;
        bool display, tech;
    } cases[] = {
        {{}, false, false},
        {{{u"class_TYPE", {u"DISPLAY"}}}, true, false},
        {{{u"class_TYPE", {u"Display"}}, {u"class_TYPE", {u"DISPLAY"}}}, false, false},
        {{{u"class_type", {u"DISPLAY"}}, {u"class_TYPE", {}}, {u"class_TYPE", {u"TECH", u"x"}}}, false, false},
        {{{u"class_TYPE", {u"DISPLAY", u"TECH"}}, {u"class_TYPE", {u"TECH"}}}, false, true},
    };
    for (const auto &c : cases) {
        VEX2_STATIC_MESH mesh;
        for (const auto &[name, values] : c.attributes) {
            VEX2_STRING_ATTRIBUTE &attribute = mesh.attributes.strings.append();
            attribute.name = name;
            for (KN::UniString const &value : values)
                attribute.values.append(value);
        }
        EXPECT_EQ(DISPLAY_FILTER().mesh(mesh), c.display) << &c - cases;
        EXPECT_EQ(TECH_FILTER().mesh(mesh), c.tech) << &c - cases;
    }
}
