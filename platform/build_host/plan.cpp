#include "platform/build_host/plan.h"

#include "platform/build_host/action_rows.h"
#include "platform/build_host/asset_store.h"
#include "platform/build_host/mix.h"
#include "platform/build_host/plan_cycles.h"
#include "platform/build_host/product_path.h"

#include <algorithm>
#include <cxxabi.h>
#include <typeindex>
#include <unordered_map>

namespace {

// The C++ class of an object, for people and for the build record.
QString class_name_of(std::type_info const &type)
{
    int status = 0;
    char *const readable = abi::__cxa_demangle(type.name(), nullptr, nullptr, &status);
    QString const name = QString::fromUtf8(status == 0 ? readable : type.name());
    std::free(readable);
    return name;
}

// Listing a tree passes names by that begin with a dot.
bool is_hidden(LOGICAL_PATH const &path) { return path.contains(QLatin1String("/.")); }

bool stays_in_tree(LOGICAL_PATH const &path)
{
    if (!path.startsWith(QLatin1String("<working>/")) && !path.startsWith(QLatin1String("<raw>/")))
        return false;
    return !path.contains(QLatin1String("/../")) && !path.endsWith(QLatin1String("/..")) && !path.contains(QChar(0));
}

class PLANNER {
public:
    PLANNER(FILE_TREE &tree, RULE_STORE &rule_store, PLAN &made)
        : files(tree), store(rule_store), rules(rule_store), plan(made)
    {
        if (asset_store() && !asset_store()->file().isEmpty())
            for (char const *part : {"", "-wal", "-shm", "-journal"}) {
                PHYSICAL_PATH const file(asset_store()->file() + QLatin1String(part));
                database_files.append(product_name(file, PATHS::logical_path(file)));
            }
    }

    void add_processor(PROCESSOR_INTERFACE &processor)
    {
        std::size_t const first = plan.actions.size();
        store.begin_planning();
        enter_virtual_files(processor);
        take_actions(processor);
        for (std::size_t i = first; i < plan.actions.size(); ++i)
            ask_for_files(plan.actions[i]);
        enter_targets(first);

        std::uint64_t const converter = mix(mix_text(store.end_planning(), processor.converter_name()),
                                            std::uint64_t(processor.converter_version()));
        for (std::size_t i = first; i < plan.actions.size(); ++i)
            plan.actions[i].signature = converter;
    }

    void finish()
    {
        store.begin_planning();
        for (PLANNED_ACTION const &planned : plan.actions)
            planned.action->add_external_dependencies(files.table, rules);
        store.end_planning();
        order_producers();
        link();
        break_cycles(plan);
        sign();
    }

private:
    struct KNOWN_CLASS {
        QString name;
        std::uint64_t mark;
    };

    struct NEW_TARGET {
        TARGET_FILE const *file;
        ACTION_INTERFACE *action;
    };

    struct ORDERED {
        int later, earlier;
    };

    void enter_virtual_files(PROCESSOR_INTERFACE const &processor)
    {
        for (QString const &name : processor.get_virtual_files()) {
            LOGICAL_PATH const path(name);
            if (!files.table.peek(path))
                files.table.insert(path, new FILE_ENTRY);
        }
        files.table.settle();
    }

    void take_actions(PROCESSOR_INTERFACE &processor)
    {
        QVector<ACTION_INTERFACE *> const given = processor.plan_actions(files.table, rules);
        plan.actions.reserve(plan.actions.size() + std::size_t(given.size()));
        for (ACTION_INTERFACE *const action : given) {
            if (!action || action->plan_index >= 0) {
                plan.warnings.append(QStringLiteral("%1 gives an action twice").arg(processor.get_name()));
                continue;
            }
            action->plan_index = int(plan.actions.size());
            PLANNED_ACTION &planned = plan.actions.emplace_back();
            planned.action = action;
            planned.index = action->plan_index;
            planned.class_name = class_of(*action).name;
        }
    }

    KNOWN_CLASS const &class_of(ACTION_INTERFACE const &action)
    {
        std::type_info const &type = typeid(action);
        auto known = classes.find(type);
        if (known == classes.end()) {
            QString const name = class_name_of(type);
            known = classes.emplace(type, KNOWN_CLASS{name, mix_text(0, name)}).first;
        }
        return known->second;
    }

