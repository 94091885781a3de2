// Renders a scene through a camera onto a film: casts rays from the near plane of the camera's view volume to the far
// one, several a pixel, and looks up colour, normal and height where they hit. No lights: what comes out goes into
// textures that are lit later.
#pragma once

#include "platform/engine/film.h"
#include "platform/engine/ray_scene.h"

namespace KESTREL {

// `samples` a pixel, well spread and the same for every pixel. False if the work was to end early (KN::goes_on); the
// film is then of no use. Uses all cores; the same input gives the same film however many there are.
bool render(RAY_SCENE const &scene, SUPPORT::CAMERA const &camera, unsigned samples, FILM &film);

}  // namespace KESTREL
