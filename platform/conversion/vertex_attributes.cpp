#include "platform/conversion/vertex_attributes.h"

#include "foundation/messages.h"
#include "platform/gltf/axes.h"

#include <algorithm>
#include <cmath>

using namespace VEX2_LOADER;

namespace TOOLDATABUILDER {

using GLTF::BUFFER;
using GLTF::COMPONENT;
using GLTF::USE;

namespace {

constexpr float least_square = 1e-12f;  // squared length from which a direction is one

float dot(VEX2_VECTOR const &a, VEX2_VECTOR const &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

VEX2_VECTOR cross(VEX2_VECTOR const &a, VEX2_VECTOR const &b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

VEX2_VECTOR plus(VEX2_VECTOR const &a, VEX2_VECTOR const &b, float factor)
{
    return {a.x + b.x * factor, a.y + b.y * factor, a.z + b.z * factor};
}

// False, with `v` as it was, for a vector without direction.
bool normalise(VEX2_VECTOR &v)
{
    float const square = dot(v, v);
    if (!(square > least_square) || !std::isfinite(square))
        return false;
    float const factor = 1 / std::sqrt(square);
    v = {v.x * factor, v.y * factor, v.z * factor};
    return true;
}

// The sum is not finite exactly if a part is not, save for sums that overflow: none of them belongs to a model.
bool is_finite(VEX2_VECTOR const &v) { return std::isfinite(v.x + v.y + v.z); }

KN::String fault_text(MESH_SOURCE const &source, std::uint32_t vertex, char const *what)
{
    return "mesh '" + source.name + "': the " + what + " of vertex " + std::to_string(vertex) +
           " is no finite number; export the scene again";
}

// For vertices whose normal is zero: the sum of their triangles' normals, weighted by area.
void mend_normals(ATTRIBUTE_JOB const &job, VEX2_VECTOR const *positions, VEX2_VECTOR *normals)
{
    std::vector<VEX2_VECTOR> sums(job.count);
    for (auto const &indices : job.indices) {
        for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
            VEX2_VECTOR const &corner = positions[indices[i]];
            VEX2_VECTOR const face =
                cross(plus(positions[indices[i + 1]], corner, -1), plus(positions[indices[i + 2]], corner, -1));
            for (std::size_t c = 0; c < 3; ++c)
                sums[indices[i + c]] = sums[indices[i + c]] + face;
        }
    }
    for (std::size_t i = 0; i < sums.size(); ++i) {
        if (dot(normals[i], normals[i]) != 0)
            continue;
        double const size = std::sqrt(double(sums[i].x) * double(sums[i].x) + double(sums[i].y) * double(sums[i].y) +
                                      double(sums[i].z) * double(sums[i].z));
        normals[i] = size > 0 && std::isfinite(size)
                         ? VEX2_VECTOR{float(double(sums[i].x) / size), float(double(sums[i].y) / size),
                                       float(double(sums[i].z) / size)}
                         : VEX2_VECTOR{0, 1, 0};
    }
}

// Any direction across the normal.
VEX2_VECTOR some_tangent(VEX2_VECTOR const &normal)
{
    VEX2_VECTOR const axis = std::abs(normal.x) < 0.7f ? VEX2_VECTOR{1, 0, 0} : VEX2_VECTOR{0, 1, 0};
    VEX2_VECTOR tangent = plus(axis, normal, -dot(axis, normal));
    normalise(tangent);
    return tangent;
}

// The tangent across the normal that the frame gives, with its handedness; false if it gives none.
bool tangent_of(VEX2_TANGENT_FRAME const &frame, VEX2_VECTOR const &normal, VEX2_VECTOR4 &out)
{
    VEX2_VECTOR tangent = frame.tangent, binormal = frame.binormal;
    bool usable = normalise(tangent);
    if (usable) {
        tangent = plus(tangent, normal, -dot(tangent, normal));
        usable = dot(tangent, tangent) > 1e-4f && normalise(tangent);
    }
    if (!usable) {
        tangent = normalise(binormal) ? cross(binormal, normal) : VEX2_VECTOR();
        if (!(dot(tangent, tangent) > 1e-4f) || !normalise(tangent))
            return false;
    }
    float const n[3] = {normal.x, normal.y, normal.z}, t[3] = {tangent.x, tangent.y, tangent.z};
    float const b[3] = {binormal.x, binormal.y, binormal.z};
    out = {tangent.x, tangent.y, tangent.z, GLTF::handedness(n, t, b)};
    return true;
}

}  // namespace

bool add_positions_and_normals(ATTRIBUTE_JOB const &job, GLTF::PRIMITIVE::ATTRIBUTES &attributes, KN::String &error)
{
    BUFFER &buffer = job.document.buffer;
    MESH_SOURCE const &source = job.source;
    int const position_array = buffer.add(COMPONENT::F32, 3, job.count, USE::VERTICES, true);
    int const normal_array = buffer.add(COMPONENT::F32, 3, job.count, USE::VERTICES);
    if (position_array < 0 || normal_array < 0)
        return true;
    VEX2_VECTOR *const positions = buffer.at<VEX2_VECTOR>(position_array);
    VEX2_VECTOR *const normals = buffer.at<VEX2_VECTOR>(normal_array);

    std::size_t missing = 0;
    for (std::uint32_t v = 0; v < source.vertex_count(); ++v) {
        std::uint32_t const i = job.number_of[v];
        if (i == unused_vertex)
            continue;
        VEX2_VERTEX const &vertex = source.vertex(v);
        VEX2_VECTOR position = vertex.position, normal = vertex.normal;
        if (source.weighted) {
            position = source.weighted->vertices[v].bind_position;
            normal = source.weighted->vertices[v].bind_normal;
        }
        positions[i] = source.placement.place(position);
        normal = source.placement.turn_normal(normal);
        if (!is_finite(positions[i]) || !is_finite(normal)) {
            error = fault_text(source, v, is_finite(normal) ? "position" : "normal");
            return false;
        }
        if (!normalise(normal)) {
            normal = {};
            ++missing;
        }
        normals[i] = normal;
    }
    if (missing != 0) {
        mend_normals(job, positions, normals);
        KN::message(KN::MESSAGE_WARNING, "mesh '" + source.name + "': " + std::to_string(missing) +
                                             " vertices have no normal; it is taken from their triangles");
    }
    attributes.emplace_back("POSITION", position_array);
    attributes.emplace_back("NORMAL", normal_array);
    return true;
}

bool add_uvs(ATTRIBUTE_JOB const &job, std::uint32_t least_sets, GLTF::PRIMITIVE::ATTRIBUTES &attributes,
             KN::String &error)
{
    std::uint32_t const sets = std::max(job.source.vertex(0).uvws.count, least_sets);
    for (std::uint32_t set = 0; set < sets && set < most_uv_sets; ++set) {
        int const array = job.document.buffer.add(COMPONENT::F32, 2, job.count, USE::VERTICES);
        if (array < 0)
            return true;
        VEX2_VECTOR2 *const to = job.document.buffer.at<VEX2_VECTOR2>(array);
        for (std::uint32_t v = 0; v < job.source.vertex_count(); ++v) {
            if (job.number_of[v] == unused_vertex)
                continue;
            VEX2_VERTEX const &vertex = job.source.vertex(v);
            VEX2_VECTOR const uvw = set < vertex.uvws.count ? vertex.uvws[set] : VEX2_VECTOR{};
            if (!std::isfinite(uvw.x + uvw.y)) {
                error = fault_text(job.source, v, "texture coordinate");
                return false;
            }
            to[job.number_of[v]] = {uvw.x, GLTF::turned_v(uvw.y)};
        }
        attributes.emplace_back("TEXCOORD_" + std::to_string(set), array);
    }
    return true;
}

bool add_colours(ATTRIBUTE_JOB const &job, GLTF::PRIMITIVE::ATTRIBUTES &attributes, KN::String &error)
{
    if (job.source.mesh.colour_flag == 0)
        return true;
    int const array = job.document.buffer.add(COMPONENT::U16, 4, job.count, USE::VERTICES, false, true);
    if (array < 0)
        return true;
    for (std::uint32_t v = 0; v < job.source.vertex_count(); ++v) {
        if (job.number_of[v] == unused_vertex)
            continue;
        std::uint16_t *to = job.document.buffer.at<std::uint16_t>(array) + std::size_t(job.number_of[v]) * 4;
        VEX2_COLOUR const &colour = job.source.vertex(v).colour;
        for (float const part : {colour.red, colour.green, colour.blue, colour.alpha}) {
            if (!std::isfinite(part)) {
                error = fault_text(job.source, v, "colour");
                return false;
            }
            *to++ = std::uint16_t((part < 0 ? 0 : part > 1 ? 1 : part) * 65535 + 0.5f);
        }
    }
    attributes.emplace_back("COLOR_0", array);
    return true;
}

void add_tangents(ATTRIBUTE_JOB const &job, GLTF::PRIMITIVE::ATTRIBUTES &attributes)
{
    MESH_SOURCE const &source = job.source;
    if (attributes.size() < 2 || source.vertex(0).frames.empty())
        return;
    int const array = job.document.buffer.add(COMPONENT::F32, 4, job.count, USE::VERTICES);
    if (array < 0)
        return;
    VEX2_VECTOR const *const normals = job.document.buffer.at<VEX2_VECTOR>(attributes[1].second);
    VEX2_VECTOR4 *const tangents = job.document.buffer.at<VEX2_VECTOR4>(array);
    std::size_t usable = 0;
    for (std::uint32_t v = 0; v < source.vertex_count(); ++v) {
        std::uint32_t const i = job.number_of[v];
        if (i == unused_vertex)
            continue;
        VEX2_VERTEX const &vertex = source.vertex(v);
        VEX2_TANGENT_FRAME frame = vertex.frames.empty() ? VEX2_TANGENT_FRAME() : vertex.frames[0];
        frame = {source.placement.turn(frame.binormal), source.placement.turn(frame.tangent)};
        if (tangent_of(frame, normals[i], tangents[i])) {
            ++usable;
        } else {
            VEX2_VECTOR const tangent = some_tangent(normals[i]);
            tangents[i] = {tangent.x, tangent.y, tangent.z, 1};
        }
    }
    if (usable == 0)
        job.document.buffer.drop_last();
    else
        attributes.emplace_back("TANGENT", array);
}

}  // namespace TOOLDATABUILDER
