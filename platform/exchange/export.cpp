#include "platform/exchange/export.h"

#include "platform/exchange/export_materials.h"
#include "platform/exchange/export_meshes.h"
#include "platform/exchange/light_camera_meaning.h"
#include "platform/exchange/pose.h"
#include "platform/gltf/writer.h"
#include "scene/scene.h"

#include <cmath>

using namespace VEX2_LOADER;

namespace {

// Of a channel: its keys from time 0 on, with one at 0 if it was under way by then. The channel stands at time 0.
template <class CHANNEL, class PUT>
void add_node_channel(CHANNEL const *channel, int node, GLTF::ANIMATION::PATH path, int components,
                      GLTF::BUFFER &buffer, GLTF::ANIMATION &animation, PUT const &put)
{
    if (channel == nullptr)
        return;
    unsigned const count = std::min(channel->times.count, channel->values.count);
    unsigned first = 0;
    while (first < count && !(channel->times[first] >= 0))
        ++first;
    bool const under_way = first > 0 && first < count && channel->times[first] > 0;
    std::size_t const kept = count - first + under_way;
    if (kept < 2)
        return;
    GLTF::ANIMATION::CHANNEL made = {node, path, -1, -1};
    made.times = buffer.add(GLTF::COMPONENT::F32, 1, kept, GLTF::USE::OTHER, true);
    made.values = buffer.add(GLTF::COMPONENT::F32, components, kept, GLTF::USE::OTHER);
    if (made.values < 0)
        return;
    float *const times = buffer.at<float>(made.times);
    float *const values = buffer.at<float>(made.values);
    if (under_way)
        put(values, channel->value());
    for (unsigned i = first; i < count; ++i) {
        std::size_t const at = i - first + under_way;
        times[at] = channel->times[i];
        put(values + at * std::size_t(components), channel->values[i]);
    }
    animation.channels.push_back(made);
}

void put_vector(float *out, VEX2_VECTOR const &v)
{
    out[0] = v.x;
    out[1] = v.y;
    out[2] = v.z;
}

void put_rotation(float *out, VEX2_QUATERNION const &q)
{
    double const length = std::sqrt(double(q.x) * q.x + double(q.y) * q.y + double(q.z) * q.z + double(q.w) * q.w);
    VEX2_QUATERNION const unit =
        length > 0 && std::isfinite(length)
            ? VEX2_QUATERNION{float(q.x / length), float(q.y / length), float(q.z / length), float(q.w / length)}
            : VEX2_QUATERNION{};
    out[0] = unit.x;
    out[1] = unit.y;
    out[2] = unit.z;
    out[3] = unit.w;
}

POSE_MATRIX wide(VEX2_MATRIX const &m)
{
    return POSE_MATRIX(m[0][0], m[0][1], m[0][2], m[0][3], m[1][0], m[1][1], m[1][2], m[1][3], m[2][0], m[2][1],
                       m[2][2], m[2][3], 0, 0, 0, 1);
}

// A node without channels keeps the world matrix it has.
void put_matrix(VEX2_MATRIX_NODE const &node, GLTF::NODE &made)
{
    POSE_MATRIX const parent = node.parent != nullptr ? wide(*node.parent) : POSE_MATRIX();
    bool exact = true;
    POSE const pose = pose_of(POSE_MATRIX(parent).Inverse() * wide(node.matrix), exact);
    put_vector(made.translation, {float(pose.translation.x), float(pose.translation.y), float(pose.translation.z)});
    put_rotation(made.rotation,
                 {float(pose.rotation.x), float(pose.rotation.y), float(pose.rotation.z), float(pose.rotation.w)});
    put_vector(made.scale, {float(pose.scale.x), float(pose.scale.y), float(pose.scale.z)});
}

bool is_finite(GLTF::NODE const &node)
{
    bool finite = true;
    for (int i = 0; i < 3; ++i)
        finite &= std::isfinite(node.translation[i]) && std::isfinite(node.scale[i]);
    return finite;
}

void add_nodes(VEX2 const &scene, GLTF::DOCUMENT &document, GLTF::ANIMATION &animation)
{
    KN::DynamicArray<VEX2_MATRIX_NODE> const &nodes = scene.hierarchy.nodes;
    document.nodes.resize(nodes.count);
    for (unsigned i = 0; i < nodes.count; ++i) {
        VEX2_MATRIX_NODE const &node = nodes[i];
        GLTF::NODE &made = document.nodes[i];
        made.name = KN::to_utf8(node.name);
        if (node.translation != nullptr && node.rotation != nullptr) {
            put_vector(made.translation, node.translation->value());
            put_rotation(made.rotation, node.rotation->value());
            if (node.scale != nullptr)
                put_vector(made.scale, node.scale->value());
            GLTF::BUFFER &buffer = document.buffer;
            add_node_channel(node.translation.get(), int(i), GLTF::ANIMATION::TRANSLATION, 3, buffer, animation,
                             put_vector);
            add_node_channel(node.rotation.get(), int(i), GLTF::ANIMATION::ROTATION, 4, buffer, animation,
                             put_rotation);
            add_node_channel(node.scale.get(), int(i), GLTF::ANIMATION::SCALE, 3, buffer, animation, put_vector);
        } else {
            put_matrix(node, made);
        }
        if (!is_finite(made))
            put_vector(made.translation, {}), put_vector(made.scale, {1, 1, 1});
        if (node.parent_index >= 0 && unsigned(node.parent_index) < i)
            document.nodes[unsigned(node.parent_index)].children.push_back(int(i));
        else
            document.roots.push_back(int(i));
    }
}

void add_cameras(VEX2 const &scene, GLTF::DOCUMENT &document, KN_STD::VECTOR<KN::String> &warnings)
{
    constexpr double half_turn = 3.14159265358979;
    for (VEX2_CAMERA const *camera : scene.cameras) {
        if (camera == nullptr || camera->matrix_index >= scene.hierarchy.nodes.count)
            continue;
        double const across = camera->first_value != nullptr ? double(camera->first_value->value()) : 0;
        if (camera->kind != perspective_camera || !(across > 0 && across < half_turn)) {
            warnings.push_back("camera '" + KN::printable(KN::to_utf8(camera->name)) +
                               "' is no perspective camera; it is left out");
            continue;
        }
        double const aspect = camera->second_value != nullptr ? double(camera->second_value->value()) : 0;
        VEX2_RANGE const range = camera->first_range != nullptr ? camera->first_range->value() : VEX2_RANGE{};
        GLTF::CAMERA made;
        made.name = KN::to_utf8(camera->name);
        made.aspect = aspect > 0 && std::isfinite(aspect) ? float(aspect) : 0;
        made.vertical_angle = float(2 * std::atan(std::tan(across / 2) / (made.aspect > 0 ? aspect : 1)));
        if (range.first > 0 && std::isfinite(range.first))
            made.near_plane = range.first;
        if (range.second > made.near_plane && std::isfinite(range.second))
            made.far_plane = range.second;
        int place = int(camera->matrix_index);
        if (document.nodes[unsigned(place)].camera >= 0) {
            document.nodes[unsigned(place)].children.push_back(int(document.nodes.size()));
            place = int(document.nodes.size());
            document.nodes.emplace_back().name = made.name;
        }
        document.nodes[unsigned(place)].camera = int(document.cameras.size());
        add_extras(camera->attributes, document.nodes[unsigned(place)].extras);
        document.cameras.push_back(made);
    }
}

void warn_of_rest(VEX2 const &scene, KN_STD::VECTOR<KN::String> &warnings)
{
    struct {
        char const *what;
        unsigned count;
    } const left_out[] = {
        {"lights", scene.lights.count},
        {"shapes", scene.shapes.count},
        {"helpers", scene.helpers.count},
        {"links", scene.links.count + scene.name_links.count},
        {"references to other scenes", scene.references_a.count + scene.references_b.count},
    };
    for (auto const &kind : left_out)
        if (kind.count != 0)
            warnings.push_back(std::to_string(kind.count) + " " + kind.what +
                               " are left out: the file has no place for them");
}

}  // namespace

