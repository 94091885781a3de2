#include "support/animation/metadata_kinds.h"

#include <gtest/gtest.h>

#include <set>

using namespace SUPPORT;

TEST(MetadataKinds, CategoriesCountTheirKinds)
{
    int const sizes[CATEGORY_COUNT] = {10, 15, 8, 5, 1, 3, 1, 2, 2, 2, 1, 4, 1, 1, 1, 1};
    int counts[CATEGORY_COUNT] = {};
    for (unsigned kind = 0; kind < METADATA_NULL; ++kind) {
        std::int32_t const category = metadata_kind_category(kind);
        ASSERT_TRUE(category >= 0 && category < CATEGORY_COUNT);
        EXPECT_EQ(metadata_kind_index_in_category(kind), counts[category]++) << kind;
        EXPECT_EQ(metadata_kind_from_name(metadata_kind_name(kind)), kind);
        EXPECT_NE(metadata_kind_help_text(kind), "");
    }
    for (int category = 0; category < CATEGORY_COUNT; ++category)
        EXPECT_EQ(counts[category], sizes[category]) << category;
    EXPECT_EQ(metadata_kind_category(58), 0);
    EXPECT_EQ(metadata_kind_index_in_category(58), -1);
    EXPECT_EQ(metadata_kind_name(58), "NULL");
}

TEST(MetadataKinds, TimesThatCount)
{
    std::set<std::string> const start_only = {"ALPHA",         "FIRE_POS",     "IMPACT_POS",        "CAMERA_SHAKE_POS",
                                              "LHAND_POSE",    "RHAND_POSE",   "FACE_POSE",         "DISMEMBER",
                                              "SPLASH_ATTACK", "SOUND_IMPACT", "SOUND_ATTACK_TYPE", "SOUND_BUILDING"};
    std::set<std::string> found;
    int both = 0;
    for (unsigned kind = 0; kind <= METADATA_NULL; ++kind) {
        bool const start = metadata_kind_uses_start_time(kind), end = metadata_kind_uses_end_time(kind);
        EXPECT_TRUE(start || !end) << kind;
        both += end;
        if (start && !end)
            found.insert(metadata_kind_name(kind));
    }
    EXPECT_EQ(found, start_only);
    EXPECT_EQ(both, 26);
}

TEST(MetadataKinds, NamesAreExact)
{
    for (char const *text : {"time", "", "NULL", "TIM", "TIMES", "Time"})
        EXPECT_EQ(metadata_kind_from_name(KN::String(text)), 58u) << text;
    EXPECT_EQ(metadata_kind_from_name(KN::String("SOUND_TRIGGER")), 57u);
    EXPECT_EQ(metadata_kind_display_name(11), "weapon L-hand");
    EXPECT_EQ(metadata_kind_display_name(METADATA_TURRET_ATTACHMENT), "turret_attachment");
    EXPECT_EQ(metadata_kind_help_text(METADATA_DOCK_EQPT_RWAIST), metadata_kind_help_text(METADATA_WEAPON_HIP));

    EXPECT_TRUE(is_same_skeleton(KN::String("veld_man_game"), KN::String("veld_man")));
    EXPECT_TRUE(is_same_skeleton(KN::String("veld_man"), KN::String("veld_man_game")));
    EXPECT_TRUE(is_same_skeleton(KN::String("horse"), KN::String("horse")));
    EXPECT_FALSE(is_same_skeleton(KN::String("horse"), KN::String("Horse")));
    EXPECT_FALSE(is_same_skeleton(KN::String("horse"), KN::String("horse_game")));
}

TEST(MetadataKinds, EnumerationsHaveTexts)
{
    struct {
        std::uint32_t (*from)(KN::String const &);
        KN::String (*to)(std::uint32_t);
        std::uint32_t count;
        char const *last;
        std::uint32_t of_unknown;
        char const *beyond;
    } const cases[] = {
        {area_shape_from_text, area_shape_to_text, 2, "corridor", 2, "unknown"},
        {pose_source_from_text, pose_source_to_text, 4, "skinned", 4, "unknown"},
        {blend_method_from_text, blend_method_to_text, 6, "blend_out_time", 6, "unknown"},
        {weapon_slot_from_text, weapon_slot_to_text, 7, "weapon_6", 7, "unknown"},
        {ability_mode_from_text, ability_mode_to_text, 3, "ability_weapon", 0, "normal"},
    };
    for (auto const &c : cases) {
        for (std::uint32_t value = 0; value < c.count; ++value)
            EXPECT_EQ(c.from(c.to(value)), value) << c.last;
        EXPECT_EQ(c.to(c.count - 1), c.last);
        EXPECT_EQ(c.from(KN::String("x")), c.of_unknown) << c.last;
        EXPECT_EQ(c.to(c.count), c.beyond);
        EXPECT_EQ(c.to(~0u), c.beyond);
    }
}
