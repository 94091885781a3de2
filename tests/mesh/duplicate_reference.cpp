#include "tests/mesh/duplicate_reference.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace VEX2_LOADER {

namespace {

using FLOATS = std::vector<float>;

float scale_of(int digits)
{
    return digits < 0 ? 1.0f / float(std::pow(10.0, -digits)) : float(std::pow(10.0, digits));
}

float snap(float value, int digits)
{
    float s = value * scale_of(digits);
    if (s > 0.0f)
        s += 0.5f;
    else
        s -= 0.5f;
    bool const fits = s >= -2147483648.0f && s < 2147483648.0f;
    std::int32_t const truncated = fits ? std::int32_t(s) : INT32_MIN;
    return float(truncated) * (1.0f / scale_of(digits));
}

// All floats that are compared, attribute by attribute.
FLOATS snapped(VEX2_VERTEX const &v, DUPLICATE_OPTIONS const &options)
{
    FLOATS all;
    auto const append = [&all](bool on, int digits, std::initializer_list<float> values) {
        for (float const value : values)
            if (on)
                all.push_back(snap(value, digits));
    };
    append(options.compare_positions, options.position_digits, {v.position.x, v.position.y, v.position.z});
    append(options.compare_normals, options.normal_digits, {v.normal.x, v.normal.y, v.normal.z});
    append(options.compare_colours, options.colour_digits,
           {v.colour.red, v.colour.green, v.colour.blue, v.colour.alpha});
    for (VEX2_VECTOR const &uvw : v.uvws)
        append(options.compare_uvws, options.uvw_digits, {uvw.x, uvw.y, uvw.z});
    return all;
}

float dot(VEX2_VECTOR const &a, VEX2_VECTOR const &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

struct ENTRY {
    unsigned index;
    float key;
};

void sort_by_frame(std::vector<ENTRY> &bucket, VEX2_MORPH_MESH const &mesh)
{
    VEX2_VERTEX const &first = mesh.vertices[bucket[0].index];
    for (unsigned i = 1; i < bucket.size(); ++i) {
        VEX2_VERTEX const &other = mesh.vertices[bucket[i].index];
        if (first.frames.empty() || other.frames.empty())
            continue;
        VEX2_VECTOR const n = first.normal, b = first.frames[0].binormal;
        VEX2_VECTOR const side{n.y * b.z - n.z * b.y, n.z * b.x - n.x * b.z, n.x * b.y - n.y * b.x};
        bucket[i].key = dot(side, other.frames[0].binormal);
    }
    for (bool swapped = true; swapped;) {
        swapped = false;
        for (unsigned i = 1; i < bucket.size(); ++i)
            if (bucket[i - 1].key > bucket[i].key) {
                std::swap(bucket[i - 1], bucket[i]);
                swapped = true;
            }
    }
}

bool close(VEX2_VERTEX const &a, VEX2_VERTEX const &b, float cosine)
{
    for (unsigned k = 0; k < a.frames.count && k < b.frames.count; ++k)
        if (!(dot(a.frames[k].binormal, b.frames[k].binormal) >= cosine &&
              dot(a.frames[k].tangent, b.frames[k].tangent) >= cosine))
            return false;
    return true;
}

}  // namespace

MERGED merge_by_the_letter(VEX2_MORPH_MESH const &mesh, DUPLICATE_OPTIONS const &options)
{
    MERGED merged;
    for (VEX2_POLYGON_SET const &section : mesh.sections)
        for (VEX2_TRIANGLE const &triangle : section.triangles)
            merged.corners.insert(merged.corners.end(), triangle.vertices, triangle.vertices + 3);
    std::vector<unsigned> const old_corners = merged.corners;

    std::vector<std::vector<ENTRY>> slots(std::size_t(mesh.vertices.count) * 4 + 1);
    for (unsigned i = 0; i < mesh.vertices.count; ++i) {
        VEX2_VERTEX const &vertex = mesh.vertices[i];
        FLOATS const floats = snapped(vertex, options);
        std::uint32_t hash = 0;
        for (float const value : floats)
            hash ^= std::bit_cast<std::uint32_t>(value);
        for (std::size_t slot = hash % slots.size();; slot = (slot + 1) % slots.size()) {
            if (!slots[slot].empty()) {
                VEX2_VERTEX const &key = mesh.vertices[slots[slot][0].index];
                if (key.uvws.count != vertex.uvws.count || snapped(key, options) != floats)
                    continue;
            }
            slots[slot].push_back({i, 0});
            break;
        }
    }

    bool const split = options.split_by_frames && mesh.vertices.count != 0 && !mesh.vertices[0].frames.empty();
    for (std::vector<ENTRY> &bucket : slots) {
        if (split && bucket.size() > 1)
            sort_by_frame(bucket, mesh);
        unsigned leader = 0;
        for (unsigned i = 0; i < bucket.size(); ++i) {
            VEX2_VERTEX const &vertex = mesh.vertices[bucket[i].index];
            if (i == 0 || (split && !close(mesh.vertices[bucket[leader].index], vertex, options.frame_cosine))) {
                leader = i;
                merged.kept.push_back(bucket[i].index);
            }
            for (std::size_t corner = 0; corner < old_corners.size(); ++corner)
                if (old_corners[corner] == bucket[i].index)
                    merged.corners[corner] = unsigned(merged.kept.size()) - 1;
        }
    }
    return merged;
}

}  // namespace VEX2_LOADER
