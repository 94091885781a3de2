#include "platform/exchange/import_hierarchy.h"

#include "scene/scene.h"

#include <assimp/scene.h>
#include <cmath>
#include <optional>

using namespace VEX2_LOADER;

namespace {

constexpr float lead_in_seconds = 1.0f / 30;

VEX2_VECTOR narrow(POSE_VECTOR const &v) { return {float(v.x), float(v.y), float(v.z)}; }

VEX2_QUATERNION narrow(POSE_QUATERNION q)
{
    q.Normalize();
    VEX2_QUATERNION const narrowed = {float(q.x), float(q.y), float(q.z), float(q.w)};
    bool const finite = std::isfinite(q.x) && std::isfinite(q.y) && std::isfinite(q.z) && std::isfinite(q.w);
    return finite ? narrowed : VEX2_QUATERNION{};
}

POSE_VECTOR wide(aiVector3D const &v) { return {v.x, v.y, v.z}; }
POSE_VECTOR wide(VEX2_VECTOR const &v) { return {v.x, v.y, v.z}; }

bool is_one(VEX2_VECTOR const &scale)
{
    auto const one = [](float s) { return std::abs(s - 1) <= 1e-6f; };
    return one(scale.x) && one(scale.y) && one(scale.z);
}

template <class CHANNEL, class TRACK>
CHANNEL *channel_of(TRACK const &track)
{
    CHANNEL *const channel = new CHANNEL;
    for (std::size_t i = 0; i < track.times.size(); ++i)
        append_key(*channel, track.times[i], track.values[i]);
    return channel;
}

}  // namespace

template <class VALUE>
void IMPORT_HIERARCHY::TRACK<VALUE>::add(double time, VALUE const &value)
{
    float const at = float(time);
    if (std::isfinite(at) && (times.empty() || at > times.back())) {
        times.push_back(at);
        values.push_back(value);
    }
}

// `value` at `start`, what the track holds from `begin` on.
template <class VALUE>
void IMPORT_HIERARCHY::TRACK<VALUE>::lead_in(float start, float begin, VALUE const &value)
{
    if (times.size() == 1)
        times[0] = begin;
    if (times[0] > begin) {
        times.insert(times.begin(), begin);
        values.insert(values.begin(), VALUE(values.front()));
    }
    times.insert(times.begin(), start);
    values.insert(values.begin(), value);
}

POSE IMPORT_HIERARCHY::NODE::begin() const
{
    VEX2_QUATERNION const &q = rotation.values.front();
    return {wide(translation.values.front()), POSE_QUATERNION(q.w, q.x, q.y, q.z), wide(scale.values.front())};
}

IMPORT_HIERARCHY::IMPORT_HIERARCHY(aiScene const &source, aiAnimation const *clip, double metres, IMPORT_NOTES &notes)
    : unit(metres)
{
    take_tree(source, notes);
    take_clip(clip, notes);
    start_in(bound_poses(source, notes));
}

void IMPORT_HIERARCHY::take_tree(aiScene const &source, IMPORT_NOTES &notes)
{
    struct VISIT {
        aiNode const *node;
        int parent;
    };
    KN_STD::VECTOR<VISIT> open = {{source.mRootNode, -1}};
    while (!open.empty()) {
        VISIT const visit = open.back();
        open.pop_back();
        bool exact = true;
        NODE node = {visit.node, visit.parent, pose_of(in_unit(wide(visit.node->mTransformation), unit), exact),
                     {},         {},           {}};
        if (!exact)
            notes.add("node '" + std::string(visit.node->mName.C_Str()) +
                      "' is sheared or flattened, which a scene cannot express; its shape is off");
        by_name.emplace(visit.node->mName.C_Str(), int(nodes.size()));
        for (unsigned i = visit.node->mNumChildren; i-- > 0;)
            open.push_back({visit.node->mChildren[i], int(nodes.size())});
        nodes.push_back(std::move(node));
    }
}

