// A skeleton and a clip of 300 bones, the size of a character with face and hands, and what the benchmarks measure
// with.
#pragma once

#include "support/animation/clip.h"
#include "support/animation/skeleton.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

namespace SUPPORT {

inline constexpr unsigned made_bones = 300;
inline constexpr unsigned made_frames = 240;  // eight seconds at 30 frames a second

struct MADE_ANIMATION {
    std::unique_ptr<SKELETON> skeleton;
    std::unique_ptr<ANIMATION_CLIP> clip;
};

// Every bone is animated in translation and rotation. Neighbouring frames are far apart, as frames of different
// clips are: a spherical blend between them takes the arc for nearly every bone. The same on every run.
MADE_ANIMATION make_animation();

template <class WORK>
double seconds_of(WORK work)
{
    auto const start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The least of several times: what the work takes when nothing disturbs it.
inline double least(std::vector<double> const &times) { return *std::min_element(times.begin(), times.end()); }

}  // namespace SUPPORT
