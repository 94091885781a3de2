// The fragments of finished models and materials: which actions are planned for a tree, and what they enter in the
// graph. The engine is one whose models a test writes down; the store tells what it was given.

#include "Plugins/Vx2/action_klmodel_agf.h"
#include "Plugins/Vx2/action_material_agf.h"
#include "Plugins/Vx2/action_rigid_agf.h"
#include "Plugins/Vx2/action_rigid_header_cache.h"
#include "Plugins/Vx2/host/action_engine.h"
#include "Plugins/Vx2/host/asset_graph.h"
#include "Plugins/Vx2/host/asset_graph_store.h"
#include "Plugins/Vx2/host/engine.h"
#include "Plugins/Vx2/model_agf_processor.h"
#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "platform/build_host/run.h"
#include "tests/platform/build_host/asset_tree.h"
#include "tests/platform/build_host/test_actions.h"

#include <gmock/gmock.h>

#include <QtCore/QTemporaryDir>

using testing::ElementsAre;
using LINES = std::vector<std::string>;

namespace {

// Models have the handles 0, 1, .. in the order of their names; each has a level a list.
class FAKE_ENGINE final : public KESTREL::ENGINE, private KESTREL::RIGID_MODEL_SERVICE {
public:
    struct MODEL {
        KN::String skeleton;
        std::vector<std::vector<KESTREL::LEVEL_ASSET>> levels;
    };
    static inline std::map<std::string, MODEL> models;  // by name below the working root
    static inline bool has_service = true;
    static inline LINES calls;

    static KESTREL::ENGINE *make(bool mount_data, bool start_services, bool open_view)
    {
        EXPECT_TRUE(mount_data && start_services && !open_view);
        return new FAKE_ENGINE;
    }

private:
    RIGID_MODEL_SERVICE *rigid_model_service() override { return has_service ? this : nullptr; }

    unsigned open(unsigned flags, KN::String const &name, void *context, bool wait) override
    {
        EXPECT_FALSE(context || wait);
        calls.push_back("open " + std::to_string(flags) + " " + name);
        auto const found = models.find(name);
        return found == models.end() ? ~0u : unsigned(std::distance(models.begin(), found));
    }
    MODEL const &model(unsigned handle) { return std::next(models.begin(), handle)->second; }
    unsigned level_count(unsigned handle) override { return handle == ~0u ? 0 : unsigned(model(handle).levels.size()); }
    KN::String skeleton_name(unsigned handle) override
    {
        EXPECT_NE(handle, ~0u);
        return model(handle).skeleton;
    }
    KN_STD::VECTOR<KESTREL::LEVEL_ASSET> level_assets(unsigned handle, unsigned index) override
    {
        auto const &level = model(handle).levels.at(index);
        return {level.begin(), level.end()};
    }
    void close(unsigned handle) override { calls.push_back("close " + std::to_string(int(handle))); }

    KESTREL::VIEW *view() override { return nullptr; }
    void recreate_scene() override {}
    void set_mode(int) override {}
    int load_model(KN::String const &, int, KESTREL::TEXTURE_NAME_MAPPER *) override { return INVALID_MODEL; }
    void bounding_box(int, float *) override {}
    void add_instance(int, float const *) override {}
    void begin_frame() override {}
    void end_frame() override {}
};

// A working tree on disk, whose files the table knows as well.
class FRAGMENTS : public testing::Test, private ASSET_GRAPH_STORE {
protected:
    FRAGMENTS()
    {
        set_current_roots(usual_roots(folder.path()));
        store_before = set_asset_graph_store(this);
        maker_before = ACTION_INIT_KESTREL::set_engine_maker(FAKE_ENGINE::make);
        FAKE_ENGINE::models.clear();
        FAKE_ENGINE::calls.clear();
        FAKE_ENGINE::has_service = true;
    }
    ~FRAGMENTS() override
    {
        set_asset_graph_store(store_before);
        ACTION_INIT_KESTREL::set_engine_maker(maker_before);
    }

