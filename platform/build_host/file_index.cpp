#include "platform/build_host/file_index.h"

#include "platform/build_host/build_record.h"

#include <bit>

FILE_INDEX::FILE_INDEX(FILE_TABLE const &files)
    : table(files), slots_of_ids(std::bit_ceil(2 * files.size() + 1), {0, nullptr})
{
    std::size_t const mask = slots_of_ids.size() - 1;
    for (auto entry = files.begin(); entry != files.end(); ++entry) {
        std::uint64_t const id = text_id(entry.key());
        std::size_t slot = id & mask;
        while (slots_of_ids[slot].second != nullptr)
            slot = (slot + 1) & mask;
        slots_of_ids[slot] = {id, entry.value()};
    }
}

FILE_ENTRY *FILE_INDEX::find(std::uint64_t id) const
{
    std::size_t const mask = slots_of_ids.size() - 1;
    for (std::size_t slot = id & mask; slots_of_ids[slot].second != nullptr; slot = (slot + 1) & mask)
        if (slots_of_ids[slot].first == id)
            return slots_of_ids[slot].second;
    return nullptr;
}

bool FILE_INDEX::has_folded(std::uint64_t id) const
{
    QString const root = QStringLiteral("<working>/");
    if (folded.empty())
        for (auto entry = table.lowerBound(LOGICAL_PATH(root)); entry != table.end() && entry.key().startsWith(root);
             ++entry)
            folded.insert(text_id(entry.key().toLower()));
    return folded.count(id) != 0;
}
