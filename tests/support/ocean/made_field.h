// Wave field files put together by hand: a writer of ours would share the reader's mistakes.
#pragma once

#include "foundation/buffered_stream.h"
#include "support/ocean/ocean_wave_field.h"

#include <cstring>
#include <string>
#include <vector>

namespace SUPPORT {

using BYTES = std::string;

template <class T>
BYTES raw(T value)
{
    BYTES bytes(sizeof value, 0);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}
inline BYTES u32(std::uint32_t value) { return raw(value); }
inline BYTES f32(float value) { return raw(value); }

inline BYTES plane(std::uint32_t side, BYTES const &cells) { return u32(side) + u32(side) + cells; }

// Planes have 2 x 2 cells, or those of `displacements` none.
inline BYTES made_frame(BYTES const &heights, BYTES const &slopes, BYTES const &displacements)
{
    return plane(2, heights) + plane(2, slopes) + plane(displacements.empty() ? 0 : 2, displacements) + u32(0) + u32(0);
}

// 62 bytes: cells of 1 metre, two frames in a loop of 2 seconds. A byte is about a metre of height, 16 units of a slope
// above 32768 - 2048 along x, 32 above 32768 - 4096 along y, and 0.1 metres of displacement above -10.
inline BYTES made_header(std::uint32_t frame_count = 2)
{
    BYTES bytes = u32(0x12345678) + u32(1) + u32(2) + f32(2) + f32(2) + u32(frame_count) + BYTES("\1\1", 2);
    bytes += f32(0) + f32(255);
    for (int slope : {30720, 28672, 30720 + 16 * 255, 28672 + 32 * 255})
        bytes += raw(std::uint16_t(slope));
    for (float displacement : {-10.0f, -10.0f, 15.5f, 15.5f})
        bytes += f32(displacement);
    return bytes + u32(frame_count);
}

inline BYTES made_file()
{
    return made_header() +
           made_frame({10, 20, 40, 80}, {0, 0, 64, 0, 0, 64, 64, 64}, {0, 100, 10, 110, 20, 120, 40, 127}) +
           made_frame({20, 30, 50, 90}, {0, 0, 64, 0, 0, 64, 127, 127}, {10, 100, 20, 110, 30, 120, 50, 127});
}

inline bool read_bytes(OCEAN_WAVE_FIELD &field, BYTES const &bytes, unsigned window = 7)
{
    std::vector<char> const exact(bytes.begin(), bytes.end());  // a byte too many is seen by the sanitizer
    KN::BufferedMemory stream(exact.data(), exact.size(), window);
    return field.read(stream);
}

}  // namespace SUPPORT
