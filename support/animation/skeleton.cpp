#include "support/animation/skeleton.h"

#include "support/animation/file_reader.h"
#include "support/report/animation_timing.h"

#include <cmath>

namespace SUPPORT {

SKELETON::SKELETON(KN::FileIn &file, KN::FileIn &matrix_file, std::uint32_t options, KN::String const &root_name,
                   KN::String const &second_name, ALLOCATOR &allocator)
    : home(allocator)
{
    FILE_SOURCE from(file), matrices_from(matrix_file);
    load(from, matrices_from, options, root_name.lower(), second_name.lower());
}

SKELETON::SKELETON(KN::BufferedStream &file, KN::BufferedStream &matrix_file, std::uint32_t options,
                   KN::String const &root_name, KN::String const &second_name, ALLOCATOR &allocator)
    : home(allocator)
{
    STREAM_SOURCE from(file), matrices_from(matrix_file);
    load(from, matrices_from, options, root_name.lower(), second_name.lower());
}

SKELETON::~SKELETON()
{
    if (bind_block != nullptr)
        home.free(bind_block);
}

namespace {

// On disk: u32 1, u32 count, then for each matrix the first three numbers of its four columns. Any other first number
// means that there are none.
template <class SOURCE>
ALLOCATED_ARRAY<MATRIX44> read_matrices(SOURCE &file, ALLOCATOR &allocator)
{
    struct COLUMNS {
        float number[4][3];
    };
    std::uint32_t has_matrices = 0, count = 0;
    if (file.read(&has_matrices, sizeof has_matrices) != sizeof has_matrices || has_matrices != 1 ||
        file.read(&count, sizeof count) != sizeof count)
        return {};
    KN::DynamicArray<COLUMNS> stored;
    read_elements(file, stored, count);
    ALLOCATED_ARRAY<MATRIX44> matrices(allocator, stored.count);
    for (std::size_t i = 0; i < matrices.size(); ++i)
        for (unsigned column = 0; column < 4; ++column)
            for (unsigned row = 0; row < 3; ++row)
                matrices[i][row][column] = stored[i].number[column][row];
    return matrices;
}

}  // namespace

template <class SOURCE>
void SKELETON::load(SOURCE &file, SOURCE &matrix_file, std::uint32_t options, KN::String const &root_name,
                    KN::String const &second_name)
{
    ANIMATION_FILE_TABLES tables;
    bool const whole = read_record(file, tables);
    version = tables.version;
    if (version < first_animation_version)
        return;
    fps = tables.fps;
    name = std::move(tables.name);
    bones = moved_to(home, std::move(tables.bones));
    for (std::uint32_t i = 0; i < bones.size(); ++i) {
        if (!root_name.empty() && bones[i].name == root_name)
            root_bone = i;
        if (!second_name.empty() && bones[i].name == second_name)
            second_bone = std::int32_t(i);
    }
    has_animroot = root_bone < bones.size() && bones[root_bone].name == "animroot";
    translation_map = moved_to(home, std::move(tables.translation_map));
    rotation_map = moved_to(home, std::move(tables.rotation_map));

    if (whole)
        bind_block = FRAME_READER<SOURCE>(file, tables, home).read();
    if (bind_block != nullptr)
        bind_frame = *bind_block;
    bind_frame.set_tables(translation_map, rotation_map, bones, &bind_frame);
    ROOT_HANDLING(bind_frame, root_bone, options).apply(bind_frame, nullptr);
    inverse_bind_matrices = read_matrices(matrix_file, home);
    blend_frames(bind_pose, bind_frame, bind_frame, 0, BLEND_SPHERICAL, this, nullptr);
    animation_timing_step("skeleton");
}

namespace {

KN::String second_name_of(SKELETON const &parent)
{
    return std::size_t(std::ptrdiff_t(parent.second_bone)) < parent.bones.size() ? parent.bones[parent.second_bone].name
                                                                                 : KN::String();
}

KN::String root_name_of(SKELETON const &parent)
{
    return parent.root_bone < parent.bones.size() ? parent.bones[parent.root_bone].name : KN::String();
}

}  // namespace

ATTACHED_SKELETON::ATTACHED_SKELETON(KN::FileIn &file, KN::FileIn &matrix_file, SKELETON const &parent,
                                     std::uint32_t options, ALLOCATOR &allocator)
    : SKELETON(file, matrix_file, options, root_name_of(parent), second_name_of(parent), allocator)
{
    attach(parent, allocator);
}

ATTACHED_SKELETON::ATTACHED_SKELETON(KN::BufferedStream &file, KN::BufferedStream &matrix_file, SKELETON const &parent,
                                     std::uint32_t options, ALLOCATOR &allocator)
    : SKELETON(file, matrix_file, options, root_name_of(parent), second_name_of(parent), allocator)
{
    attach(parent, allocator);
}

void ATTACHED_SKELETON::attach(SKELETON const &parent, ALLOCATOR &allocator)
{
    if (bind_pose.bone_count != 0 && parent.bind_pose.bone_count != 0) {
        bind_pose.translations[0] = parent.bind_pose.translations[0];
        bind_pose.rotations[0] = parent.bind_pose.rotations[0];
    }
    std::uint32_t points[most_attach_points];
    std::size_t count = 0;
    for (std::uint32_t bone = 0; bone < bones.size() && count < most_attach_points; ++bone)
        if (bones[bone].name.starts_with("ap_"))
            points[count++] = bone;
    attach_points = ALLOCATED_ARRAY<ATTACH_POINT>(allocator, count);
    for (std::size_t i = 0; i < count; ++i) {
        QUATERNION const q = unpack_quaternion(bind_frame.rotation_of(points[i]));
        float const heading = std::atan2(2 * q.w * q.y + 2 * q.x * q.z, 1 - 2 * q.x * q.x - 2 * q.y * q.y);
        attach_points[i] = {bones[points[i]].name, bind_frame.translation_of(points[i]), q,
                            radians_to_angle16(heading)};
    }
}

}  // namespace SUPPORT
