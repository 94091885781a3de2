#include "platform/exchange/import_meshes.h"

#include "platform/exchange/normals.h"
#include "scene/scene.h"

#include <assimp/scene.h>
#include <cmath>
#include <string>
#include <unordered_map>

using namespace VEX2_LOADER;

namespace {

VEX2_VECTOR narrow(aiVector3D const &v) { return {v.x, v.y, v.z}; }
VEX2_VECTOR narrow(POSE_VECTOR const &v) { return {float(v.x), float(v.y), float(v.z)}; }
POSE_VECTOR wide(VEX2_VECTOR const &v) { return {v.x, v.y, v.z}; }

VEX2_VECTOR scaled(aiVector3D const &v, double unit)
{
    return {float(v.x * unit), float(v.y * unit), float(v.z * unit)};
}

bool finite(VEX2_VECTOR const &v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

bool usable_normal(aiVector3D const &n)
{
    float const square = n.SquareLength();
    return std::isfinite(square) && square > 1e-12f;
}

KN::String name_of(aiMesh const &mesh) { return "mesh '" + std::string(mesh.mName.C_Str()) + "'"; }

// `matrix` applied to the direction of a normal: with the inverse transpose of its left 3x3, up to length.
POSE_VECTOR turn_normal(POSE_MATRIX const &m, POSE_VECTOR const &n)
{
    POSE_VECTOR const a(m.a1, m.b1, m.c1), b(m.a2, m.b2, m.c2), c(m.a3, m.b3, m.c3);
    double const side = (a ^ b) * c < 0 ? -1 : 1;
    POSE_VECTOR turned = ((b ^ c) * n.x + (c ^ a) * n.y + (a ^ b) * n.z) * side;
    return turned.SquareLength() > 0 ? turned.Normalize() : n;
}

// The corners' vertices, told apart by the bytes of all that they hold.
class JOINED_VERTICES {
public:
    void clear_key() { key.clear(); }
    template <class VALUE>
    void add_to_key(VALUE const &value)
    {
        key.append(reinterpret_cast<char const *>(&value), sizeof value);
    }
    // The number of the vertex with the key put together; `added` if it is new.
    std::uint32_t number(bool &added)
    {
        auto const [place, is_new] = numbers.try_emplace(key, std::uint32_t(numbers.size()));
        added = is_new;
        return place->second;
    }

private:
    std::string key;
    std::unordered_map<std::string, std::uint32_t> numbers;
};

struct WEIGHT {
    std::uint32_t node;
    float weight;
    POSE_MATRIX const *bound;  // from the mesh's space to the world, as this bone was bound
};

// The keys of morph target `target` in the clip's channel for the node; without one the constant weight of the source.
VEX2_FLOAT_CHANNEL *target_weight(aiAnimation const *clip, std::string const &node, unsigned target, float constant)
{
    for (unsigned c = 0; clip != nullptr && c < clip->mNumMorphMeshChannels; ++c) {
        aiMeshMorphAnim const &channel = *clip->mMorphMeshChannels[c];
        std::string const name = channel.mName.C_Str();
        if (name.substr(0, name.rfind('*')) != node || channel.mNumKeys == 0)
            continue;
        double const ticks = clip->mTicksPerSecond > 0 ? clip->mTicksPerSecond : 25;
        VEX2_FLOAT_CHANNEL *const weight = new VEX2_FLOAT_CHANNEL;
        for (unsigned k = 0; k < channel.mNumKeys; ++k) {
            aiMeshMorphKey const &key = channel.mKeys[k];
            float const time = float(key.mTime / ticks);
            if (!std::isfinite(time) || (weight->times.count != 0 && !(time > weight->times.back())))
                continue;
            double value = 0;
            for (unsigned i = 0; i < key.mNumValuesAndWeights; ++i)
                if (key.mValues[i] == target)
                    value = key.mWeights[i];
            append_key(*weight, time, float(value));
        }
        if (weight->times.count != 0)
            return weight;
        delete weight;
    }
    return constant_channel<VEX2_FLOAT_CHANNEL>(constant);
}

}  // namespace

// A mesh as triangles over its own vertices, and a normal for each corner.
struct IMPORT_MESHES::CORNERS {
    KN_STD::VECTOR<std::uint32_t> vertices;  // three a triangle
    KN_STD::VECTOR<VEX2_VECTOR> normals;
};

IMPORT_MESHES::IMPORT_MESHES(aiScene const &from, aiAnimation const *with, IMPORT_HIERARCHY const &nodes, double metres,
                             float crease, KN_STD::VECTOR<int> const &material_numbers, IMPORT_NOTES &lines)
    : source(from), clip(with), hierarchy(nodes), unit(metres), crease_cosine(crease), materials(material_numbers),
      notes(lines)
{}

bool IMPORT_MESHES::take_corners(aiMesh const &mesh, CORNERS &corners, KN::String &error)
{
    unsigned left_out = 0;
    for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
        aiFace const &face = mesh.mFaces[f];
        left_out += face.mNumIndices != 3;
        for (unsigned i = 0; face.mNumIndices == 3 && i < 3; ++i) {
            if (face.mIndices[i] >= mesh.mNumVertices) {
                error = name_of(mesh) + " has a face with vertex " + std::to_string(face.mIndices[i]) + " of " +
                        std::to_string(mesh.mNumVertices) + "; export the model again";
                return false;
            }
            corners.vertices.push_back(face.mIndices[i]);
        }
    }
    if (left_out != 0)
        notes.add(name_of(mesh) + ": " + std::to_string(left_out) + " points and lines are left out");

