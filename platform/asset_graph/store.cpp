#include "platform/asset_graph/store.h"

namespace QTSHARED {

bool GRAPH_STORE::add_and_save(ASSET_FRAGMENT_BUILDER &builder, ACTION_INTERFACE &action, FILE_TABLE const &files,
                               RULE_CACHE const &)
{
    QString error;
    if (!held.replace_and_save(builder, error)) {
        action.output_line(error, 2);
        return false;
    }
    action.add_to_perforce(PHYSICAL_PATH(builder.agf_path()), files, false, QString());
    return true;
}

QVector<AGF_MEMORY::ENTRY> GRAPH_STORE::recall()
{
    QVector<ENTRY> entries;
    for (KEPT_FILE const &file : record.kept_files())
        entries.append({file.name, file.size, file.time, file.made});
    return entries;
}

void GRAPH_STORE::remember(ENTRY const &entry) { record.keep({entry.agf, entry.size, entry.time, entry.fragments}); }

QString GRAPH_STORE::fragment_id(LOGICAL_PATH const &asset, RULE_CACHE const &) { return ids.id_of(asset); }

}  // namespace QTSHARED
