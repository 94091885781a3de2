#include "platform/exchange/node_attributes.h"

#include "foundation/containers.h"
#include "scene/attributes.h"

#include <algorithm>
#include <assimp/scene.h>
#include <charconv>
#include <string_view>

using namespace VEX2_LOADER;

namespace {

// Entries that are no artist's: the importer's own, and the properties that every FBX node has.
constexpr std::string_view own_entries[] = {
    "AxisLen",
    "DefaultAttributeIndex",
    "Freeze",
    "GeometricRotation",
    "GeometricScaling",
    "GeometricTranslation",
    "InheritType",
    "IsNull",
    "LODBox",
    "Lcl Rotation",
    "Lcl Scaling",
    "Lcl Translation",
    "LookAtProperty",
    "MaxDampRangeX",
    "MaxDampRangeY",
    "MaxDampRangeZ",
    "MaxDampStrengthX",
    "MaxDampStrengthY",
    "MaxDampStrengthZ",
    "MaxHandle",
    "MinDampRangeX",
    "MinDampRangeY",
    "MinDampRangeZ",
    "MinDampStrengthX",
    "MinDampStrengthY",
    "MinDampStrengthZ",
    "NegativePercentShapeSupport",
    "PostRotation",
    "PreRotation",
    "PreferedAngleX",
    "PreferedAngleY",
    "PreferedAngleZ",
    "QuaternionInterpolate",
    "RotationActive",
    "RotationMax",
    "RotationMaxX",
    "RotationMaxY",
    "RotationMaxZ",
    "RotationMin",
    "RotationMinX",
    "RotationMinY",
    "RotationMinZ",
    "RotationOffset",
    "RotationOrder",
    "RotationPivot",
    "RotationSpaceForLimitOnly",
    "RotationStiffnessX",
    "RotationStiffnessY",
    "RotationStiffnessZ",
    "ScalingActive",
    "ScalingMax",
    "ScalingMaxX",
    "ScalingMaxY",
    "ScalingMaxZ",
    "ScalingMin",
    "ScalingMinX",
    "ScalingMinY",
    "ScalingMinZ",
    "ScalingOffset",
    "ScalingPivot",
    "Show",
    "TranslationActive",
    "TranslationMax",
    "TranslationMaxX",
    "TranslationMaxY",
    "TranslationMaxZ",
    "TranslationMin",
    "TranslationMinX",
    "TranslationMinY",
    "TranslationMinZ",
    "UDP3DSMAX",  // comes a second time, as "UserProperties"
    "UpVectorProperty",
    "Visibility",
    "Visibility Inheritance",
    "currentUVSet",
    "extensions",
};

constexpr unsigned deepest_group = 16;

void add_value(VEX2_ATTRIBUTES &attributes, std::string const &name, std::string_view value)
{
    KN::UniString const wide_name = KN::from_utf8(name);
    for (VEX2_STRING_ATTRIBUTE &attribute : attributes.strings) {
        if (attribute.name == wide_name) {
            attribute.values.append(KN::from_utf8(value));
            return;
        }
    }
    attributes.add_string(wide_name, KN::from_utf8(value));
}

template <class NUMBER>
std::string text_of(NUMBER number)
{
    char text[64];
    return std::string(text, std::to_chars(text, text + sizeof text, number).ptr);
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    std::size_t const first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// One of the modelling tools keeps all of a node's properties in one text, a line "name = value" each. Files in plain
// text spell the line ends out.
void add_lines(VEX2_ATTRIBUTES &attributes, std::string text)
{
    for (std::string_view const spelt : {"&cr;", "&lf;"})
        for (std::size_t at; (at = text.find(spelt)) != std::string::npos;)
            text.replace(at, spelt.size(), 1, '\n');
    for (std::size_t first = 0, end; first < text.size(); first = end + 1) {
        end = std::min(text.find('\n', first), text.size());
        std::string_view const line = std::string_view(text).substr(first, end - first);
        std::size_t const equals = line.find('=');
        if (equals != std::string_view::npos && !trimmed(line.substr(0, equals)).empty())
            add_value(attributes, std::string(trimmed(line.substr(0, equals))), trimmed(line.substr(equals + 1)));
    }
}

void add_group(aiMetadata const &group, std::string const &path, VEX2_ATTRIBUTES &attributes, unsigned depth)
{
    for (unsigned i = 0; i < group.mNumProperties; ++i) {
        std::string const key = group.mKeys[i].C_Str();
        aiMetadataEntry const &entry = group.mValues[i];
        if (path.empty() && std::binary_search(std::begin(own_entries), std::end(own_entries), key))
            continue;
        // A list comes as a group whose entries all bear the list's own name.
        std::size_t const last_dot = path.rfind('.');
        bool const in_list = !path.empty() && path.substr(last_dot + 1) == key;
        std::string const name = path.empty() ? key : in_list ? path : path + "." + key;
        switch (entry.mType) {
        case AI_BOOL:
            add_value(attributes, name, *static_cast<bool const *>(entry.mData) ? "true" : "false");
            break;
        case AI_INT32:
            add_value(attributes, name, text_of(*static_cast<std::int32_t const *>(entry.mData)));
            break;
        case AI_UINT64:
            add_value(attributes, name, text_of(*static_cast<std::uint64_t const *>(entry.mData)));
            break;
        case AI_FLOAT:
            add_value(attributes, name, text_of(*static_cast<float const *>(entry.mData)));
            break;
        case AI_DOUBLE:
            add_value(attributes, name, text_of(*static_cast<double const *>(entry.mData)));
            break;
        case AI_AIVECTOR3D: {
            aiVector3D const &v = *static_cast<aiVector3D const *>(entry.mData);
            for (float const number : {v.x, v.y, v.z})
                add_value(attributes, name, text_of(number));
            break;
        }
        case AI_AISTRING: {
            std::string_view const text = static_cast<aiString const *>(entry.mData)->C_Str();
            if (path.empty() && key == "UserProperties")
                add_lines(attributes, std::string(text));
            else
                add_value(attributes, name, text);
            break;
        }
        case AI_AIMETADATA:
            if (depth < deepest_group)
                add_group(*static_cast<aiMetadata const *>(entry.mData), name, attributes, depth + 1);
            break;
        default:
            break;
        }
    }
}

}  // namespace

void add_node_attributes(aiNode const &node, VEX2_ATTRIBUTES &attributes)
{
    static_assert(std::is_sorted(std::begin(own_entries), std::end(own_entries)));
    if (node.mMetaData != nullptr)
        add_group(*node.mMetaData, "", attributes, 0);
}