    KN_STD::VECTOR<VEX2_VECTOR> positions;
    for (unsigned v = 0; v < mesh.mNumVertices; ++v) {
        positions.push_back(scaled(mesh.mVertices[v], unit));
        if (!finite(positions.back())) {
            error = name_of(mesh) + " has a position that is no number; export the model again";
            return false;
        }
    }

    unsigned damaged = 0;
    for (unsigned v = 0; mesh.HasNormals() && v < mesh.mNumVertices; ++v)
        damaged += !usable_normal(mesh.mNormals[v]);
    corners.normals.resize(corners.vertices.size());
    if (!mesh.HasNormals() || damaged != 0) {
        // Damaged ones are mended smoothly: what is around them is a surface with normals of its own.
        float const crease = mesh.HasNormals() ? -1.0f : crease_cosine;
        generate_normals(positions, corners.vertices, crease, corners.normals);
    }
    for (std::size_t i = 0; mesh.HasNormals() && i < corners.vertices.size(); ++i)
        if (aiVector3D normal = mesh.mNormals[corners.vertices[i]]; usable_normal(normal))
            corners.normals[i] = narrow(normal.Normalize());
    if (damaged != 0)
        notes.add(name_of(mesh) + ": " + std::to_string(damaged) +
                  " normals have no length; they are replaced by those of the faces around them");
    return true;
}