int IMPORT_HIERARCHY::find(std::string const &name) const
{
    auto const [first, last] = by_name.equal_range(name);
    return first == last ? -1 : first->second;
}

void IMPORT_HIERARCHY::take_clip(aiAnimation const *clip, IMPORT_NOTES &notes)
{
    float first = 0, last = 0;
    if (clip != nullptr) {
        double const ticks = clip->mTicksPerSecond > 0 ? clip->mTicksPerSecond : 25;
        auto const cover = [&](double time) {
            if (std::isfinite(float(time))) {
                first = std::min(first, float(time));
                last = std::max(last, float(time));
            }
        };
        for (unsigned c = 0; c < clip->mNumChannels; ++c) {
            aiNodeAnim const &moved = *clip->mChannels[c];
            int const index = find(moved.mNodeName.C_Str());
            if (index < 0)
                continue;
            if (by_name.count(moved.mNodeName.C_Str()) > 1)
                notes.add("several nodes are called '" + std::string(moved.mNodeName.C_Str()) +
                          "'; the animation of that name goes to the first");
            NODE &node = nodes[std::size_t(index)];
            for (unsigned i = 0; i < moved.mNumPositionKeys; ++i)
                node.translation.add(moved.mPositionKeys[i].mTime / ticks,
                                     narrow(wide(moved.mPositionKeys[i].mValue) * unit));
            for (unsigned i = 0; i < moved.mNumRotationKeys; ++i) {
                aiQuaternion const &q = moved.mRotationKeys[i].mValue;
                node.rotation.add(moved.mRotationKeys[i].mTime / ticks, narrow(POSE_QUATERNION(q.w, q.x, q.y, q.z)));
            }
            for (unsigned i = 0; i < moved.mNumScalingKeys; ++i)
                node.scale.add(moved.mScalingKeys[i].mTime / ticks, narrow(wide(moved.mScalingKeys[i].mValue)));
            for (auto const *times : {&node.translation.times, &node.rotation.times, &node.scale.times})
                for (float const time : *times)
                    cover(time);
        }
        for (unsigned c = 0; c < clip->mNumMorphMeshChannels; ++c)
            for (unsigned i = 0; i < clip->mMorphMeshChannels[c]->mNumKeys; ++i)
                cover(clip->mMorphMeshChannels[c]->mKeys[i].mTime / ticks);
    }
    for (NODE &node : nodes) {
        if (node.translation.times.empty())
            node.translation.add(0, narrow(node.rest.translation));
        if (node.rotation.times.empty())
            node.rotation.add(0, narrow(node.rest.rotation));
        if (node.scale.times.empty())
            node.scale.add(0, narrow(node.rest.scale));
    }
    start_time = begin_time = first;
    end_time = last;
}

