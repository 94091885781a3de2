// The records become a tinygltf model, which puts out JSON and the buffer. Each array gets a buffer view of its own.

#include "platform/gltf/writer.h"

#include "foundation/finished_file.h"
#include "platform/gltf/document.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <map>
#include <ostream>
#include <streambuf>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"
#define TINYGLTF_NO_STB_IMAGE
#define TINYGLTF_NO_STB_IMAGE_WRITE
#include <tiny_gltf.h>
#pragma GCC diagnostic pop

namespace GLTF {

namespace {

// What tinygltf writes goes to the unfinished file as it comes.
class FILE_STREAM : public std::streambuf {
public:
    explicit FILE_STREAM(KN::FinishedFile &target) : file(target) {}
    std::uint64_t written = 0;

protected:
    int_type overflow(int_type unit) override
    {
        char const byte = traits_type::to_char_type(unit);
        return xsputn(&byte, 1) == 1 ? unit : traits_type::eof();
    }
    std::streamsize xsputn(char const *text, std::streamsize size) override
    {
        if (!file.write(text, std::size_t(size)))
            return 0;
        written += std::uint64_t(size);
        return size;
    }

private:
    KN::FinishedFile &file;
};

tinygltf::Value converted(MEMBERS const &members);

tinygltf::Value converted(VALUE const &value)
{
    if (auto const *text = std::get_if<std::string>(&value))
        return tinygltf::Value(*text);
    if (auto const *number = std::get_if<double>(&value))
        return tinygltf::Value(*number);
    if (auto const *integer = std::get_if<int>(&value))
        return tinygltf::Value(*integer);
    if (auto const *flag = std::get_if<bool>(&value))
        return tinygltf::Value(*flag);
    if (auto const *members = std::get_if<MEMBERS>(&value))
        return converted(*members);
    tinygltf::Value::Array elements;
    for (VALUE const &element : std::get<std::vector<VALUE>>(value))
        elements.push_back(converted(element));
    return tinygltf::Value(std::move(elements));
}

tinygltf::Value converted(MEMBERS const &members)
{
    if (members.empty())
        return {};
    tinygltf::Value::Object object;
    for (auto const &[name, value] : members)
        object.emplace(name, converted(value));
    return tinygltf::Value(std::move(object));
}

std::vector<double> doubles(float const *values, int count) { return {values, values + count}; }

// The least and greatest value of each component, exactly as the floats of the array.
void add_bounds(ACCESSOR const &array, unsigned char const *bytes, tinygltf::Accessor &to)
{
    if (array.count == 0 || array.component != COMPONENT::F32)
        return;
    float least[16], greatest[16];
    std::size_t const size = std::size_t(array.components) * sizeof(float);
    std::memcpy(least, bytes + array.offset, size);
    std::memcpy(greatest, least, size);
    for (std::size_t i = 1; i < array.count; ++i) {
        float element[16];
        std::memcpy(element, bytes + array.offset + i * array.stride, size);
        for (int c = 0; c < array.components; ++c) {
            least[c] = element[c] < least[c] ? element[c] : least[c];
            greatest[c] = element[c] > greatest[c] ? element[c] : greatest[c];
        }
    }
    to.minValues = doubles(least, array.components);
    to.maxValues = doubles(greatest, array.components);
}

void add_arrays(BUFFER &buffer, tinygltf::Model &model)
{
    if (buffer.accessors().empty())
        return;
    for (ACCESSOR const &array : buffer.accessors()) {
        tinygltf::BufferView view;
        view.buffer = 0;
        view.byteOffset = array.offset;
        view.byteLength = array.count * array.stride;
        if (array.use == USE::VERTICES) {
            view.byteStride = array.stride;
            view.target = TINYGLTF_TARGET_ARRAY_BUFFER;
        } else if (array.use == USE::INDICES) {
            view.target = TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER;
        }

        static constexpr int component_types[] = {TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE,
                                                  TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT,
                                                  TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT, TINYGLTF_COMPONENT_TYPE_FLOAT};
        static constexpr int types[] = {TINYGLTF_TYPE_SCALAR, TINYGLTF_TYPE_VEC2, TINYGLTF_TYPE_VEC3,
                                        TINYGLTF_TYPE_VEC4};
        tinygltf::Accessor accessor;
        accessor.bufferView = int(model.bufferViews.size());
        accessor.componentType = component_types[int(array.component)];
        accessor.type = array.components == 16 ? TINYGLTF_TYPE_MAT4 : types[array.components - 1];
        accessor.count = array.count;
        accessor.normalized = array.normalised;
        if (array.bounded)
            add_bounds(array, buffer.data(), accessor);

        model.bufferViews.push_back(std::move(view));
        model.accessors.push_back(std::move(accessor));
    }
    model.buffers.resize(1);
    model.buffers[0].data = buffer.take_bytes();
}

std::map<std::string, int> converted(PRIMITIVE::ATTRIBUTES const &attributes)
{
    return {attributes.begin(), attributes.end()};
}

void add_meshes(DOCUMENT const &document, tinygltf::Model &model)
{
    for (MESH const &mesh : document.meshes) {
        tinygltf::Mesh to;
        to.name = mesh.name;
        for (PRIMITIVE const &primitive : mesh.primitives) {
            tinygltf::Primitive part;
            part.attributes = converted(primitive.attributes);
            part.indices = primitive.indices;
            part.material = primitive.material;
            part.mode = TINYGLTF_MODE_TRIANGLES;
            for (PRIMITIVE::ATTRIBUTES const &target : primitive.targets)
                part.targets.push_back(converted(target));
            to.primitives.push_back(std::move(part));
        }
        to.weights = doubles(mesh.weights.data(), int(mesh.weights.size()));
        if (!mesh.target_names.empty()) {
            std::vector<VALUE> names(mesh.target_names.begin(), mesh.target_names.end());
            to.extras = converted(MEMBERS{{"targetNames", std::move(names)}});
        }
        model.meshes.push_back(std::move(to));
    }
}

void add_nodes(DOCUMENT const &document, tinygltf::Model &model)
{
    bool has_levels = false;
    for (NODE const &node : document.nodes) {
        tinygltf::Node to;
        to.name = node.name;
        NODE const plain;
        if (!std::ranges::equal(node.translation, plain.translation))
            to.translation = doubles(node.translation, 3);
        if (!std::ranges::equal(node.rotation, plain.rotation))
            to.rotation = doubles(node.rotation, 4);
        if (!std::ranges::equal(node.scale, plain.scale))
            to.scale = doubles(node.scale, 3);
        to.children = node.children;
        to.mesh = node.mesh;
        to.skin = node.skin;
        to.camera = node.camera;
        to.extras = converted(node.extras);
        if (!node.coarser_levels.empty()) {
            std::vector<VALUE> levels(node.coarser_levels.begin(), node.coarser_levels.end());
            to.extensions["MSFT_lod"] = converted(MEMBERS{{"ids", std::move(levels)}});
            has_levels = true;
        }
        model.nodes.push_back(std::move(to));
    }
    if (has_levels)
        model.extensionsUsed.push_back("MSFT_lod");

    for (SKIN const &skin : document.skins) {
        tinygltf::Skin to;
        to.name = skin.name;
        to.joints = skin.joints;
        to.inverseBindMatrices = skin.inverse_bind_matrices;
        model.skins.push_back(std::move(to));
    }
    for (CAMERA const &camera : document.cameras) {
        tinygltf::Camera to;
        to.name = camera.name;
        to.type = "perspective";
        to.perspective.yfov = double(camera.vertical_angle);
        to.perspective.aspectRatio = double(camera.aspect);
        to.perspective.znear = double(camera.near_plane);
        to.perspective.zfar = double(camera.far_plane);
        model.cameras.push_back(std::move(to));
    }
}

// Pictures that several materials use stand in the file once.
class TEXTURES {
public:
    explicit TEXTURES(tinygltf::Model &to) : model(to) {}

