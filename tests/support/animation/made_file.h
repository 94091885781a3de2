// Animation files put together by hand: a writer of ours would share the reader's mistakes. And what brings such bytes
// to a loader, from the disk or through a stream.
#pragma once

#include "foundation/buffered_stream.h"
#include "foundation/file.h"
#include "support/animation/clip.h"
#include "support/animation/skeleton.h"

#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace SUPPORT {

using BYTES = std::string;

template <class T>
BYTES plain(T const &value)
{
    return BYTES(reinterpret_cast<char const *>(&value), sizeof value);
}
inline BYTES u32(std::uint32_t value) { return plain(value); }
inline BYTES f32(float value) { return plain(value); }
inline BYTES text(std::string const &characters) { return plain(std::uint16_t(characters.size())) + characters; }
template <class T>
BYTES run(std::vector<T> const &values)
{
    BYTES bytes;
    for (T const &value : values)
        bytes += plain(value);
    return bytes;
}

struct MADE_FRAME {
    std::vector<VECTOR3> translations;
    std::vector<PACKED_QUATERNION> rotations;
};

struct MADE_FILE {
    std::uint32_t version = 5;
    float fps = 10;
    std::string name = "walk";
    float duration = 1;
    std::vector<BONE_RECORD> bones;
    std::vector<std::int32_t> translation_map, rotation_map;
    std::vector<MADE_FRAME> frames;

    BYTES up_to_frames() const
    {
        BYTES bytes = u32(version) + u32(77) + f32(fps) + text(name) + f32(duration) + u32(unsigned(bones.size()));
        for (BONE_RECORD const &bone : bones)
            bytes += text(bone.name) + plain(bone.parent);
        bytes += run(translation_map) + run(rotation_map);
        std::size_t const translations = frames.empty() ? 0 : frames[0].translations.size();
        std::size_t const rotations = frames.empty() ? 0 : frames[0].rotations.size();
        return bytes + u32(unsigned(translations)) + u32(unsigned(rotations)) + u32(unsigned(frames.size()));
    }
    BYTES bytes() const
    {
        BYTES bytes = up_to_frames();
        for (MADE_FRAME const &frame : frames)
            bytes += run(frame.translations) + run(frame.rotations);
        return bytes;
    }
};

inline constexpr PACKED_QUATERNION upright = {0, 0, 0, 32767};

// Root "hips" with a "Spine" that turns and an unanimated "ap_hand"; "prop" has no parent and stands behind the root.
// `count` frames; the root starts at (1, 2, 3) and goes 0.5 m along x, 0.25 m up, each frame.
inline MADE_FILE made_walk(unsigned count)
{
    MADE_FILE file;
    file.bones = {{"hips", -1}, {"Spine", 0}, {"ap_hand", 1}, {"prop", -1}};
    file.translation_map = {0, -1, -1, 1};
    file.rotation_map = {1, 0, -1, -1};
    file.duration = float(count - 1) / file.fps;
    for (unsigned i = 0; i < count; ++i) {
        float const t = float(i);
        file.frames.push_back({{{1 + 0.5f * t, 2 + 0.25f * t, 3}, {5, 6, 7 + t}},
                               {pack_quaternion(normalised(QUATERNION{0.1f * t, 0, 0.2f, 1})), upright}});
    }
    return file;
}

// The same bones in their bind pose, all with values of their own.
inline MADE_FILE made_skeleton()
{
    MADE_FILE file = made_walk(1);
    file.name = "man";
    file.translation_map = file.rotation_map = {0, 1, 2, 3};
    file.frames = {{{{0, 1, 0}, {0, 0.5f, 0}, {0.25f, 0, 0}, {9, 9, 9}},
                    {upright, {0, 100, 0, 32767}, pack_quaternion(quaternion_from_angle_y(0x2000)), upright}}};
    return file;
}

// A file on the disk that goes with the object.
class DISK_FILE {
public:
    explicit DISK_FILE(BYTES const &bytes)
        : path((std::filesystem::temp_directory_path() /
                ("animation_test_" + std::to_string(getpid()) + "_" + std::to_string(made++)))
                   .string())
    {
        KN::FileOut out;
        EXPECT_TRUE(out.open(path, false, true));
        EXPECT_EQ(bytes.size(), out.write(bytes.data(), unsigned(bytes.size())));
        EXPECT_TRUE(out.close());
        EXPECT_TRUE(file.open(path, true));
    }
    ~DISK_FILE()
    {
        file.close();
        std::filesystem::remove(path.c_str());
    }

    KN::FileIn file;

private:
    static inline unsigned made = 0;
    KN::String path;
};

// Counts what is taken and given back.
class COUNTING_ALLOCATOR final : public ALLOCATOR {
public:
    ~COUNTING_ALLOCATOR() { EXPECT_TRUE(blocks.empty()) << "memory was not given back"; }
    void *allocate(std::size_t size, std::size_t alignment) override
    {
        void *const block = animation_heap().allocate(size, alignment);
        blocks[block] = size;
        taken += size;
        return block;
    }
    void free(void *block) override
    {
        EXPECT_EQ(1u, blocks.erase(block));
        animation_heap().free(block);
    }

    std::size_t taken = 0;

private:
    std::map<void *, std::size_t> blocks;
};

// Loaders from both kinds of source. A stream's windows are small, so that fields lie across their ends.
inline constexpr unsigned test_window = 7;

template <class USE>
void from_both(BYTES const &bytes, USE use)
{
    {
        SCOPED_TRACE("file");
        DISK_FILE disk(bytes);
        use(disk.file);
    }
    {
        SCOPED_TRACE("stream");
        // In a block of its own size, so that a sanitizer sees one byte too many.
        std::unique_ptr<char[]> const block(new char[bytes.size()]);
        std::memcpy(block.get(), bytes.data(), bytes.size());
        KN::BufferedMemory stream(block.get(), bytes.size(), test_window);
        use(stream);
    }
}

}  // namespace SUPPORT
