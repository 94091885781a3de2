#include "platform/exchange/import_scene.h"

#include "platform/exchange/import_meshes.h"
#include "platform/exchange/light_camera_meaning.h"
#include "platform/exchange/node_attributes.h"
#include "scene/scene.h"

#include <assimp/commonMetaData.h>
#include <assimp/scene.h>
#include <cmath>
#include <map>

using namespace VEX2_LOADER;

namespace {

constexpr float smooth_crease_cosine = 0.5f;  // 60 degrees
constexpr float flat_crease_cosine = 1.0f;

bool source_is(aiScene const &source, std::string_view format)
{
    aiString text;
    return source.mMetaData != nullptr && source.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, text) &&
           std::string_view(text.C_Str()).find(format) != std::string_view::npos;
}

// The turn that brings -z to `look` and y near `up`; both in the node's space.
POSE_QUATERNION turn_to(aiVector3D const &look, aiVector3D const &up)
{
    POSE_VECTOR back(-look.x, -look.y, -look.z), above(up.x, up.y, up.z);
    if (!(back.SquareLength() > 0))
        return {};
    back.Normalize();
    POSE_VECTOR right = above ^ back;
    if (!(right.SquareLength() > 1e-12))
        right = std::abs(back.x) < 0.9 ? POSE_VECTOR(1, 0, 0) ^ back : POSE_VECTOR(0, 1, 0) ^ back;
    right.Normalize();
    above = back ^ right;
    return POSE_QUATERNION(
        aiMatrix3x3t<double>(right.x, above.x, back.x, right.y, above.y, back.y, right.z, above.z, back.z));
}

// An FBX file names the axes that its sides, its up and its front lie along; the importer leaves them as they are.
void turn_axes(aiScene &source)
{
    struct {
        char const *axis, *sign;
    } const rows[] = {{"CoordAxis", "CoordAxisSign"}, {"UpAxis", "UpAxisSign"}, {"FrontAxis", "FrontAxisSign"}};
    aiMatrix4x4 turn;
    for (unsigned r = 0; r < 3; ++r) {
        int axis = 0, sign = 0;
        if (!source.mMetaData->Get(rows[r].axis, axis) || !source.mMetaData->Get(rows[r].sign, sign) || axis < 0 ||
            axis > 2)
            return;
        for (int c = 0; c < 3; ++c)
            turn[r][c] = c != axis ? 0.0f : sign < 0 ? -1.0f : 1.0f;
    }
    if (turn.Determinant() > 0)  // a mirror is no description of a space
        source.mRootNode->mTransformation = turn * source.mRootNode->mTransformation;
}

class SCENE_BUILDER {
public:
    SCENE_BUILDER(aiScene const &from, aiAnimation const *with, double metres, VEX2 &to, IMPORT_NOTES &lines)
        : source(from), scene(to), notes(lines), unit(metres), hierarchy(from, with, metres, lines)
    {
        hierarchy.fill(scene);
        for (std::size_t i = 0; i < hierarchy.size(); ++i)
            add_node_attributes(hierarchy.source_node(i), scene.hierarchy.nodes[i].attributes);
    }

    bool add_meshes(aiAnimation const *clip, KN_STD::VECTOR<int> const &materials, KN::String &error)
    {
        // glTF demands flat faces where a mesh has no normals; elsewhere a surface is meant to be smooth.
        float const crease = source_is(source, "glTF") ? flat_crease_cosine : smooth_crease_cosine;
        IMPORT_MESHES meshes(source, clip, hierarchy, unit, crease, materials, notes);
        for (std::size_t i = 0; i < hierarchy.size(); ++i) {
            aiNode const &node = hierarchy.source_node(i);
            for (unsigned m = 0; m < node.mNumMeshes; ++m) {
                if (node.mMeshes[m] >= source.mNumMeshes) {
                    error = "node '" + std::string(node.mName.C_Str()) + "' names a mesh that does not exist";
                    return false;
                }
                VEX2_MESH *const mesh = meshes.add(scene, node.mMeshes[m], i, error);
                if (mesh == nullptr)
                    return false;
                std::string name = node.mName.C_Str();
                if (m != 0)
                    name += "_part" + std::to_string(m + 1);
                place(*mesh, name, i);
                keep_fine(*mesh, i);
            }
        }
        return true;
    }