    template <class INFO>
    void use(TEXTURE const &texture, INFO &to)
    {
        if (texture.uri.empty())
            return;
        auto const [place, is_new] = by_uri.emplace(texture.uri, int(model.textures.size()));
        if (is_new) {
            tinygltf::Image image;
            image.uri = texture.uri;
            model.images.push_back(std::move(image));
            tinygltf::Texture picture;
            picture.source = place->second;
            model.textures.push_back(std::move(picture));
        }
        to.index = place->second;
        to.texCoord = texture.uv_set;
    }

private:
    tinygltf::Model &model;
    std::map<std::string, int> by_uri;
};

void add_materials(DOCUMENT const &document, tinygltf::Model &model)
{
    TEXTURES textures(model);
    for (MATERIAL const &material : document.materials) {
        tinygltf::Material to;
        to.name = material.name;
        to.pbrMetallicRoughness.baseColorFactor = doubles(material.colour, 4);
        to.pbrMetallicRoughness.metallicFactor = double(material.metalness);
        to.pbrMetallicRoughness.roughnessFactor = double(material.roughness);
        textures.use(material.diffuse, to.pbrMetallicRoughness.baseColorTexture);
        textures.use(material.normal, to.normalTexture);
        static constexpr char const *modes[] = {"OPAQUE", "MASK", "BLEND"};
        to.alphaMode = modes[material.alpha];
        if (material.alpha == MATERIAL::CUT_OFF)
            to.alphaCutoff = double(material.cut_off);
        to.doubleSided = material.two_sided;
        to.extras = converted(material.extras);
        model.materials.push_back(std::move(to));
    }
}

void add_animations(DOCUMENT const &document, tinygltf::Model &model)
{
    for (ANIMATION const &animation : document.animations) {
        tinygltf::Animation to;
        to.name = animation.name;
        for (ANIMATION::CHANNEL const &channel : animation.channels) {
            static constexpr char const *paths[] = {"translation", "rotation", "scale", "weights"};
            tinygltf::AnimationSampler sampler;
            sampler.input = channel.times;
            sampler.output = channel.values;
            sampler.interpolation = channel.steps ? "STEP" : "LINEAR";
            tinygltf::AnimationChannel target;
            target.sampler = int(to.samplers.size());
            target.target_node = channel.node;
            target.target_path = paths[channel.path];
            to.samplers.push_back(std::move(sampler));
            to.channels.push_back(std::move(target));
        }
        model.animations.push_back(std::move(to));
    }
}

bool stream_model(DOCUMENT &document, FILE_STREAM &to, KN::String &error)
try {
    tinygltf::Model model;
    model.asset.version = "2.0";
    add_arrays(document.buffer, model);
    add_meshes(document, model);
    add_nodes(document, model);
    add_materials(document, model);
    add_animations(document, model);
    model.defaultScene = 0;
    model.scenes.resize(1);
    model.scenes[0].nodes = document.roots;
    model.scenes[0].extras = converted(document.extras);

    std::ostream stream(&to);
    tinygltf::TinyGLTF writer;
    writer.SetImageWriter(nullptr, nullptr);  // images are named, not packed
    bool const written = writer.WriteGltfSceneToStream(&model, stream, false, true) && stream.good();
    if (!written)
        error = "the glTF writer failed";
    return written;
} catch (std::exception const &fault) {
    error = fault.what();
    return false;
}

}  // namespace

bool write_glb(DOCUMENT &document, KN::String const &path, KN::String &error, std::uint64_t *size)
{
    if (document.buffer.is_refused()) {
        error = path + ": the model needs more than 2 GiB of vertices and indices; split the scene";
        return false;
    }
    KN::FinishedFile file(path);
    FILE_STREAM stream(file);
    KN::String fault;
    bool const streamed = stream_model(document, stream, fault);
    if (!file.error().empty()) {
        error = file.error();
        return false;
    }
    if (!streamed) {
        error = path + ": " + fault;
        return false;
    }
    if (!file.commit()) {
        error = file.error();
        return false;
    }
    if (size)
        *size = stream.written;
    return true;
}

}  // namespace GLTF
