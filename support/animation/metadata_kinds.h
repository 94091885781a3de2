// The vocabulary of animation metadata: timed notes on a clip, such as where a weapon is shown, when a sound begins, or
// which area a blow covers. A table of kinds with names for files and for people, and small enumerations with their
// texts. Texts are compared byte by byte: letters' case counts. Any thread may call.
#pragma once

#include "foundation/string.h"

#include <cstdint>

namespace SUPPORT {

enum ANIMATION_METADATA_KIND : std::uint32_t {
    METADATA_TIME,
    METADATA_DISABLE_PERSISTENT,
    METADATA_DISABLE_PERSISTENT_VFX,
    METADATA_DISABLE_FACIAL,
    METADATA_DISABLE_HEAD_TRACKING,
    METADATA_DISABLE_MODEL,
    METADATA_SNIP,
    METADATA_FULL_BODY,
    METADATA_NOT_BUILDING,
    METADATA_USE_BASE_METADATA,
    METADATA_WEAPON_ON,
    METADATA_WEAPON_LHAND,
    METADATA_WEAPON_RHAND,
    METADATA_WEAPON_HIP,
    METADATA_DOCK_EQPT_LHAND,
    METADATA_DOCK_EQPT_RHAND,
    METADATA_DOCK_EQPT_LWAIST,
    METADATA_DOCK_EQPT_RWAIST,
    METADATA_DOCK_EQPT_BACK,
    METADATA_BLEND_OVERRIDE,
    METADATA_DISABLE_PERSISTENT_ID,
    METADATA_MIN_TARGET_SIZE,
    METADATA_MAX_TARGET_SIZE,
    METADATA_BEARING,
    METADATA_DISTANCE,
    METADATA_IMPACT_SPEED,
    METADATA_SC_RADIUS,
    METADATA_SC_HEIGHT,
    METADATA_SC_RATIO,
    METADATA_ALPHA,
    METADATA_CAMERA_SHAKE_SCALE,
    METADATA_POSITION,
    METADATA_FIRE_POS,
    METADATA_IMPACT_POS,
    METADATA_TARGET_POS,
    METADATA_CAMERA_SHAKE_POS,
    METADATA_WOUNDED_POSE,
    METADATA_LHAND_POSE,
    METADATA_RHAND_POSE,
    METADATA_FACE_POSE,
    METADATA_DISMEMBER,
    METADATA_SPLICE,
    METADATA_SPLICE_OVERRIDE,
    METADATA_TRANSFORM,
    METADATA_CREW_LOCATION,
    METADATA_EFFECT,
    METADATA_BLOOD,
    METADATA_VOLUMETRIC_EFFECT,
    METADATA_PROP,
    METADATA_ANIMATED_PROP,
    METADATA_RIDER_ATTACHMENT,
    METADATA_TURRET_ATTACHMENT,
    METADATA_SPLASH_ATTACK,
    METADATA_SOUND_IMPACT,
    METADATA_SOUND_ATTACK_TYPE,
    METADATA_SOUND_DEFEND_TYPE,
    METADATA_SOUND_BUILDING,
    METADATA_SOUND_TRIGGER,
    METADATA_NULL,  // what is no kind
};

// What a kind's value looks like.
enum METADATA_CATEGORY : std::int32_t {
    CATEGORY_PLAIN,
    CATEGORY_WHOLE_NUMBER,  // a bone's index, a size, an identifier, a type of sound
    CATEGORY_REAL_NUMBER,   // degrees, centimetres, factors
    CATEGORY_POSITION,
    CATEGORY_WOUNDED_POSE,
    CATEGORY_POSE_KEY,
    CATEGORY_DISMEMBERMENT,
    CATEGORY_SPLICE_WITH_WEIGHTS,
    CATEGORY_TRANSFORM_OF_NODE,
    CATEGORY_EFFECT_AT_NODE,
    CATEGORY_VOLUMETRIC_EFFECTS,
    CATEGORY_PROP_AT_NODE,
    CATEGORY_SPLASH_AREA,
    CATEGORY_SOUND_IMPACT_DATA,
    CATEGORY_SOUND_AND_POSITION,
    CATEGORY_SOUND_TYPE,
    CATEGORY_COUNT
};

// Of a kind from 0 to METADATA_NULL; any other is the caller's fault.
KN::String metadata_kind_name(std::uint32_t kind);          // upper case, as stored and typed
KN::String metadata_kind_display_name(std::uint32_t kind);  // for people
KN::String metadata_kind_help_text(std::uint32_t kind);
std::int32_t metadata_kind_category(std::uint32_t kind);
std::int32_t metadata_kind_index_in_category(std::uint32_t kind);  // -1 for METADATA_NULL
bool metadata_kind_uses_start_time(std::uint32_t kind);            // it acts at, or from, its start time
bool metadata_kind_uses_end_time(std::uint32_t kind);

// The kind with that name; METADATA_NULL if there is none. Display names are no names.
std::uint32_t metadata_kind_from_name(KN::String const &text);

// Small enumerations, each with its texts. An unknown text gives the number of values, and a value without a text
// "unknown"; of ABILITY_MODE both give "normal".
enum AREA_SHAPE : std::uint32_t { AREA_CONE, AREA_CORRIDOR };
enum POSE_SOURCE : std::uint32_t { POSE_FROM_BIND, POSE_FROM_ANIMATION, POSE_ZEROED, POSE_SKINNED };
enum BLEND_METHOD : std::uint32_t {
    BLEND_IN_DEFAULT,
    BLEND_OUT_DEFAULT,
    BLEND_IN_CROSSFADE,
    BLEND_OUT_CROSSFADE,
    BLEND_IN_TIME,
    BLEND_OUT_TIME
};
enum WEAPON_SLOT : std::uint32_t { WEAPON_PROJECTILE, WEAPON_1, WEAPON_2, WEAPON_3, WEAPON_4, WEAPON_5, WEAPON_6 };
enum ABILITY_MODE : std::uint32_t { ABILITY_NORMAL, ABILITY_AURA, ABILITY_WEAPON };

std::uint32_t area_shape_from_text(KN::String const &text);
KN::String area_shape_to_text(std::uint32_t value);
std::uint32_t pose_source_from_text(KN::String const &text);
KN::String pose_source_to_text(std::uint32_t value);
std::uint32_t blend_method_from_text(KN::String const &text);
KN::String blend_method_to_text(std::uint32_t value);
std::uint32_t weapon_slot_from_text(KN::String const &text);
KN::String weapon_slot_to_text(std::uint32_t value);
std::uint32_t ability_mode_from_text(KN::String const &text);
KN::String ability_mode_to_text(std::uint32_t value);

// Whether clips of one skeleton play on the other: the same name, or "veld_man" and "veld_man_game".
bool is_same_skeleton(KN::String const &a, KN::String const &b);

}  // namespace SUPPORT
