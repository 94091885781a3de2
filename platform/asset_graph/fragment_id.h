// Under which id an asset's fragment is known. The id follows from the asset's path and the files beside it, not from
// what has been built so far, so that the order of actions does not show.
#pragma once

#include "Plugins/Vx2/host/file_table.h"
#include "Plugins/Vx2/host/library_api.h"

#include <QtCore/QHash>
#include <mutex>

namespace QTSHARED {

// Calls may be made from any thread.
class ASSET_GRAPH_API FRAGMENT_IDS {
public:
    // The table outlives this object.
    explicit FRAGMENT_IDS(FILE_TABLE const &table) : files(table) {}

    // `asset`: "<working>/...", found without regard to case; empty if there is no such file. The id of
    //   X.klmodel                            is X
    //   X.xml.material                       X
    //   X.rigid_model_v2                     the path up to its first dot; with a .klmodel of that name,
    //                                        .rigid_model_v2 behind
    //   FOLDER/STEM_tech.vx2.parsed          "battle/FOLDER/STEM/tech" in lower case
    //   any other                            the path itself
    QString id_of(LOGICAL_PATH const &asset);

private:
    LOGICAL_PATH in_table(LOGICAL_PATH const &asset);
    LOGICAL_PATH folded_key(LOGICAL_PATH const &asset);

    FILE_TABLE const &files;
    std::mutex lock;                         // of the two below
    std::size_t indexed = 0;                 // size of the table then
    QHash<QString, LOGICAL_PATH> by_folded;  // keys below the working root, by their lower case
};

}  // namespace QTSHARED
