// The names under which scene makers and converters agree on the parts of a VEX2_SHADER_MATERIAL. A converter takes
// what it finds and goes without the rest.
#pragma once

namespace VEX2_LOADER::MATERIAL_NAME {

// `shader` of a material that came from an artist's file. Its numbers are those of the metallic-roughness model.
inline constexpr char16_t shader[] = u"metallic_roughness";

// Slots of `textures`; the file is named relative to the scene's own folder.
inline constexpr char16_t diffuse_slot[] = u"diffuse";  // colour, and opacity in alpha
inline constexpr char16_t normal_slot[] = u"normal";    // tangent space, green up

// Of `slots`: a slot of this name holds the UVW set that the texture slot of the same name uses, as its first number;
// a texture slot without one uses set 0.

// Of `vector4s`: red, green, blue, opacity, linear light; multiplied with the diffuse texture. Absent: all ones.
inline constexpr char16_t diffuse_colour[] = u"diffuse_colour";
// Of `floats`, 0 to 1. Absent: roughness 1, metalness 0.
inline constexpr char16_t roughness[] = u"roughness";
inline constexpr char16_t metalness[] = u"metalness";

// Of `ints`. alpha_mode: 0 opaque (when absent), 1 cut off where opacity is below `alpha_cutoff` (of `floats`, 0.5 when
// absent), 2 blended. two_sided: not 0 if both sides of a face are seen.
inline constexpr char16_t alpha_mode[] = u"alpha_mode";
inline constexpr char16_t alpha_cutoff[] = u"alpha_cutoff";
inline constexpr char16_t two_sided[] = u"two_sided";

}  // namespace VEX2_LOADER::MATERIAL_NAME
