#include "platform/exchange/export_animation.h"

#include "support/animation/animation_file.h"
#include "tests/platform/exchange/scratch_folder.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cmath>

using namespace SUPPORT;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

// Three frames of a root that rises and an arm, half a metre beside it, that turns about x. Of the arm, the translation
// is left out where `stripped`.
ANIMATION_FILE_TABLES arm_tables(bool stripped, std::uint32_t frames)
{
    ANIMATION_FILE_TABLES tables;
    tables.name = "arm";
    tables.fps = 10;
    tables.bone_count = 2;
    tables.bones.append(BONE_RECORD{"root", -1});
    tables.bones.append(BONE_RECORD{"arm", 0});
    for (std::int32_t const entry : {0, stripped ? -1 : 1})
        tables.translation_map.append(entry);
    for (std::int32_t const entry : {0, 1})
        tables.rotation_map.append(entry);
    tables.translation_count = stripped ? 1 : 2;
    tables.rotation_count = 2;
    tables.frame_count = frames;
    return tables;
}

KN::String arm(bool stripped, std::uint32_t frames, float fault = 0)
{
    ANIMATION_FILE_TABLES tables = arm_tables(stripped, frames);
    tables.fps = fault < 0 ? 0 : 10;
    std::vector<VECTOR3> translations;
    std::vector<PACKED_QUATERNION> rotations;
    for (std::uint32_t i = 0; i < frames; ++i) {
        translations.push_back({0, float(i) + fault, 0});
        if (!stripped)
            translations.push_back({0.5f, 0, 0});
        rotations.push_back(pack_quaternion({}));
        rotations.push_back(pack_quaternion({std::sin(0.5f * float(i)), 0, 0, std::cos(0.5f * float(i))}));
    }
    return animation_file_bytes(tables, translations, rotations);
}

// A binary glTF file taken apart.
struct GLB {
    explicit GLB(std::string const &bytes)
    {
        std::uint32_t size = 0;
        std::memcpy(&size, bytes.data() + 12, 4);
        json = nlohmann::json::parse(bytes.substr(20, size));
        buffer = bytes.substr(28 + size);
    }
    std::vector<float> floats(nlohmann::json const &accessor, std::size_t components) const
    {
        auto const &entry = json["accessors"][accessor.get<std::size_t>()];
        auto const &view = json["bufferViews"][entry["bufferView"].get<std::size_t>()];
        std::vector<float> all(entry["count"].get<std::size_t>() * components);
        std::memcpy(all.data(), buffer.data() + view.value("byteOffset", std::size_t(0)), all.size() * 4);
        return all;
    }
    // The values of one channel, over its times of a tenth of a second each.
    std::vector<float> channel(int node, std::string const &path) const
    {
        for (auto const &channel : json["animations"][0]["channels"]) {
            if (channel["target"]["node"] != node || channel["target"]["path"] != path)
                continue;
            auto const &sampler = json["animations"][0]["samplers"][channel["sampler"].get<std::size_t>()];
            EXPECT_THAT(floats(sampler["input"], 1), ElementsAre(0, 0.1f, 0.2f));
            return floats(sampler["output"], path == "rotation" ? 4 : 3);
        }
        return {};
    }

    nlohmann::json json;
    std::string buffer;
};

class EXPORT_ANIMATION : public testing::Test {
protected:
    bool run(KN::String const &clip, KN::String const &skeleton = {})
    {
        scratch.write("c.anim", clip);
        if (!skeleton.empty())
            scratch.write("s.anim", skeleton);
        warnings.clear();
        error.clear();
        return export_animation(scratch.path("c.anim"), skeleton.empty() ? "" : scratch.path("s.anim"),
                                scratch.path("out.glb"), warnings, error);
    }
    GLB result() const { return GLB(scratch.read("out.glb")); }

    SCRATCH scratch;
    KN_STD::VECTOR<KN::String> warnings;
    KN::String error;
};

}  // namespace

