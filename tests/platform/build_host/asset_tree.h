// An asset tree that exists nowhere: rules as text, files as names, and the plan that processors make of them. The
// project's folder is "/tree"; "props/hut.vx2" is the file "<raw>/props/hut.vx2".
//
//     ASSET_TREE tree("[RigidModelV2]\nTargetPath = 'models'", {"hut.vx2"});
//     PLAN const &plan = tree.plan({&processor});
#pragma once

#include "platform/build_host/plan.h"

#include <gtest/gtest.h>

#include <string>

class ASSET_TREE {
public:
    // `project_rules`: what would stand in mox.toml. A name that begins with "<" is a whole logical path.
    explicit ASSET_TREE(char const *project_rules = "", QStringList const &names = {})
    {
        set_current_roots(usual_roots("/tree"));
        add_rules("mox.toml", "<raw>", project_rules, true);
        std::vector<FILE_TABLE::ITEM> items;
        for (QString const &name : names) {
            LOGICAL_PATH const logical(name.startsWith('<') ? name : "<raw>/" + name);
            FILE_ENTRY *const entry = new FILE_ENTRY;
            entry->physical = physical(logical);
            entry->size = 0;
            items.emplace_back(logical, entry);
        }
        files.assign(std::move(items));
    }

    // The text of a rules.toml: `folder` is "props" or "props/huts". From the root down.
    ASSET_TREE &add_folder_rules(QString const &folder, char const *text)
    {
        add_rules(folder + "/rules.toml", "<raw>/" + folder, text, false);
        return *this;
    }

    // Once. Rules that do not read are a failure of the test, unless it looks at `faults` before.
    PLAN const &plan(std::vector<PROCESSOR_INTERFACE *> const &processors)
    {
        EXPECT_EQ(faults, QStringList());
        make_plan(processors, files, rules, made);
        return made;
    }

    RULE rule(char const *path, char const *kind) { return rules.get(LOGICAL_PATH(path), kind); }

    static PHYSICAL_PATH physical(QString const &logical)
    {
        QString path = logical;
        return PHYSICAL_PATH(path.replace("<raw>", "/tree/raw_data").replace("<working>", "/tree/working_data"));
    }

    FILE_TREE files;
    RULE_STORE rules;
    RULE_CACHE rule_cache{rules};
    QStringList faults;

private:
    void add_rules(QString const &file, QString const &folder, char const *text, bool is_project)
    {
        rules.add(text, file, LOGICAL_PATH(folder), is_project, faults);
    }

    PLAN made;
};

inline void PrintTo(QString const &text, std::ostream *out) { *out << '"' << text.toStdString() << '"'; }
inline void PrintTo(LOGICAL_PATH const &path, std::ostream *out) { PrintTo(static_cast<QString const &>(path), out); }
