// TOOLDATABUILDER::VEX2_FILTER: which parts of a scene a converter takes. The base takes everything; callers derive
// from it and override what they restrict. The converters call it from the thread that they run on.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "foundation/dynamic_array.h"

namespace VEX2_LOADER {
class VEX2_MATRIX_NODE;
class VEX2_OBJECT;
class VEX2_WEIGHTED_MESH;
}  // namespace VEX2_LOADER

namespace TOOLDATABUILDER {

class CONVERSION_API VEX2_FILTER {
public:
    virtual ~VEX2_FILTER();
    virtual bool node(KN::DynamicArray<VEX2_LOADER::VEX2_MATRIX_NODE> const &nodes, int index) const;
    // Asked for every mesh, of whatever kind.
    virtual bool mesh(VEX2_LOADER::VEX2_OBJECT const &mesh) const;
    // Asked for weighted meshes besides.
    virtual bool weighted_mesh(VEX2_LOADER::VEX2_WEIGHTED_MESH const &mesh) const;
};

}  // namespace TOOLDATABUILDER
