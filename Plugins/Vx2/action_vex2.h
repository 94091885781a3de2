// ACTION_VEX2: base of the actions whose source is a scene file.
#pragma once

#include "Plugins/Vx2/api.h"
#include "Plugins/Vx2/host/action_convert.h"

class ACTION_VEX2 : public ACTION_CONVERT {
public:
    // Derived actions measure their progress on a scale of 1000.
    VX2_EXPORT ACTION_VEX2(PHYSICAL_PATH const &physical, PROCESSOR_INTERFACE *processor);
    VX2_EXPORT ACTION_VEX2(ACTION_VEX2 const &other);
    VX2_EXPORT ~ACTION_VEX2() override;

    // With the logical source path, without its root.
    VX2_EXPORT QString get_name(bool with_source) const override;
};