    void add_cameras()
    {
        for (unsigned c = 0; c < source.mNumCameras; ++c) {
            aiCamera const &camera = *source.mCameras[c];
            VEX2_CAMERA *const made = new VEX2_CAMERA;
            scene.cameras.append(made);
            place_looking(*made, camera.mName, camera.mPosition, camera.mLookAt, camera.mUp);
            bool const parallel = camera.mOrthographicWidth > 0;
            float across = camera.mHorizontalFOV;
            if (source_is(source, "glTF") && camera.mAspect > 0)  // the importer multiplies the upright angle
                across = 2 * std::atan(camera.mAspect * std::tan(across / camera.mAspect / 2));
            made->kind = parallel ? parallel_camera : perspective_camera;
            made->first_value =
                constant_channel<VEX2_FLOAT_CHANNEL>(parallel ? float(camera.mOrthographicWidth * unit) : across);
            made->second_value = constant_channel<VEX2_FLOAT_CHANNEL>(camera.mAspect);
            made->first_range = constant_channel<VEX2_RANGE_CHANNEL>(
                VEX2_RANGE{float(camera.mClipPlaneNear * unit), float(camera.mClipPlaneFar * unit)});
        }
    }

    void add_lights()
    {
        for (unsigned l = 0; l < source.mNumLights; ++l) {
            aiLight const &light = *source.mLights[l];
            VEX2_LIGHT *made = nullptr;
            if (light.mType == aiLightSource_SPOT) {
                VEX2_SPOT_LIGHT *const spot = new VEX2_SPOT_LIGHT;
                spot->spread_inner = constant_channel<VEX2_FLOAT_CHANNEL>(light.mAngleInnerCone);
                spot->spread_outer = constant_channel<VEX2_FLOAT_CHANNEL>(light.mAngleOuterCone);
                made = spot;
            } else if (light.mType == aiLightSource_DIRECTIONAL) {
                made = new VEX2_DIRECT_LIGHT;
            } else if (light.mType == aiLightSource_POINT) {
                made = new VEX2_OMNI_LIGHT;
            } else {
                notes.add("light '" + std::string(light.mName.C_Str()) +
                          "' is neither point, spot nor directional light; it is left out");
                continue;
            }
            scene.lights.append(made);
            place_looking(*made, light.mName, light.mPosition,
                          light.mType == aiLightSource_POINT ? aiVector3D(0, 0, -1) : light.mDirection, light.mUp);
            aiColor3D const &colour = light.mColorDiffuse;
            float const largest = std::max({colour.r, colour.g, colour.b});
            float const factor = largest > 0 && std::isfinite(largest) ? 1 / largest : 1;
            made->enabled = constant_channel<VEX2_INT_CHANNEL>(std::uint32_t(1));
            made->colour_0 = constant_channel<VEX2_COLOUR_CHANNEL>(
                VEX2_COLOUR{colour.r * factor, colour.g * factor, colour.b * factor, 1});
            made->intensity = constant_channel<VEX2_FLOAT_CHANNEL>(1 / factor);
        }
    }

private:
    void place(VEX2_OBJECT &object, std::string const &name, std::size_t node)
    {
        object.name = KN::from_utf8(name);
        object.matrix_index = std::uint32_t(node);
        if (node < hierarchy.size())
            add_node_attributes(hierarchy.source_node(node), object.attributes);
        if (object.attributes.class_type() == nullptr)
            object.attributes.add_string(u"class_TYPE", u"DISPLAY");
    }

