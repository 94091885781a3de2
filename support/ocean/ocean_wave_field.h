// OCEAN_WAVE_FIELD: a square tile of open water that repeats in both directions, summed up from a random spectrum of
// waves. It comes in two forms. Unlooped, it stands at one instant and is moved by `update`. Looped, its frames are all
// worked out when it is built, or come from a file, and are only sampled.
//
// The world is a plane here: x and y in metres, cells counted from the origin, cell (0, 0) at (0, 0). Heights are
// metres. Building and `update` take one thread at a time; samplers are const and may run at once.
#pragma once

#include "foundation/string.h"
#include "support/maths/vector.h"
#include "support/ocean/complex_grid.h"
#include "support/ocean/wave_frame.h"
#include "support/ocean/wave_instant.h"
#include "support/ocean/wave_settings.h"

namespace KN {
class BufferedStream;
class FileIn;
struct PixelAccessorDescriptor;
}  // namespace KN

namespace SUPPORT {

// Where between two frames a looped field is looked at. An unlooped field reads its one frame, whatever the blend.
struct FRAME_BLEND {
    FRAME_BLEND(std::uint32_t a, std::uint32_t b, float between)
        : frame_a(a), frame_b(b), t(between), weight_b(std::uint32_t(between * 256)), weight_a(256 - weight_b)
    {}

    std::uint32_t frame_a, frame_b;  // below the field's frame_count
    float t;                         // 0 to 1
    std::uint32_t weight_b, weight_a;
};

struct SLOPE_ANGLES {
    std::uint16_t x = 0, y = 0;  // 65535 to the full turn, half a turn for the level
};

// What a kind of field is built with. A loop has at least one frame.
struct WAVE_FIELD_KIND {
    char const *name;
    std::uint32_t grid;  // a power of two, 16 or more
    float period;        // seconds of a loop
    float frames_per_second;
    float size;  // metres of a tile, above 0
    bool crests_enabled, choppy;
};

class OCEAN_WAVE_FIELD {
public:
    // Takes `frame_count` frames of 16 bytes a cell while a looped field is built. A looped one is written to the file
    // `name` in the current directory, if that can be. `crests` outlives the field.
    OCEAN_WAVE_FIELD(WAVE_FIELD_KIND const &kind, WAVE_PARAMETERS const &waves, CREST_PARAMETERS const &crests,
                     bool in_a_loop);
    // Without anything, to be read. Nothing may be sampled before.
    OCEAN_WAVE_FIELD() = default;
    OCEAN_WAVE_FIELD(OCEAN_WAVE_FIELD const &) = delete;
    OCEAN_WAVE_FIELD &operator=(OCEAN_WAVE_FIELD const &) = delete;
    virtual ~OCEAN_WAVE_FIELD() = default;

    // Into an empty field, which is of no use if the result is false: the bytes are no wave field, are cut off, or do
    // not fit together. Safe on hostile bytes.
    bool read(KN::FileIn &file);
    bool read(KN::BufferedStream &stream);
    // The file stands whole, or as it was before.
    bool write(KN::String const &path) const;

    // Moves an unlooped field to `time`, in seconds, under other waves; a looped one is left alone. Values beyond those
    // met when it was built are cut off.
    void update(WAVE_PARAMETERS const &waves, float time);

    // The frames around `time`, in seconds, which goes round the loop and may be negative.
    FRAME_BLEND frame_blend(float time) const;

    float height_at(FRAME_BLEND const &blend, float x, float y) const;
    // (x, 0, y); zeros where the water is not choppy.
    VECTOR3 displacement_at(FRAME_BLEND const &blend, float x, float y) const;
    // `point` has its height in y and is sampled at (x, z); displacements are taken off it.
    VECTOR3 displaced_point(FRAME_BLEND const &blend, VECTOR3 const &point, float scale) const;
    // Cells are taken modulo `grid`.
    SLOPE_ANGLES slope_angles_at(FRAME_BLEND const &blend, std::uint32_t cell_x, std::uint32_t cell_y) const;
    // Of length 1; z is up.
    VECTOR3 normal_at(FRAME_BLEND const &blend, std::uint32_t cell_x, std::uint32_t cell_y) const;
    // `image` has `grid` x `grid` pixels of 4 bytes. Each becomes the word with the angle x in its low half and the
    // angle y in its high half; row 0 is that of cell y = 0.
    void fill_slope_image(FRAME_BLEND const &blend, KN::PixelAccessorDescriptor const &image) const;

    // The corner with the least coordinates of the tile that (x, y) lies in.
    VECTOR2 tile_origin(float x, float y) const;
    float cell_size() const { return size / float(grid); }
    VECTOR2 cell_position(VECTOR2 const &origin, std::uint32_t i, std::uint32_t j) const
    {
        return origin + VECTOR2{float(i), float(j)} * cell_size();
    }

    KN::String name;
    std::uint32_t grid = 0;
    float size = 0;
    float fixed_scale = 0;  // 4096ths of a cell a metre
    float period = 0;
    std::uint32_t frame_count = 0;
    bool crests_enabled = false, choppy = false, looped = false;
    COMPLEX_GRID height, slope_x, slope_y, displacement_x, displacement_y;  // real parts count
    KN::DynamicArray<COMPLEX> spectrum;
    WAVE_RANGES ranges;
    WAVE_SCALES scales;
    KN::DynamicArray<WAVE_FRAME> frames;
    CREST_PARAMETERS const *crest_parameters = nullptr;

private:
    void evolve(WAVE_INSTANT &instant, float time);
    void build_loop();
    void encode_instant();
    template <class SOURCE>
    bool read_from(SOURCE &source);

    // Where a point lies among the cells.
    struct PLACE;
    PLACE place_of(float x, float y) const;
    float height_of(WAVE_FRAME const &frame, std::uint32_t x, std::uint32_t y) const;
    VECTOR2 displacement_of(WAVE_FRAME const &frame, std::uint32_t x, std::uint32_t y) const;

    WAVE_PARAMETERS filled_for;           // what the spectrum stands for
    KN::DynamicArray<float> frequencies;  // radians a second, a cell each, row by row
    WAVE_INSTANT instant;                 // the last one of an unlooped field
};

// Short waves over 70 metres, which push the water together until it foams.
class SEA_WAVE_FIELD : public OCEAN_WAVE_FIELD {
public:
    SEA_WAVE_FIELD(WAVE_PARAMETERS const &waves, CREST_PARAMETERS const &crests, bool in_a_loop)
        : OCEAN_WAVE_FIELD({"sea", 256, 10.0f, 10.0f, 70.0f, crests.crests_enabled != 0, true}, waves, crests,
                           in_a_loop)
    {}
    SEA_WAVE_FIELD() = default;
};

// Long waves over 800 metres.
class SWELL_WAVE_FIELD : public OCEAN_WAVE_FIELD {
public:
    SWELL_WAVE_FIELD(WAVE_PARAMETERS const &waves, CREST_PARAMETERS const &crests, bool in_a_loop)
        : OCEAN_WAVE_FIELD({"swell", 128, 30.0f, 2.0f, 800.0f, false, false}, waves, crests, in_a_loop)
    {}
    SWELL_WAVE_FIELD() = default;
};

}  // namespace SUPPORT
