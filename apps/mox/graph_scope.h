// The asset graph of a session, in force while it lives. Made once the record is open and the files are listed.
#pragma once

#include "platform/asset_graph/store.h"
#include "platform/build_host/session.h"

class GRAPH_SCOPE {
public:
    explicit GRAPH_SCOPE(SESSION &session)
        : store(session.project().roots.working, session.project().roots.old_working, session.files().table,
                session.record())
    {
        set_asset_graph_store(&store);
    }
    ~GRAPH_SCOPE() { set_asset_graph_store(nullptr); }
    GRAPH_SCOPE(GRAPH_SCOPE const &) = delete;
    GRAPH_SCOPE &operator=(GRAPH_SCOPE const &) = delete;

private:
    QTSHARED::GRAPH_STORE store;
};