VEX2_MESH *IMPORT_MESHES::add(VEX2 &scene, unsigned number, std::size_t node, KN::String &error)
{
    aiMesh const &mesh = *source.mMeshes[number];
    CORNERS corners;
    if (!take_corners(mesh, corners, error))
        return nullptr;

    unsigned const uv_sets = mesh.GetNumUVChannels();
    bool const coloured = mesh.HasVertexColors(0);
    if (mesh.HasVertexColors(1))
        notes.add(name_of(mesh) + " has several sets of vertex colours; the first is taken");
    unsigned damaged_uvs = 0;

    VEX2_POLYGON_SET section;
    section.material_index = mesh.mMaterialIndex < materials.size() ? materials[mesh.mMaterialIndex] : -1;
    section.triangles.resize(unsigned(corners.vertices.size() / 3));

    // Puts the corners into `made`; `further(vertex, v)` adds what the kind holds besides, and to the key.
    JOINED_VERTICES joined;
    auto const fill = [&](auto &made, auto const &further) {
        for (std::size_t i = 0; i < corners.vertices.size(); ++i) {
            std::uint32_t const v = corners.vertices[i];
            std::remove_reference_t<decltype(made.vertices[0])> vertex;
            vertex.position = scaled(mesh.mVertices[v], unit);
            vertex.normal = corners.normals[i];
            vertex.colour = {1, 1, 1, 1};
            if (coloured)
                vertex.colour = {mesh.mColors[0][v].r, mesh.mColors[0][v].g, mesh.mColors[0][v].b,
                                 mesh.mColors[0][v].a};
            joined.clear_key();
            joined.add_to_key(vertex.position);
            joined.add_to_key(vertex.normal);
            joined.add_to_key(vertex.colour);
            vertex.uvws.reserve(uv_sets);
            for (unsigned set = 0; set < uv_sets; ++set) {
                VEX2_VECTOR uvw = narrow(mesh.mTextureCoords[set][v]);
                if (!finite(uvw)) {
                    uvw = {};
                    ++damaged_uvs;
                }
                joined.add_to_key(uvw);
                vertex.uvws.append(uvw);
            }
            further(vertex, v);
            bool added = false;
            section.triangles[i / 3].vertices[i % 3] = joined.number(added);
            if (added)
                made.vertices.append(std::move(vertex));
        }
        made.sections.append(std::move(section));
        made.colour_flag = coloured;
    };

    VEX2_MESH *result = nullptr;
    if (mesh.HasBones()) {
        if (mesh.mNumAnimMeshes != 0)
            notes.add(name_of(mesh) + " has a skin and shapes; a scene mesh has one of them, and the skin is taken");
        KN_STD::VECTOR<POSE_MATRIX> bound(mesh.mNumBones + 1);
        KN_STD::VECTOR<KN_STD::VECTOR<WEIGHT>> weights(mesh.mNumVertices);
        for (unsigned b = 0; b < mesh.mNumBones; ++b) {
            aiBone const &bone = *mesh.mBones[b];
            int const at = hierarchy.find(bone.mName.C_Str());
            if (at < 0) {
                notes.add(name_of(mesh) + ": bone '" + std::string(bone.mName.C_Str()) +
                          "' has no node; its weights are left out");
                continue;
            }
            bound[b] = hierarchy.start_matrix(std::size_t(at)) * in_unit(::wide(bone.mOffsetMatrix), unit);
            for (unsigned w = 0; w < bone.mNumWeights; ++w) {
                aiVertexWeight const &weight = bone.mWeights[w];
                if (weight.mVertexId < mesh.mNumVertices && std::isfinite(weight.mWeight) && weight.mWeight > 0)
                    weights[weight.mVertexId].push_back({std::uint32_t(at), weight.mWeight, &bound[b]});
            }
        }
        bound[mesh.mNumBones] = hierarchy.start_matrix(node);
        unsigned unweighted = 0;
        for (KN_STD::VECTOR<WEIGHT> &list : weights) {
            if (list.empty()) {
                list.push_back({std::uint32_t(node), 1, &bound[mesh.mNumBones]});
                ++unweighted;
            }
            float sum = 0;
            for (WEIGHT const &weight : list)
                sum += weight.weight;
            for (WEIGHT &weight : list)
                weight.weight /= sum;
        }
        if (unweighted != 0)
            notes.add(name_of(mesh) + ": " + std::to_string(unweighted) +
                      " vertices without a weight move with the mesh's own node");

        VEX2_WEIGHTED_MESH *const made = new VEX2_WEIGHTED_MESH;
        scene.weighted_meshes.append(made);
        result = made;
        fill(*made, [&](VEX2_WEIGHTED_VERTEX &vertex, std::uint32_t v) {
            POSE_VECTOR position, normal;
            vertex.influences.reserve(unsigned(weights[v].size()));
            for (WEIGHT const &weight : weights[v]) {
                VEX2_INFLUENCE &influence = vertex.influences.append();
                influence.matrix_index = weight.node;
                influence.weight = weight.weight;
                position += (*weight.bound * wide(vertex.position)) * double(weight.weight);
                normal += turn_normal(*weight.bound, wide(vertex.normal)) * double(weight.weight);
                joined.add_to_key(influence.matrix_index);
                joined.add_to_key(influence.weight);
            }
            vertex.bind_position = narrow(position);
            vertex.bind_normal = normal.SquareLength() > 0 ? narrow(normal.Normalize()) : vertex.normal;
            vertex.position = vertex.bind_position;
            vertex.normal = vertex.bind_normal;
        });
    } else if (mesh.mNumAnimMeshes != 0) {
        VEX2_MORPH_MESH *const made = new VEX2_MORPH_MESH;
        scene.morph_meshes.append(made);
        result = made;
        for (unsigned t = 0; t < mesh.mNumAnimMeshes; ++t) {
            aiAnimMesh const &shape = *mesh.mAnimMeshes[t];
            VEX2_FLOAT_ATTRIBUTE &target = made->targets.append();
            target.name = KN::from_utf8(shape.mName.C_Str());
            target.value = target_weight(clip, hierarchy.source_node(node).mName.C_Str(), t, shape.mWeight);
        }
        fill(*made, [&](VEX2_MORPH_VERTEX &vertex, std::uint32_t v) {
            for (unsigned t = 0; t < mesh.mNumAnimMeshes; ++t) {
                aiAnimMesh const &shape = *mesh.mAnimMeshes[t];
                if (shape.mVertices == nullptr || v >= shape.mNumVertices)
                    continue;
                VEX2_VECTOR const offset = scaled(shape.mVertices[v] - mesh.mVertices[v], unit);
                if ((offset.x == 0 && offset.y == 0 && offset.z == 0) || !finite(offset))
                    continue;
                VEX2_MORPH_DELTA &delta = vertex.deltas.append();
                delta.offset = offset;
                delta.target = t;
                joined.add_to_key(offset);
                joined.add_to_key(t);
            }
        });
    } else {
        VEX2_STATIC_MESH *const made = new VEX2_STATIC_MESH;
        scene.static_meshes.append(made);
        result = made;
        fill(*made, [](VEX2_VERTEX &, std::uint32_t) {});
    }
    if (damaged_uvs != 0)
        notes.add(name_of(mesh) + ": texture coordinates that are no numbers are set to 0");
    return result;
}
