#include "mesh/sampled_frames.h"

#include "foundation/messages.h"
#include "mesh/triangle_frame.h"

#include <algorithm>

namespace VEX2_LOADER {

namespace {

constexpr float sample_step = 0.016666668f;  // seconds

// Gives a channel's position back when it goes.
class SOUGHT_CHANNEL {
public:
    explicit SOUGHT_CHANNEL(VEX2_VECTOR_CHANNEL *source)
        : channel(source), key(source ? source->key : 0), fraction(source ? source->fraction : 0)
    {}
    ~SOUGHT_CHANNEL()
    {
        if (channel != nullptr) {
            channel->key = key;
            channel->fraction = fraction;
        }
    }
    SOUGHT_CHANNEL(SOUGHT_CHANNEL const &) = delete;
    SOUGHT_CHANNEL &operator=(SOUGHT_CHANNEL const &) = delete;

    VEX2_VECTOR value_at(float time)
    {
        if (channel == nullptr)
            return {};
        channel->seek(time);
        return channel->value();
    }

private:
    VEX2_VECTOR_CHANNEL *channel;
    std::uint32_t key;
    float fraction;
};

class CORNER_TRACK {
public:
    CORNER_TRACK(VEX2_ANIMATED_VERTEX const &vertex, std::uint32_t set)
        : position(vertex.position), uvw(set < vertex.uvws.count ? vertex.uvws[set].get() : nullptr)
    {}
    FRAME_CORNER at(float time)
    {
        VEX2_VECTOR const coordinates = uvw.value_at(time);
        return {position.value_at(time), coordinates.x, coordinates.y};
    }

private:
    SOUGHT_CHANNEL position;
    SOUGHT_CHANNEL uvw;
};

struct TIME_SPAN {
    float start = 0;
    float end = 0;
};

// From the first key of the three UVW channels to the last; 0 to 0 if they have none.
TIME_SPAN uvw_time_span(VEX2_ANIMATED_VERTEX const *corners, std::uint32_t set)
{
    TIME_SPAN span;
    bool found = false;
    for (int i = 0; i < 3; ++i) {
        VEX2_ANIMATED_VERTEX const &corner = corners[i];
        if (set >= corner.uvws.count || corner.uvws[set] == nullptr || corner.uvws[set]->times.empty())
            continue;
        KN::DynamicArray<float> const &times = corner.uvws[set]->times;
        span.start = found ? std::min(span.start, times[0]) : times[0];
        span.end = found ? std::max(span.end, times.back()) : times.back();
        found = true;
    }
    return span;
}

bool nearly_same(TRIANGLE_FRAME const &frame, VEX2_TANGENT_FRAME const &stored)
{
    double const values[6] = {stored.binormal.x, stored.binormal.y, stored.binormal.z,
                              stored.tangent.x,  stored.tangent.y,  stored.tangent.z};
    for (int axis = 0; axis < 3; ++axis)
        if (!(std::abs(frame.binormal[axis] - values[axis]) < 0.0001) ||
            !(std::abs(frame.tangent[axis] - values[3 + axis]) < 0.0001))
            return false;
    return true;
}

// The frames of the triangle whose vertices stand at `corners`, a key where the frame has changed.
void sample_triangle(VEX2_ANIMATED_VERTEX const *corners, std::uint32_t set, SAMPLE_BUDGET &budget,
                     VEX2_TANGENT_FRAME_CHANNEL &channel)
{
    CORNER_TRACK a(corners[0], set);
    CORNER_TRACK b(corners[1], set);
    CORNER_TRACK c(corners[2], set);
    auto const sample = [&](float time) {
        TRIANGLE_FRAME const frame = triangle_frame_of(a.at(time), b.at(time), c.at(time));
        if (channel.values.empty() || !nearly_same(frame, channel.values.back())) {
            append_key(channel, time, frame.narrow());
            budget.keys -= budget.keys != 0;
        }
    };

    TIME_SPAN const span = uvw_time_span(corners, set);
    for (float time = span.start; time < span.end && budget.samples != 0 && budget.keys != 0;) {
        sample(time);
        --budget.samples;
        float const next = time + sample_step;
        if (next == time)
            break;  // so far from zero that a step is less than the distance between two floats
        time = next;
    }
    sample(span.end);
}

template <class CHANNEL>
std::uint64_t bytes_of(VEX2_OWNED<CHANNEL> const &channel)
{
    if (channel == nullptr)
        return 0;
    return sizeof(CHANNEL) + channel->times.count * sizeof(float) +
           channel->values.count * sizeof(channel->values.data[0]);
}

std::uint64_t bytes_of(VEX2_ANIMATED_VERTEX const &vertex)
{
    std::uint64_t sum = sizeof(vertex) + bytes_of(vertex.position) + bytes_of(vertex.normal) + bytes_of(vertex.colour);
    for (auto const &uvw : vertex.uvws)
        sum += sizeof(uvw) + bytes_of(uvw);
    for (auto const &frame : vertex.frames)
        sum += sizeof(frame) + bytes_of(frame);
    return sum;
}

void warn(VEX2_ANIMATED_MESH const &mesh, char const *what)
{
    KN::message(KN::MESSAGE_WARNING, "mesh '" + KN::printable(KN::to_utf8(mesh.name)) + "': " + what);
}

}  // namespace

bool unshare_vertices(VEX2_ANIMATED_MESH &mesh, KN::DynamicArray<POLYGON_SETS *> const &users)
{
    std::uint32_t corner_count = 0;
    bool shared = false;
    KN::DynamicArray<std::uint32_t> uses;
    uses.resize(mesh.vertices.count);
    for (VEX2_POLYGON_SET const &section : mesh.sections)
        for (VEX2_TRIANGLE const &triangle : section.triangles)
            for (std::uint32_t const corner : triangle.vertices) {
                shared |= corner != corner_count++;
                ++uses[corner];
            }
    if (!shared && corner_count == mesh.vertices.count)
        return true;

    std::uint64_t present = 0;
    std::uint64_t copied = 0;
    for (std::uint32_t i = 0; i < mesh.vertices.count; ++i) {
        std::uint64_t const bytes = bytes_of(mesh.vertices[i]);
        present += bytes;
        copied += uses[i] > 1 ? bytes * (uses[i] - 1) : 0;
    }
    if (copied > (std::uint64_t(64) << 20) + 32 * present) {
        warn(mesh, "its triangles share animated vertices, and vertices of their own would take too much memory; it "
                   "keeps the tangent frames of its file");
        return false;
    }

    KN::DynamicArray<VEX2_ANIMATED_VERTEX> own;
    own.reserve(corner_count + mesh.vertices.count);
    KN::DynamicArray<std::uint32_t> place;  // of each old vertex, the first one if it is copied
    for (std::uint32_t i = 0; i < mesh.vertices.count; ++i)
        place.append(unused_vertex);
    auto const take = [&](std::uint32_t old) {
        if (place[old] != unused_vertex) {
            own.append(own[place[old]]);
        } else {
            place[old] = own.count;
            own.append(std::move(mesh.vertices[old]));
        }
    };
    for (VEX2_POLYGON_SET &section : mesh.sections)
        for (VEX2_TRIANGLE &triangle : section.triangles)
            for (std::uint32_t &corner : triangle.vertices) {
                take(corner);
                corner = own.count - 1;
            }
    for (std::uint32_t old = 0; old < mesh.vertices.count; ++old)
        if (place[old] == unused_vertex)
            take(old);
    for (POLYGON_SETS *sections : users)
        if (sections != &mesh.sections)
            renumber(*sections, place);
    mesh.vertices.swap(own);
    return true;
}

void build_sampled_frames(VEX2_ANIMATED_MESH &mesh, std::uint32_t sets, SAMPLE_BUDGET &budget)
{
    for (std::uint32_t set = 0; set < sets; ++set) {
        VEX2_ANIMATED_VERTEX *corners = mesh.vertices.data;
        for (std::uint32_t left = mesh.triangle_count(); left != 0; --left, corners += 3) {
            VEX2_OWNED<VEX2_TANGENT_FRAME_CHANNEL> channel(new VEX2_TANGENT_FRAME_CHANNEL);
            sample_triangle(corners, set, budget, *channel);
            corners[0].frames[set] = channel;
            corners[1].frames[set] = channel;
            corners[2].frames[set] = std::move(channel);
        }
    }
    if ((budget.samples == 0 || budget.keys == 0) && !budget.reported) {
        budget.reported = true;
        warn(mesh, "its tangent frames change too often over time to be kept; from here on the triangles of animated "
                   "meshes get the frame at the end of their time alone");
    }
}

}  // namespace VEX2_LOADER
