// FILM: what a frame leaves: for each pixel of the viewport its colour, its normal and its height.
#pragma once

#include "Plugins/Vx2/host/engine.h"
#include "platform/texture/picture.h"

namespace KESTREL {

// What is seen at the samples of one pixel, summed up.
struct PIXEL_SUM {
    unsigned samples = 0, hits = 0;
    float colour[3] = {};  // linear light
    float normal[3] = {};  // in view space, each of length 1
    float height = 0;      // 0 to 1 each
};

class FILM {
public:
    // Empty pixels hold what `clear` says.
    void start(unsigned width, unsigned height, VIEW_CLEAR const &clear);
    // Several threads at once, each with pixels of its own.
    void put(unsigned x, unsigned y, PIXEL_SUM const &sum);
    // Once all pixels are there: those of which nothing is covered take the colour of the nearest covered one, so that
    // filters which look beyond an edge find no foreign colour.
    void spread_colours();

    unsigned width() const { return pictures[0].width; }
    unsigned height() const { return pictures[0].height; }
    // By CAPTURE_REQUEST::KIND.
    PICTURE const &picture(int kind) const { return pictures[kind]; }

private:
    PICTURE pictures[3];
    VIEW_CLEAR empty = {};
};

}  // namespace KESTREL