    void ask_for_files(PLANNED_ACTION &planned)
    {
        planned.action->get_affected_files(planned.sources, planned.targets, planned.time, files.table, rules);
        for (TARGET_FILE const &target : planned.targets) {
            if (planned.reads(target.logical))
                continue;
            planned.has_products = true;
            if (!stays_in_tree(target.logical)) {
                planned.action->set_error(QStringLiteral("its target %1 lies outside the tree").arg(target.physical));
                return;
            }
            if (is_hidden(target.logical)) {
                planned.action->set_error(
                    QStringLiteral("its target %1 is hidden by a name that begins with a dot").arg(target.physical));
                return;
            }
            if (database_files.contains(product_name(target.physical, target.logical))) {
                planned.action->set_error(
                    QStringLiteral("its target %1 is the asset database; give it another folder or name")
                        .arg(target.physical));
                return;
            }
        }
    }

    // Targets become files of the table, so that the next processor finds them.
    void enter_targets(std::size_t first)
    {
        std::vector<NEW_TARGET> fresh;
        for (std::size_t i = first; i < plan.actions.size(); ++i) {
            PLANNED_ACTION const &planned = plan.actions[i];
            for (TARGET_FILE const &target : planned.targets) {
                if (planned.reads(target.logical))
                    continue;
                if (FILE_ENTRY *const entry = files.table.peek(target.logical)) {
                    // What is made for the current tree goes before what stands in the old one.
                    if (is_of_old_tree(entry->physical) && !is_of_old_tree(target.physical)) {
                        entry->physical = target.physical;
                        entry->state = FILE_ENTRY::PLANNED;
                        entry->size = -1;
                    }
                    add_producer(*entry, *planned.action);
                } else if (stays_in_tree(target.logical))
                    fresh.push_back({&target, planned.action});
            }
        }
        std::stable_sort(fresh.begin(), fresh.end(),
                         [](NEW_TARGET const &a, NEW_TARGET const &b) { return a.file->logical < b.file->logical; });
        std::vector<FILE_TABLE::ITEM> entries;
        entries.reserve(fresh.size());
        for (NEW_TARGET const &target : fresh) {
            if (entries.empty() || entries.back().first != target.file->logical) {
                FILE_ENTRY *const entry = new FILE_ENTRY;
                entry->physical = target.file->physical;
                entry->state = FILE_ENTRY::PLANNED;
                entries.emplace_back(target.file->logical, entry);
            }
            add_producer(*entries.back().second, *target.action);
        }
        files.table.settle(std::move(entries));
    }

    void add_producer(FILE_ENTRY &entry, ACTION_INTERFACE &action)
    {
        if (entry.actions.contains(&action))
            return;
        if (!entry.actions.isEmpty())
            shared.push_back({action.plan_index, entry.actions.last()->plan_index});
        if (entry.actions.size() == 1)
            plan.warnings.append(
                QStringLiteral("%1 is written by two actions, %2 and %3; the later one's stays")
                    .arg(entry.physical, entry.actions.first()->get_name(true), action.get_name(true)));
        entry.actions.append(&action);
    }

    // The actions that write one file follow each other in list order, unless they are linked the other way.
    void order_producers()
    {
        for (ORDERED const &pair : shared) {
            ACTION_INTERFACE *const later = plan.actions[std::size_t(pair.later)].action;
            ACTION_INTERFACE *const earlier = plan.actions[std::size_t(pair.earlier)].action;
            if (!leads_to(*earlier, *later))
                later->add_host_dependency(earlier, false);
        }
    }

    // Whether `from` comes after `to` by the declared dependencies.
    static bool leads_to(ACTION_INTERFACE const &from, ACTION_INTERFACE const &to)
    {
        std::vector<ACTION_INTERFACE const *> seen{&from};
        for (std::size_t i = 0; i < seen.size(); ++i) {
            if (seen[i] == &to)
                return true;
            for (ACTION_LINK const &link : seen[i]->dependencies())
                if (std::find(seen.begin(), seen.end(), link.other) == seen.end())
                    seen.push_back(link.other);
        }
        return false;
    }

    // The index of an action, or -1 with an error on the one that is linked to it.
    int index_of(ACTION_INTERFACE const *other, ACTION_INTERFACE &linked)
    {
        int const index = other ? other->plan_index : -1;
        if (index >= 0 && std::size_t(index) < plan.actions.size() && plan.actions[std::size_t(index)].action == other)
            return index;
        linked.set_error(QStringLiteral("it is linked to an action that is not part of the plan"));
        return -1;
    }

