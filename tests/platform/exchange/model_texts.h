// Small models as texts: glTF with its arrays in line, OBJ.
#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

inline std::string base64(std::string const &bytes)
{
    static char const letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t three = 0;
        for (std::size_t k = 0; k < 3; ++k)
            three = three << 8 | (i + k < bytes.size() ? std::uint8_t(bytes[i + k]) : 0);
        for (std::size_t k = 0; k < 4; ++k)
            text += i + k <= bytes.size() ? letters[three >> (18 - 6 * k) & 63] : '=';
    }
    return text;
}

// Collects arrays; text() is a whole glTF file of them and of the members given.
class GLTF_TEXT {
public:
    int floats(char const *type, std::size_t components, std::vector<float> const &values)
    {
        return add(5126, type, values.size() / components, values.data(), 4 * values.size());
    }
    int shorts(char const *type, std::size_t components, std::vector<std::uint16_t> const &values)
    {
        return add(5123, type, values.size() / components, values.data(), 2 * values.size());
    }
    std::string text(std::string const &members) const
    {
        return R"({"asset":{"version":"2.0"},"buffers":[{"byteLength":)" + std::to_string(bytes.size()) +
               R"(,"uri":"data:application/octet-stream;base64,)" + base64(bytes) + R"("}],"bufferViews":[)" + views +
               R"(],"accessors":[)" + accessors + "]," + members + "}";
    }

private:
    int add(int component, char const *type, std::size_t count, void const *data, std::size_t size)
    {
        std::string const comma = number == 0 ? "" : ",";
        views += comma + R"({"buffer":0,"byteOffset":)" + std::to_string(bytes.size()) + R"(,"byteLength":)" +
                 std::to_string(size) + "}";
        accessors += comma + R"({"bufferView":)" + std::to_string(number) + R"(,"componentType":)" +
                     std::to_string(component) + R"(,"type":")" + type + R"(","count":)" + std::to_string(count) +
                     R"(,"min":[-9,-9,-9],"max":[9,9,9]})";
        bytes.append(static_cast<char const *>(data), size);
        bytes.resize((bytes.size() + 3) / 4 * 4);
        return number++;
    }

    std::string bytes, views, accessors;
    int number = 0;
};

// A triangle whose tip hangs half on a bone that turns by 90 degrees about z between 0 and 1 s, and which was bound
// upright while the clip starts leaning by -90 degrees. Node "skin" carries it, "low" and "high" are the bones.
inline std::string skinned_model()
{
    GLTF_TEXT model;
    model.floats("VEC3", 3, {0, 0, 0, 1, 0, 0, 0, 2, 0});
    model.shorts("VEC4", 4, {0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0});
    model.floats("VEC4", 4, {1, 0, 0, 0, 1, 0, 0, 0, 0.5f, 0.5f, 0, 0});
    model.floats("MAT4", 16,
                 {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -1, 0, 1});
    model.floats("SCALAR", 1, {0, 1});
    model.floats("VEC4", 4, {0, 0, -0.70710678f, 0.70710678f, 0, 0, 0, -1});  // the second with its sign turned
    return model.text(R"("scene":0,"scenes":[{"nodes":[0,1]}],
        "nodes":[{"name":"skin","mesh":0,"skin":0,"extras":{"class_TYPE":"TECH","list":["a","b"],"number":5}},
                 {"name":"low","children":[2]},{"name":"high","translation":[0,1,0]}],
        "meshes":[{"primitives":[{"attributes":{"POSITION":0,"JOINTS_0":1,"WEIGHTS_0":2}}]}],
        "skins":[{"joints":[1,2],"inverseBindMatrices":3}],
        "animations":[{"name":"lean","channels":[{"sampler":0,"target":{"node":2,"path":"rotation"}}],
                       "samplers":[{"input":4,"output":5}]},
                      {"name":"rest/2","channels":[{"sampler":0,"target":{"node":1,"path":"rotation"}}],
                       "samplers":[{"input":4,"output":5}]}])");
}

