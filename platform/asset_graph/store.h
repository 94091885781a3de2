// The asset graph of a build, as the host asks for it.
#pragma once

#include "Plugins/Vx2/host/asset_graph.h"
#include "Plugins/Vx2/host/asset_graph_store.h"
#include "platform/asset_graph/fragment_id.h"
#include "platform/build_host/build_record.h"

namespace QTSHARED {

class ASSET_GRAPH_API GRAPH_STORE final : public ASSET_GRAPH_STORE, private AGF_MEMORY {
public:
    // Table and record outlive this object.
    GRAPH_STORE(QString const &working_root, QString const &old_working_root, FILE_TABLE const &files,
                BUILD_RECORD &build_record)
        : record(build_record), held(working_root, old_working_root, this), ids(files)
    {}

    bool add_and_save(ASSET_FRAGMENT_BUILDER &builder, ACTION_INTERFACE &action, FILE_TABLE const &files,
                      RULE_CACHE const &rules) override;
    QString fragment_id(LOGICAL_PATH const &asset, RULE_CACHE const &rules) override;
    ASSET_GRAPH *graph() override { return &held; }

private:
    QVector<ENTRY> recall() override;
    void remember(ENTRY const &entry) override;

    BUILD_RECORD &record;
    ASSET_GRAPH held;
    FRAGMENT_IDS ids;
};

}  // namespace QTSHARED
