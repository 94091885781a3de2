// TOOLDATABUILDER::GENERICMESH_PROCESSOR: the converter from a scene to a generic mesh: the meshes of a rigid model
// with materials by name, one binary glTF file and no other. Open once, write once. Causes of failure are messages of
// level 2 (KN::message). One thread at a time.
#pragma once

#include "Plugins/Vx2/host/model_processor.h"

namespace TOOLDATABUILDER {

class CONVERSION_API GENERICMESH_PROCESSOR {
public:
    GENERICMESH_PROCESSOR();

    KN::String target;  // the file, as `write` will get it

    // Loads the scene file and takes the meshes that MODEL_PROCESSOR takes, level by level where their names tell.
    bool open_vex2(KN::String const &source, MODEL_STATISTICS_INTERFACE *statistics);
    // True if the file stands.
    bool write(KN::String const &target, MODEL_STATISTICS_INTERFACE *statistics);

private:
    MODEL_PROCESSOR model;
};

}  // namespace TOOLDATABUILDER