// The pose in which the skins were bound: bones as the skins' own matrices say, all other nodes at rest. Empty without
// skins. A skin fixes its bones up to one common placing, which is taken from the bone nearest to the root.
KN_STD::VECTOR<POSE> IMPORT_HIERARCHY::bound_poses(aiScene const &source, IMPORT_NOTES &notes) const
{
    KN_STD::VECTOR<POSE> poses;
    for (NODE const &node : nodes)
        poses.push_back(node.rest);
    KN_STD::VECTOR<POSE_MATRIX> const rest = world_matrices(poses);

    KN_STD::VECTOR<std::optional<POSE_MATRIX>> bound(nodes.size());
    bool any = false;
    for (unsigned m = 0; m < source.mNumMeshes; ++m) {
        struct BONE {
            int node;
            POSE_MATRIX offset;  // from the mesh's space into the bone's
        };
        KN_STD::VECTOR<BONE> bones;
        for (unsigned b = 0; b < source.mMeshes[m]->mNumBones; ++b) {
            aiBone const &bone = *source.mMeshes[m]->mBones[b];
            POSE_MATRIX const offset = in_unit(wide(bone.mOffsetMatrix), unit);
            double const determinant = offset.Determinant();
            if (int const node = find(bone.mName.C_Str()); node >= 0 && std::isfinite(1 / determinant))
                bones.push_back({node, offset});
        }
        if (bones.empty())
            continue;
        any = true;
        BONE const *anchor = nullptr;
        for (BONE const &bone : bones) {
            auto const rank = [&](BONE const &b) { return std::pair(!bound[std::size_t(b.node)], b.node); };
            if (anchor == nullptr || rank(bone) < rank(*anchor))
                anchor = &bone;
        }
        std::size_t const at = std::size_t(anchor->node);
        POSE_MATRIX const placing = (bound[at] ? *bound[at] : rest[at]) * anchor->offset;
        for (BONE const &bone : bones)
            if (std::optional<POSE_MATRIX> &place = bound[std::size_t(bone.node)]; !place)
                place = placing * POSE_MATRIX(bone.offset).Inverse();
    }
    if (!any)
        return {};

    KN_STD::VECTOR<POSE_MATRIX> world(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        POSE_MATRIX const parent = nodes[i].parent < 0 ? POSE_MATRIX() : world[std::size_t(nodes[i].parent)];
        if (bound[i] && std::isfinite(1 / parent.Determinant())) {
            bool exact = true;
            poses[i] = pose_of(POSE_MATRIX(parent).Inverse() * *bound[i], exact);
            if (!exact)
                notes.add("the skin's pose of bone '" + std::string(nodes[i].source->mName.C_Str()) +
                          "' is sheared or flattened, which a scene cannot express; its shape is off");
        }
        world[i] = parent * poses[i].matrix();
    }
    return poses;
}

void IMPORT_HIERARCHY::start_in(KN_STD::VECTOR<POSE> const &poses)
{
    KN_STD::VECTOR<POSE> begin;
    for (NODE const &node : nodes)
        begin.push_back(node.begin());

    bool differs = false;
    for (std::size_t i = 0; i < poses.size(); ++i)
        differs |= !begin[i].close_to(poses[i]);
    if (differs) {
        start_time = begin_time - lead_in_seconds;
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            if (begin[i].close_to(poses[i]))
                continue;
            nodes[i].translation.lead_in(start_time, begin_time, narrow(poses[i].translation));
            nodes[i].rotation.lead_in(start_time, begin_time, narrow(poses[i].rotation));
            nodes[i].scale.lead_in(start_time, begin_time, narrow(poses[i].scale));
            begin[i] = poses[i];
        }
    }
    start_matrices = world_matrices(begin);
}

KN_STD::VECTOR<POSE_MATRIX> IMPORT_HIERARCHY::world_matrices(KN_STD::VECTOR<POSE> const &poses) const
{
    KN_STD::VECTOR<POSE_MATRIX> world;
    for (std::size_t i = 0; i < nodes.size(); ++i)
        world.push_back(nodes[i].parent < 0 ? poses[i].matrix()
                                            : world[std::size_t(nodes[i].parent)] * poses[i].matrix());
    return world;
}

void IMPORT_HIERARCHY::fill(VEX2 &scene) const
{
    scene.info.start_time = start_time;
    scene.info.end_time = end_time;
    for (NODE const &node : nodes) {
        VEX2_MATRIX_NODE &made = scene.hierarchy.nodes.append();
        made.name = KN::from_utf8(node.source->mName.C_Str());
        made.parent_index = node.parent;
        made.translation = channel_of<VEX2_VECTOR_CHANNEL>(node.translation);
        VEX2_SLERP_ROTATION_CHANNEL *const rotation = channel_of<VEX2_SLERP_ROTATION_CHANNEL>(node.rotation);
        rotation->make_continuous();
        made.rotation = rotation;
        if (!std::all_of(node.scale.values.begin(), node.scale.values.end(), is_one))
            made.scale = channel_of<VEX2_VECTOR_CHANNEL>(node.scale);
    }
}
