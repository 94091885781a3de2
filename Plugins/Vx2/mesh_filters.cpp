#include "Plugins/Vx2/mesh_filters.h"

#include "scene/object.h"

#include <string_view>

static bool is_of_class(VEX2_LOADER::VEX2_OBJECT const &object, std::u16string_view wanted)
{
    KN::UniString const *const type = object.attributes.class_type();
    return type && *type == wanted;
}

bool DISPLAY_FILTER::mesh(VEX2_LOADER::VEX2_OBJECT const &mesh) const { return is_of_class(mesh, u"DISPLAY"); }

bool TECH_FILTER::mesh(VEX2_LOADER::VEX2_OBJECT const &mesh) const { return is_of_class(mesh, u"TECH"); }
