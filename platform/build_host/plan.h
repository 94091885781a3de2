// A plan: all actions that the processors want for a tree, with the order between them. Planning runs on one thread and
// opens no file.
#pragma once

#include "Plugins/Vx2/host/processor.h"
#include "platform/build_host/api.h"
#include "platform/build_host/file_tree.h"
#include "platform/build_host/planned_action.h"
#include "platform/build_host/rule_store.h"

#include <span>
#include <vector>

struct PLAN_EDGE {
    int other;
    bool flag;        // the later action needs what the earlier one holds in memory
    bool by_host;     // drawn by the host, not by a processor
    bool is_product;  // the later action declares to read a file that the earlier one writes
};

// The edges of all actions in one array, those of an action side by side.
struct EDGE_LISTS {
    std::vector<PLAN_EDGE> edges;
    std::vector<std::uint32_t> starts{0};  // one more than there are actions

    std::span<PLAN_EDGE const> of(int action) const
    {
        return {edges.data() + starts[std::size_t(action)], edges.data() + starts[std::size_t(action) + 1]};
    }
    void end_list() { starts.push_back(std::uint32_t(edges.size())); }  // what follows belongs to the next action
};

class BUILD_HOST_API PLAN {
public:
    PLAN() = default;
    ~PLAN();  // deletes the actions
    PLAN(PLAN const &) = delete;
    PLAN &operator=(PLAN const &) = delete;

    std::vector<PLANNED_ACTION> actions;  // in the order in which the processors gave them
    EDGE_LISTS dependencies;              // of an action on those that come before it
    EDGE_LISTS dependants;                // the same edges from the other end
    EDGE_LISTS pulls;
    QStringList warnings;  // such as two producers of one file
};

// Asks the processors in turn and works out the order. Faults become errors of their actions (ACTION_INTERFACE::error):
// a cycle of dependencies, an edge to an action that no processor gave, a target outside the tree.
BUILD_HOST_API void make_plan(std::vector<PROCESSOR_INTERFACE *> const &processors, FILE_TREE &files, RULE_STORE &rules,
                              PLAN &plan);
