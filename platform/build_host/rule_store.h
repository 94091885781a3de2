// The rule files of a project and what follows from them for a path. docs/rules.md describes the files.
//
// For a folder and a kind the rules of all folders above are gathered once; for a path only the file patterns are left
// to be tried, and each combination of rules that match is worked out once. Look-ups may come from any thread.
#pragma once

#include "Plugins/Vx2/host/rules.h"
#include "platform/build_host/api.h"

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

#include <cstdint>
#include <memory>
#include <vector>

// Where a property was given its value.
struct RULE_ORIGIN {
    QString file;  // as shown to people
    int line = 0;
    LOGICAL_PATH folder;  // that of the rule
};

struct RULE_PROPERTY {
    QString name;
    QVariant value;
    RULE_ORIGIN const *origin = nullptr;  // lives as long as the store
};

struct RULE_DATA {
    QString kind;
    std::vector<RULE_PROPERTY> properties;   // sorted by name
    std::vector<RULE_ORIGIN const *> rules;  // those that took part, the weakest first

    BUILD_HOST_API RULE_PROPERTY const *find(QString const &name) const;

    // What planning has asked for; kept by the store.
    mutable std::vector<QString> read;
    mutable std::size_t answered = 0;  // how many of them `answers` is about
    mutable std::uint64_t answers = 0;
};

class BUILD_HOST_API RULE_STORE {
public:
    RULE_STORE();
    ~RULE_STORE();
    RULE_STORE(RULE_STORE const &) = delete;
    RULE_STORE &operator=(RULE_STORE const &) = delete;

    // Adds the rules of one file, to be called from the root down, before the first look-up. `shown` names it in
    // messages; its rules cover what lies below `folder`. `is_project`: it is mox.toml, whose settings are passed over.
    // False, with one line a fault, if anything in it is wrong; the schemas that are registered by then decide about
    // kinds and properties.
    bool add(QByteArray const &text, QString const &shown, LOGICAL_PATH const &folder, bool is_project,
             QStringList &faults);

    RULE get(LOGICAL_PATH const &path, QString const &kind);
    RULE get_global(QString const &kind);

    // All kinds that a rule names, sorted.
    QStringList kinds() const;
    QStringList global_kinds() const;

    // Planning keeps account of what it reads: between begin and end, on one thread, look-ups are noted.
    void begin_planning();
    // What was read of the tree's global rules since `begin_planning`, as a number.
    std::uint64_t end_planning();
    // What all planning has read of the rules for `path`, as a number. One thread.
    std::uint64_t planning_signature(LOGICAL_PATH const &path);
    // The rules behind that number, and the global ones that planning has read, for people.
    std::vector<RULE_DATA const *> planning_rules(LOGICAL_PATH const &path);

private:
    struct CONTENTS;
    std::unique_ptr<CONTENTS> contents;
};
