// One rule as a file gives it, before it is combined with others.
#pragma once

#include "platform/build_host/rule_store.h"

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

#include <memory>
#include <vector>

// The files below a folder that a rule covers. "*" and "?" stand for anything but "/", "**" for anything. Without a "/"
// the pattern is one for file names, at any depth; else one for the path below the folder.
class FILE_PATTERN {
public:
    explicit FILE_PATTERN(QString const &text = QStringLiteral("*"));
    bool matches_all() const { return is_all; }
    // `below`: the path of a file below the folder.
    bool matches(QStringView below) const;

private:
    QString text;
    bool is_all;
    bool is_name;
};

struct RULE_ENTRY {
    QString kind;
    bool is_global = false;
    FILE_PATTERN files;
    bool inherit = true;
    QStringList unset;
    RULE_ORIGIN origin;
    std::vector<std::unique_ptr<RULE_ORIGIN>> origins;  // beside properties
    std::vector<RULE_PROPERTY> properties;
};

// The rules of a file, in its order. False if anything in it is wrong, with a line a fault; the sound rules are given
// all the same.
bool read_rule_file(QByteArray const &text, QString const &shown, LOGICAL_PATH const &folder, bool is_project,
                    std::vector<std::unique_ptr<RULE_ENTRY>> &rules, QStringList &faults);