// Two nodes that share one triangle with colours, two UV sets, a morph target and a camera on the second node.
inline std::string instanced_model()
{
    GLTF_TEXT model;
    model.floats("VEC3", 3, {0, 0, 0, 1, 0, 0, 0, 1, 0});
    model.floats("VEC2", 2, {0, 0, 1, 0, 0, 0.25f});
    model.floats("VEC2", 2, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.75f});
    model.floats("VEC4", 4, {1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 0.5f});
    model.floats("VEC3", 3, {0, 0, 0, 0, 0, 0, 0, 0, 3});
    model.shorts("SCALAR", 1, {0, 1, 2});
    model.floats("SCALAR", 1, {0, 2});
    model.floats("SCALAR", 1, {0, 1});
    model.floats("VEC3", 3, {0, 0, 1, 0, 0, 1, 0, 0, 0});  // the last normal has no length
    return model.text(R"("scene":0,"scenes":[{"nodes":[0]}],
        "nodes":[{"name":"root","children":[1,2],"scale":[2,2,2]},{"name":"one","mesh":0},
                 {"name":"two","mesh":1,"translation":[5,0,0],"children":[3]},{"name":"eye","camera":0}],
        "cameras":[{"type":"perspective","perspective":{"yfov":0.5,"aspectRatio":2,"znear":0.5,"zfar":50}}],
        "materials":[{"name":"glass","alphaMode":"MASK","alphaCutoff":0.25,"doubleSided":true,
                      "pbrMetallicRoughness":{"baseColorFactor":[0.5,0.25,1,0.75],"metallicFactor":0.125}}],
        "meshes":[{"primitives":[{"material":0,"indices":5,"attributes":
                      {"POSITION":0,"NORMAL":8,"TEXCOORD_0":1,"TEXCOORD_1":2,"COLOR_0":3}}]},
                  {"extras":{"targetNames":["lift"]},"primitives":[{"indices":5,"attributes":{"POSITION":0},
                      "targets":[{"POSITION":4}]}]}],
        "animations":[{"name":"lift","channels":[{"sampler":0,"target":{"node":2,"path":"weights"}}],
                       "samplers":[{"input":6,"output":7}]}])");
}

// A triangle in inches with z up, one inch along each of x and z and standing two inches up, with properties of an
// artist's in both forms that the tools write.
inline std::string fbx_with_z_up()
{
    return R"(; FBX 7.4.0 project file
FBXHeaderExtension:  {
    FBXVersion: 7400
}
GlobalSettings:  {
    Properties70:  {
        P: "UpAxis", "int", "Integer", "",2
        P: "UpAxisSign", "int", "Integer", "",1
        P: "FrontAxis", "int", "Integer", "",1
        P: "FrontAxisSign", "int", "Integer", "",-1
        P: "CoordAxis", "int", "Integer", "",0
        P: "CoordAxisSign", "int", "Integer", "",1
        P: "UnitScaleFactor", "double", "Number", "",2.54
    }
}
Definitions:  {
    Count: 2
    ObjectType: "Model" {
        Count: 1
    }
    ObjectType: "Geometry" {
        Count: 1
    }
}
Objects:  {
    Geometry: 100, "Geometry::tri", "Mesh" {
        Vertices: *9 {
            a: 0,0,0,1,0,0,0,0,1
        }
        PolygonVertexIndex: *3 {
            a: 0,1,-3
        }
    }
    Model: 200, "Model::tri", "Mesh" {
        Properties70:  {
            P: "Lcl Translation", "Lcl Translation", "", "A",0,0,2
            P: "UDP3DSMAX", "KString", "", "U", "class_TYPE = TECH&cr;&lf;speed = 5&cr;&lf;"
            P: "tag", "KString", "", "U", "hello"
            P: "RotationActive", "bool", "", "",1
        }
    }
}
Connections:  {
    C: "OO",200,0
    C: "OO",100,200
}
)";
}
