#include "platform/exchange/gltf_check.h"

#include <cstring>
#include <set>
#include <tiny_gltf.h>

namespace {

class CHECK {
public:
    CHECK(tinygltf::Model const &checked, IMPORT_NOTES &lines) : model(checked), notes(lines) {}

    // The first fault, or an empty text.
    std::string fault()
    {
        check_accessors();
        for (std::size_t m = 0; m < model.meshes.size(); ++m)
            for (std::size_t p = 0; p < model.meshes[m].primitives.size(); ++p)
                check_primitive(model.meshes[m].primitives[p],
                                "mesh " + std::to_string(m) + ", primitive " + std::to_string(p) + ": ");
        check_nodes();
        check_skins();
        note_animations();
        note_names();
        return first_fault;
    }

private:
    void found(std::string const &what)
    {
        if (first_fault.empty())
            first_fault = what;
    }
    bool is_accessor(int index) const { return index >= 0 && std::size_t(index) < model.accessors.size(); }

    void check_accessors()
    {
        for (std::size_t i = 0; i < model.accessors.size(); ++i) {
            tinygltf::Accessor const &accessor = model.accessors[i];
            std::string const name = "accessor " + std::to_string(i);
            int const component = tinygltf::GetComponentSizeInBytes(std::uint32_t(accessor.componentType));
            int const components = tinygltf::GetNumComponentsInType(std::uint32_t(accessor.type));
            if (component <= 0 || components <= 0) {
                found(name + " is of no known type");
                continue;
            }
            if (accessor.bufferView < 0)
                continue;  // zeros, perhaps with sparse values
            if (std::size_t(accessor.bufferView) >= model.bufferViews.size()) {
                found(name + " names a buffer view that does not exist");
                continue;
            }
            tinygltf::BufferView const &view = model.bufferViews[std::size_t(accessor.bufferView)];
            if (view.buffer < 0 || std::size_t(view.buffer) >= model.buffers.size()) {
                found(name + " lies in a buffer that does not exist");
                continue;
            }
            std::size_t const available = model.buffers[std::size_t(view.buffer)].data.size();
            std::size_t const size = std::size_t(component) * std::size_t(components);
            std::size_t const stride = view.byteStride != 0 ? view.byteStride : size;
            bool const view_fits = view.byteOffset <= available && view.byteLength <= available - view.byteOffset;
            bool const fits =
                accessor.count == 0 ||
                (accessor.byteOffset <= view.byteLength && size <= view.byteLength - accessor.byteOffset &&
                 (accessor.count - 1) <= (view.byteLength - accessor.byteOffset - size) / stride);
            if (!view_fits || !fits)
                found(name + " claims " + std::to_string(accessor.count) + " elements of " + std::to_string(size) +
                      " bytes, more than its buffer holds");
        }
    }

    void check_primitive(tinygltf::Primitive const &primitive, std::string const &where)
    {
        auto const position = primitive.attributes.find("POSITION");
        if (position == primitive.attributes.end() || !is_accessor(position->second))
            return;  // nothing to be seen
        std::size_t const count = model.accessors[std::size_t(position->second)].count;
        auto const check_attributes = [&](std::map<std::string, int> const &attributes) {
            for (auto const &[name, index] : attributes) {
                if (!is_accessor(index))
                    found(where + name + " names an accessor that does not exist");
                else if (model.accessors[std::size_t(index)].count != count)
                    found(where + name + " has " + std::to_string(model.accessors[std::size_t(index)].count) +
                          " elements for " + std::to_string(count) + " vertices");
            }
        };
        check_attributes(primitive.attributes);
        for (auto const &target : primitive.targets)
            check_attributes(target);
        if (primitive.indices < 0 || !first_fault.empty())
            return;
        if (!is_accessor(primitive.indices)) {
            found(where + "its indices name an accessor that does not exist");
            return;
        }
        tinygltf::Accessor const &indices = model.accessors[std::size_t(primitive.indices)];
        if (indices.type != TINYGLTF_TYPE_SCALAR)
            found(where + "its indices are no single numbers");
        for (std::size_t i = 0; i < indices.count && first_fault.empty(); ++i) {
            if (std::uint64_t const index = element(indices, i); index >= count) {
                found(where + "index " + std::to_string(i) + " is " + std::to_string(index) + ", but there are " +
                      std::to_string(count) + " vertices");
            }
        }
    }

    // The first eight bytes, or as many as it has, of an element of an accessor that has been checked.
    std::uint64_t element(tinygltf::Accessor const &accessor, std::size_t i) const
    {
        if (accessor.bufferView < 0)
            return 0;
        tinygltf::BufferView const &view = model.bufferViews[std::size_t(accessor.bufferView)];
        std::size_t const size = std::size_t(tinygltf::GetComponentSizeInBytes(std::uint32_t(accessor.componentType))) *
                                 std::size_t(tinygltf::GetNumComponentsInType(std::uint32_t(accessor.type)));
        std::size_t const stride = view.byteStride != 0 ? view.byteStride : size;
        std::uint64_t value = 0;
        std::memcpy(&value,
                    model.buffers[std::size_t(view.buffer)].data.data() + view.byteOffset + accessor.byteOffset +
                        i * stride,
                    std::min(size, sizeof value));
        return value;
    }

