// OCEAN_SIMULATION: open water in two layers, short waves ("sea") on long ones ("swell").
#pragma once

#include "support/ocean/ocean_wave_field.h"

#include <memory>

namespace SUPPORT {

// Its fields point into its settings, so it stays where it is. One thread at a time, but for the samplers.
class OCEAN_SIMULATION {
public:
    // Both fields unlooped, at time 0.
    explicit OCEAN_SIMULATION(OCEAN_SETTINGS const &given);
    // Looped fields. One that cannot be read is left out.
    OCEAN_SIMULATION(OCEAN_SETTINGS const &given, KN::FileIn &sea_file, KN::FileIn &swell_file);
    OCEAN_SIMULATION(OCEAN_SETTINGS const &given, KN::BufferedStream &sea_stream, KN::BufferedStream &swell_stream);
    OCEAN_SIMULATION(OCEAN_SIMULATION const &) = delete;
    OCEAN_SIMULATION &operator=(OCEAN_SIMULATION const &) = delete;

    // Moves what is not looped. Of `waves` only the wave parameters count; the crests stay those of the simulation.
    void update(OCEAN_SETTINGS const &waves, float time);

    // The height of the water at (x, z) of `point`. 0 without a sea field; without a swell, that layer is flat.
    float surface_height(FRAME_BLEND const &sea_blend, FRAME_BLEND const &swell_blend, VECTOR3 const &point,
                         float sea_weight) const;

    OCEAN_SETTINGS settings;
    std::unique_ptr<OCEAN_WAVE_FIELD> sea, swell;  // null: absent
    bool loaded = false;                           // from files
};

}  // namespace SUPPORT
