#include "platform/asset_graph/fragment_id.h"

namespace QTSHARED {

static QString const &working()
{
    static QString const word = QStringLiteral("<working>/");
    return word;
}

// The key that is `asset` but for the case of letters; `asset` where there is none.
LOGICAL_PATH FRAGMENT_IDS::folded_key(LOGICAL_PATH const &asset)
{
    std::lock_guard const guard(lock);
    if (indexed != files.size()) {
        indexed = files.size();
        by_folded.clear();
        for (auto entry = files.lowerBound(LOGICAL_PATH(working())); entry != files.end(); ++entry) {
            if (!entry.key().startsWith(working()))
                break;
            by_folded.insert(entry.key().toLower(), entry.key());
        }
    }
    return by_folded.value(asset.toLower(), asset);
}

// The key under which the table knows the asset, or an empty one. Files that come while actions run are found by
// their very name. The host hears of the look-up.
LOGICAL_PATH FRAGMENT_IDS::in_table(LOGICAL_PATH const &asset)
{
    LOGICAL_PATH const key = folded_key(asset);
    FILE_ENTRY const *const entry = files.peek(key);
    bool const is_there = entry != nullptr && entry->state != FILE_ENTRY::DELETED;
    if (is_there)
        note_look_up(key, true);
    else
        note_folded_look_up(key);
    return is_there ? key : LOGICAL_PATH();
}

QString FRAGMENT_IDS::id_of(LOGICAL_PATH const &asset)
{
    LOGICAL_PATH const key = in_table(asset);
    if (key.isEmpty())
        return {};
    QString const path = key.startsWith(working()) ? key.mid(working().size()) : QString(key);
    QString const dot = QStringLiteral(".");
    if (path.endsWith(QLatin1String(".klmodel")))
        return path.section(dot, 0, -2);
    if (path.endsWith(QLatin1String(".xml.material")))
        return path.section(dot, 0, -3);
    if (path.endsWith(QLatin1String(".rigid_model_v2"))) {
        QString const name = path.section(dot, 0, 0);
        bool const has_twin = !in_table(LOGICAL_PATH(working() + name + QLatin1String(".klmodel"))).isEmpty();
        return has_twin ? name + QLatin1String(".rigid_model_v2") : name;
    }
    QString const tech = QStringLiteral("_tech.vx2.parsed");
    if (path.endsWith(tech))
        return QString(QLatin1String("battle/") + path.chopped(tech.size()) + QLatin1String("/tech")).toLower();
    return path;
}

}  // namespace QTSHARED
