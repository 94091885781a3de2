#include "support/animation/clip.h"

#include <algorithm>
#include <cmath>

namespace SUPPORT {

namespace {

VECTOR2 in_plane(VECTOR3 const &v) { return {v.x, v.z}; }

}  // namespace

void ANIMATION_CLIP::summarise()
{
    ANIMATION_FRAME const &first = *frames[0];
    ANIMATION_FRAME const &last = *frames[frames.size() - 1];
    first_heading = first.heading;

    VECTOR2 const move = in_plane(last.root_position) - in_plane(first.root_position);
    float const squared = dot(move, move);
    if (squared > 0) {
        move_length = std::sqrt(squared);
        move_direction = {move.x / move_length, move.y / move_length};
    }
    if (frames.size() > 1) {
        float const wanted = std::min(fps - 1, float(frames.size() - 1));
        std::size_t const after_a_second = wanted >= 0 ? std::size_t(wanted) : 0;  // rates below 1, and no number
        VECTOR2 const way = in_plane(frames[after_a_second]->root_position) - in_plane(first.root_position);
        first_second_length = std::sqrt(dot(way, way));
    }
    speed = (options & ANIMATION_SPEED_OF_SECOND) != 0 ? first_second_length : move_length / duration;
    height_change = last.root_position.y - first.root_position.y;
    height_rate = height_change / duration;

    // The frames say which way round the turn went.
    turn = angle16_to_radians(ANGLE16(last.heading - first.heading));
    std::int64_t sum = 0;
    for (std::size_t i = 1; i < frames.size(); ++i)
        sum += angle16_difference(frames[i]->heading, frames[i - 1]->heading);
    constexpr float full_turn = 6.2831855f;
    if (turn > 0 && sum < 0)
        turn -= full_turn;
    else if (turn < 0 && sum > 0)
        turn += full_turn;
    turn_rate = turn / duration;
}

}  // namespace SUPPORT
