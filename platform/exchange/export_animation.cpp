#include "platform/exchange/export_animation.h"

#include "foundation/file.h"
#include "platform/exchange/stick_figure.h"
#include "platform/gltf/writer.h"
#include "support/animation/animation_file.h"
#include "support/animation/clip.h"
#include "support/animation/skeleton.h"

#include <cmath>
#include <optional>

using namespace SUPPORT;

namespace {

KN::String at(KN::String const &path, KN::String const &what) { return KN::printable(path) + ": " + what; }

bool open_animation(KN::String const &path, KN::FileIn &file, ANIMATION_FILE_HEADER &header, KN::String &error)
{
    if (!file.open(path, true)) {
        error = at(path, "the file cannot be opened; check the path");
        return false;
    }
    header = read_header(file);
    file.seek(0);
    if (header.version >= first_animation_version)
        return true;
    error = at(path, "this is no animation file of version 5 or newer; build it again");
    return false;
}

bool load_skeleton(KN::String const &path, std::optional<SKELETON> &skeleton, KN::String &error)
{
    KN::FileIn file, beside;
    ANIMATION_FILE_HEADER header;
    if (!open_animation(path, file, header, error))
        return false;
    bool const has_matrices = beside.open(path.substr(0, path.rfind('.')) + ".bone_inv_trans_mats", true);
    skeleton.emplace(file, has_matrices ? beside : file, 0, KN::String(), KN::String(), animation_heap());
    if (!skeleton->bones.empty())
        return true;
    error = at(path, "the skeleton has no bones");
    return false;
}

bool is_finite(VECTOR3 const &v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

void put(VECTOR3 const &from, float *to)
{
    to[0] = from.x;
    to[1] = from.y;
    to[2] = from.z;
}

void put(QUATERNION const &from, float *to)
{
    QUATERNION unit = from;
    normalise_quaternion(unit);
    to[0] = unit.x;
    to[1] = unit.y;
    to[2] = unit.z;
    to[3] = unit.w;
}

class EXPORTER {
public:
    EXPORTER(ANIMATION_CLIP const &exported, SKELETON const *its_skeleton) : clip(exported), skeleton(its_skeleton) {}

    bool make(KN::String &fault)
    {
        POSE rest;
        blend_frames(rest, *clip.frames[0], *clip.frames[0], 0, BLEND_NEAREST, skeleton, nullptr);
        add_nodes(skeleton != nullptr ? skeleton->bind_pose : rest);
        return add_times(fault) && add_channels(fault);
    }

    bool write(KN::String const &target, KN::String &error)
    {
        if (!animation.channels.empty())
            document.animations.push_back(std::move(animation));
        return GLTF::write_glb(document, target, error);
    }

    std::size_t unmoved = 0;  // bones that lack a value in the animation

private:
    void add_nodes(POSE const &rest)
    {
        BONE_TABLE const bones = clip.bone_table();
        std::vector<int> parents;
        document.nodes.resize(bones.size() + 1);
        // The joints of a skin need one node above them all.
        GLTF::NODE &top = document.nodes.back();
        top.name = "skeleton";
        document.roots.push_back(int(bones.size()));
        for (std::size_t i = 0; i < bones.size(); ++i) {
            GLTF::NODE &node = document.nodes[i];
            node.name = bones[i].name;
            if (is_finite(rest.translations[i]))
                put(rest.translations[i], node.translation);
            put(rest.rotations[i], node.rotation);
            std::int32_t const parent = bones[i].parent;
            parents.push_back(parent >= 0 && std::size_t(parent) < i ? parent : -1);
            (parents[i] >= 0 ? document.nodes[std::size_t(parents[i])] : top).children.push_back(int(i));
        }
        std::span<MATRIX44 const> matrices;
        if (skeleton != nullptr)
            matrices = {skeleton->inverse_bind_matrices.data(), skeleton->inverse_bind_matrices.size()};
        add_stick_figure(document, parents, matrices);
    }

    bool add_times(KN::String &fault)
    {
        if (clip.frames.size() < 2)
            return true;  // a pose
        times = document.buffer.add(GLTF::COMPONENT::F32, 1, clip.frames.size(), GLTF::USE::OTHER, true);
        if (times < 0)
            return true;  // the writer refuses the buffer
        float *const all = document.buffer.at<float>(times);
        for (std::size_t i = 0; i < clip.frames.size(); ++i) {
            all[i] = float(double(i) / double(clip.fps));
            if (i == 0 || all[i] > all[i - 1])
                continue;
            fault = std::to_string(clip.fps) + " frames a second are no rate to be played at";
            return false;
        }
        return true;
    }

    bool add_channels(KN::String &fault)
    {
        for (std::size_t bone = 0; bone < clip.bone_table().size(); ++bone) {
            bool const moves = is_mapped(clip.translation_map, bone), turns = is_mapped(clip.rotation_map, bone);
            unmoved += !moves || !turns;
            if (times < 0)
                continue;
            if (moves && !add_channel(bone, GLTF::ANIMATION::TRANSLATION, 3, fault))
                return false;
            if (turns && !add_channel(bone, GLTF::ANIMATION::ROTATION, 4, fault))
                return false;
        }
        return true;
    }

    static bool is_mapped(ALLOCATED_ARRAY<std::int32_t> const &map, std::size_t bone)
    {
        return bone < map.size() && map[bone] >= 0;
    }

    bool add_channel(std::size_t bone, GLTF::ANIMATION::PATH path, int components, KN::String &fault)
    {
        int const values = document.buffer.add(GLTF::COMPONENT::F32, components, clip.frames.size(), GLTF::USE::OTHER);
        if (values < 0)
            return true;
        animation.channels.push_back({int(bone), path, times, values});
        float *to = document.buffer.at<float>(values);
        for (std::size_t i = 0; i < clip.frames.size(); ++i, to += components) {
            if (path == GLTF::ANIMATION::ROTATION) {
                put(unpack_quaternion(clip.frames[i]->rotation_of(bone)), to);
                continue;
            }
            VECTOR3 const translation = clip.frames[i]->translation_of(bone);
            put(translation, to);
            if (is_finite(translation))
                continue;
            fault = "bone '" + KN::printable(clip.bone_table()[bone].name) + "' has no finite place in frame " +
                    std::to_string(i);
            return false;
        }
        return true;
    }

    ANIMATION_CLIP const &clip;
    SKELETON const *const skeleton;
    GLTF::DOCUMENT document;
    GLTF::ANIMATION animation{"animation", {}};
    int times = -1;
};

}  // namespace

bool export_animation(KN::String const &source, KN::String const &skeleton_file, KN::String const &target,
                      KN_STD::VECTOR<KN::String> &warnings, KN::String &error)
{
    std::optional<SKELETON> skeleton;
    if (!skeleton_file.empty() && !load_skeleton(skeleton_file, skeleton, error))
        return false;
    KN::FileIn file;
    ANIMATION_FILE_HEADER header;
    if (!open_animation(source, file, header, error))
        return false;
    if (skeleton && skeleton->bones.size() != header.bone_count) {
        error = at(source, "the animation has " + std::to_string(header.bone_count) + " bones, the skeleton " +
                               std::to_string(skeleton->bones.size()) + "; name the skeleton that it was built for");
        return false;
    }
    if (skeleton && skeleton->name != header.name)
        warnings.push_back(at(source, "the animation is of skeleton '" + KN::printable(header.name) + "', not of '" +
                                          KN::printable(skeleton->name) + "'"));

    ANIMATION_CLIP const clip(file, skeleton ? &*skeleton : nullptr, 0, {source, false}, animation_heap());
    if (!clip.valid || clip.bone_table().empty()) {
        error = at(source, "the file holds no bones or no frame; build it again");
        return false;
    }
    EXPORTER exporter(clip, skeleton ? &*skeleton : nullptr);
    if (!exporter.make(error)) {
        error = at(source, error + "; build it again");
        return false;
    }
    if (exporter.unmoved != 0 && !skeleton)
        warnings.push_back(at(source, std::to_string(exporter.unmoved) +
                                          " bones are not wholly animated; --skeleton gives their places"));
    return exporter.write(target, error);
}