    void link()
    {
        for (PLANNED_ACTION const &planned : plan.actions) {
            std::size_t const first = plan.dependencies.edges.size();
            for (ACTION_LINK const &link : planned.action->dependencies())
                if (int const other = index_of(link.other, *planned.action); other >= 0)
                    plan.dependencies.edges.push_back({other, link.flag, link.by_host, false});
            for (LOGICAL_PATH const &source : planned.sources)
                if (FILE_ENTRY const *const entry = files.table.peek(source))
                    for (ACTION_INTERFACE const *const producer : entry->actions)
                        link_producer(first, planned.index, producer->plan_index);
            plan.dependencies.end_list();

            for (ACTION_LINK const &link : planned.action->pulls())
                if (int const other = index_of(link.other, *planned.action); other >= 0)
                    plan.pulls.edges.push_back({other, false, link.by_host, false});
            plan.pulls.end_list();
        }
    }

    void link_producer(std::size_t first, int action, int producer)
    {
        if (producer == action)
            return;
        auto &edges = plan.dependencies.edges;
        for (std::size_t i = first; i < edges.size(); ++i) {
            if (edges[i].other == producer) {
                edges[i].is_product = true;
                return;
            }
        }
        edges.push_back({producer, false, true, true});
    }

    void sign()
    {
        std::uint64_t database = 0;  // asked for only if rows are planned: that makes the database
        LOGICAL_PATH last_source;
        std::uint64_t last_rules = 0;
        for (PLANNED_ACTION &planned : plan.actions) {
            std::uint64_t all = mix(planned.signature, class_of(*planned.action).mark);
            all = mix(all, std::uint64_t(planned.time));
            for (LOGICAL_PATH const &source : planned.sources)
                all = mix_text(all, source);
            if (!planned.sources.isEmpty()) {
                if (planned.sources.first() != last_source) {
                    last_source = planned.sources.first();
                    last_rules = store.planning_signature(last_source);
                }
                all = mix(all, last_rules);
            }
            if (!planned.action->error().isEmpty())
                all = mix_text(all, planned.action->error());
            if (typeid(*planned.action) == typeid(ACTION_UPDATE_DB)) {
                if (database == 0 && asset_store())
                    database = mix_text(0, asset_store()->identity());
                all = mix(mix(all, static_cast<ACTION_UPDATE_DB const *>(planned.action)->signature()), database);
            }
            planned.signature = all;
        }
        add_pulled();
    }

    // An action without products is never out of date by itself, so what has become of it counts for those that pull
    // it.
    void add_pulled()
    {
        std::vector<std::uint64_t> whole;
        std::vector<int> pulled;
        for (PLANNED_ACTION const &planned : plan.actions) {
            whole.push_back(planned.signature);
            pulled.assign(1, planned.index);
            for (std::size_t i = 0; i < pulled.size(); ++i) {
                for (PLAN_EDGE const &edge : plan.pulls.of(pulled[i])) {
                    if (plan.actions[std::size_t(edge.other)].has_products ||
                        std::find(pulled.begin(), pulled.end(), edge.other) != pulled.end())
                        continue;
                    pulled.push_back(edge.other);
                    whole.back() = mix(whole.back(), plan.actions[std::size_t(edge.other)].signature);
                }
            }
        }
        for (PLANNED_ACTION &planned : plan.actions)
            planned.signature = whole[std::size_t(planned.index)];
    }

    FILE_TREE &files;
    RULE_STORE &store;
    RULE_CACHE rules;
    PLAN &plan;
    std::unordered_map<std::type_index, KNOWN_CLASS> classes;
    QStringList database_files;   // as product_name has them
    std::vector<ORDERED> shared;  // pairs of actions with a target in common
};

}  // namespace

PLAN::~PLAN()
{
    for (PLANNED_ACTION const &planned : actions)
        delete planned.action;
}

void make_plan(std::vector<PROCESSOR_INTERFACE *> const &processors, FILE_TREE &files, RULE_STORE &rules, PLAN &plan)
{
    PLANNER planner(files, rules, plan);
    for (PROCESSOR_INTERFACE *const processor : processors)
        planner.add_processor(*processor);
    planner.finish();
}
