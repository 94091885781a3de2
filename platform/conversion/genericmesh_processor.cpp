#include "Plugins/Vx2/host/genericmesh_processor.h"

namespace TOOLDATABUILDER {

GENERICMESH_PROCESSOR::GENERICMESH_PROCESSOR() : model({}, false, {}, false, {}, {}, {})
{
    model.without_side_files = true;
}

bool GENERICMESH_PROCESSOR::open_vex2(KN::String const &source, MODEL_STATISTICS_INTERFACE *statistics)
{
    model.target = target;
    return model.open_vex2(source, statistics, false);
}

bool GENERICMESH_PROCESSOR::write(KN::String const &mesh_file, MODEL_STATISTICS_INTERFACE *statistics)
{
    return model.write(mesh_file, statistics);
}

}  // namespace TOOLDATABUILDER
