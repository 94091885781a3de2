#include "platform/conversion/animation_sampler.h"

#include "scene/scene.h"

#include <algorithm>
#include <cmath>

using namespace VEX2_LOADER;

namespace TOOLDATABUILDER {

namespace {

// `place` turned by `q`.
void turn(double const (&q)[4], double const (&place)[3], double (&out)[3])
{
    double const t[3] = {2 * (q[1] * place[2] - q[2] * place[1]), 2 * (q[2] * place[0] - q[0] * place[2]),
                         2 * (q[0] * place[1] - q[1] * place[0])};
    out[0] = place[0] + q[3] * t[0] + (q[1] * t[2] - q[2] * t[1]);
    out[1] = place[1] + q[3] * t[1] + (q[2] * t[0] - q[0] * t[2]);
    out[2] = place[2] + q[3] * t[2] + (q[0] * t[1] - q[1] * t[0]);
}

}  // namespace

ANIMATION_SAMPLER::ANIMATION_SAMPLER(VEX2 &sampled, KN_STD::VECTOR<ANIMATION_BONE> const &its_bones,
                                     KN_STD::VECTOR<PARTS> bone_parts)
    : scene(sampled), bones(its_bones), parts(std::move(bone_parts)), world(bones.size()), turns(bones.size())
{}

bool ANIMATION_SAMPLER::take_frame(double time, KN::String &fault)
{
    scene.seek(float(time));
    for (std::size_t i = 0; i < bones.size(); ++i)
        if (!take_world(i, time, fault))
            return false;
    for (std::size_t i = 0; i < bones.size(); ++i) {
        NODE_POSE const local = local_pose(i);
        double const(&t)[3] = local.translation, (&q)[4] = local.rotation;
        if (parts[i].translation)
            translations.push_back({float(t[0]), float(t[1]), float(t[2])});
        // A rotation and its negative are the same; neighbouring frames hold those that lie near each other.
        turns[i] = SUPPORT::on_side_of({float(q[0]), float(q[1]), float(q[2]), float(q[3])}, turns[i]);
        if (parts[i].rotation)
            rotations.push_back(SUPPORT::pack_quaternion(turns[i]));
    }
    return true;
}

bool ANIMATION_SAMPLER::take_world(std::size_t bone, double time, KN::String &fault)
{
    VEX2_MATRIX_NODE const &node = scene.hierarchy.nodes[bones[bone].node];
    NODE_POSE pose = pose_of(node.matrix);
    double const(&q)[4] = pose.rotation;
    double const place = pose.translation[0] + pose.translation[1] + pose.translation[2];
    double const size = std::abs(pose.scale[0]) + std::abs(pose.scale[1]) + std::abs(pose.scale[2]);
    if (!std::isfinite(float(place)) || !std::isfinite(float(size))) {
        fault = "node '" + KN::printable(KN::to_utf8(node.name)) + "' has no finite place at " + std::to_string(time) +
                " s; export the scene again";
        return false;
    }
    // A node that is shrunk to nothing has no turn; its bone keeps the last one.
    if (!std::isfinite(q[0] + q[1] + q[2] + q[3]))
        std::copy_n(world[bone].rotation, 4, pose.rotation);
    world[bone] = pose;

    if (bone == sizes.size())
        sizes.push_back(size);
    else if (resized < 0 && std::abs(size - sizes[bone]) > 0.05 * sizes[bone])
        resized = std::int32_t(bone);
    return true;
}

NODE_POSE ANIMATION_SAMPLER::local_pose(std::size_t bone) const
{
    if (bones[bone].parent < 0)
        return world[bone];
    NODE_POSE const &above = world[std::size_t(bones[bone].parent)];
    double const(&q)[4] = world[bone].rotation;
    double const p[4] = {-above.rotation[0], -above.rotation[1], -above.rotation[2], above.rotation[3]};
    double offset[3];
    for (int i = 0; i < 3; ++i)
        offset[i] = world[bone].translation[i] - above.translation[i];
    NODE_POSE local;
    turn(p, offset, local.translation);
    local.rotation[0] = p[3] * q[0] + p[0] * q[3] + p[1] * q[2] - p[2] * q[1];
    local.rotation[1] = p[3] * q[1] + p[1] * q[3] + p[2] * q[0] - p[0] * q[2];
    local.rotation[2] = p[3] * q[2] + p[2] * q[3] + p[0] * q[1] - p[1] * q[0];
    local.rotation[3] = p[3] * q[3] - p[0] * q[0] - p[1] * q[1] - p[2] * q[2];
    return local;
}

KN_STD::VECTOR<SUPPORT::MATRIX34> ANIMATION_SAMPLER::inverse_matrices() const
{
    KN_STD::VECTOR<SUPPORT::MATRIX34> all(world.size());
    for (std::size_t i = 0; i < world.size(); ++i) {
        double const(&q)[4] = world[i].rotation, (&t)[3] = world[i].translation;
        double const back[4] = {-q[0], -q[1], -q[2], q[3]};
        double const columns[4][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {-t[0], -t[1], -t[2]}};
        for (unsigned column = 0; column < 4; ++column) {
            double turned[3];
            turn(back, columns[column], turned);
            for (unsigned row = 0; row < 3; ++row)
                all[i][row][column] = float(turned[row]);
        }
    }
    return all;
}

}  // namespace TOOLDATABUILDER
