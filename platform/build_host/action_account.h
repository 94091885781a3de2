// What a running action turns out to depend on, files that it opens or looks up, also in vain, and rule values; and
// what it leaves behind. Made on the worker's thread right before the action runs; it watches that thread until `stop`.
#pragma once

#include "foundation/file.h"
#include "platform/build_host/file_stamp.h"
#include "platform/build_host/run_watch.h"

#include <set>
#include <unordered_map>
#include <vector>

// One question to the rules: of which path (its own first source if "."; the whole tree if empty), for which
// properties of which kind.
struct RULE_QUESTION {
    QString path;
    QString kind;
    QStringList properties;  // sorted

    QString text() const;
    static RULE_QUESTION from_text(QString const &text);

    RULE ask(RULE_CACHE const &rules, PLANNED_ACTION const &action) const;
    std::uint64_t answer(RULE const &rule) const;
    // For people, one property_line a property.
    QString answer_text(RULE const &rule) const;
};

// "KIND.PROPERTY = VALUE", a tab, and where that comes from; with the line's end.
QString property_line(QString const &kind, QString const &property, RULE_DATA const *rule);

class ACTION_ACCOUNT final : public RUN_WATCH, public KN::FileWatch {
public:
    struct FILE {
        QString physical;  // empty: never seen on disk
        FILE_STAMP stamp;  // at the first look; of a look-up that was all, see RECORDED_FILE
        bool is_declared;
    };
    struct BOOKING {
        PHYSICAL_PATH file;
        bool stood;    // before the action
        bool is_told;  // the action booked it, as against a library that only wrote it
    };

    ACTION_ACCOUNT(PLANNED_ACTION const &action, FILE_TABLE const &files);
    ~ACTION_ACCOUNT();
    ACTION_ACCOUNT(ACTION_ACCOUNT const &) = delete;
    ACTION_ACCOUNT &operator=(ACTION_ACCOUNT const &) = delete;
    void stop();

    std::vector<RULE_QUESTION> questions() const;
    std::unordered_map<std::uint64_t, std::pair<LOGICAL_PATH, FILE>> const &files() const { return seen; }
    std::vector<BOOKING> const &booked() const { return bookings; }  // and written
    std::vector<PHYSICAL_PATH> const &removed() const { return removals; }
    std::int64_t started() const { return start; }

    void file_looked_up(LOGICAL_PATH const &path, LOOK_UP answer) override;
    void rule_asked(LOGICAL_PATH const &path, QString const &kind, RULE const &rule) override;
    void property_read(RULE_DATA const &rule, QString const &property) override;
    void file_booked(PHYSICAL_PATH const &path, bool present) override;
    void file_removed(PHYSICAL_PATH const &path) override;
    void looked_for(KN::String const &disk_name, bool found) override;
    void written(KN::String const &disk_name) override;

private:
    struct ASKED {
        QString path;
        QString kind;
        RULE_DATA const *data;
        std::set<QString> properties;
    };

    void see(LOGICAL_PATH const &path, QString const &physical, bool is_declared);

    PLANNED_ACTION const &action;
    FILE_TABLE const &table;
    std::int64_t start;
    std::unordered_map<std::uint64_t, std::pair<LOGICAL_PATH, FILE>> seen;  // by the id of the logical path
    std::vector<ASKED> asked;
    std::vector<BOOKING> bookings;
    std::vector<PHYSICAL_PATH> removals;
    RUN_WATCH *run_watch_before = nullptr;
    KN::FileWatch *file_watch_before = nullptr;
    bool is_watching = true;
};
