#include "platform/build_host/schemas.h"

#include "Plugins/Vx2/host/rules.h"
#include "platform/build_host/did_you_mean.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace {

struct REGISTERED {
    RULE_SCHEMA const *owner;
    SCHEMA schema;
};

struct REGISTRY {
    std::mutex lock;
    std::vector<REGISTERED> entries;
};

// Made by the first schema, whichever library holds it, and so before every one and destroyed after all.
REGISTRY &registry()
{
    static REGISTRY all;
    return all;
}

// What planners read although no schema declares it.
struct UNDECLARED {
    char const *kind, *property;
};
constexpr UNDECLARED undeclared[] = {
    {"RigidModelV2", "DisableAlphaTest"}, {"RigidModelV2", "VariableBonesPerVert"},
    {"Animation", "StripTranslations"},   {"Animation", "StripRotations"},
    {"Animation", "TargetPath"},          {"RigidNodeV2", "CanBurn"},
};

}  // namespace

RULE_SCHEMA::RULE_SCHEMA(QString const &key, QString const &description)
{
    std::lock_guard const guard(registry().lock);
    registry().entries.push_back({this, {key, description, {}}});
}

RULE_SCHEMA::~RULE_SCHEMA()
{
    std::lock_guard const guard(registry().lock);
    std::erase_if(registry().entries, [this](REGISTERED const &entry) { return entry.owner == this; });
}

void RULE_SCHEMA::add_property(QString const &name, QString const &help)
{
    std::lock_guard const guard(registry().lock);
    for (REGISTERED &entry : registry().entries) {
        if (entry.owner != this)
            continue;
        for (SCHEMA_PROPERTY &property : entry.schema.properties) {
            if (property.name == name) {
                property.help = help;
                return;
            }
        }
        entry.schema.properties.append({name, help});
    }
}

QVector<SCHEMA> schemas()
{
    std::lock_guard const guard(registry().lock);
    QVector<SCHEMA> all;
    for (REGISTERED const &entry : registry().entries)
        all.append(entry.schema);
    return all;
}

QString check_rule_kind(QString const &kind)
{
    QStringList known;
    for (SCHEMA const &schema : schemas())
        known.append(schema.key);
    for (UNDECLARED const &row : undeclared)
        known.append(QLatin1String(row.kind));
    if (known.contains(kind))
        return {};
    return QStringLiteral("there is no rule kind '%1'%2").arg(kind, did_you_mean(kind, known));
}

QString check_rule_property(QString const &kind, QString const &property)
{
    QStringList known;
    for (SCHEMA const &schema : schemas())
        if (schema.key == kind)
            for (SCHEMA_PROPERTY const &declared : schema.properties)
                known.append(declared.name);
    for (UNDECLARED const &row : undeclared)
        if (kind == QLatin1String(row.kind))
            known.append(QLatin1String(row.property));
    if (known.contains(property))
        return {};
    return QStringLiteral("rule %1 has no property '%2'%3").arg(kind, property, did_you_mean(property, known));
}
