#include "Plugins/Vx2/action_animation.h"
#include "Plugins/Vx2/action_complex_animation.h"
#include "platform/build_host/run.h"
#include "tests/platform/build_host/asset_tree.h"
#include "tests/scene/make_scene.h"

#include <gmock/gmock.h>

using namespace TEST_SCENE;
using TOOLDATABUILDER::BONE_NAME_TABLE;

namespace {

constexpr char const *man_table = "root = 'Root'\npreferred = true\nbones = [['root', ''], ['hand', 'root']]\n";
constexpr char const *horse_table = "root = 'pelvis'\nbones = [['pelvis', ''], ['hoof', 'pelvis']]\n";

struct NODE {
    char16_t const *name;
    int parent;
};

// A man of a namespace, a rider of none, a horse, and a camera with what hangs on it. Their tops are the nodes 1, 4, 7
// and 10.
std::vector<NODE> const stage = {
    {u"Scene", -1},
    {u"CH:Man:Top", 0},
    {u"ch:Man:ROOT", 1},
    {u"CH:Man:Hand", 2},
    {u"ch_Rider:top", 0},
    {u"CH_Rider:Root", 4},
    {u"CH_Rider:Hand", 5},
    {u"CH_Mare:top", 0},
    {u"CH_Mare:Pelvis", 7},
    {u"CH_Mare:Hoof", 8},
    {u"Cam:Main", 0},
    {u"ch:lens:glass", 10},
    {u"Exporter Inserted Root", -1},
};

// A tree on disk with the scene <raw>/stage.vx2 and the skeletons man (preferred) and horse.
class ANIMATION_ACTIONS : public testing::Test {
protected:
    ANIMATION_ACTIONS()
    {
        set_current_roots(usual_roots(root));
        std::filesystem::create_directories(scratch.folder / "raw_data/animations/skeletons");
        std::filesystem::create_directories(scratch.folder / "working_data/out");
        put_skeleton("man", man_table);
        put_skeleton("horse", horse_table);
    }

    void put_skeleton(std::string const &name, std::string const &text)
    {
        scratch.put("raw_data/animations/skeletons/" + name + ".bone_table", text);
    }
    void put_stage(std::vector<NODE> const &nodes)
    {
        VEX2 scene;
        scene.info.end_time = 0.5f;
        for (NODE const &node : nodes)
            scene.hierarchy.add_node(node.name, node.parent, {0, 1, 0});
        scratch.put("raw_data/stage.vx2", file_of(scene));
    }
    std::unique_ptr<ACTION_COMPLEX_ANIMATION> complex() const
    {
        KN_STD::VECTOR<BONE_NAME_TABLE> tables;
        for (char const *const name : {"horse", "man"})
            tables.emplace_back(name);
        auto action = std::make_unique<ACTION_COMPLEX_ANIMATION>(source, tables, nullptr);
        action->set_target_path(root + "/working_data/out");
        return action;
    }
    ACTION_INTERFACE::STATUS run(ACTION_INTERFACE &action)
    {
        return run_action(action, tree.files.table, tree.rule_cache);
    }
    // Runs the complex action; its lines, errors marked with "!" and warnings with "?".
    QStringList run_complex(ACTION_INTERFACE::STATUS expected = ACTION_INTERFACE::DONE)
    {
        auto const action = complex();
        EXPECT_EQ(run(*action), expected);
        QStringList lines;
        for (ACTION_LINE const &line : action->lines())
            lines += QStringList({"", "?", "!"})[line.level] + line.text;
        return lines;
    }
    static QStringList affected(ACTION_INTERFACE const &action, ASSET_TREE const &in)
    {
        QVector<LOGICAL_PATH> sources;
        QVector<TARGET_FILE> targets;
        qint64 time = 0;
        action.get_affected_files(sources, targets, time, in.files.table, in.rule_cache);
        QStringList all;
        for (LOGICAL_PATH const &file : sources)
            all += file;
        for (TARGET_FILE const &target : targets)
            all += "> " + target.logical + (target.flag ? "*" : "");
        return all;
    }
    QDomDocument document(char const *name) const
    {
        QDomDocument xml;
        EXPECT_TRUE(xml.setContent(QByteArray::fromStdString(scratch.get(folder + name)))) << name;
        return xml;
    }
    // An element a line: its name, the attributes by name, its text; what stands in it is indented.
    static QString outline(QDomElement const &element, int depth = 0)
    {
        QMap<QString, QString> attributes;
        for (int i = 0; i < element.attributes().count(); ++i)
            attributes[element.attributes().item(i).nodeName()] = element.attributes().item(i).nodeValue();
        QString text = QString(depth, ' ') + element.tagName();
        for (auto at = attributes.begin(); at != attributes.end(); ++at)
            text += " " + at.key() + "=" + at.value();
        QDomElement child = element.firstChildElement();
        text += child.isNull() && !element.text().isEmpty() ? ": " + element.text() + "\n" : "\n";
        for (; !child.isNull(); child = child.nextSiblingElement())
            text += outline(child, depth + 1);
        return text;
    }
    // The names of an animation's bones, read from its bytes.
    std::string bones(std::string const &file) const
    {
        std::string const bytes = scratch.get(folder + file);
        auto const word = [&](std::size_t at, std::size_t size) {
            std::uint32_t number = 0;
            std::memcpy(&number, bytes.data() + at, size);
            return number;
        };
        std::size_t at = 14 + word(12, 2) + 4;
        std::string names;
        for (std::uint32_t left = word(at, 4), place = at += 4; left > 0; --left, place = at) {
            names += bytes.substr(place + 2, word(place, 2)) + " ";
            at += 2 + word(place, 2) + 4;
        }
        return names;
    }

