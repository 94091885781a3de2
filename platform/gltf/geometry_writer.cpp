#include "platform/gltf/geometry.h"
#include "platform/gltf/writer.h"

#include <algorithm>

namespace GLTF {

bool write_geometry(std::vector<GEOMETRY> const &meshes, std::vector<MEMBERS> const &node_extras, MEMBERS const &extras,
                    KN::String const &path, KN::String &error)
{
    DOCUMENT document;
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        GEOMETRY const &geometry = meshes[i];
        if (geometry.indices.empty())
            continue;
        BUFFER &buffer = document.buffer;
        int const positions = buffer.add(COMPONENT::F32, 3, geometry.positions.size() / 3, USE::VERTICES, true);
        int const indices = buffer.add(COMPONENT::U32, 1, geometry.indices.size(), USE::INDICES);
        if (positions < 0 || indices < 0)
            break;
        std::ranges::copy(geometry.positions, buffer.at<float>(positions));
        std::ranges::copy(geometry.indices, buffer.at<std::uint32_t>(indices));

        NODE node;
        node.name = geometry.name;
        node.mesh = int(document.meshes.size());
        for (auto const &[name, text] : geometry.texts)
            node.extras.emplace_back(name, text);
        if (i < node_extras.size())
            node.extras.insert(node.extras.end(), node_extras[i].begin(), node_extras[i].end());
        document.meshes.push_back({geometry.name, {{{{"POSITION", positions}}, {}, indices, -1}}, {}, {}});
        document.roots.push_back(int(document.nodes.size()));
        document.nodes.push_back(std::move(node));
    }
    document.extras = extras;
    return write_glb(document, path, error);
}

}  // namespace GLTF