TEST_F(EXPORT_ANIMATION, HasAKeyAFrameForEachValue)
{
    ASSERT_TRUE(run(arm(false, 3))) << error;
    GLB const glb = result();
    EXPECT_TRUE(warnings.empty());
    EXPECT_EQ(glb.json["nodes"][0]["name"], "root");
    EXPECT_EQ(glb.json["nodes"][0]["children"], nlohmann::json({1}));
    EXPECT_THAT(glb.channel(0, "translation"), ElementsAre(0, 0, 0, 0, 1, 0, 0, 2, 0));
    EXPECT_THAT(glb.channel(1, "translation"), ElementsAre(0.5f, 0, 0, 0.5f, 0, 0, 0.5f, 0, 0));
    std::vector<float> const turns = glb.channel(1, "rotation");
    ASSERT_EQ(turns.size(), 12u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(turns[4 * i], std::sin(0.5f * float(i)), 1e-4);
        EXPECT_NEAR(turns[4 * i + 3], std::cos(0.5f * float(i)), 1e-4);
    }
    // One stick, from the root to the arm.
    auto const &primitive = glb.json["meshes"][0]["primitives"][0];
    std::vector<float> const corners = glb.floats(primitive["attributes"]["POSITION"], 3);
    EXPECT_THAT(std::vector<float>(corners.begin(), corners.begin() + 6), ElementsAre(0, 0, 0, 0.5f, 0, 0));
    EXPECT_EQ(glb.json["skins"][0]["joints"], nlohmann::json({0, 1}));
}

TEST_F(EXPORT_ANIMATION, WhatIsStrippedStandsAsInTheSkeleton)
{
    ASSERT_TRUE(run(arm(true, 3))) << error;
    EXPECT_THAT(warnings, ElementsAre(HasSubstr("1 bones are not wholly animated; --skeleton gives their places")));
    EXPECT_FALSE(result().json["nodes"][1].contains("translation"));

    MATRIX34 const matrices[2] = {{}, {{{1, 0, 0, -0.5f}, {0, 1, 0, 0}, {0, 0, 1, 0}}}};
    scratch.write("s.bone_inv_trans_mats", matrix_block_bytes(matrices));
    ASSERT_TRUE(run(arm(true, 3), arm(false, 1))) << error;
    EXPECT_TRUE(warnings.empty());
    GLB const glb = result();
    EXPECT_EQ(glb.json["nodes"][1]["translation"], nlohmann::json({0.5f, 0.0f, 0.0f}));
    EXPECT_TRUE(glb.channel(1, "translation").empty());
    EXPECT_EQ(glb.channel(1, "rotation").size(), 12u);
    EXPECT_EQ(glb.floats(glb.json["skins"][0]["inverseBindMatrices"], 16)[28], -0.5f);
}

TEST_F(EXPORT_ANIMATION, TheValidatorFindsNoError)
{
    for (std::uint32_t const frames : {1u, 3u}) {
        ASSERT_TRUE(run(arm(false, frames))) << error;
        EXPECT_EQ(std::system((GLTF_VALIDATE " " + scratch.path("out.glb") + " > /dev/null").c_str()), 0) << frames;
    }
}

TEST_F(EXPORT_ANIMATION, AFaultIsALineAndNoFile)
{
    KN::String const good = arm(false, 3);
    KN::String old = good;
    old[0] = 4;
    const struct {
        char const *said;
        KN::String clip, skeleton;
    } cases[] = {
        {"no animation file of version 5 or newer", old, {}},
        {"no animation file of version 5 or newer", "an", {}},
        {"the file holds no bones or no frame", good.substr(0, 100), {}},
        {"0.000000 frames a second are no rate to be played at", arm(false, 3, -1), {}},
        {"bone 'root' has no finite place in frame 0", arm(false, 3, INFINITY), {}},
        {"the skeleton has no bones", good, good.substr(0, 30)},
        {"the animation has 5 bones, the skeleton 2", good.substr(0, 21) + '\5' + good.substr(22), good},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.said);
        EXPECT_FALSE(run(c.clip, c.skeleton));
        EXPECT_THAT(error, HasSubstr(c.said));
        EXPECT_FALSE(std::filesystem::exists(std::string(scratch.path("out.glb"))));
    }
}