    SCRATCH_FOLDER scratch;
    QString const root = QString::fromStdString(scratch.folder.string());
    PHYSICAL_PATH const source{root + "/raw_data/stage.vx2"};
    std::string const folder = "working_data/out/stage/";
    ASSET_TREE tree;
};

}  // namespace

TEST_F(ANIMATION_ACTIONS, DeclaredFiles)
{
    ASSET_TREE in("", {"<raw>/animations/skeletons.txt", "<raw>/animations/skeletons/man.bone_table",
                       "<raw>/animations/skeletons/old/man.txt", "<raw>/Animations/skeletons/b",
                       "<working>/out/a.b/animation10.anim", "<working>/out/a.b/old.ANIM",
                       "<working>/out/a.b/sub/b.anim", "<working>/out/a.bc/c.anim", "<working>/out/a.b.anim"});
    PHYSICAL_PATH const physical = ASSET_TREE::physical("<raw>/a.b.vx2");
    ACTION_ANIMATION plain(physical, nullptr, "man", "", "", 0, false, false);
    ACTION_ANIMATION pose(physical, nullptr, "", "", "", 0, true, true);
    ACTION_COMPLEX_ANIMATION stage(physical, {}, nullptr);
    for (ACTION_CONVERT *const action : std::initializer_list<ACTION_CONVERT *>{&plain, &pose, &stage})
        action->set_target_path("/tree/working_data/out");
    QStringList const source_file = {"<raw>/a.b.vx2"};
    QStringList const specs = {"> <working>/out/a.b/tool_spec.xml", "> <working>/out/a.b/user_spec.xml"};

    EXPECT_EQ(affected(plain, in),
              source_file + QStringList({"<raw>/animations/skeletons/man.bone_table",
                                         "<raw>/animations/skeletons/old/man.txt", "> <working>/out/a.b.anim"}));
    EXPECT_EQ(affected(pose, in),
              source_file + QStringList({"> <working>/out/a.b.anim", "> <working>/out/a.b.bone_inv_trans_mats"}));
    EXPECT_EQ(affected(stage, in),
              source_file + QStringList({"> <working>/out/a.b/animation10.anim", "> <working>/out/a.b/sub/b.anim"}) +
                  specs);
    EXPECT_EQ(affected(stage, ASSET_TREE()), source_file + QStringList("> <working>/out/a.b/animation1.anim") + specs);
}

// Without a type the skeleton is called as the file, up to the last dot; strip texts do not count.
TEST_F(ANIMATION_ACTIONS, AReferencePoseIsItsOwnSkeleton)
{
    put_skeleton("my.man", man_table);
    VEX2 scene;
    scene.hierarchy.add_node(u"ROOT", -1, {});
    scene.hierarchy.add_node(u"Hand", 0, {1, 0, 0});
    scratch.put("raw_data/my.man.vx2", file_of(scene));
    ACTION_ANIMATION pose(PHYSICAL_PATH(root + "/raw_data/my.man.vx2"), nullptr, "", "*", "*", 0, true, false);
    pose.set_target_path(root + "/working_data/out/stage");
    ASSERT_EQ(run(pose), ACTION_INTERFACE::DONE) << pose.lines().last().text.toStdString();
    EXPECT_EQ(bones("my.man.anim"), "root hand ");
    // One frame with both values of both bones behind two maps and three counts; then an empty matrix block.
    EXPECT_EQ(scratch.get(folder + "my.man.anim").size(), (20 + 8) + (10 + 10) + 16 + 12 + 2 * (12 + 8) + 4u);
    EXPECT_EQ(scratch.get(folder + "my.man.bone_inv_trans_mats").size(), 8 + 2 * 48u);

    ACTION_ANIMATION of_nobody(source, nullptr, "man", "", "", 0, false, false);
    put_stage({{u"root", -1}});
    EXPECT_EQ(run(of_nobody), ACTION_INTERFACE::FAILED);
    EXPECT_TRUE(of_nobody.lines().last().text.endsWith("skeleton 'man' does not fit: no node is called 'hand'"));
}