bool export_scene(VEX2 &scene, KN::String const &source, KN::String const &target, KN_STD::VECTOR<KN::String> &warnings,
                  KN::String &error)
{
    scene.hierarchy.seek(scene.info.start_time);
    KN_STD::VECTOR<VEX2_MATRIX> start_matrices;
    for (VEX2_MATRIX_NODE const &node : scene.hierarchy.nodes)
        start_matrices.push_back(node.matrix);
    scene.seek(0);

    GLTF::DOCUMENT document;
    GLTF::ANIMATION animation;
    animation.name = "animation";
    add_nodes(scene, document, animation);
    export_materials(scene, source, target, document, warnings);
    MESH_EXPORT meshes(scene, start_matrices, document, animation, warnings);
    if (!meshes.add_all(error)) {
        error = KN::printable(source) + ": " + error;
        return false;
    }
    add_cameras(scene, document, warnings);
    for (unsigned i = 0; i < scene.hierarchy.nodes.count; ++i)
        add_extras(scene.hierarchy.nodes[i].attributes, document.nodes[i].extras);
    warn_of_rest(scene, warnings);
    if (!animation.channels.empty())
        document.animations.push_back(std::move(animation));
    if (GLTF::write_glb(document, target, error))
        return true;
    error += "; check the folder, and that the scene stays below 2 GiB";
    return false;
}
