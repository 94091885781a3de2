#include "benchmarks/support/animation/made_animation.h"

#include "foundation/file.h"
#include "support/animation/animation_file.h"

#include <filesystem>
#include <random>

namespace SUPPORT {

namespace {

KN::String file_of(unsigned frame_count)
{
    std::mt19937 random(1);
    std::normal_distribution<float> normal;
    ANIMATION_FILE_TABLES tables;
    tables.fps = 30;
    tables.duration = float(frame_count - 1) / 30;
    tables.bone_count = tables.translation_count = tables.rotation_count = made_bones;
    tables.frame_count = frame_count;
    for (unsigned bone = 0; bone < made_bones; ++bone) {
        // Chains of a few bones, as limbs and fingers are.
        int const parent = bone == 0 ? -1 : int(bone % 4 != 0 ? bone - 1 : random() % bone);
        tables.bones.append(BONE_RECORD{"bone_" + std::to_string(bone), parent});
        tables.translation_map.append(int(bone));
        tables.rotation_map.append(int(bone));
    }
    std::vector<VECTOR3> translations;
    std::vector<PACKED_QUATERNION> rotations;
    for (unsigned i = 0; i < frame_count * made_bones; ++i) {
        translations.push_back({normal(random), normal(random), normal(random)});
        rotations.push_back(
            pack_quaternion(normalised(QUATERNION{normal(random), normal(random), normal(random), normal(random)})));
    }
    return animation_file_bytes(tables, translations, rotations);
}

// The files stand on the disk only while they are read.
template <class LOAD>
void through_file(KN::String const &bytes, LOAD load)
{
    std::filesystem::path const path = std::filesystem::temp_directory_path() / "animation_benchmark.anim";
    KN::FileOut out;
    out.open(KN::String(path.string()), false, true);
    out.write(bytes.data(), unsigned(bytes.size()));
    out.close();
    KN::FileIn in;
    in.open(KN::String(path.string()), true);
    load(in);
    in.close();
    std::filesystem::remove(path);
}

}  // namespace

MADE_ANIMATION make_animation()
{
    MADE_ANIMATION made;
    through_file(file_of(1), [&made](KN::FileIn &file) {
        made.skeleton = std::make_unique<SKELETON>(file, file, 0, "", "", animation_heap());
    });
    through_file(file_of(made_frames), [&made](KN::FileIn &file) {
        made.clip = std::make_unique<ANIMATION_CLIP>(file, made.skeleton.get(), 0, CLIP_SOURCE{}, animation_heap());
    });
    return made;
}

}  // namespace SUPPORT
