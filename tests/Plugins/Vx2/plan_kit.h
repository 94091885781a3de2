// PLAN_KIT: the plan for scene files of a tree that exists nowhere, under rules given as text. Rules stand at the raw
// root, so that a target "models" of <raw>/props/hut.vx2 is the folder models/props.
#pragma once

#include "Plugins/Vx2/vx2_processor.h"
#include "tests/platform/build_host/asset_tree.h"

#include <cxxabi.h>

#include <algorithm>
#include <map>
#include <string>
#include <typeinfo>
#include <vector>

inline std::string const rigid_rule = "[RigidModelV2]\nTargetPath = 'models'\nTextureFolder = 'Textures'\n";
inline std::string const with_rows = "UpdateDatabase = true\nRigidCategory = 'c'\n";
inline std::string const tech_rule = "[Vx2Tech]\n";

inline std::string class_name(ACTION_INTERFACE const &action)
{
    char *const demangled = abi::__cxa_demangle(typeid(action).name(), nullptr, nullptr, nullptr);
    std::string const name = demangled;
    free(demangled);
    return name;
}

class PLAN_KIT {
public:
    ASSET_TREE tree;
    VX2_PROCESSOR processor;
    QVector<ACTION_INTERFACE *> actions;

    explicit PLAN_KIT(std::string const &rules, QStringList const &files = {"props/hut.vx2"}, int state = 0)
        : tree(rules.c_str(), files)
    {
        EXPECT_EQ(tree.faults, QStringList());
        for (FILE_ENTRY *const entry : tree.files.table)
            entry->state = state;
        actions = processor.plan_actions(tree.files.table, tree.rule_cache);
    }
    ~PLAN_KIT() { qDeleteAll(actions); }

    // An action a line: its letter (numbered from the second on), ":group" if it has one (counted from 1), the actions
    // that it waits for ("!" where it needs what they hold in memory) and those that it pulls. What the host itself
    // drew is left out.
    std::vector<std::string> rows() const
    {
        std::map<ACTION_INTERFACE const *, std::string> letters;
        std::map<std::string, int> counts;
        for (ACTION_INTERFACE const *const action : actions) {
            int const number = ++counts[letter(*action)];
            letters[action] = letter(*action) + (number > 1 ? std::to_string(number) : "");
        }

        std::vector<std::string> all;
        std::map<int, int> groups;
        for (ACTION_INTERFACE const *const action : actions) {
            std::string row = letters[action];
            if (action->group != 0)
                row.append(":").append(
                    std::to_string(groups.emplace(action->group, int(groups.size()) + 1).first->second));
            row += links(" after ", action->dependencies(), letters) + links(" pulls ", action->pulls(), letters);
            all.push_back(row);
        }
        return all;
    }

    // The only action of a class.
    template <class ACTION>
    ACTION const &the() const
    {
        ACTION const *found = nullptr;
        for (ACTION_INTERFACE const *const action : actions)
            if (auto const *const wanted = dynamic_cast<ACTION const *>(action)) {
                EXPECT_FALSE(found) << "more than one";
                found = wanted;
            }
        EXPECT_TRUE(found) << "none";
        return *found;
    }

private:
    static std::string letter(ACTION_INTERFACE const &action)
    {
        static std::map<std::string, std::string> const letters = {{"ACTION_PREPARE_VEX2", "P"},
                                                                   {"ACTION_CLEAN_UP_VEX2", "C"},
                                                                   {"ACTION_MODEL", "M"},
                                                                   {"ACTION_PROCESS_TECH", "T"},
                                                                   {"ACTION_DB_GATE", "D"},
                                                                   {"ACTION_UPDATE_DB", "L"},
                                                                   {"ACTION_ANIMATION", "A"},
                                                                   {"ACTION_ERROR", "E"},
                                                                   {"ACTION_REMOVE_RIGID_LODS", "R"},
                                                                   {"ACTION_INIT_KESTREL", "I"},
                                                                   {"ACTION_CLEANUP_KESTREL", "K"},
                                                                   {"ACTION_TREE", "B"},
                                                                   {"ACTION_DDS_N", "X"},
                                                                   {"ACTION_BILLBOARD", "Y"},
                                                                   {"ACTION_GENERICMESH", "G"},
                                                                   {"ACTION_COMPLEX_ANIMATION", "Z"}};
        auto const found = letters.find(class_name(action));
        return found == letters.end() ? class_name(action) : found->second;
    }

    static std::string links(std::string const &word, QVector<ACTION_LINK> const &all,
                             std::map<ACTION_INTERFACE const *, std::string> &letters)
    {
        std::vector<std::string> names;
        for (ACTION_LINK const &link : all)
            if (!link.by_host)
                names.push_back(letters[link.other] + (link.flag ? "!" : ""));
        std::sort(names.begin(), names.end());
        std::string text;
        for (std::string const &name : names)
            text += (text.empty() ? word : ",") + name;
        return text;
    }
};
