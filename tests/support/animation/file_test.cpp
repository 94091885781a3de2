#include "support/animation/animation_file.h"
#include "tests/support/animation/made_file.h"

#include <random>

using namespace SUPPORT;

namespace {

BYTES const matrix_block = u32(1) + u32(2) + run(std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}) +
                           run(std::vector<float>(12, 0.5f));

}  // namespace

TEST(AnimationFile, HeaderIsReadAloneAndEndsAtAnOldVersion)
{
    from_both(made_walk(3).bytes(), [](auto &source) {
        ANIMATION_FILE_HEADER const header = read_header(source);
        EXPECT_EQ(5u, header.version);
        EXPECT_EQ(77u, header.reserved);
        EXPECT_EQ(10, header.fps);
        EXPECT_EQ("walk", header.name);
        EXPECT_FLOAT_EQ(0.2f, header.duration);
        EXPECT_EQ(4u, header.bone_count);
    });
    from_both(u32(4) + u32(1) + f32(30), [](auto &source) {
        EXPECT_EQ(4u, read_header(source).version);
        std::uint32_t next = 0;  // nothing behind the version has been taken
        source.read(&next, sizeof next);
        EXPECT_EQ(1u, next);
    });
}

TEST(AnimationFile, WriterGivesTheBytesOfTheFormat)
{
    MADE_FILE const made = made_walk(2);
    ANIMATION_FILE_TABLES tables;
    tables.reserved = 77;
    tables.fps = made.fps;
    tables.name = made.name;
    tables.duration = made.duration;
    tables.bone_count = 4;
    for (unsigned i = 0; i < 4; ++i) {
        tables.bones.append(made.bones[i]);
        tables.translation_map.append(made.translation_map[i]);
        tables.rotation_map.append(made.rotation_map[i]);
    }
    tables.translation_count = tables.rotation_count = tables.frame_count = 2;
    std::vector<VECTOR3> translations;
    std::vector<PACKED_QUATERNION> rotations;
    for (MADE_FRAME const &frame : made.frames) {
        translations.insert(translations.end(), frame.translations.begin(), frame.translations.end());
        rotations.insert(rotations.end(), frame.rotations.begin(), frame.rotations.end());
    }
    EXPECT_EQ(made.bytes(), animation_file_bytes(tables, translations, rotations));

    MATRIX34 const counted = {{{1, 4, 7, 10}, {2, 5, 8, 11}, {3, 6, 9, 12}}};
    MATRIX34 const same = {{{.5f, .5f, .5f, .5f}, {.5f, .5f, .5f, .5f}, {.5f, .5f, .5f, .5f}}};
    EXPECT_EQ(matrix_block, matrix_block_bytes(std::vector{counted, same}));
    EXPECT_EQ(u32(0), no_matrices_bytes());
}

TEST(Skeleton, LoadsFromFilesAndStreamsAlike)
{
    MADE_FILE made = made_skeleton();
    made.bones[0].name = "ANIMROOT";
    made.bones[3].name = "spine";  // the second of that name
    from_both(made.bytes() + matrix_block, [](auto &source) {
        COUNTING_ALLOCATOR allocator;
        SKELETON const skeleton(source, source, 0, "AnimRoot", "SPINE", allocator);
        EXPECT_EQ("man", skeleton.name);
        EXPECT_EQ(10, skeleton.fps);
        ASSERT_EQ(4u, skeleton.bones.size());
        EXPECT_EQ("animroot", skeleton.bones[0].name);
        EXPECT_EQ(-1, skeleton.bones[0].parent);
        EXPECT_EQ(1, skeleton.bones[2].parent);
        EXPECT_EQ(0u, skeleton.root_bone);
        EXPECT_TRUE(skeleton.has_animroot);
        EXPECT_EQ(3, skeleton.second_bone);
        EXPECT_EQ((VECTOR3{0.25f, 0, 0}), skeleton.bind_frame.translation_of(2));
        EXPECT_EQ((VECTOR3{0, 1, 0}), skeleton.bind_frame.root_position);
        EXPECT_EQ((VECTOR3{9, 9, 9}), skeleton.bind_pose.translations[3]);
        EXPECT_EQ(0.99998474f, skeleton.bind_pose.rotations[0].w);
        ASSERT_EQ(2u, skeleton.inverse_bind_matrices.size());
        EXPECT_EQ((MATRIX44{{{1, 4, 7, 10}, {2, 5, 8, 11}, {3, 6, 9, 12}, {0, 0, 0, 1}}}),
                  skeleton.inverse_bind_matrices[0]);
    });
}

