#include "Plugins/Vx2/host/rule_values.h"

#include <algorithm>
#include <cmath>

namespace {

// The properties NAME1 to NAME6, up to the first that is no number.
std::vector<float> numbers(RULE const &rule, char const *name)
{
    std::vector<float> found;
    for (int i = 1; i <= 6; ++i) {
        bool is_number = false;
        float const number = rule.value(QLatin1String(name) + QString::number(i)).toFloat(&is_number);
        if (!is_number || !std::isfinite(number))
            break;
        found.push_back(number);
    }
    return found;
}

}  // namespace

void get_lod_distances_and_qualities(KN_STD::VECTOR<float> &distances, KN_STD::VECTOR<unsigned char> &qualities,
                                     RULE_CACHE const &rules, PHYSICAL_PATH const &file)
{
    LOGICAL_PATH const logical = PATHS::logical_path(file);
    distances = numbers(rules.get(logical, QStringLiteral("LODDistances")), "LODDistance");
    qualities.clear();
    for (float const quality : numbers(rules.get(logical, QStringLiteral("LODQualities")), "LODQuality"))
        qualities.push_back(static_cast<unsigned char>(std::clamp(quality, 0.0f, 100.0f)));
}

bool should_output_debug_animation_info(RULE_CACHE const &rules)
{
    QString const text =
        rules.get_global(QStringLiteral("Vx2")).value(QStringLiteral("OutputAnimDebugText")).toString().toLower();
    return text == QLatin1String("true") || text == QLatin1String("1");
}
