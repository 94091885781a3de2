#include "Plugins/Vx2/host/building_description.h"

#include "Plugins/Vx2/host/progress_callback.h"
#include "foundation/file.h"
#include "platform/building/description_file.h"

namespace CORVANEUTILITY {

BUILDING_DESCRIPTION::BUILDING_DESCRIPTION(KN::String const &parsed, KN::String const &collision,
                                           KN::String const &target, KN::String const &origin, bool can_burn,
                                           PROGRESS_CALLBACK *callback, float radius)
{
    auto const report = [&](KN::String const &line, int level) {
        callback->output_line(QString::fromUtf8(line.c_str()), level);
    };
    DESCRIPTION description;
    description.can_burn = can_burn;
    description.incendiary_radius = radius;
    KN::String error;
    std::vector<GLTF::GEOMETRY> further;
    std::size_t points = 0;
    bool written = GLTF::read_geometry(parsed, description.meshes, error);
    if (written && KN::exists(collision))
        written = GLTF::read_geometry(collision, further, error);
    if (written) {
        description.meshes.insert(description.meshes.end(), std::make_move_iterator(further.begin()),
                                  std::make_move_iterator(further.end()));
        written = write_description(description, target, points, error);
    }
    if (!written) {
        report(error, 2);
        return;
    }
    report(origin + ": " + std::to_string(description.meshes.size()) + " meshes, " + std::to_string(points) +
               " incendiary points",
           0);
}

}  // namespace CORVANEUTILITY
