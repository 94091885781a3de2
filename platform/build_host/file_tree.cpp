#include "platform/build_host/file_tree.h"

#include "foundation/finished_file.h"
#include "platform/build_host/disk_name.h"
#include "platform/build_host/list_folder.h"

#include <algorithm>
#include <cstring>

namespace {

class SCANNER {
public:
    SCANNER(std::vector<FILE_TABLE::ITEM> &found, FILE_TREE &found_others, QStringList &found_faults)
        : items(found), tree(found_others), faults(found_faults)
    {}

    // Appends in the order of the table, so that nothing is left to sort.
    void scan(QString const &physical, QString const &logical, bool has_rules, int depth = 0)
    {
        constexpr int deepest = 200;
        std::vector<LISTED> entries;
        int error = 0;
        if (depth == deepest)
            error = ELOOP;
        if (error != 0 || !list_folder(disk_name(physical), entries, error)) {
            if (error != ENOENT || depth > 0)
                faults.append(QStringLiteral("%1: %2").arg(physical, QString::fromLocal8Bit(std::strerror(error))));
            return;
        }
        // Paths are ordered as texts, where a folder's name is followed by the "/" of what lies in it.
        for (LISTED &entry : entries)
            if (entry.is_folder)
                entry.name += QLatin1Char('/');
        std::sort(entries.begin(), entries.end(), [](LISTED const &a, LISTED const &b) { return a.name < b.name; });

        for (LISTED const &entry : entries) {
            if (entry.is_folder) {
                QString const name = entry.name.chopped(1);
                scan(join(physical, name), join(logical, name), has_rules, depth + 1);
                continue;
            }
            if (has_rules && entry.name == QLatin1String("rules.toml")) {
                tree.rule_files.push_back({join(physical, entry.name), LOGICAL_PATH(logical)});
                continue;
            }
            if (entry.name.endsWith(QLatin1String(".unfinished")) &&
                KN::FinishedFile::is_unfinished(entry.name.toStdString())) {
                tree.unfinished += join(physical, entry.name);
                continue;
            }
            FILE_ENTRY *const made = new FILE_ENTRY;
            made->physical = PHYSICAL_PATH(join(physical, entry.name));
            made->size = entry.size;
            made->time = entry.time;
            items.emplace_back(LOGICAL_PATH(join(logical, entry.name)), made);
        }
    }

private:
    static QString join(QString const &folder, QString const &name)
    {
        QString path;
        path.reserve(folder.size() + 1 + name.size());
        path += folder;
        path += QLatin1Char('/');
        path += name;
        return path;
    }

    std::vector<FILE_TABLE::ITEM> &items;
    FILE_TREE &tree;
    QStringList &faults;
};

// Both ascending; of equal paths the one in `stronger` stays, and the other's entry is deleted.
std::vector<FILE_TABLE::ITEM> merge(std::vector<FILE_TABLE::ITEM> stronger, std::vector<FILE_TABLE::ITEM> weaker)
{
    if (weaker.empty())
        return stronger;
    std::vector<FILE_TABLE::ITEM> both;
    both.reserve(stronger.size() + weaker.size());
    auto s = stronger.begin();
    for (FILE_TABLE::ITEM &item : weaker) {
        while (s != stronger.end() && s->first < item.first)
            both.push_back(std::move(*s++));
        if (s != stronger.end() && s->first == item.first)
            delete item.second;
        else
            both.push_back(std::move(item));
    }
    both.insert(both.end(), std::make_move_iterator(s), std::make_move_iterator(stronger.end()));
    return both;
}

}  // namespace

FILE_TREE::~FILE_TREE() { clear(); }

void FILE_TREE::clear()
{
    table.settle();
    for (FILE_ENTRY *const entry : table)
        delete entry;
    table.assign({});
    rule_files.clear();
    unfinished.clear();
}

void FILE_TREE::assign(std::vector<FILE_TABLE::ITEM> entries)
{
    clear();
    table.assign(std::move(entries));
}

void FILE_TREE::scan(TREE_ROOTS const &roots, QStringList &faults)
{
    clear();
    auto const list = [&](QString const &root, char const *word, bool has_rules) {
        std::vector<FILE_TABLE::ITEM> items;
        SCANNER(items, *this, faults).scan(root, QLatin1String(word), has_rules);
        return items;
    };
    std::vector<FILE_TABLE::ITEM> old_raw = list(roots.old_raw, "<raw>", true);
    std::vector<FILE_TABLE::ITEM> items = merge(list(roots.raw, "<raw>", true), std::move(old_raw));
    std::vector<FILE_TABLE::ITEM> working =
        merge(list(roots.working, "<working>", false), list(roots.old_working, "<working>", false));
    items.insert(items.end(), std::make_move_iterator(working.begin()), std::make_move_iterator(working.end()));
    table.assign(std::move(items));
    // Root first; of one folder the current tree's file last, so that it is the stronger.
    std::stable_sort(rule_files.begin(), rule_files.end(),
                     [](RULE_FILE const &a, RULE_FILE const &b) { return a.folder < b.folder; });
}