TEST(Skeleton, NamesThatFitNothingAndBlocksThatAreNone)
{
    MADE_FILE made = made_skeleton();
    made.bones[1].name = "";
    from_both(made.bytes() + u32(2) + matrix_block.substr(4), [](auto &source) {
        COUNTING_ALLOCATOR allocator;
        SKELETON const skeleton(source, source, 0, "", "tail", allocator);
        EXPECT_EQ(0u, skeleton.root_bone);  // an empty name fits no bone, not even one without a name
        EXPECT_EQ(-1, skeleton.second_bone);
        EXPECT_FALSE(skeleton.has_animroot);
        EXPECT_TRUE(skeleton.inverse_bind_matrices.empty());
    });
    made.version = 4;
    from_both(made.bytes(), [](auto &source) {
        COUNTING_ALLOCATOR allocator;
        SKELETON const skeleton(source, source, 0, "", "", allocator);
        EXPECT_TRUE(skeleton.bones.empty());
        EXPECT_EQ(0u, skeleton.bind_pose.bone_count);
        EXPECT_EQ(0u, allocator.taken);
    });
}

TEST(AttachedSkeleton, TakesItsPlaceAndItsFirst32Points)
{
    DISK_FILE parent_file(made_skeleton().bytes());
    SKELETON const parent(parent_file.file, parent_file.file, 0, "hips", "spine", animation_heap());

    MADE_FILE made = made_skeleton();
    std::swap(made.bones[1], made.bones[2]);  // "ap_hand" is bone 1 now, "spine" bone 2
    made.bones[3].name = "no_ap_";
    made.frames[0].translations[0] = {4, 4, 4};
    for (int i = 0; i < 40; ++i) {
        made.bones.push_back({"AP_" + std::to_string(i), 0});
        made.translation_map.push_back(2);
        made.rotation_map.push_back(2);
    }
    from_both(made.bytes(), [&parent](auto &source) {
        COUNTING_ALLOCATOR allocator;
        ATTACHED_SKELETON const attached(source, source, parent, 0, allocator);
        EXPECT_EQ(2, attached.second_bone);
        EXPECT_EQ(parent.bind_pose.translations[0], attached.bind_pose.translations[0]);
        ASSERT_EQ(32u, attached.attach_points.size());
        EXPECT_EQ("ap_hand", attached.attach_points[0].name);
        EXPECT_EQ((VECTOR3{0, 0.5f, 0}), attached.attach_points[0].translation);
        EXPECT_EQ("ap_30", attached.attach_points[31].name);
        EXPECT_EQ(0x2000, attached.attach_points[31].heading);
        EXPECT_EQ(attached.bind_pose.rotations[4], attached.attach_points[31].rotation);
    });
}