    PHYSICAL_PATH at(QString const &path) const { return PHYSICAL_PATH(folder.filePath("working_data/" + path)); }
    // Enters a file and, unless its text is empty, writes it.
    void put(QString const &path, std::string const &text = "")
    {
        KN::String fault;
        if (!text.empty()) {
            EXPECT_TRUE(KN::make_directories(at(path).section('/', 0, -2).toStdString()));
            EXPECT_TRUE(KN::write_finished_file(at(path).toStdString(), text, fault)) << fault;
        }
        auto entry = std::make_unique<FILE_ENTRY>();
        entry->physical = at(path);
        if (tree.files.table.insert(LOGICAL_PATH("<working>/" + path), entry.get()) == entry.get())
            entry.release();
        tree.files.table.settle();
    }

    // Runs the action; the dependencies of the one fragment that was saved, behind "ID ASSET".
    LINES fragment_of(ACTION_INTERFACE &action)
    {
        action.reset();
        saved.reset();
        bool const done = run_action(action, tree.files.table, tree.rule_cache) == ACTION_INTERFACE::DONE;
        LINES all;
        for (ACTION_LINE const &line : action.lines())
            all.push_back(std::to_string(line.level) + " " + line.text.toStdString());
        EXPECT_EQ(done, saved && answer);
        if (!saved)
            return all;
        EXPECT_EQ(saved->fragments().size(), 1);
        QTSHARED::ASSET_FRAGMENT const fragment = saved->fragments().first();
        all.push_back((saved->fragments().firstKey() + " " + fragment.asset + fragment.note).toStdString());
        for (QTSHARED::ASSET_DEPENDENCY const &dependency : fragment.dependencies) {
            EXPECT_EQ(dependency.kind + dependency.note, "all");
            all.push_back(dependency.id.toStdString());
        }
        return all;
    }
    LINES rigid_fragment(QString const &model)
    {
        ACTION_INIT_KESTREL init(nullptr, true, true, false);
        EXPECT_EQ(run_action(init, tree.files.table, tree.rule_cache), ACTION_INTERFACE::DONE);
        ACTION_RIGID_AGF action(LOGICAL_PATH("<working>/" + model), &init, nullptr);
        return fragment_of(action);
    }
    LINES xml_fragment(QString const &path, std::string const &text)
    {
        put(path, text);
        ACTION_KLMODEL_AGF model(at(path), nullptr);
        ACTION_MATERIAL_AGF material(at(path), nullptr);
        return fragment_of(path.endsWith(".klmodel") ? static_cast<ACTION_INTERFACE &>(model) : material);
    }

    QTemporaryDir folder;
    ASSET_TREE tree;
    std::map<std::string, QString> ids;  // by logical path: what asset_fragment_id answers
    std::optional<QTSHARED::ASSET_FRAGMENT_BUILDER> saved;
    bool answer = true;  // of the store
    QTSHARED::ASSET_GRAPH known{folder.filePath("working_data")};

private:
    bool add_and_save(QTSHARED::ASSET_FRAGMENT_BUILDER &builder, ACTION_INTERFACE &, FILE_TABLE const &,
                      RULE_CACHE const &) override
    {
        saved = builder;
        return answer;
    }
    QString fragment_id(LOGICAL_PATH const &asset, RULE_CACHE const &) override { return ids[asset.toStdString()]; }
    QTSHARED::ASSET_GRAPH *graph() override { return &known; }

    ASSET_GRAPH_STORE *store_before;
    KESTREL::ENGINE_MAKER maker_before;
};

KESTREL::LEVEL_ASSET assets(std::initializer_list<char const *> paths)
{
    KESTREL::LEVEL_ASSET made;
    for (char const *const path : paths)
        made.paths.push_back(path);
    return made;
}

}  // namespace

