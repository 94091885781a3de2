// TEXTURE: a picture with its smaller versions, to be sampled at any place. Texture coordinates run from 0 to 1 over
// the picture, v downwards, and repeat. Const calls may run at once.
#pragma once

#include "platform/texture/mip.h"

namespace KESTREL {

struct TEXEL {
    float colour[3];  // linear light, or the parts of a direction as 0 to 1
    float alpha;
};

class TEXTURE {
public:
    // `opaque`: what the picture says about alpha is not meant.
    TEXTURE(PICTURE picture, CONTENT content, bool opaque);

    // Blended between the four nearest pixels of version `level`, 0 being the picture; colours by their alpha.
    TEXEL sample(float u, float v, unsigned level) const;
    // The picture's alpha alone, as sample(u, v, 0) has it.
    float alpha(float u, float v) const;

    // The version whose pixels are as large as `size` pixels of the picture.
    unsigned level_for(float size) const;
    unsigned width() const { return levels[0].width; }
    unsigned height() const { return levels[0].height; }

private:
    std::vector<PICTURE> levels;  // down to one pixel
    CONTENT content;
};

}  // namespace KESTREL
