#include "Plugins/Vx2/host/vex2_filter.h"

namespace TOOLDATABUILDER {

VEX2_FILTER::~VEX2_FILTER() = default;

bool VEX2_FILTER::node(KN::DynamicArray<VEX2_LOADER::VEX2_MATRIX_NODE> const &, int) const { return true; }

bool VEX2_FILTER::mesh(VEX2_LOADER::VEX2_OBJECT const &) const { return true; }

bool VEX2_FILTER::weighted_mesh(VEX2_LOADER::VEX2_WEIGHTED_MESH const &) const { return true; }

}  // namespace TOOLDATABUILDER
