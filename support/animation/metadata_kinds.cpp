#include "support/animation/metadata_kinds.h"

#include <iterator>
#include <span>
#include <string_view>

namespace SUPPORT {

namespace {

struct KIND_ROW {
    std::uint32_t kind;  // the row's number
    std::int32_t category;
    std::int32_t index_in_category;
    char const *name;
    char const *display_name;
    std::uint8_t uses_start_time;
    std::uint8_t uses_end_time;
    char const *help_text;
};

constexpr KIND_ROW kinds[] = {
    {METADATA_TIME, 0, 0, "TIME", "time", 1, 1, "Generic time marker"},
    {METADATA_DISABLE_PERSISTENT, 0, 1, "DISABLE_PERSISTENT", "disable persistent", 0, 0,
     "Disable persistent animation metadata"},
    {METADATA_DISABLE_PERSISTENT_VFX, 0, 2, "DISABLE_PERSISTENT_VFX", "disable persistent vfx", 0, 0,
     "Disable persistent vfx metadata"},
    {METADATA_DISABLE_FACIAL, 0, 3, "DISABLE_FACIAL", "disable facial", 0, 0, "Disable facial animations"},
    {METADATA_DISABLE_HEAD_TRACKING, 0, 4, "DISABLE_HEAD_TRACKING", "disable head tracking", 0, 0,
     "Disable head tracking"},
    {METADATA_DISABLE_MODEL, 0, 5, "DISABLE_MODEL", "disable model", 1, 1, "Disable model draw"},
    {METADATA_SNIP, 0, 6, "SNIP", "snip", 1, 1, "Snip the starting and ending frame of an animation"},
    {METADATA_FULL_BODY, 0, 7, "FULL_BODY", "full body", 0, 0,
     "Indicates that this animation should be full body, that is, not torso spliced"},
    {METADATA_NOT_BUILDING, 0, 8, "NOT_BUILDING", "not building", 0, 0,
     "Indicates that this animation cannot be used for attacking buildings"},
    {METADATA_USE_BASE_METADATA, 0, 9, "USE_BASE_METADATA", "use base metadata", 0, 0,
     "Force the use of metadata in the base anim slot during a hardcoded splice. All metadata in the hardcoded splice "
     "slot is ignored."},
    {METADATA_WEAPON_ON, 1, 0, "WEAPON_ON", "weapon on", 1, 1,
     "Weapon bone is displayed between start and end times; set value to weapon bone index"},
    {METADATA_WEAPON_LHAND, 1, 1, "WEAPON_LHAND", "weapon L-hand", 1, 1,
     "Weapon bone is spliced relative to left hand between start and end times; set value to weapon bone index"},
    {METADATA_WEAPON_RHAND, 1, 2, "WEAPON_RHAND", "weapon R-hand", 1, 1,
     "Weapon bone is spliced relative to right hand between start and end times; set value to weapon bone index"},
    {METADATA_WEAPON_HIP, 1, 3, "WEAPON_HIP", "weapon hip", 1, 1,
     "Weapon bone is spliced relative to hip between start and end times; set value to weapon bone index"},
    {METADATA_DOCK_EQPT_LHAND, 1, 4, "DOCK_EQPT_LHAND", "dock L-hand", 1, 1,
     "Weapon bone is spliced relative to left hand between start and end times; set value to weapon bone index"},
    {METADATA_DOCK_EQPT_RHAND, 1, 5, "DOCK_EQPT_RHAND", "dock R-hand", 1, 1,
     "Weapon bone is spliced relative to right hand between start and end times; set value to weapon bone index"},
    {METADATA_DOCK_EQPT_LWAIST, 1, 6, "DOCK_EQPT_LWAIST", "dock L-waist", 1, 1,
     "Weapon bone is spliced relative to hip between start and end times; set value to weapon bone index"},
    {METADATA_DOCK_EQPT_RWAIST, 1, 7, "DOCK_EQPT_RWAIST", "dock R-waist", 1, 1,
     "Weapon bone is spliced relative to hip between start and end times; set value to weapon bone index"},
    {METADATA_DOCK_EQPT_BACK, 1, 8, "DOCK_EQPT_BACK", "dock back", 1, 1,
     "Weapon bone is spliced relative to spine2 between start and end times; set value to weapon bone index"},
    {METADATA_BLEND_OVERRIDE, 1, 9, "BLEND_OVERRIDE", "blend override", 0, 0,
     "Override the blend method and blend time"},
    {METADATA_DISABLE_PERSISTENT_ID, 1, 10, "DISABLE_PERSISTENT_ID", "disable persistent id", 0, 0,
     "Disable persistent metadata with a particular ID"},
    {METADATA_MIN_TARGET_SIZE, 1, 11, "MIN_TARGET_SIZE", "min target size", 0, 0,
     "Can only use this animation against target larger or equal to this size"},
    {METADATA_MAX_TARGET_SIZE, 1, 12, "MAX_TARGET_SIZE", "max target size", 0, 0,
     "Can only use this animation against target smaller or equal to this size"},
    {METADATA_BEARING, 2, 0, "BEARING", "bearing", 1, 1, "Generic bearing in degrees"},
    {METADATA_DISTANCE, 2, 1, "DISTANCE", "distance", 0, 0, "Distance in cm; currently used for jump animations"},
    {METADATA_IMPACT_SPEED, 2, 2, "IMPACT_SPEED", "impact speed", 0, 0,
     "On attack animations, speed of the strike; On death animations, speed change threshold to trigger animation"},
    {METADATA_SC_RADIUS, 2, 3, "SC_RADIUS", "sc radius", 1, 1, "Change the soft collision radius (multiplier)"},
    {METADATA_SC_HEIGHT, 2, 4, "SC_HEIGHT", "sc height", 1, 1, "Change the soft collision height (multiplier)"},
    {METADATA_SC_RATIO, 2, 5, "SC_RATIO", "sc ratio", 1, 1, "Change the soft collision ratio"},
    {METADATA_ALPHA, 2, 6, "ALPHA", "alpha", 1, 0, "Change the alpha value"},
    {METADATA_CAMERA_SHAKE_SCALE, 2, 7, "CAMERA_SHAKE_SCALE", "camera shake scale", 0, 0, "Set the camera shake scale"},
    {METADATA_POSITION, 3, 0, "POSITION", "position", 1, 1, "Generic position"},
    {METADATA_FIRE_POS, 3, 1, "FIRE_POS", "fire pos", 1, 0,
     "Position where projectile is created; start time is the time of projectile spawn"},
    {METADATA_IMPACT_POS, 3, 2, "IMPACT_POS", "impact pos", 1, 0,
     "Position where impact originates; start time is the time of impact"},
    {METADATA_TARGET_POS, 3, 3, "TARGET_POS", "target pos", 0, 0, "Indicates direction of target"},
    {METADATA_CAMERA_SHAKE_POS, 3, 4, "CAMERA_SHAKE_POS", "camera shake pos", 1, 0, "Start a camera shake at position"},
    {METADATA_WOUNDED_POSE, 4, 0, "WOUNDED_POSE", "wounded pose", 0, 0, "Specify the wounded pose in the last frame"},
    {METADATA_LHAND_POSE, 5, 0, "LHAND_POSE", "left hand pose", 1, 0, "Left hand pose key"},
    {METADATA_RHAND_POSE, 5, 1, "RHAND_POSE", "right hand pose", 1, 0, "Right hand pose key"},
    {METADATA_FACE_POSE, 5, 2, "FACE_POSE", "face pose", 1, 0, "Face pose key"},
    {METADATA_DISMEMBER, 6, 0, "DISMEMBER", "dismember", 1, 0, "Triggers dismembering at the start time"},
    {METADATA_SPLICE, 7, 0, "SPLICE", "splice", 1, 1,
     "Splices animation specified in metadata to this animation. Weights range from 0 to 1."},
    {METADATA_SPLICE_OVERRIDE, 7, 1, "SPLICE_OVERRIDE", "splice override", 0, 0,
     "Override hardcoded splice. Weights range from 0 to 1."},
    {METADATA_TRANSFORM, 8, 0, "TRANSFORM", "transform", 1, 1,
     "Transform a node. Optionally override with another bone"},
    {METADATA_CREW_LOCATION, 8, 1, "CREW_LOCATION", "crew location", 0, 0, "Position and face artillery crew"},
    {METADATA_EFFECT, 9, 0, "EFFECT", "effect", 1, 1,
     "Trigger a particle effect at a location relative to a node index"},
    {METADATA_BLOOD, 9, 1, "BLOOD", "blood", 1, 1, "Trigger a blood effect at a location relative to a node index"},
    {METADATA_VOLUMETRIC_EFFECT, 10, 0, "VOLUMETRIC_EFFECT", "volumetric effect", 1, 1,
     "Trigger a volumetric particle effect group"},
    {METADATA_PROP, 11, 0, "PROP", "prop", 1, 1, "Display a prop model at a location relative to a node index"},
    {METADATA_ANIMATED_PROP, 11, 1, "ANIMATED_PROP", "animated prop", 1, 1,
     "Display an animated prop model at a location relative to a node index"},
    {METADATA_RIDER_ATTACHMENT, 11, 2, "RIDER_ATTACHMENT", "rider_attachment", 0, 0,
     "Mark an attachment point for a rider"},
    {METADATA_TURRET_ATTACHMENT, 11, 3, "TURRET_ATTACHMENT", "turret_attachment", 0, 0,
     "Mark an attachment point for a turret"},
    {METADATA_SPLASH_ATTACK, 12, 0, "SPLASH_ATTACK", "splash attack", 1, 0,
     "Trigger a splash attack and mark the area of effect"},
    {METADATA_SOUND_IMPACT, 13, 0, "SOUND_IMPACT", "sound impact", 1, 0, "Time and with attack and defend types."},
    {METADATA_SOUND_ATTACK_TYPE, 1, 13, "SOUND_ATTACK_TYPE", "sound attack type", 1, 0,
     "Attack type of this combat animation."},
    {METADATA_SOUND_DEFEND_TYPE, 1, 14, "SOUND_DEFEND_TYPE", "sound defend type", 1, 1,
     "Defend type of this combat animation."},
    {METADATA_SOUND_BUILDING, 14, 0, "SOUND_BUILDING", "sound building", 1, 0,
     "Time, event and position of sound to be triggered"},
    {METADATA_SOUND_TRIGGER, 15, 0, "SOUND_TRIGGER", "sound trigger", 1, 1, "Time and type of sound to be triggered"},
    {METADATA_NULL, 0, -1, "NULL", "null", 0, 0, "null"},
};
static_assert(std::size(kinds) == METADATA_NULL + 1);

using TEXTS = std::span<char const *const>;
constexpr char const *area_shapes[] = {"cone/circle", "corridor"};
constexpr char const *pose_sources[] = {"bind_pose", "animation", "zeroed", "skinned"};
constexpr char const *blend_methods[] = {"blend_in_default",    "blend_out_default", "blend_in_crossfade",
                                         "blend_out_crossfade", "blend_in_time",     "blend_out_time"};
constexpr char const *weapon_slots[] = {"projectile", "weapon_1", "weapon_2", "weapon_3",
                                        "weapon_4",   "weapon_5", "weapon_6"};
constexpr char const *ability_modes[] = {"normal", "ability_aura", "ability_weapon"};

// The number of texts if there is no such one.
std::uint32_t place_of(std::string_view text, TEXTS texts)
{
    std::uint32_t place = 0;
    while (place < texts.size() && texts[place] != text)
        ++place;
    return place;
}

KN::String text_at(std::uint32_t place, TEXTS texts, char const *other)
{
    return KN::String(place < texts.size() ? texts[place] : other);
}

constexpr char unknown[] = "unknown";

}  // namespace

KN::String metadata_kind_name(std::uint32_t kind) { return KN::String(kinds[kind].name); }
KN::String metadata_kind_display_name(std::uint32_t kind) { return KN::String(kinds[kind].display_name); }
KN::String metadata_kind_help_text(std::uint32_t kind) { return KN::String(kinds[kind].help_text); }
std::int32_t metadata_kind_category(std::uint32_t kind) { return kinds[kind].category; }
std::int32_t metadata_kind_index_in_category(std::uint32_t kind) { return kinds[kind].index_in_category; }
bool metadata_kind_uses_start_time(std::uint32_t kind) { return kinds[kind].uses_start_time; }
bool metadata_kind_uses_end_time(std::uint32_t kind) { return kinds[kind].uses_end_time; }

std::uint32_t metadata_kind_from_name(KN::String const &text)
{
    for (std::uint32_t kind = 0; kind < METADATA_NULL; ++kind)
        if (text == std::string_view(kinds[kind].name))
            return kind;
    return METADATA_NULL;
}

std::uint32_t area_shape_from_text(KN::String const &text) { return place_of(text, area_shapes); }
KN::String area_shape_to_text(std::uint32_t value) { return text_at(value, area_shapes, unknown); }
std::uint32_t pose_source_from_text(KN::String const &text) { return place_of(text, pose_sources); }
KN::String pose_source_to_text(std::uint32_t value) { return text_at(value, pose_sources, unknown); }
std::uint32_t blend_method_from_text(KN::String const &text) { return place_of(text, blend_methods); }
KN::String blend_method_to_text(std::uint32_t value) { return text_at(value, blend_methods, unknown); }
std::uint32_t weapon_slot_from_text(KN::String const &text) { return place_of(text, weapon_slots); }
KN::String weapon_slot_to_text(std::uint32_t value) { return text_at(value, weapon_slots, unknown); }

std::uint32_t ability_mode_from_text(KN::String const &text)
{
    std::uint32_t const mode = place_of(text, ability_modes);
    return mode < std::size(ability_modes) ? mode : std::uint32_t(ABILITY_NORMAL);
}
KN::String ability_mode_to_text(std::uint32_t value) { return text_at(value, ability_modes, ability_modes[0]); }

bool is_same_skeleton(KN::String const &a, KN::String const &b)
{
    constexpr std::string_view man = "veld_man", in_game = "veld_man_game";
    return a == b || (a == man && b == in_game) || (a == in_game && b == man);
}

}  // namespace SUPPORT
