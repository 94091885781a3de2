#include "support/ocean/ocean_simulation.h"

namespace SUPPORT {

template <class FIELD, class SOURCE>
static std::unique_ptr<OCEAN_WAVE_FIELD> read_field(SOURCE &source)
{
    auto field = std::make_unique<FIELD>();
    if (!field->read(source))
        return nullptr;
    return field;
}

OCEAN_SIMULATION::OCEAN_SIMULATION(OCEAN_SETTINGS const &given)
    : settings(given), sea(std::make_unique<SEA_WAVE_FIELD>(settings.sea, settings.crests, false)),
      swell(std::make_unique<SWELL_WAVE_FIELD>(settings.swell, settings.crests, false))
{}

OCEAN_SIMULATION::OCEAN_SIMULATION(OCEAN_SETTINGS const &given, KN::FileIn &sea_file, KN::FileIn &swell_file)
    : settings(given), sea(read_field<SEA_WAVE_FIELD>(sea_file)), swell(read_field<SWELL_WAVE_FIELD>(swell_file)),
      loaded(true)
{}

OCEAN_SIMULATION::OCEAN_SIMULATION(OCEAN_SETTINGS const &given, KN::BufferedStream &sea_stream,
                                   KN::BufferedStream &swell_stream)
    : settings(given), sea(read_field<SEA_WAVE_FIELD>(sea_stream)), swell(read_field<SWELL_WAVE_FIELD>(swell_stream)),
      loaded(true)
{}

void OCEAN_SIMULATION::update(OCEAN_SETTINGS const &waves, float time)
{
    if (sea)
        sea->update(waves.sea, time);
    if (swell)
        swell->update(waves.swell, time);
}

float OCEAN_SIMULATION::surface_height(FRAME_BLEND const &sea_blend, FRAME_BLEND const &swell_blend,
                                       VECTOR3 const &point, float sea_weight) const
{
    if (!sea)
        return 0;
    float const swell_height = swell ? swell->height_at(swell_blend, point.x, point.z) : 0;
    return sea_weight > 0 ? swell_height + sea->height_at(sea_blend, point.x, point.z) * sea_weight : swell_height;
}

}  // namespace SUPPORT