TEST_F(ANIMATION_ACTIONS, SkeletonsAreTriedInAFixedOrder)
{
    put_skeleton("cloth", horse_table);
    put_skeleton("ape", man_table);
    KN_STD::VECTOR<BONE_NAME_TABLE> tables;
    for (char const *const name : {"horse", "cloth", "man", "all", "ape"})
        tables.emplace_back(name);
    EXPECT_EQ(ACTION_COMPLEX_ANIMATION(source, tables, nullptr).skeletons,
              QStringList({"man", "ape", "horse", "all", "generic"}));
    EXPECT_EQ(ACTION_COMPLEX_ANIMATION(source, {}, nullptr).skeletons, QStringList("generic"));

    // A skeleton that comes or goes may make another one the first that fits.
    auto const time_with = [&](KN_STD::VECTOR<BONE_NAME_TABLE> const &known) {
        QVector<LOGICAL_PATH> sources;
        QVector<TARGET_FILE> targets;
        qint64 time = 0;
        ACTION_COMPLEX_ANIMATION(source, known, nullptr)
            .get_affected_files(sources, targets, time, tree.files.table, tree.rule_cache);
        return time;
    };
    qint64 const before = time_with(tables);
    EXPECT_EQ(time_with(tables), before);
    tables.pop_back();
    EXPECT_NE(time_with(tables), before);
}

TEST_F(ANIMATION_ACTIONS, AStageIsAnAnimationAnActorAndTwoDescriptions)
{
    put_stage(stage);
    EXPECT_EQ(run_complex(), QStringList({"Processing actor 'ch:Man'...", "Processing actor 'CH_Rider'...",
                                          "Processing actor 'CH_Mare'...", "Processing actor 'camera'..."}));
    EXPECT_EQ(bones("animation1.anim"), "root hand ");
    EXPECT_EQ(bones("animation2.anim"), "root hand ");
    EXPECT_EQ(bones("animation3.anim"), "pelvis hoof ");
    EXPECT_EQ(bones("animation4.anim"), "main glass ");

    QString const place = "   orientation i=0.00 j=1.00 k=0.00 w=0.00\n   animation_filename: ";
    QString const origin = "   position x=0.00 y=0.00 z=0.00\n" + place;
    EXPECT_EQ(outline(document("tool_spec.xml").documentElement()),
              "root\n actors\n  actor id=ch:Man\n" + origin +
                  "animation1.anim\n   skeleton: Man\n  actor id=CH_Rider\n" + origin +
                  "animation2.anim\n   skeleton: man\n  actor id=CH_Mare\n" + origin +
                  "animation3.anim\n   skeleton: horse\n  actor id=camera\n" + origin +
                  "animation4.anim\n   skeleton: all\n");
    QString colours;
    for (int i = 0; i < 6; ++i)
        colours += QString("   colour blue=0 green=0 index=%1 red=0\n").arg(i);
    EXPECT_EQ(
        outline(document("user_spec.xml").documentElement()),
        "root\n display_specs\n  display_spec id=AUTO-GENERATED_ALL\n   unit_variant_filename: ?\n" + colours +
            "  display_spec id=AUTO-GENERATED_HORSE\n   unit_variant_filename: "
            "Horse_Veldic.VariantMeshDefinition\n" +
            colours +
            "  display_spec id=AUTO-GENERATED_MAN\n   unit_variant_filename: "
            "Veldic_Hastati.VariantMeshDefinition\n" +
            colours +
            " actors\n  actor id=ch:Man\n   display_spec: AUTO-GENERATED_MAN\n  actor id=CH_Rider\n   display_spec: "
            "AUTO-GENERATED_MAN\n  actor id=CH_Mare\n   display_spec: AUTO-GENERATED_HORSE\n  actor id=camera\n   "
            "display_spec: AUTO-GENERATED_ALL\n");
    EXPECT_EQ(
        scratch.get(folder + "tool_spec.xml").rfind("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<root>\n    <act", 0),
        0u);
}

// A node that bears the actor's name, case counted, is the actor's wherever it hangs; one that hangs on it, whatever
// its name. A root bone right below the camera makes that a character.
TEST_F(ANIMATION_ACTIONS, ActorsAreTreesAndNames)
{
    put_stage({{u"Scene", -1},
               {u"CH:generic:Top", 0},
               {u"CH:generic:Root", 1},
               {u"CH:generic:Ring", 0},
               {u"ch:generic:Stone", 0},
               {u"ch:other:Gem", 3},
               {u"ch:other:Shoe", 2},
               {u"cam:1", 0},
               {u"CH_x:all:Root", 7}});
    EXPECT_EQ(run_complex(), QStringList({"Processing actor 'CH:generic'...", "Processing actor 'CH_x:all'..."}));
    EXPECT_EQ(bones("animation1.anim"), "top root ring shoe ");
    EXPECT_EQ(bones("animation2.anim"), "1 root ");
}

