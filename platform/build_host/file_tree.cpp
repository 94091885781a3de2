#include "platform/build_host/file_tree.h"

#include "foundation/finished_file.h"
#include "platform/build_host/disk_name.h"
#include "platform/build_host/list_folder.h"

#include <algorithm>
#include <cstring>
#include <thread>

namespace {

// What lies below one root.
struct LISTING {
    std::vector<FILE_TABLE::ITEM> items;
    std::vector<RULE_FILE> rule_files;
    QStringList unfinished, faults;
};

class SCANNER {
public:
    explicit SCANNER(LISTING &found) : listing(found) {}

    // Appends in the order of the table, so that nothing is left to sort.
    void scan(QString const &physical, QString const &logical, bool is_raw, int depth = 0)
    {
        constexpr int deepest = 200;
        std::vector<LISTED> entries;
        int error = 0;
        if (depth == deepest)
            error = ELOOP;
        if (error != 0 || !list_folder(disk_name(physical), is_raw, entries, error)) {
            if (error != ENOENT || depth > 0)
                listing.faults.append(
                    QStringLiteral("%1: %2").arg(physical, QString::fromLocal8Bit(std::strerror(error))));
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
                scan(join(physical, name), join(logical, name), is_raw, depth + 1);
                continue;
            }
            if (is_raw && entry.name == QLatin1String("rules.toml")) {
                listing.rule_files.push_back({join(physical, entry.name), LOGICAL_PATH(logical)});
                continue;
            }
            if (entry.name.endsWith(QLatin1String(".unfinished")) &&
                KN::FinishedFile::is_unfinished(entry.name.toStdString())) {
                listing.unfinished += join(physical, entry.name);
                continue;
            }
            FILE_ENTRY *const made = new FILE_ENTRY;
            made->physical = PHYSICAL_PATH(join(physical, entry.name));
            made->size = entry.size;
            made->time = entry.time;
            listing.items.emplace_back(LOGICAL_PATH(join(logical, entry.name)), made);
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

    LISTING &listing;
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
    // Sizes and times are asked below the raw roots alone: of a product, it is mostly enough that it is there.
    LISTING lists[4];
    auto const list = [&](LISTING &listing, QString const &root, bool is_raw) {
        SCANNER(listing).scan(root, QLatin1String(is_raw ? "<raw>" : "<working>"), is_raw);
    };
    std::thread products([&] {
        list(lists[2], roots.working, false);
        list(lists[3], roots.old_working, false);
    });
    list(lists[0], roots.raw, true);
    list(lists[1], roots.old_raw, true);
    products.join();
    for (LISTING *const listing : {&lists[1], &lists[0], &lists[2], &lists[3]}) {
        rule_files.insert(rule_files.end(), listing->rule_files.begin(), listing->rule_files.end());
        unfinished += listing->unfinished;
        faults += listing->faults;
    }
    std::vector<FILE_TABLE::ITEM> items = merge(std::move(lists[0].items), std::move(lists[1].items));
    std::vector<FILE_TABLE::ITEM> working = merge(std::move(lists[2].items), std::move(lists[3].items));
    items.insert(items.end(), std::make_move_iterator(working.begin()), std::make_move_iterator(working.end()));
    table.assign(std::move(items));
    // Root first; of one folder the current tree's file last, so that it is the stronger.
    std::stable_sort(rule_files.begin(), rule_files.end(),
                     [](RULE_FILE const &a, RULE_FILE const &b) { return a.folder < b.folder; });
}