TEST(Fragments, ArePlannedForFinishedModelsAndMaterialsOfTheWorkingTree)
{
    ASSET_TREE tree("", {"<raw>/a.rigid_model_v2", "<working>/a/hut.rigid_model_v2", "<working>/a/hut.klmodel",
                         "<working>/a/wood.xml.material", "<working>/a/hut.rigid_model_v2.agf", "<working>/a/x.xml",
                         "<working>/OLD_Working_data/b.klmodel", "<working>/b.KLMODEL", "<working>/b.rigid_model_v2"});
    ASSET_TREE empty("", {"<raw>/a.rigid_model_v2"});
    MODEL_AGF_PROCESSOR processor;
    for (ASSET_TREE *const from : {&tree, &empty}) {
        QVector<ACTION_INTERFACE *> const actions = processor.plan_actions(from->files.table, from->rule_cache);
        LINES rows;
        for (ACTION_INTERFACE const *const action : actions) {
            std::string row = action->get_name(true).toStdString() + (action->group != 0 ? " group" : "");
            EXPECT_TRUE(action->group == 0 || action->group == actions[0]->group);
            for (ACTION_LINK const &link : action->dependencies())
                row += " after " + std::to_string(actions.indexOf(link.other)) + (link.flag ? "!" : "");
            for (ACTION_LINK const &link : action->pulls())
                row += " pulls " + std::to_string(actions.indexOf(link.other));
            rows.push_back(row);
        }
        LINES const engine_only = {"Start engine group pulls 1", "Stop engine group after 0"};
        EXPECT_EQ(rows, from == &empty
                            ? engine_only
                            : LINES({"Start engine group pulls 1", "Stop engine group after 0 after 3 after 5",
                                     "KLModel AGF (<working>/a/hut.klmodel)",
                                     "Rigid AGF (a/hut.rigid_model_v2) group after 0!",
                                     "Material AGF (<working>/a/wood.xml.material)",
                                     "Rigid AGF (b.rigid_model_v2) group after 0!"}));
        qDeleteAll(actions);
    }
}

TEST_F(FRAGMENTS, OfARigidModel)
{
    FAKE_ENGINE::models["a/hut.big.rigid_model_v2"] = {
        "man", {{assets({"Textures\\Wood.png", "gone.png"}), assets({"b.png"})}, {assets({"Textures/Wood.png"})}}};
    ids["<working>/Textures/Wood.png"] = "textures/wood.png";
    ids["<working>/b.png"] = "b";
    EXPECT_THAT(rigid_fragment("a/hut.big.rigid_model_v2"),
                ElementsAre("a/hut a/hut.big.rigid_model_v2", "animations/skeletons/man", "textures/wood.png", "b"));
    EXPECT_THAT(FAKE_ENGINE::calls, ElementsAre("open 33 a/hut.big.rigid_model_v2", "close 0"));
    EXPECT_EQ(saved->agf_path(), at("a/hut.big.rigid_model_v2.agf"));

    // A twin takes the bare name; what lies beside is then looked for under the longer one. The graph knows one of the
    // two animations.
    FAKE_ENGINE::models["twin.rigid_model_v2"] = {};
    for (char const *const name : {"twin.klmodel", "twin.meta", "twin.rigid_model_v2.meta", "twin.rigid_model_v2.anim",
                                   "alone.meta", "alone.anim"})
        put(name);
    QTSHARED::ASSET_FRAGMENT_BUILDER clip(at("twin.agf"));
    clip.add_fragment("Clip", "twin.rigid_model_v2.anim", "");
    QString fault;
    ASSERT_TRUE(KN::make_directories(at("").toStdString()) && known.replace_and_save(clip, fault));
    EXPECT_THAT(rigid_fragment("twin.rigid_model_v2"),
                ElementsAre("twin.rigid_model_v2 twin.rigid_model_v2", "twin.rigid_model_v2.meta", "Clip",
                            "animations/skeletons/"));

    // The engine may not know the model at all; a dot in a folder ends the id.
    FAKE_ENGINE::calls.clear();
    EXPECT_THAT(rigid_fragment("alone.rigid_model_v2"), ElementsAre("alone alone.rigid_model_v2", "alone.meta"));
    EXPECT_THAT(rigid_fragment("v1.0/x.rigid_model_v2"), ElementsAre("v1 v1.0/x.rigid_model_v2"));
    EXPECT_THAT(FAKE_ENGINE::calls,
                ElementsAre("open 33 alone.rigid_model_v2", "close -1", "open 33 v1.0/x.rigid_model_v2", "close -1"));

    answer = false;
    EXPECT_THAT(rigid_fragment("alone.rigid_model_v2"), testing::Not(testing::IsEmpty()));
    FAKE_ENGINE::has_service = false;
    rigid_fragment("alone.rigid_model_v2");
    EXPECT_FALSE(saved);
}

