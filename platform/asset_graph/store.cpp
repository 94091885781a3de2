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

QString GRAPH_STORE::fragment_id(LOGICAL_PATH const &asset, RULE_CACHE const &) { return ids.id_of(asset); }

}  // namespace QTSHARED
