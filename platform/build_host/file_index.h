// The entries of a file table by the ids of their paths (text_id), as the build record names files. It neither owns the
// table nor follows its changes.
#pragma once

#include "Plugins/Vx2/host/file_table.h"

#include <unordered_set>
#include <utility>
#include <vector>

class FILE_INDEX {
public:
    explicit FILE_INDEX(FILE_TABLE const &files);
    FILE_ENTRY *find(std::uint64_t id) const;
    // Whether a path that is `id` in lower case stands below the working root. For one thread.
    bool has_folded(std::uint64_t id) const;

private:
    FILE_TABLE const &table;
    std::vector<std::pair<std::uint64_t, FILE_ENTRY *>> slots_of_ids;
    mutable std::unordered_set<std::uint64_t> folded;  // made when it is first asked for
};
