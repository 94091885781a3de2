// What the host asks of the asset graph. The graph's own library implements it; the program sets it before it plans.
#pragma once

#include "Plugins/Vx2/host/action.h"

class ASSET_GRAPH_STORE {
public:
    // As ACTION_INTERFACE::add_to_asset_graph_and_save, for `action`: it books the file and gets the lines.
    virtual bool add_and_save(QTSHARED::ASSET_FRAGMENT_BUILDER &builder, ACTION_INTERFACE &action,
                              FILE_TABLE const &files, RULE_CACHE const &rules) = 0;
    // As ACTION_INTERFACE::asset_fragment_id.
    virtual QString fragment_id(LOGICAL_PATH const &asset, RULE_CACHE const &rules) = 0;
    virtual QTSHARED::ASSET_GRAPH *graph() = 0;

protected:
    ~ASSET_GRAPH_STORE() = default;
};

// Gives the store that stood before. The store outlives its installation. Also sets ACTION_INTERFACE::s_asset_graph.
HOST_API ASSET_GRAPH_STORE *set_asset_graph_store(ASSET_GRAPH_STORE *store);
