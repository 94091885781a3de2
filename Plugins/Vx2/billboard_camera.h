// BILLBOARD_CAMERA: the engine's camera as billboards want it: orthographic, so that every part of a tree has the same
// scale.
#pragma once

#include "support/camera/camera.h"

class BILLBOARD_CAMERA : public SUPPORT::CAMERA {
public:
    BILLBOARD_CAMERA()
    {
        set_eye({0, 0, -20});
        set_target({0, 0, 0});
        set_up({0, 1, 0});
        // Degrees where the class counts radians. An orthographic view does not use it.
        set_field_of_view(60);
        set_aspect(1);
        set_near(0.01f);
        set_far(100);
        set_view_height(1);
        set_orthographic(true);
    }
};