TEST_F(FRAGMENTS, OfKlmodels)
{
    ids["<working>/models/hut.rigid_model_v2"] = "models/hut";
    ids["<working>/c:/x"] = "drive";
    std::string const model = "<model><geometry>Models\\HUT.rigid_model_v2</geometry><geometry>gone</geometry>"
                              "<materials><material>Mats/Wood.XML.material</material><material>x:y.xml.material"
                              "</material><material>short.material</material></materials></model>";
    std::string const second = "<model><materials><material>mats/stone.xml.material</material></materials>"
                               "<geometry>C:/x</geometry></model>";
    EXPECT_THAT(xml_fragment("a/one.b.klmodel", model),
                ElementsAre("a/one.b a/one.b.klmodel", "models/hut", "mats/wood"));
    LINES const merged = {"a/two a/two.klmodel", "models/hut", "mats/wood", "drive", "mats/stone"};
    EXPECT_EQ(xml_fragment("a/two.klmodel", model + "\n" + second), merged);
    EXPECT_EQ(xml_fragment("a/two.klmodel", "\xef\xbb\xbf<?xml version='1.0'?>\n<!-- -->" + model + second), merged);
    EXPECT_THAT(xml_fragment("a/other.klmodel", "<Model><geometry>b</geometry></Model>"),
                ElementsAre("a/other a/other.klmodel"));
}

TEST_F(FRAGMENTS, OfMaterials)
{
    ids["<working>/t/wood.dds"] = "t/wood.dds";
    ids["<working>/ t/bark.dds\n"] = "bark";
    EXPECT_THAT(
        xml_fragment(
            "a/wood.old.xml.material",
            "<material><textures><texture/><texture><source>T\\Wood.dds</source><source>x:t</source>"
            "</texture></textures><textures><texture><source>t/wood.dds</source></texture></textures></material>"
            "<material><textures><texture><source> t/Bark.dds\n</source></texture></textures></material>"),
        ElementsAre("a/wood.old a/wood.old.xml.material", "t/wood.dds", "bark"));
}

TEST_F(FRAGMENTS, FaultyXmlIsOneLineWithItsNumber)
{
    std::string deep = "<?xml version='1.0'?>\n";
    for (int i = 0; i < 100'000; ++i)
        deep += "<model>";
    std::string const not_xml = "2 Could not parse file: \n";
    const struct {
        char const *fault;
        std::string text, line;
    } cases[] = {
        {"a tag that closes another", "<model>\n<geometry>\n</model>", "(line 3)"},
        {"two elements, the second broken", "<model/>\n<model>\n<x></model>", "(line 2)"},
        {"text behind the end", "<model/>\n\ntext", "(line 3)"},
        {"text between elements", "<model/>\ntext<model/>", "(line 2)"},
        {"the end of an element that was not ours", "<model/>\n</top><top>", "(line 2)"},
        {"nothing", " ", "(line 1)"},
        {"nested deeply", deep, "nested too deeply (line 2)"},
        {"nested deeply in the second element", "<model/>\n" + deep.substr(deep.find('\n')), "(line 3)"},
        {"nested deeply, and names that are declared nowhere", "<a:b/>" + deep.substr(deep.find('\n')), "(line 2)"},
        {"entities of entities", "<!DOCTYPE a [<!ENTITY b 'x'>]>\n<a>&c;</a>", "(line 2)"},
        {"large", "<model>" + std::string(16 << 20, ' ') + "</model>", "larger than 16 MiB (line 1)"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.fault);
        LINES const lines = xml_fragment("x.klmodel", c.text);
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0].substr(0, not_xml.size()), not_xml);
        EXPECT_THAT(lines[0], testing::EndsWith(c.line));
    }

    // The table no longer knows the file, or the disk does not.
    ACTION_MATERIAL_AGF unknown(at("y.xml.material"), nullptr);
    EXPECT_THAT(fragment_of(unknown), ElementsAre("2 Could not open file."));
    put("y.xml.material");
    EXPECT_THAT(fragment_of(unknown), ElementsAre("2 Could not open file."));
}