    void check_nodes()
    {
        std::vector<int> parents(model.nodes.size(), -1);
        for (std::size_t n = 0; n < model.nodes.size(); ++n) {
            tinygltf::Node const &node = model.nodes[n];
            std::string const name = "node " + std::to_string(n);
            if (node.mesh >= int(model.meshes.size()) || node.skin >= int(model.skins.size()) ||
                node.camera >= int(model.cameras.size()))
                found(name + " names a mesh, skin or camera that does not exist");
            for (int const child : node.children) {
                if (child < 0 || std::size_t(child) >= model.nodes.size())
                    found(name + " names a child that does not exist");
                else if (parents[std::size_t(child)] >= 0)
                    found("node " + std::to_string(child) + " stands below two nodes");
                else
                    parents[std::size_t(child)] = int(n);
            }
        }
        for (std::size_t n = 0; n < parents.size() && first_fault.empty(); ++n) {
            std::size_t steps = 0;
            for (int up = int(n); up >= 0 && first_fault.empty(); up = parents[std::size_t(up)])
                if (++steps > deepest_tree)
                    found("node " + std::to_string(n) + " stands below itself, or more than " +
                          std::to_string(deepest_tree) + " deep");
        }
        for (tinygltf::Scene const &scene : model.scenes)
            for (int const root : scene.nodes)
                if (root < 0 || std::size_t(root) >= model.nodes.size())
                    found("a scene names a node that does not exist");
    }

    void check_skins()
    {
        for (std::size_t s = 0; s < model.skins.size(); ++s) {
            tinygltf::Skin const &skin = model.skins[s];
            std::string const name = "skin " + std::to_string(s);
            for (int const joint : skin.joints)
                if (joint < 0 || std::size_t(joint) >= model.nodes.size())
                    found(name + " names a joint that does not exist");
            if (is_accessor(skin.inverseBindMatrices) &&
                model.accessors[std::size_t(skin.inverseBindMatrices)].count < skin.joints.size())
                found(name + " has fewer matrices than joints");
        }
        for (std::size_t n = 0; n < model.nodes.size() && first_fault.empty(); ++n) {
            tinygltf::Node const &node = model.nodes[n];
            if (node.mesh < 0 || node.skin < 0)
                continue;
            std::size_t const joints = model.skins[std::size_t(node.skin)].joints.size();
            for (tinygltf::Primitive const &primitive : model.meshes[std::size_t(node.mesh)].primitives) {
                auto const used = primitive.attributes.find("JOINTS_0");
                if (used == primitive.attributes.end() || !is_accessor(used->second))
                    continue;
                tinygltf::Accessor const &accessor = model.accessors[std::size_t(used->second)];
                std::size_t const size =
                    std::size_t(tinygltf::GetComponentSizeInBytes(std::uint32_t(accessor.componentType)));
                if (size > 2 || accessor.type != TINYGLTF_TYPE_VEC4)
                    found("node " + std::to_string(n) + ": its mesh has joints of a type that glTF does not know");
                for (std::size_t i = 0; i < accessor.count && first_fault.empty(); ++i) {
                    std::uint64_t const four = element(accessor, i);
                    for (unsigned k = 0; k < 4; ++k)
                        if (std::uint64_t const joint = four >> (8 * size * k) & (size == 1 ? 0xff : 0xffff);
                            joint >= joints)
                            found("node " + std::to_string(n) + ": vertex " + std::to_string(i) + " hangs on joint " +
                                  std::to_string(joint) + " of " + std::to_string(joints));
                }
            }
        }
    }

    void note_animations()
    {
        for (tinygltf::Animation const &animation : model.animations)
            for (tinygltf::AnimationSampler const &sampler : animation.samplers)
                if (!sampler.interpolation.empty() && sampler.interpolation != "LINEAR")
                    notes.add("animation '" + animation.name +
                              "' has keys that step or curve; they are joined by "
                              "straight lines");
    }

    // The importer library tells nodes apart by name alone.
    void note_names()
    {
        std::set<std::string> names, twice;
        for (tinygltf::Node const &node : model.nodes)
            if (!node.name.empty() && !names.insert(node.name).second)
                twice.insert(node.name);
        std::set<int> pointed_at;
        for (tinygltf::Skin const &skin : model.skins)
            pointed_at.insert(skin.joints.begin(), skin.joints.end());
        for (tinygltf::Animation const &animation : model.animations)
            for (tinygltf::AnimationChannel const &channel : animation.channels)
                pointed_at.insert(channel.target_node);
        for (int const n : pointed_at)
            if (n >= 0 && std::size_t(n) < model.nodes.size() && twice.count(model.nodes[std::size_t(n)].name) != 0)
                notes.add("several nodes are called '" + model.nodes[std::size_t(n)].name +
                          "'; bones and animation of that name may go to the wrong one; give them different names");
    }

    static constexpr std::size_t deepest_tree = 1000;

    tinygltf::Model const &model;
    IMPORT_NOTES &notes;
    std::string first_fault;
};

bool has_extension(KN::String const &path, std::string_view extension)
{
    KN::String const lower = path.lower();
    return lower.size() >= extension.size() &&
           lower.compare(lower.size() - extension.size(), extension.size(), extension) == 0;
}

}  // namespace

bool is_gltf_path(KN::String const &path) { return has_extension(path, ".gltf") || has_extension(path, ".glb"); }

bool check_gltf(KN::String const &path, IMPORT_NOTES &notes, KN::String &error)
{
    tinygltf::TinyGLTF loader;
    loader.SetImageLoader([](tinygltf::Image *, int const, std::string *, std::string *, int, int,
                             unsigned char const *, int, void *) { return true; },
                          nullptr);
    tinygltf::Model model;
    std::string faults, warnings;
    bool const loaded = has_extension(path, ".glb") ? loader.LoadBinaryFromFile(&model, &faults, &warnings, path)
                                                    : loader.LoadASCIIFromFile(&model, &faults, &warnings, path);
    if (!loaded) {
        error = faults.substr(0, faults.find('\n'));
        if (error.empty())
            error = "this is no glTF 2.0 file";
        error += "; export the model again";
        return false;
    }
    error = CHECK(model, notes).fault();
    if (error.empty())
        return true;
    error += "; export the model again";
    return false;
}