TEST(Clip, LoadsFromFilesAndStreamsAlike)
{
    from_both(made_walk(5).bytes(), [](auto &source) {
        COUNTING_ALLOCATOR allocator;
        ANIMATION_CLIP const clip(source, nullptr, 0, {"walk.anim"}, allocator);
        EXPECT_TRUE(clip.valid);
        EXPECT_EQ("walk", clip.name);
        EXPECT_EQ("walk.anim", clip.source_name);
        EXPECT_EQ(0.4f, clip.duration);
        ASSERT_EQ(4u, clip.bones.size());
        EXPECT_EQ("spine", clip.bones[1].name);
        ASSERT_EQ(5u, clip.frames.size());
        ANIMATION_FRAME const &last = *clip.frames[4];
        EXPECT_EQ((VECTOR3{3, 3, 3}), last.translation_of(0));
        EXPECT_EQ((VECTOR3{3, 3, 3}), last.root_position);
        EXPECT_EQ((VECTOR3{5, 6, 11}), last.translation_of(3));
        EXPECT_EQ((VECTOR3{}), last.translation_of(1));  // neither animated nor with a skeleton
        EXPECT_EQ(made_walk(5).frames[4].rotations[0], last.rotation_of(1));
        EXPECT_EQ(upright, last.rotation_of(0));
    });
    from_both(made_walk(5).bytes(), [](auto &source) {
        COUNTING_ALLOCATOR allocator;
        DISK_FILE skeleton_file(made_skeleton().bytes());
        SKELETON const skeleton(skeleton_file.file, skeleton_file.file, 0, "hips", "", allocator);
        ANIMATION_CLIP const clip(source, &skeleton, 0, {"walk.anim", true}, allocator);
        ASSERT_EQ(1u, clip.frames.size());
        EXPECT_TRUE(clip.bones.empty());
        EXPECT_EQ(0, clip.move_length);
        EXPECT_EQ((VECTOR3{0.25f, 0, 0}), clip.frames[0]->translation_of(2));  // the skeleton's, at the bone's number
    });
    MADE_FILE old = made_walk(2);
    old.version = 4;
    from_both(old.bytes(), [](auto &source) {
        COUNTING_ALLOCATOR allocator;
        ANIMATION_CLIP const clip(source, nullptr, 0, {}, allocator);
        EXPECT_FALSE(clip.valid);
        EXPECT_EQ(0u, allocator.taken);
    });
}

// What each option makes of frame 2, whose root stands at (2, 2.5, 3), and of the prop behind it at (5, 6, 9); frame 0
// has its root at (1, 2, 3).
TEST(Clip, OptionsMoveTheRoot)
{
    struct {
        std::uint32_t options;
        VECTOR3 root_position, root, prop;
    } const cases[] = {
        {0, {2, 2.5f, 3}, {2, 2.5f, 3}, {5, 6, 9}},      {4, {2, 2.5f, 3}, {0, 0, 0}, {3, 3.5f, 6}},
        {8, {1, 0.5f, 0}, {1, 0.5f, 0}, {4, 4, 6}},      {16, {1, 2.5f, 0}, {1, 2.5f, 0}, {4, 6, 6}},
        {8 | 16, {1, 0.5f, 0}, {1, 0.5f, 0}, {4, 4, 6}}, {4 | 16, {1, 2.5f, 0}, {0, 0, 0}, {3, 3.5f, 6}},
    };
    for (auto const &c : cases)
        from_both(made_walk(3).bytes(), [&c](auto &source) {
            SCOPED_TRACE(c.options);
            ANIMATION_CLIP const clip(source, nullptr, c.options, {}, animation_heap());
            ANIMATION_FRAME const &frame = *clip.frames[2];
            EXPECT_EQ(c.root_position, frame.root_position);
            EXPECT_EQ(c.root, frame.translation_of(0));
            EXPECT_EQ(c.prop, frame.translation_of(3));
            EXPECT_EQ((VECTOR3{1, 2, 3}), clip.frames[0]->root_position);  // the first frame has no reference
        });

    // A bone without parent in front of the root is not moved by option 4; a root that is not animated takes the value
    // of the bind frame, which stays.
    MADE_FILE made = made_walk(2);
    std::swap(made.bones[0], made.bones[3]);
    made.translation_map = {1, -1, -1, -1};
    DISK_FILE skeleton_file(made_skeleton().bytes()), clip_file(made.bytes());
    SKELETON skeleton(skeleton_file.file, skeleton_file.file, 0, "prop", "", animation_heap());
    ANIMATION_CLIP const clip(clip_file.file, &skeleton, 4, {}, animation_heap());
    EXPECT_EQ((VECTOR3{5, 6, 8}), clip.frames[1]->translation_of(0));
    EXPECT_EQ((VECTOR3{9, 9, 9}), clip.frames[1]->root_position);
    EXPECT_EQ((VECTOR3{9, 9, 9}), clip.frames[1]->translation_of(3));
}

