// What actions of earlier plans have left behind.

#include "platform/build_host/build_state.h"
#include "platform/build_host/product_path.h"

#include <algorithm>
#include <functional>

BUILD_STATE::LEFT_OVERS BUILD_STATE::left_overs() const
{
    LEFT_OVERS found;
    if (std::all_of(keys.begin(), keys.end(), [&](std::uint64_t key) { return record.find(key) != nullptr; }) &&
        keys.size() == record.size())
        return found;
    std::unordered_set<std::uint64_t> living = planned_keys;
    std::vector<PLANNED_ACTION const *> actions;
    for (PLANNED_ACTION const &action : plan.actions)
        actions.push_back(&action);
    for (bool is_settled = false; !is_settled;) {
        std::unordered_set<std::uint64_t> claimed;
        for (PLANNED_ACTION const *action : actions)
            for (TARGET_FILE const &target : action->targets)
                claimed.insert(text_id(product_name(target.physical, target.logical)));
        // What they wrote besides, and what they read, whoever wrote it: a picture that two models share.
        std::unordered_set<std::uint64_t> read;
        record.for_each([&](std::uint64_t key, RECORD_ROW const &row) {
            if (living.count(key) == 0)
                return;
            for (RECORDED_TARGET const &target : row.targets)
                claimed.insert(target.path);
            for (RECORDED_FILE const &file : row.files)
                read.insert(file.path);
        });
        found = {};
        std::unordered_set<std::uint64_t> unclaimed;  // read or not
        record.for_each([&](std::uint64_t key, RECORD_ROW const &row) {
            if (living.count(key) != 0)
                return;
            found.rows.insert(key);
            for (RECORDED_TARGET const &target : row.targets) {
                if ((target.flags & RECORDED_TARGET::WRITTEN) == 0 || claimed.count(target.path) != 0)
                    continue;
                QString const name = record.text(target.path);
                PHYSICAL_PATH const file = product_path(name);
                if (stamp_of(file).size == FILE_STAMP::absent)
                    continue;
                LOGICAL_PATH const logical = PATHS::logical_path(file);
                FILE_ENTRY const *const entry = files.peek(logical);
                bool const is_listed = entry != nullptr && entry->physical == file;
                if (is_listed)
                    unclaimed.insert(text_id(logical));
                if (!is_listed || read.count(text_id(logical)) == 0)
                    found.products += name;
            }
        });
        // An action that starts from such files alone is planned only because they still lie there.
        auto const starts_from_left_overs = [&](PLANNED_ACTION const *action) {
            return !action->sources.isEmpty() &&
                   std::all_of(action->sources.begin(), action->sources.end(),
                               [&](LOGICAL_PATH const &source) { return unclaimed.count(text_id(source)) != 0; });
        };
        auto const dead = std::stable_partition(actions.begin(), actions.end(), std::not_fn(starts_from_left_overs));
        is_settled = dead == actions.end();
        for (auto action = dead; action != actions.end(); ++action)
            living.erase(key(**action));
        actions.erase(dead, actions.end());
    }
    found.products.removeDuplicates();
    found.products.sort();
    return found;
}
