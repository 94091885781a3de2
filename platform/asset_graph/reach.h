// What one fragment leads to in the asset graph: what it needs, or what needs it, directly or over others.
#pragma once

#include "Plugins/Vx2/host/asset_graph.h"

#include <vector>

namespace QTSHARED {

struct GRAPH_STEP {
    QString from, to;  // ids; the second is needed by the first
    int distance;      // 1: directly
};

enum class REACH { NEEDS, NEEDED_BY };

// Each step once, the nearer ones first, then by id; with `all` also those behind the nearest. Cycles are followed
// once. `fragments` by id in lower case, as ASSET_GRAPH gives them; so are the ids of the steps.
ASSET_GRAPH_API std::vector<GRAPH_STEP> reach(QMap<QString, ASSET_FRAGMENT> const &fragments, QString const &id,
                                              REACH direction, bool all);

}  // namespace QTSHARED
