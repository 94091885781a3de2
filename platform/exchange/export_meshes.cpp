#include "platform/exchange/export_meshes.h"

#include "platform/exchange/pose.h"
#include "platform/gltf/axes.h"
#include "scene/scene.h"

#include <algorithm>
#include <cmath>
#include <set>

using namespace VEX2_LOADER;

namespace {

constexpr unsigned most_uv_sets = 8;
constexpr unsigned joints_a_vertex = 4;

bool finite(VEX2_VECTOR const &v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

VEX2_VECTOR unit_length(VEX2_VECTOR const &v)
{
    double const length = std::sqrt(double(v.x) * v.x + double(v.y) * v.y + double(v.z) * v.z);
    if (!(length > 0) || !std::isfinite(length))
        return {0, 1, 0};
    return {float(v.x / length), float(v.y / length), float(v.z / length)};
}

float from_0_to_1(float value) { return value > 0 ? std::min(value, 1.0f) : 0; }

// NODE, or NODE_part2 and so on.
bool is_part_name(KN::UniString const &name, KN::UniString const &node)
{
    std::u16string_view rest = name;
    if (!rest.starts_with(node))
        return false;
    rest.remove_prefix(node.size());
    constexpr std::u16string_view part = u"_part";
    if (rest.empty())
        return true;
    return rest.starts_with(part) && rest.size() > part.size() &&
           rest.find_first_not_of(u"0123456789", part.size()) == std::u16string_view::npos;
}

bool same_attributes(VEX2_ATTRIBUTES const &a, VEX2_ATTRIBUTES const &b)
{
    auto const same = [](VEX2_STRING_ATTRIBUTE const &x, VEX2_STRING_ATTRIBUTE const &y) {
        return x.name == y.name && std::equal(x.values.begin(), x.values.end(), y.values.begin(), y.values.end());
    };
    return std::equal(a.strings.begin(), a.strings.end(), b.strings.begin(), b.strings.end(), same);
}

bool same_targets(VEX2_MESH const &a, VEX2_MESH const &b)
{
    auto const *x = dynamic_cast<VEX2_MORPH_MESH const *>(&a);
    auto const *y = dynamic_cast<VEX2_MORPH_MESH const *>(&b);
    if (x == nullptr || y == nullptr)
        return x == y;
    auto const same = [](VEX2_FLOAT_ATTRIBUTE const &p, VEX2_FLOAT_ATTRIBUTE const &q) {
        return p.name == q.name && (p.value == nullptr) == (q.value == nullptr) &&
               (p.value == nullptr || p.value->equals(*q.value));
    };
    return std::equal(x->targets.begin(), x->targets.end(), y->targets.begin(), y->targets.end(), same);
}

// The strongest influences of a vertex, one a node, their weights adding up to one; none only where no weight is
// positive.
struct INFLUENCES {
    std::uint32_t nodes[joints_a_vertex] = {};
    float weights[joints_a_vertex] = {};
    unsigned count = 0;
    bool cut = false;

    explicit INFLUENCES(VEX2_WEIGHTED_VERTEX const &vertex)
    {
        KN_STD::VECTOR<VEX2_INFLUENCE> list;
        for (VEX2_INFLUENCE const &influence : vertex.influences) {
            if (!(influence.weight > 0) || !std::isfinite(influence.weight))
                continue;
            auto const same = std::find_if(list.begin(), list.end(), [&](VEX2_INFLUENCE const &other) {
                return other.matrix_index == influence.matrix_index;
            });
            if (same != list.end())
                same->weight += influence.weight;
            else
                list.push_back(influence);
        }
        std::stable_sort(list.begin(), list.end(),
                         [](VEX2_INFLUENCE const &a, VEX2_INFLUENCE const &b) { return a.weight > b.weight; });
        cut = list.size() > joints_a_vertex;
        count = unsigned(std::min<std::size_t>(list.size(), joints_a_vertex));
        float sum = 0;
        for (unsigned i = 0; i < count; ++i)
            sum += list[i].weight;
        for (unsigned i = 0; i < count; ++i) {
            nodes[i] = list[i].matrix_index;
            weights[i] = list[i].weight / sum;
        }
    }
};

POSE_MATRIX wide(VEX2_MATRIX const &m)
{
    return POSE_MATRIX(m[0][0], m[0][1], m[0][2], m[0][3], m[1][0], m[1][1], m[1][2], m[1][3], m[2][0], m[2][1],
                       m[2][2], m[2][3], 0, 0, 0, 1);
}

template <class GET>
int vector_accessor(GLTF::BUFFER &buffer, unsigned count, bool bounded, GET const &get)
{
    int const accessor = buffer.add(GLTF::COMPONENT::F32, 3, count, GLTF::USE::VERTICES, bounded);
    for (unsigned i = 0; accessor >= 0 && i < count; ++i) {
        VEX2_VECTOR const v = get(i);
        float *const out = buffer.at<float>(accessor) + 3 * std::size_t(i);
        out[0] = v.x;
        out[1] = v.y;
        out[2] = v.z;
    }
    return accessor;
}

}  // namespace

struct MESH_EXPORT::PART {
    VEX2_MESH const *mesh;
    VEX2_WEIGHTED_MESH const *weighted;  // the mesh, if it is one
    VEX2_MORPH_MESH const *morph;
};

MESH_EXPORT::MESH_EXPORT(VEX2 const &from, KN_STD::VECTOR<VEX2_MATRIX> const &matrices, GLTF::DOCUMENT &to,
                         GLTF::ANIMATION &moving, KN_STD::VECTOR<KN::String> &lines)
    : scene(from), start_matrices(matrices), document(to), animation(moving), warnings(lines)
{}

bool MESH_EXPORT::add_all(KN::String &error)
{
    KN_STD::VECTOR<KN_STD::VECTOR<PART>> by_node(scene.hierarchy.nodes.count);
    unsigned unplaced = 0;
    auto const sort = [&](auto const &meshes) {
        for (VEX2_MESH const *mesh : meshes) {
            if (mesh == nullptr || mesh->triangle_count() == 0)
                continue;
            if (mesh->matrix_index < by_node.size())
                by_node[mesh->matrix_index].push_back({mesh, dynamic_cast<VEX2_WEIGHTED_MESH const *>(mesh),
                                                       dynamic_cast<VEX2_MORPH_MESH const *>(mesh)});
            else
                ++unplaced;
        }
    };
    sort(scene.static_meshes);
    sort(scene.animated_meshes);
    sort(scene.morph_meshes);
    sort(scene.weighted_meshes);
    if (unplaced != 0)
        warnings.push_back(std::to_string(unplaced) + " meshes name a node that does not exist; they are left out");

    for (std::size_t node = 0; node < by_node.size(); ++node) {
        KN_STD::VECTOR<PART> &left = by_node[node];
        while (!left.empty()) {
            PART const first = left.front();
            bool const named = is_part_name(first.mesh->name, scene.hierarchy.nodes[node].name);
            KN_STD::VECTOR<PART> together, others;
            for (PART const &part : left) {
                bool const fits =
                    together.empty() || (named && is_part_name(part.mesh->name, scene.hierarchy.nodes[node].name) &&
                                         (part.weighted != nullptr) == (first.weighted != nullptr) &&
                                         same_attributes(part.mesh->attributes, first.mesh->attributes) &&
                                         same_targets(*part.mesh, *first.mesh));
                (fits ? together : others).push_back(part);
            }
            std::size_t place = node;
            if (!named || document.nodes[node].mesh >= 0) {
                place = document.nodes.size();
                document.nodes[node].children.push_back(int(place));
                document.nodes.emplace_back().name = KN::to_utf8(first.mesh->name);
            }
            if (!add_parts(place, together, error))
                return false;
            left = std::move(others);
        }
    }
    return true;
}

bool MESH_EXPORT::add_parts(std::size_t node, KN_STD::VECTOR<PART> const &parts, KN::String &error)
{
    PART const &first = parts.front();
    GLTF::MESH made;
    made.name = KN::to_utf8(first.mesh->name);
    add_extras(first.mesh->attributes, document.nodes[node].extras);
    KN_STD::VECTOR<int> joints(start_matrices.size(), -1);
    if (first.weighted != nullptr)
        document.nodes[node].skin = add_skin(parts, joints);
    if (first.morph != nullptr) {
        for (VEX2_FLOAT_ATTRIBUTE const &target : first.morph->targets) {
            made.target_names.push_back(KN::to_utf8(target.name));
            made.weights.push_back(target.value != nullptr ? target.value->value() : 0);
        }
        add_weight_channel(*first.mesh, int(node));
    }
    for (PART const &part : parts)
        if (!add_primitives(part, joints, made, error))
            return false;
    document.nodes[node].mesh = int(document.meshes.size());
    document.meshes.push_back(std::move(made));
    return true;
}

// One skin for the parts; joints[node] becomes the number of the node in it.
int MESH_EXPORT::add_skin(KN_STD::VECTOR<PART> const &parts, KN_STD::VECTOR<int> &joints)
{
    KN_STD::SET<std::uint32_t> used;
    bool cut = false;
    for (PART const &part : parts) {
        for (VEX2_WEIGHTED_VERTEX const &vertex : part.weighted->vertices) {
            INFLUENCES const influences(vertex);
            used.insert(influences.nodes, influences.nodes + influences.count);
            cut |= influences.cut;
            if (influences.count == 0)
                used.insert(part.mesh->matrix_index);
        }
    }
    if (cut)
        warnings.push_back("mesh '" + KN::printable(KN::to_utf8(parts.front().mesh->name)) +
                           "' has vertices with more than four influences; the strongest four are kept");

    GLTF::SKIN skin;
    skin.name = KN::to_utf8(parts.front().mesh->name);
    skin.inverse_bind_matrices = document.buffer.add(GLTF::COMPONENT::F32, 16, used.size(), GLTF::USE::OTHER);
    for (std::uint32_t const node : used) {
        joints[node] = int(skin.joints.size());
        skin.joints.push_back(int(node));
        POSE_MATRIX inverse = wide(start_matrices[node]);
        if (std::isfinite(1 / inverse.Determinant()))
            inverse.Inverse();
        else
            inverse = POSE_MATRIX();
        if (skin.inverse_bind_matrices < 0)
            continue;
        float *const out = document.buffer.at<float>(skin.inverse_bind_matrices) + 16 * (skin.joints.size() - 1);
        for (unsigned row = 0; row < 3; ++row)
            for (unsigned column = 0; column < 4; ++column)
                out[4 * column + row] = float(inverse[row][column]);
        out[15] = 1;
    }
    document.skins.push_back(std::move(skin));
    return int(document.skins.size()) - 1;
}

bool MESH_EXPORT::add_primitives(PART const &part, KN_STD::VECTOR<int> const &joints, GLTF::MESH &made,
                                 KN::String &error)
{
    VEX2_MESH const &mesh = *part.mesh;
    unsigned const count = mesh.vertex_count();
    unsigned uv_sets = most_uv_sets;
    bool sound = true;
    auto const position = [&](unsigned i) {
        VEX2_VECTOR p;
        if (part.weighted != nullptr)
            p = part.weighted->vertices[i].bind_position;
        else if (part.morph != nullptr)
            p = part.morph->vertices[i].position;
        else
            mesh.vertex(i).get_position(p);
        sound &= finite(p);
        return p;
    };
    for (unsigned i = 0; i < count; ++i)
        uv_sets = std::min(uv_sets, mesh.vertex(i).uvw_count());

    GLTF::BUFFER &buffer = document.buffer;
    GLTF::PRIMITIVE shared;  // what all sections have in common
    shared.attributes.emplace_back("POSITION", vector_accessor(buffer, count, true, position));
    shared.attributes.emplace_back("NORMAL", vector_accessor(buffer, count, false, [&](unsigned i) {
                                       VEX2_VECTOR n;
                                       mesh.vertex(i).get_normal(n);
                                       return unit_length(part.weighted ? part.weighted->vertices[i].bind_normal : n);
                                   }));
    for (unsigned set = 0; set < uv_sets; ++set) {
        int const uvs = buffer.add(GLTF::COMPONENT::F32, 2, count, GLTF::USE::VERTICES);
        for (unsigned i = 0; uvs >= 0 && i < count; ++i) {
            VEX2_VECTOR uvw;
            mesh.vertex(i).get_uvw(set, uvw);
            sound &= finite(uvw);
            buffer.at<float>(uvs)[2 * std::size_t(i)] = uvw.x;
            buffer.at<float>(uvs)[2 * std::size_t(i) + 1] = GLTF::turned_v(uvw.y);
        }
        shared.attributes.emplace_back("TEXCOORD_" + std::to_string(set), uvs);
    }
    if (mesh.colour_flag != 0) {
        int const colours = buffer.add(GLTF::COMPONENT::F32, 4, count, GLTF::USE::VERTICES);
        for (unsigned i = 0; colours >= 0 && i < count; ++i) {
            VEX2_COLOUR colour;
            mesh.vertex(i).get_colour(colour);
            float *const out = buffer.at<float>(colours) + 4 * std::size_t(i);
            out[0] = from_0_to_1(colour.red);
            out[1] = from_0_to_1(colour.green);
            out[2] = from_0_to_1(colour.blue);
            out[3] = from_0_to_1(colour.alpha);
        }
        shared.attributes.emplace_back("COLOR_0", colours);
    }
    if (part.weighted != nullptr) {
        int const numbers = buffer.add(GLTF::COMPONENT::U16, joints_a_vertex, count, GLTF::USE::VERTICES);
        int const weights = buffer.add(GLTF::COMPONENT::F32, joints_a_vertex, count, GLTF::USE::VERTICES);
        for (unsigned i = 0; weights >= 0 && i < count; ++i) {
            INFLUENCES influences(part.weighted->vertices[i]);
            if (influences.count == 0) {
                influences.nodes[0] = mesh.matrix_index;
                influences.weights[0] = 1;
                influences.count = 1;
            }
            for (unsigned k = 0; k < influences.count; ++k) {
                std::size_t const at = joints_a_vertex * std::size_t(i) + k;
                buffer.at<std::uint16_t>(numbers)[at] = std::uint16_t(joints[influences.nodes[k]]);
                buffer.at<float>(weights)[at] = influences.weights[k];
            }
        }
        shared.attributes.emplace_back("JOINTS_0", numbers);
        shared.attributes.emplace_back("WEIGHTS_0", weights);
    }
    for (unsigned target = 0; part.morph != nullptr && target < part.morph->targets.count; ++target) {
        int const offsets = vector_accessor(buffer, count, true, [&](unsigned i) {
            VEX2_VECTOR sum;
            for (VEX2_MORPH_DELTA const &delta : part.morph->vertices[i].deltas)
                if (delta.target == target)
                    sum = sum + delta.offset;
            sound &= finite(sum);
            return sum;
        });
        shared.targets.push_back({{"POSITION", offsets}});
    }
    if (!sound) {
        error = "mesh '" + KN::printable(KN::to_utf8(mesh.name)) +
                "' has coordinates that are no numbers; mend it in the modelling tool";
        return false;
    }

    for (VEX2_POLYGON_SET const &section : mesh.sections) {
        if (section.triangles.empty())
            continue;
        GLTF::PRIMITIVE &primitive = made.primitives.emplace_back(shared);
        bool const has_material =
            section.material_index >= 0 && unsigned(section.material_index) < scene.materials.count;
        primitive.material = has_material ? section.material_index : -1;
        primitive.indices =
            buffer.add(GLTF::COMPONENT::U32, 1, std::size_t(3) * section.triangles.count, GLTF::USE::INDICES);
        for (unsigned i = 0; primitive.indices >= 0 && i < section.triangles.count; ++i)
            std::copy_n(section.triangles[i].vertices, 3,
                        buffer.at<std::uint32_t>(primitive.indices) + 3 * std::size_t(i));
    }
    return true;
}

// The weights of all targets at the key times of any of them.
void MESH_EXPORT::add_weight_channel(VEX2_MESH const &mesh, int node)
{
    auto const &targets = static_cast<VEX2_MORPH_MESH const &>(mesh).targets;
    KN_STD::SET<float> times;
    for (VEX2_FLOAT_ATTRIBUTE const &target : targets)
        if (target.value != nullptr && target.value->times.count > 1)
            for (float const time : target.value->times)
                if (std::isfinite(time))
                    times.insert(std::max(time, 0.0f));
    if (times.size() < 2)
        return;
    GLTF::ANIMATION::CHANNEL channel = {node, GLTF::ANIMATION::WEIGHTS, -1, -1};
    channel.times = document.buffer.add(GLTF::COMPONENT::F32, 1, times.size(), GLTF::USE::OTHER, true);
    channel.values = document.buffer.add(GLTF::COMPONENT::F32, 1, times.size() * targets.count, GLTF::USE::OTHER);
    if (channel.values < 0)
        return;
    std::copy(times.begin(), times.end(), document.buffer.at<float>(channel.times));
    for (unsigned t = 0; t < targets.count; ++t) {
        if (targets[t].value == nullptr)
            continue;
        VEX2_FLOAT_CHANNEL moved(*targets[t].value);
        float *out = document.buffer.at<float>(channel.values) + t;
        for (float const time : times) {
            moved.seek(time);
            *out = moved.value();
            out += targets.count;
        }
    }
    animation.channels.push_back(channel);
}

void add_extras(VEX2_ATTRIBUTES const &attributes, GLTF::MEMBERS &extras)
{
    for (VEX2_STRING_ATTRIBUTE const &attribute : attributes.strings) {
        std::string const name = KN::to_utf8(attribute.name);
        if (name.empty() ||
            std::any_of(extras.begin(), extras.end(), [&](auto const &member) { return member.first == name; }))
            continue;
        std::vector<GLTF::VALUE> values;
        for (KN::UniString const &value : attribute.values)
            values.emplace_back(std::string(KN::to_utf8(value)));
        if (values.size() == 1)
            extras.emplace_back(name, std::move(values.front()));
        else
            extras.emplace_back(name, std::move(values));
    }
}
