// make_examples FOLDER: makes a small asset tree in an empty or new folder, ready for `mox build`. Scenes and pictures
// are made by code, the same bytes on every run.

#include "examples/picture.h"
#include "examples/scenes.h"
#include "foundation/file.h"
#include "foundation/finished_file.h"

#include <iostream>

namespace {

struct TEXT_FILE {
    char const *path;
    char const *text;
};

struct SCENE_FILE {
    char const *path;
    bool (*write)(KN::String const &path);
};

struct PICTURE_FILE {
    char const *path;
    EXAMPLES::PICTURE (*make)();
};

constexpr TEXT_FILE text_files[] = {
    {"mox.toml", R"(# The example tree. Raw art lies in raw_data, what is built from it comes to working_data.

# Levels of detail for models that bring none: from how far, and with how much of their triangles in per cent.
[LODDistances]
LODDistance1 = 30
LODDistance2 = 80

[LODQualities]
LODQuality1 = 50
LODQuality2 = 20

# A model's old rows leave the asset database before its new ones come; with true they would be patched in place.
[global.RigidDatabasePatching]
Enabled = false
)"},
    {"raw_data/buildings/rules.toml", R"(# Display models, tech files and database rows of all scenes in this folder.
[RigidModelV2]
TargetPath = "models/buildings"
TextureFolder = "textures/buildings"
UpdateDatabase = true
RigidCategory = "buildings"

[Vx2Tech]
Vx2TechSubFolder = ""

[RigidNodeV2]
files = "hut.vx2"
CanBurn = true
)"},
    {"raw_data/castle/rules.toml", R"(# Models and rows; no tech files.
[RigidModelV2]
TargetPath = "models/castle"
TextureFolder = "textures/castle"
UpdateDatabase = true
RigidCategory = "castle"
)"},
    {"raw_data/people/rules.toml",
     R"(# Animated models: their rows go to the tables for these. Each scene is also an animation of its skeleton, and comes
# with the pose that its model was skinned in.
[[RigidModelV2]]
TargetPath = "models/people"
TextureFolder = "textures/people"
AnimationType = "man"
ExportTechFiles = true
TechSubFolder = "poses"
SingleLOD = true
UpdateDatabase = true
RigidCategory = "people"

[[Animation]]
AnimationType = "man"
TargetPath = "animations/man"
FPS = 20

[[RigidModelV2]]
files = "horse.vx2"
AnimationType = "horse"

[[Animation]]
files = "horse.vx2"
AnimationType = "horse"
TargetPath = "animations/horse"

# A plain mesh for tools, beside the model.
[GenericMesh]
files = "soldier.vx2"
TargetPath = "meshes"
)"},
    {"raw_data/meetings/rules.toml", R"(# Scenes with several actors: a folder with an animation for each.
[ComplexAnimation]
TargetPath = "animations/meetings"
)"},
    {"raw_data/animations/skeletons/man.bone_table", R"(root = "root"
preferred = true
bones = [
    ["root", ""], ["hips", "root"], ["spine", "hips"], ["chest", "spine"], ["neck", "chest"], ["head", "neck"],
    ["upper_arm_left", "chest"], ["lower_arm_left", "upper_arm_left"], ["hand_left", "lower_arm_left"],
    ["upper_arm_right", "chest"], ["lower_arm_right", "upper_arm_right"], ["hand_right", "lower_arm_right"],
    ["thigh_left", "hips"], ["shin_left", "thigh_left"], ["foot_left", "shin_left"],
    ["thigh_right", "hips"], ["shin_right", "thigh_right"], ["foot_right", "shin_right"],
]
)"},
    {"raw_data/animations/skeletons/horse.bone_table", R"(root = "horse_root"
bones = [
    ["horse_root", ""], ["pelvis", "horse_root"], ["back", "pelvis"], ["neck", "back"], ["head", "neck"],
    ["tail", "pelvis"],
    ["thigh_left", "pelvis"], ["hind_left", "thigh_left"], ["thigh_right", "pelvis"], ["hind_right", "thigh_right"],
    ["shoulder_left", "back"], ["fore_left", "shoulder_left"],
    ["shoulder_right", "back"], ["fore_right", "shoulder_right"],
]
)"},
    {"raw_data/props/rules.toml", R"([RigidModelV2]
TargetPath = "models/props"
TextureFolder = "textures/props"
SingleLOD = true
)"},
    {"raw_data/terrain/rules.toml",
     R"(# Each tile has a folder of its own, for the height map and the outlines that come with it.
[RigidModelV2]
TargetPath = "terrain"
TextureFolder = "textures/terrain"
)"},
    {"raw_data/trees/rules.toml",
     R"(# Trees: a model, and billboards for the distance, one for each season whose leaves there are.
[RigidModelV2]
TargetPath = "models/trees"
TextureFolder = "textures/trees"
SingleLOD = true
Tree = true
)"},
    // What other tools have put among the finished files. The barrel's model has a twin, which takes its bare name.
    {"working_data/models/props/barrel.klmodel", R"(<model>
    <geometry>models/props/barrel.rigid_model_v2</geometry>
    <materials>
        <material>materials/staves.xml.material</material>
        <material>materials/hoops.xml.material</material>
    </materials>
</model>
)"},
    {"working_data/materials/staves.xml.material", R"(<material>
    <textures>
        <texture><source>Textures\Props\timber.png</source></texture>
    </textures>
</material>
)"},
};

constexpr SCENE_FILE scene_files[] = {
    {"raw_data/buildings/hut.vx2", EXAMPLES::write_hut},
    {"raw_data/buildings/yard.vx2", EXAMPLES::write_yard},
    {"raw_data/castle/tower.vx2", EXAMPLES::write_tower},
    {"raw_data/meetings/meeting.vx2", EXAMPLES::write_meeting},
    {"raw_data/people/horse.vx2", EXAMPLES::write_horse},
    {"raw_data/people/soldier.vx2", EXAMPLES::write_soldier},
    {"raw_data/people/villager.vx2", EXAMPLES::write_villager},
    {"raw_data/props/barrel.vx2", EXAMPLES::write_barrel},
    {"raw_data/terrain/tiles/hills/hills.vx2", EXAMPLES::write_hills},
    {"raw_data/trees/oak.vx2", EXAMPLES::write_oak},
};

constexpr PICTURE_FILE picture_files[] = {
    {"raw_data/buildings/plaster.tga", EXAMPLES::plaster_picture},
    {"raw_data/buildings/thatch.tga", EXAMPLES::thatch_picture},
    {"raw_data/buildings/timber.tga", EXAMPLES::timber_picture},
    {"raw_data/buildings/stone.tga", EXAMPLES::stone_picture},
    {"raw_data/buildings/stone_normal.tga", EXAMPLES::stone_normal_picture},
    {"raw_data/castle/cloth.tga", EXAMPLES::cloth_picture},
    {"raw_data/castle/timber.tga", EXAMPLES::timber_picture},
    {"raw_data/castle/stone.tga", EXAMPLES::stone_picture},
    {"raw_data/castle/stone_normal.tga", EXAMPLES::stone_normal_picture},
    {"raw_data/people/cloth.tga", EXAMPLES::cloth_picture},
    {"raw_data/props/timber.tga", EXAMPLES::timber_picture},
    {"raw_data/terrain/tiles/hills/grass.tga", EXAMPLES::grass_picture},
    {"raw_data/terrain/tiles/hills/rock.tga", EXAMPLES::rock_picture},
    {"raw_data/trees/bark_diffuse.tga", EXAMPLES::bark_picture},
    {"raw_data/trees/leaves_diffuse.tga", EXAMPLES::leaves_picture},
    {"raw_data/trees/leaves_spring_diffuse.tga", EXAMPLES::leaves_spring_picture},
    {"raw_data/trees/leaves_autumn_diffuse.tga", EXAMPLES::leaves_autumn_picture},
    {"raw_data/trees/leaves_winter_diffuse.tga", EXAMPLES::leaves_winter_picture},
};

}  // namespace

// `path` below `folder`, with the folders on the way made.
static KN::String place(KN::String const &folder, char const *path)
{
    KN::String const whole = folder + "/" + path;
    KN::make_directories(whole.substr(0, whole.rfind('/')));
    return whole;
}

static bool make_tree(KN::String const &folder)
{
    bool made = true;
    for (TEXT_FILE const &file : text_files) {
        KN::String error;
        if (!KN::write_finished_file(place(folder, file.path), file.text, error)) {
            std::cerr << error << '\n';
            made = false;
        }
    }
    for (SCENE_FILE const &file : scene_files)
        made = file.write(place(folder, file.path)) && made;
    for (PICTURE_FILE const &file : picture_files)
        made = save_picture(file.make(), place(folder, file.path)) && made;
    return made;
}

int main(int argument_count, char **arguments)
{
    if (argument_count != 2 || arguments[1][0] == '-' || arguments[1][0] == 0) {
        std::cerr << "usage: make_examples FOLDER\n";
        return 2;
    }
    KN::String const folder = arguments[1];
    if (KN::exists(folder + "/mox.toml")) {
        std::cerr << folder << ": holds an asset tree already; name an empty or new folder\n";
        return 1;
    }
    return make_tree(folder) ? 0 : 1;
}
