// Smaller versions of a picture, each half the size of the one before.
#pragma once

#include "platform/texture/picture.h"

namespace KESTREL {

// How pixels are averaged.
enum class CONTENT {
    COLOUR,  // in linear light; a pixel counts by its alpha, so that what is transparent leaves no fringe
    NORMAL,  // as directions, of length 1 again afterwards
    VALUES,  // each byte for itself
};

// Half the width and half the height, 1 at least, rounded down; every pixel counts.
PICTURE half_of(PICTURE const &picture, CONTENT content);

}  // namespace KESTREL
