// Writes the files that fuzzing of skeletons and clips starts from into the folder that is its argument.
#include "foundation/file.h"
#include "support/animation/animation_file.h"

#include <cstdio>
#include <vector>

using namespace SUPPORT;

namespace {

bool write_seed(KN::String const &path, KN::String const &head, ANIMATION_FILE_TABLES const &tables)
{
    std::vector<VECTOR3> const translations(tables.frame_count * tables.translation_count, {1, 2, 3});
    std::vector<PACKED_QUATERNION> const rotations(tables.frame_count * tables.rotation_count, {0, 16384, 0, 28377});
    KN::String const bytes = head + animation_file_bytes(tables, translations, rotations) +
                             matrix_block_bytes(std::vector<MATRIX34>(tables.bone_count));
    KN::FileOut out;
    bool const good = out.open(path, false, true) && out.write(bytes.data(), unsigned(bytes.size())) == bytes.size();
    return out.close() && good;
}

}  // namespace

int main(int count, char **arguments)
{
    if (count != 2)
        return 2;
    KN::String const folder = arguments[1];
    ANIMATION_FILE_TABLES tables;
    tables.fps = 30;
    tables.name = "walk";
    tables.duration = 0.1f;
    for (char const *name : {"hips", "Spine", "ap_hand", "prop"}) {
        tables.bones.append(BONE_RECORD{name, int(tables.bones.count % 3) - 1});
        tables.translation_map.append(int(tables.bones.count % 2) - 1);
        tables.rotation_map.append(int(tables.bones.count) - 1);
    }
    tables.bone_count = tables.rotation_count = 4;
    tables.translation_count = 2;
    bool good = true;
    for (unsigned frames : {1u, 4u}) {
        tables.frame_count = frames;
        unsigned number = 0;
        for (char const *head : {"\x02\x07\x01", "\x0c\xff\x02", "\x10\x20\x07"})
            good &=
                write_seed(folder + "/seed_" + std::to_string(frames) + "_" + std::to_string(number++), head, tables);
    }
    if (!good)
        std::fprintf(stderr, "the seeds could not be written\n");
    return good ? 0 : 1;
}
