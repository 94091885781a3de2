// An artist's model, as the importer library holds it, with one of its clips as a scene.
#pragma once

#include "platform/exchange/import_materials.h"

struct aiScene;

// Turns the source's root so that y is up, takes what the file says about its unit of length out of the nodes, and
// gives the metres in one unit.
double settle_space(aiScene &source);

// `clip`: the number of an animation of the source, or -1. The scene is empty before; false with `error` if the source
// is broken.
bool build_scene(aiScene const &source, int clip, double unit, IMPORT_TEXTURES &textures, VEX2_LOADER::VEX2 &scene,
                 IMPORT_NOTES &notes, KN::String &error);
