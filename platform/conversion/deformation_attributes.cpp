// The part of vertex_attributes.h that deforms: bones and morph targets.

#include "platform/conversion/model_skeleton.h"
#include "platform/conversion/vertex_attributes.h"

#include <algorithm>
#include <cmath>

using namespace VEX2_LOADER;

namespace TOOLDATABUILDER {

using GLTF::COMPONENT;
using GLTF::USE;

namespace {

constexpr std::size_t usual_influences = 4;
constexpr std::size_t most_influences = 32;
constexpr std::size_t most_joints = 65535;
// Bytes of all morph targets of a mesh, which are stored for every vertex: a bound on what a small file can ask for.
constexpr std::size_t most_morph_bytes = std::size_t(1) << 28;

struct WEIGHT {
    std::uint32_t joint;
    double weight;
};

// The influences of a vertex: each joint once, the strongest first, at most `most` of them, of sum 1. A vertex without
// any is bound to `home`. False if a weight is no finite number.
bool gather(VEX2_WEIGHTED_VERTEX const &vertex, MODEL_SKELETON const &skeleton, std::uint32_t home, std::size_t most,
            std::vector<WEIGHT> &weights)
{
    weights.clear();
    for (VEX2_INFLUENCE const &influence : vertex.influences) {
        if (!std::isfinite(influence.weight))
            return false;
        if (!(influence.weight > 0))
            continue;
        std::uint32_t const joint = skeleton.joint_of(influence.matrix_index);
        auto const known = std::ranges::find(weights, joint, &WEIGHT::joint);
        if (known != weights.end())
            known->weight += double(influence.weight);
        else if (weights.size() < 4 * most_influences)
            weights.push_back({joint, double(influence.weight)});
    }
    if (weights.empty())
        weights.push_back({home, 1});
    std::ranges::sort(weights, [](WEIGHT const &a, WEIGHT const &b) {
        return a.weight != b.weight ? a.weight > b.weight : a.joint < b.joint;
    });
    if (weights.size() > most)
        weights.resize(most);
    double sum = 0;
    for (WEIGHT const &weight : weights)
        sum += weight.weight;
    for (WEIGHT &weight : weights)
        weight.weight /= sum;
    // A share that a float cannot tell from nothing would name its joint in vain.
    while (weights.size() > 1 && weights.back().weight < 1e-7)
        weights.pop_back();
    return true;
}

}  // namespace

bool add_influences(ATTRIBUTE_JOB const &job, MODEL_SKELETON const &skeleton, bool all_influences,
                    GLTF::PRIMITIVE::ATTRIBUTES &attributes, KN::String &error)
{
    VEX2_WEIGHTED_MESH const &mesh = *job.source.weighted;
    if (skeleton.joint_count() > most_joints) {
        error =
            "mesh '" + job.source.name + "': the model hangs on more than " + std::to_string(most_joints) + " nodes";
        return false;
    }
    std::uint32_t const home = skeleton.home_of(mesh);
    std::size_t const most = all_influences ? most_influences : usual_influences;
    std::vector<WEIGHT> weights;
    std::size_t widest = 1;
    for (std::uint32_t v = 0; v < mesh.vertices.count; ++v) {
        if (job.number_of[v] == unused_vertex)
            continue;
        if (!gather(mesh.vertices[v], skeleton, home, most, weights)) {
            error = "mesh '" + job.source.name + "': a weight of vertex " + std::to_string(v) +
                    " is no finite number; export the scene again";
            return false;
        }
        widest = std::max(widest, weights.size());
    }

    bool const small = skeleton.joint_count() <= 256;
    for (std::size_t set = 0; set * 4 < widest; ++set) {
        GLTF::BUFFER &buffer = job.document.buffer;
        int const joint_array = buffer.add(small ? COMPONENT::U8 : COMPONENT::U16, 4, job.count, USE::VERTICES);
        int const weight_array = buffer.add(COMPONENT::F32, 4, job.count, USE::VERTICES);
        if (joint_array < 0 || weight_array < 0)
            return true;
        for (std::uint32_t v = 0; v < mesh.vertices.count; ++v) {
            std::size_t const i = job.number_of[v];
            if (i == unused_vertex)
                continue;
            gather(mesh.vertices[v], skeleton, home, most, weights);
            for (std::size_t k = 0; k < 4 && set * 4 + k < weights.size(); ++k) {
                WEIGHT const &weight = weights[set * 4 + k];
                if (small)
                    buffer.at<std::uint8_t>(joint_array)[i * 4 + k] = std::uint8_t(weight.joint);
                else
                    buffer.at<std::uint16_t>(joint_array)[i * 4 + k] = std::uint16_t(weight.joint);
                buffer.at<float>(weight_array)[i * 4 + k] = float(weight.weight);
            }
        }
        attributes.emplace_back("JOINTS_" + std::to_string(set), joint_array);
        attributes.emplace_back("WEIGHTS_" + std::to_string(set), weight_array);
    }
    return true;
}

bool add_morph_targets(ATTRIBUTE_JOB const &job, std::vector<GLTF::PRIMITIVE::ATTRIBUTES> &targets, GLTF::MESH &mesh,
                       KN::String &error)
{
    VEX2_MORPH_MESH const &morph = *job.source.morph;
    std::size_t const count = morph.targets.count;
    if (count > most_morph_bytes / sizeof(VEX2_VECTOR) / job.count) {
        error = "mesh '" + job.source.name + "': " + std::to_string(count) + " morph targets over " +
                std::to_string(job.count) + " vertices are too much; split the mesh";
        return false;
    }
    std::vector<int> arrays(count);
    for (int &array : arrays) {
        array = job.document.buffer.add(COMPONENT::F32, 3, job.count, USE::VERTICES, true);
        if (array < 0)
            return true;
    }
    for (std::uint32_t v = 0; v < morph.vertices.count; ++v) {
        std::size_t const i = job.number_of[v];
        for (VEX2_MORPH_DELTA const &delta : morph.vertices[v].deltas) {
            if (i == unused_vertex || delta.target >= count)
                continue;
            VEX2_VECTOR const offset = job.source.placement.displace(delta.offset);
            VEX2_VECTOR &to = job.document.buffer.at<VEX2_VECTOR>(arrays[delta.target])[i];
            to = to + offset;
            if (!std::isfinite(to.x + to.y + to.z)) {
                error = "mesh '" + job.source.name + "': a morph offset of vertex " + std::to_string(v) +
                        " is no finite number; export the scene again";
                return false;
            }
        }
    }
    for (std::size_t t = 0; t < count; ++t) {
        VEX2_FLOAT_ATTRIBUTE const &target = morph.targets[t];
        float const weight = target.value ? target.value->value() : 0;
        targets.push_back({{"POSITION", arrays[t]}});
        mesh.weights.push_back(std::isfinite(weight) ? weight : 0);
        mesh.target_names.push_back(KN::to_utf8(target.name));
    }
    return true;
}

}  // namespace TOOLDATABUILDER
