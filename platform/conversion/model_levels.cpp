#include "platform/conversion/model_levels.h"

#include "platform/conversion/mesh_source.h"

#include <map>

namespace TOOLDATABUILDER {

std::optional<unsigned> level_in_name(std::string_view name)
{
    std::size_t const digits = name.find_last_not_of("0123456789") + 1;
    constexpr std::string_view mark = "_lod";
    if (digits == name.size() || name.size() - digits > 3 || digits < mark.size())
        return {};
    if (KN::String(name.substr(digits - mark.size(), mark.size())).lower() != mark)
        return {};
    return unsigned(std::stoul(std::string(name.substr(digits))));
}

bool sort_into_levels(std::vector<MESH_SOURCE> const &meshes, bool single_lod, MODEL_LEVELS &levels, KN::String &error)
{
    std::map<unsigned, std::vector<std::size_t>> named;
    std::vector<std::size_t> unnamed;
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        std::optional<unsigned> level = single_lod ? std::nullopt : level_in_name(meshes[i].name);
        if (!level && !single_lod)
            level = level_in_name(meshes[i].node_name);
        (level ? named[*level] : unnamed).push_back(i);
    }
    if (!named.empty() && !unnamed.empty()) {
        error = "mesh '" + meshes[unnamed[0]].name + "' names no level of detail while '" +
                meshes[named.begin()->second[0]].name + "' does; end all names with _lod and a number, or none";
        return false;
    }
    levels.are_named = !named.empty();
    for (auto &[number, indices] : named)
        levels.meshes_of.push_back(std::move(indices));
    if (!unnamed.empty())
        levels.meshes_of.push_back(std::move(unnamed));
    return true;
}

}  // namespace TOOLDATABUILDER
