// The asset graph of a build, as the host asks for it.
#pragma once

#include "Plugins/Vx2/host/asset_graph.h"
#include "Plugins/Vx2/host/asset_graph_store.h"
#include "platform/asset_graph/fragment_id.h"

namespace QTSHARED {

class ASSET_GRAPH_API GRAPH_STORE final : public ASSET_GRAPH_STORE {
public:
    // The table outlives this object.
    GRAPH_STORE(QString const &working_root, QString const &old_working_root, FILE_TABLE const &files)
        : held(working_root, old_working_root), ids(files)
    {}

    bool add_and_save(ASSET_FRAGMENT_BUILDER &builder, ACTION_INTERFACE &action, FILE_TABLE const &files,
                      RULE_CACHE const &rules) override;
    QString fragment_id(LOGICAL_PATH const &asset, RULE_CACHE const &rules) override;
    ASSET_GRAPH *graph() override { return &held; }

private:
    ASSET_GRAPH held;
    FRAGMENT_IDS ids;
};

}  // namespace QTSHARED
