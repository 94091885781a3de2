// Which meshes of a scene the model and the tech conversion take: those whose class, as the artist set it, is the
// conversion's.
#pragma once

#include "Plugins/Vx2/host/vex2_filter.h"

class DISPLAY_FILTER : public TOOLDATABUILDER::VEX2_FILTER {
public:
    bool mesh(VEX2_LOADER::VEX2_OBJECT const &mesh) const override;  // class "DISPLAY"
};

class TECH_FILTER : public TOOLDATABUILDER::VEX2_FILTER {
public:
    bool mesh(VEX2_LOADER::VEX2_OBJECT const &mesh) const override;  // class "TECH"
};