TEST_F(ANIMATION_ACTIONS, AUserSpecIsLeftToItsEditor)
{
    put_stage(stage);
    run_complex();
    scratch.put(folder + "user_spec.xml", "edited");
    put_stage({stage.begin(), stage.begin() + 4});
    QString const left = root + "/working_data/out/stage/animation%1.anim: no actor is left of this animation; remove "
                                "the file";
    EXPECT_EQ(run_complex(), QStringList({"Processing actor 'ch:Man'...", "User_Spec already exists, Skipping",
                                          "?" + left.arg(2), "?" + left.arg(3), "?" + left.arg(4)}));
    EXPECT_EQ(scratch.get(folder + "user_spec.xml"), "edited");
}

TEST_F(ANIMATION_ACTIONS, FaultsOfAStageAreTheToldLinesAndNoLaterFile)
{
    QString const prefix = "!The name of actor nodes must be prefixed by CH: or CH_!";
    auto const unknown = [](char const *name) { return QString("!Unrecognised node name: ") + name; };
    std::vector<NODE> const man(stage.begin(), stage.begin() + 4);
    auto const with = [](std::vector<NODE> nodes, std::vector<NODE> const &more) {
        nodes.insert(nodes.end(), more.begin(), more.end());
        return nodes;
    };
    const struct {
        char const *fault;
        std::vector<NODE> nodes;
        QStringList lines;
        bool first_written = false;
    } cases[] = {
        {"second camera",
         with(stage, {{u"cam_two", 0}, {u"CAM:3", 0}}),
         {unknown("cam_two"), unknown("CAM:3"), prefix}},
        {"no parent", with(man, {{u"CH:Man:x", -1}}), {unknown("CH:Man:x"), prefix}},
        {"no prefix", with(man, {{u"Sword", 2}}), {unknown("Sword"), prefix}},
        {"nobody",
         {{u"scene", -1}, {u"CH:Man:x", 0}},
         {"!No actors have been found in the vex2 file!\nHave you exported it with namespaces?"}},
        {"unknown namespace",
         with(man, {{u"ch:ape:top", 0}, {u"ch:ape:root", 4}}),
         {"Processing actor 'ch:Man'...", "Processing actor 'ch:ape'...",
          "?" + root +
              "/raw_data/animations/skeletons/ape.bone_table: the skeleton has no table here; 'vx2 bones' "
              "makes one from a scene",
          "!Unrecognised skeleton type: ape"},
         true},
        {"wrong skeleton",
         with(man, {{u"ch:horse:top", 0}, {u"ch:horse:root", 4}}),
         {"Processing actor 'ch:Man'...", "Processing actor 'ch:horse'...", "!Skeleton not found for the animation!",
          "?skeleton 'horse' does not fit: no node is called 'pelvis', 'hoof'"},
         true},
        {"ring of parents",
         {{u"scene", -1}, {u"CH:Man:a", 2}, {u"CH:Man:b", 1}, {u"CH:Man:Top", 0}, {u"CH:Man:Root", 3}},
         {"Processing actor 'CH:Man'...", "!Skeleton not found for the animation!",
          "?node 0 'a' stands before its parent; export the scene again"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.fault);
        std::filesystem::remove_all(scratch.folder / folder);
        put_stage(c.nodes);
        EXPECT_EQ(run_complex(ACTION_INTERFACE::FAILED), c.lines);
        EXPECT_EQ(scratch.holds(folder + "animation1.anim") && !scratch.get(folder + "animation1.anim").empty(),
                  c.first_written);
        EXPECT_FALSE(scratch.holds(folder + "tool_spec.xml") || scratch.holds(folder + "user_spec.xml"));
    }

    std::filesystem::remove(scratch.folder / "raw_data/stage.vx2");
    EXPECT_EQ(run_complex(ACTION_INTERFACE::FAILED), QStringList("!Failed to open vex2 file (" + source + ")!"));
    scratch.put("raw_data/stage.vx2", "no scene");
    EXPECT_EQ(run_complex(ACTION_INTERFACE::FAILED).last(), "!Failed to read vex2 file!");
    put_stage(man);
    std::filesystem::remove_all(scratch.folder / folder);
    std::filesystem::create_directories(scratch.folder / folder / "animation1.anim");
    EXPECT_EQ(run_complex(ACTION_INTERFACE::FAILED).last(),
              "!Failed to open target file (" + root + "/working_data/out/stage/animation1.anim)!");
}
