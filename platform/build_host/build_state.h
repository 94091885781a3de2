// The up-to-date state of a tree, kept in the build record: which actions have to run and why, what they turn out to
// depend on, and what they leave behind. It also sees to it that a failed action leaves its targets as they were.
//
// An action is out of date if it has no row, if an earlier run did not bring it to a good end, if its signature, a rule
// value that it read or a file that it looked at has changed, or if a target that stood after its last success is gone.
// A file whose size and time are those of the record is taken for unchanged; only if the time alone differs are its
// contents read.
#pragma once

#include "platform/build_host/action_account.h"
#include "platform/build_host/asset_database.h"
#include "platform/build_host/build_record.h"
#include "platform/build_host/depot.h"
#include "platform/build_host/file_index.h"
#include "platform/build_host/file_stamp.h"
#include "platform/build_host/plan.h"
#include "platform/build_host/target_guard.h"

#include <atomic>
#include <memory>
#include <unordered_set>

class BUILD_HOST_API BUILD_STATE final : public RUN_STATE {
public:
    // All outlive the state. `record` is open; `side_folder`, for copies of targets, need not stand.
    BUILD_STATE(BUILD_RECORD &record, PLAN const &plan, FILE_TREE const &files, RULE_STORE &rules, DEPOT &depot,
                ASSET_DATABASE &database, QString side_folder);
    ~BUILD_STATE() override;

    QString stale_reason(PLANNED_ACTION const &action) override;
    QString late_reason(PLANNED_ACTION const &action) override;
    bool run_begins(QVector<PLANNED_ACTION const *> const &scheduled) override;
    bool action_begins(PLANNED_ACTION const &action) override;
    int action_ends(PLANNED_ACTION const &action, int status) override;
    void action_left_out(PLANNED_ACTION const &action) override;
    bool run_ends() override;

    // What went wrong with the books, a line each.
    QStringList const &faults() const { return fault_lines; }
    // What actions have left behind that are planned no more, or only because what they start from is left over itself.
    struct LEFT_OVERS {
        QStringList products;  // that no other action makes or reads
        std::unordered_set<std::uint64_t> rows;
    };
    LEFT_OVERS left_overs() const;
    // Whether the action opened or looked up the file when it last ran.
    bool has_read(PLANNED_ACTION const &action, LOGICAL_PATH const &file) const;
    // The lines that an action put out when it last ran.
    QString last_output(PLANNED_ACTION const &action) const;
    std::uint64_t contents_read() const { return hashes.files_read(); }

private:
    enum class CHANGE { NONE, TIME, CONTENTS };
    struct RUNNING;

    // Looked up in vain.
    struct MISSED {
        std::uint64_t path;
        int action;
        bool operator==(MISSED const &other) const = default;
    };

    // The signature together with what the action writes: declared when it is planned, or, where only the work shows
    // what comes of it, afterwards, as the next plan will find it.
    static std::uint64_t whole_signature(PLANNED_ACTION const &action, QVector<TARGET_FILE> const &targets);
    std::uint64_t key(PLANNED_ACTION const &action) const { return keys[std::size_t(action.index)]; }
    CHANGE change_of(RECORDED_FILE const &file);
    std::uint64_t answer_of(std::uint64_t question, PLANNED_ACTION const &action);
    QString input_reason(PLANNED_ACTION const &action, RECORD_ROW const &row);
    QString reading_reason(RECORDED_READING const &reading, PLANNED_ACTION const &action) const;
    QString file_reason(RECORDED_FILE const &file) const;
    QString account_of(PLANNED_ACTION const &action) const;
    bool is_there(std::uint64_t path) const;
    bool product_stands(std::uint64_t name) const;
    RECORD_TEXTS texts_of(PLANNED_ACTION const &action) const;
    void keep_books(PLANNED_ACTION const &action, ACTION_ACCOUNT const &account);
    std::vector<RECORDED_FILE> files_of(PLANNED_ACTION const &action, ACTION_ACCOUNT const &account,
                                        std::unordered_set<std::uint64_t> const &own_targets);
    void keep_late(PLANNED_ACTION const &action, ACTION_ACCOUNT const &account,
                   std::vector<RECORDED_FILE> const &looked_at);
    void flush_if_due();

    BUILD_RECORD &record;
    PLAN const &plan;
    FILE_TABLE const &files;
    RULE_STORE &rule_store;
    RULE_CACHE const rules;
    DEPOT &depot;
    ASSET_DATABASE &database;
    QString side_folder;

    std::vector<std::uint64_t> keys;  // by index in the plan
    std::unordered_set<std::uint64_t> planned_keys;
    FILE_INDEX const index;
    CONTENT_HASHES hashes;
    std::unordered_map<std::uint64_t, RULE_QUESTION> questions;
    struct ANSWERED {
        std::uint64_t question;
        RULE_DATA const *rule;
        bool operator==(ANSWERED const &other) const = default;
        struct HASH {
            std::size_t operator()(ANSWERED const &a) const
            {
                return std::size_t(a.question ^ (reinterpret_cast<std::uintptr_t>(a.rule) * 0x9e3779b97f4a7c15u));
            }
        };
    };
    std::unordered_map<ANSWERED, std::uint64_t, ANSWERED::HASH> answers;
    std::vector<std::uint64_t> touched;      // keys of rows with files of which only the time has changed
    std::unordered_set<std::uint64_t> owed;  // keys of the actions that runs have begun with

    std::vector<std::unique_ptr<RUNNING>> running;  // by index in the plan; each used by the thread that runs it
    std::atomic<std::int64_t> next_flush = 0;       // moment
    QStringList fault_lines;
    std::mutex fault_lock;

    std::mutex late_lock;
    std::vector<MISSED> missed;                  // of the actions that have run
    std::unordered_set<std::uint64_t> appeared;  // files that came without being planned, also in lower case
};