    // Vertices closer than a tenth of a millimetre in their mesh's own space count as one later on. So what a node
    // enlarges gets vertices of about its final size, below a node of its own that takes the factor back. The factor is
    // a power of two: no bit of the result changes.
    void keep_fine(VEX2_MESH &mesh, std::size_t node)
    {
        POSE_MATRIX const &m = hierarchy.start_matrix(node);
        double const enlarged =
            std::max({POSE_VECTOR(m.a1, m.b1, m.c1).Length(), POSE_VECTOR(m.a2, m.b2, m.c2).Length(),
                      POSE_VECTOR(m.a3, m.b3, m.c3).Length()});
        auto *const whole = dynamic_cast<VEX2_STATIC_MESH *>(&mesh);
        auto *const morph = dynamic_cast<VEX2_MORPH_MESH *>(&mesh);
        // Weighted vertices stand in the world's space as they are.
        if (!(enlarged > 2) || enlarged > 1e6 || (whole == nullptr && morph == nullptr))
            return;
        float const factor = std::exp2(float(std::ilogb(enlarged)));
        auto const enlarge = [&](VEX2_VECTOR &v) { v = {v.x * factor, v.y * factor, v.z * factor}; };
        if (whole != nullptr)
            for (VEX2_VERTEX &vertex : whole->vertices)
                enlarge(vertex.position);
        for (unsigned i = 0; morph != nullptr && i < morph->vertices.count; ++i) {
            enlarge(morph->vertices[i].position);
            for (VEX2_MORPH_DELTA &delta : morph->vertices[i].deltas)
                enlarge(delta.offset);
        }
        auto const [size_node, is_new] = size_nodes.try_emplace(node, scene.hierarchy.nodes.count);
        VEX2_VECTOR const back = {1 / factor, 1 / factor, 1 / factor};
        if (is_new)
            scene.hierarchy.add_node(KN::UniString(scene.hierarchy.nodes[node].name + u"_size"), int(node), {}, {},
                                     &back);
        mesh.matrix_index = size_node->second;
    }

    // At the node of its name, or at a node of its own below that one where it does not look along the node's -z.
    void place_looking(VEX2_OBJECT &object, aiString const &name, aiVector3D const &position, aiVector3D const &look,
                       aiVector3D const &up)
    {
        int const node = hierarchy.find(name.C_Str());
        place(object, name.C_Str(), std::size_t(node < 0 ? 0 : node));
        POSE_QUATERNION const turn = turn_to(look, up);
        bool const plain = std::abs(turn.w) > 1 - 1e-9 && position.SquareLength() == 0;
        if (!plain)
            object.matrix_index =
                scene.hierarchy.add_node(KN::from_utf8(std::string(name.C_Str()) + "_view"), node,
                                         {float(position.x * unit), float(position.y * unit), float(position.z * unit)},
                                         {float(turn.x), float(turn.y), float(turn.z), float(turn.w)});
    }

    aiScene const &source;
    VEX2 &scene;
    IMPORT_NOTES &notes;
    double unit;
    IMPORT_HIERARCHY hierarchy;
    std::map<std::size_t, std::uint32_t> size_nodes;  // that keep_fine has made, by the node above
};

}  // namespace

double settle_space(aiScene &source)
{
    double unit = 1;
    if (source_is(source, "FBX")) {
        double centimetres = 1;
        float single = 0;
        if (!source.mMetaData->Get("UnitScaleFactor", centimetres) && source.mMetaData->Get("UnitScaleFactor", single))
            centimetres = double(single);
        unit = centimetres / 100;
        turn_axes(source);
    } else if (source_is(source, "Collada")) {
        // The importer put the file's unit into the root as a scale.
        aiMatrix4x4 &root = source.mRootNode->mTransformation;
        bool exact = true;
        POSE pose = pose_of(wide(root), exact);
        double const s = pose.scale.x;
        if (exact && std::abs(pose.scale.y - s) < 1e-6 * s && std::abs(pose.scale.z - s) < 1e-6 * s) {
            unit = s;
            root = aiMatrix4x4(aiVector3D(1, 1, 1),
                               aiQuaternion(float(pose.rotation.w), float(pose.rotation.x), float(pose.rotation.y),
                                            float(pose.rotation.z)),
                               aiVector3D(float(pose.translation.x / s), float(pose.translation.y / s),
                                          float(pose.translation.z / s)));
        }
    }
    return std::isfinite(unit) && unit > 0 ? unit : 1;
}

bool build_scene(aiScene const &source, int clip, double unit, IMPORT_TEXTURES &textures, VEX2 &scene,
                 IMPORT_NOTES &notes, KN::String &error)
{
    aiAnimation const *const animation = clip < 0 ? nullptr : source.mAnimations[clip];
    SCENE_BUILDER builder(source, animation, unit, scene, notes);
    KN_STD::VECTOR<int> const materials = add_materials(source, scene, textures, notes);
    if (!builder.add_meshes(animation, materials, error))
        return false;
    builder.add_cameras();
    builder.add_lights();
    return true;
}