TEST_F(FRAGMENTS, DeclareOneSourceAndOneTarget)
{
    ACTION_KLMODEL_AGF const klmodel(at("a/b.klmodel"), nullptr);
    ACTION_RIGID_AGF const rigid(LOGICAL_PATH("<working>/a/b.rigid_model_v2"), nullptr, nullptr);
    for (auto const &[action, name] : std::initializer_list<std::pair<ACTION_INTERFACE const *, QString>>{
             {&klmodel, "a/b.klmodel"}, {&rigid, "a/b.rigid_model_v2"}}) {
        QVector<LOGICAL_PATH> sources;
        QVector<TARGET_FILE> targets;
        qint64 time = 0;
        action->get_affected_files(sources, targets, time, tree.files.table, tree.rule_cache);
        EXPECT_EQ(sources, QVector<LOGICAL_PATH>{LOGICAL_PATH("<working>/" + name)});
        ASSERT_EQ(targets.size(), 1);
        EXPECT_EQ(targets[0].physical, at(name + ".agf"));
        EXPECT_EQ(targets[0].logical, "<working>/" + name + ".agf");
        EXPECT_FALSE(targets[0].flag);
    }
}

TEST_F(FRAGMENTS, TheHeaderCacheWaitsForItsModelsAndOpensThem)
{
    put("a.rigid_model_v2", "a");
    put("b.RIGID_model_v2", "b");
    put("c.rigid_model_v2");  // not there
    TEST_ACTION first("1"), second("2");
    tree.files.table.peek(LOGICAL_PATH("<working>/a.rigid_model_v2"))->actions = {&first};
    tree.files.table.peek(LOGICAL_PATH("<working>/c.rigid_model_v2"))->actions = {&first, &second};

    ACTION_RIGID_HEADER_CACHE cache(nullptr);
    QVector<LOGICAL_PATH> sources;
    QVector<TARGET_FILE> targets;
    qint64 time = 0;
    cache.get_affected_files(sources, targets, time, tree.files.table, tree.rule_cache);
    EXPECT_EQ(sources, (QVector<LOGICAL_PATH>{LOGICAL_PATH("<working>/a.rigid_model_v2"),
                                              LOGICAL_PATH("<working>/c.rigid_model_v2")}));
    EXPECT_EQ(targets.value(0).physical, at("rigid_db.bin"));
    cache.add_external_dependencies(tree.files.table, tree.rule_cache);
    ASSERT_EQ(cache.dependencies().size(), 1);
    EXPECT_EQ(cache.dependencies()[0].other, &first);
    EXPECT_FALSE(cache.dependencies()[0].flag);

    std::unique_ptr<KESTREL::ENGINE> const engine(FAKE_ENGINE::make(true, true, false));
    EXPECT_TRUE(ACTION_RIGID_HEADER_CACHE::write_cache(tree.files.table, *engine->rigid_model_service()));
    EXPECT_THAT(FAKE_ENGINE::calls, ElementsAre("open 2 " + at("a.rigid_model_v2").toStdString(),
                                                "open 2 " + at("b.RIGID_model_v2").toStdString()));
}