// Whatever was cut off, both sources give the same whole elements, and everything can be played.
TEST(AnimationFile, EveryTruncationLoadsWhatIsThere)
{
    BYTES const whole = made_walk(3).bytes() + matrix_block;
    std::size_t const all_frames = made_walk(3).bytes().size();
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        SCOPED_TRACE(size);
        std::vector<std::size_t> seen[2];
        unsigned which = 0;
        from_both(whole.substr(0, size), [&](auto &source) {
            COUNTING_ALLOCATOR allocator;
            ANIMATION_CLIP const clip(source, nullptr, 12, {}, allocator);
            std::size_t const frames = size >= all_frames ? 3 : size + 40 >= all_frames ? 2 : size + 80 >= all_frames;
            EXPECT_EQ(frames, clip.frames.size());
            EXPECT_EQ(frames != 0, clip.valid);
            POSE const pose = pose_at(clip, 0.15f, BLEND_SPHERICAL, nullptr, nullptr);
            clip.check_bone_orientations();
            seen[which] = {clip.bones.size(), clip.translation_map.size(), clip.rotation_map.size(), pose.bone_count};
            which++;
        });
        EXPECT_EQ(seen[0], seen[1]);
        which = 0;
        from_both(whole.substr(0, size), [&](auto &source) {
            COUNTING_ALLOCATOR allocator;
            SKELETON const skeleton(source, source, 12, "hips", "spine", allocator);
            SCRATCH_ALLOCATOR scratch;
            seen[which++] = {skeleton.bones.size(), skeleton.inverse_bind_matrices.size(),
                             world_matrices(skeleton.bind_pose, 0, {}, scratch).size()};
        });
        EXPECT_EQ(seen[0], seen[1]);
    }
}

TEST(AnimationFile, CountsCostNoMoreThanTheirBytes)
{
    MADE_FILE const made = made_walk(2);
    BYTES const bytes = made.bytes();
    std::size_t const bone_count = 4 + 4 + 4 + 2 + 4 + 4;
    std::size_t const frames_begin = made.up_to_frames().size();
    struct {
        char const *what;
        std::size_t place;
        std::uint32_t count;
    } const cases[] = {
        {"bones", bone_count, 0xffffffff},
        {"bones", bone_count, 200},
        {"translations", frames_begin - 12, 0xffffffff},
        {"rotations", frames_begin - 8, 0x20000000},
        {"frames", frames_begin - 4, 0xffffffff},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.what);
        BYTES damaged = bytes;
        std::memcpy(damaged.data() + c.place, &c.count, 4);
        from_both(damaged, [](auto &source) {
            COUNTING_ALLOCATOR allocator;
            ANIMATION_CLIP const clip(source, nullptr, 0, {}, allocator);
            EXPECT_LT(allocator.taken, 10'000u);
        });
    }
    // Frames that take no bytes at all.
    MADE_FILE empty = made_walk(1);
    empty.frames = {{}};
    BYTES endless = empty.bytes();
    std::memset(endless.data() + endless.size() - 4, 0xff, 4);
    from_both(endless, [](auto &source) {
        COUNTING_ALLOCATOR allocator;
        ANIMATION_CLIP const clip(source, nullptr, 0, {}, allocator);
        EXPECT_EQ(65536u, clip.frames.size());
        EXPECT_LT(allocator.taken, 32u << 20);
    });
    // A matrix block that claims too much.
    from_both(made_skeleton().bytes() + u32(1) + u32(0x7fffffff) + BYTES(100, 'x'), [](auto &source) {
        COUNTING_ALLOCATOR allocator;
        SKELETON const skeleton(source, source, 0, "", "", allocator);
        EXPECT_EQ(2u, skeleton.inverse_bind_matrices.size());
    });
}

// Two tables of moderate size must not be multiplied: this would take an hour.
TEST(AnimationFile, BonesTimesFramesAreNotWork)
{
    constexpr unsigned many = 300'000;
    MADE_FILE made = made_walk(1);
    made.bones.assign(many, {"", -1});
    made.translation_map.assign(many, 0);
    made.rotation_map.assign(many, -1);
    made.frames.assign(many, {{{1, 2, 3}}, {}});
    BYTES const bytes = made.bytes();
    KN::BufferedMemory stream(bytes.data(), bytes.size());
    ANIMATION_CLIP const clip(stream, nullptr, 12, {}, animation_heap());
    EXPECT_EQ(many, clip.frames.size());
}
