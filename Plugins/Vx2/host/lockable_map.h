// LOCKABLE_MAP: an ordered map for many readers. Its settled entries stand in one sorted array with a hash index over
// it and do not change while actions run; what is inserted meanwhile waits in a small map of its own. Look-ups see
// both, walks see the settled entries only; `settle` merges, when nobody walks. So a walk needs no lock and never
// tears.
//
// Thread rules: look-ups and walks from any thread; `insert` from any thread; `settle` and `assign` from one thread
// while no other uses the map. `lock` and `unlock` keep inserting threads out for longer than a call.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

// K: a text of QString's kind, ordered by `<`. V: a pointer or another small value; value() of an absent key is V().
template <class K, class V>
class LOCKABLE_MAP {
public:
    using ITEM = std::pair<K, V>;

    class const_iterator {
    public:
        const_iterator() = default;
        explicit const_iterator(ITEM const *place) : item(place) {}
        K const &key() const { return item->first; }
        V const &value() const { return item->second; }
        V const &operator*() const { return item->second; }
        const_iterator &operator++()
        {
            ++item;
            return *this;
        }
        bool operator==(const_iterator const &other) const = default;

    private:
        ITEM const *item = nullptr;
    };

    LOCKABLE_MAP() = default;
    LOCKABLE_MAP(LOCKABLE_MAP const &) = delete;
    LOCKABLE_MAP &operator=(LOCKABLE_MAP const &) = delete;

    const_iterator begin() const { return const_iterator(items.data()); }
    const_iterator end() const { return const_iterator(items.data() + items.size()); }
    std::size_t size() const { return items.size(); }

    // The first settled entry that is not below `key`.
    const_iterator lowerBound(K const &key) const
    {
        auto const place = std::lower_bound(items.begin(), items.end(), key,
                                            [](ITEM const &item, K const &wanted) { return item.first < wanted; });
        return const_iterator(items.data() + (place - items.begin()));
    }

    // A settled entry, or end(). The three look-ups are made known to the host (note_look_up).
    const_iterator find(K const &key) const
    {
        ITEM const *const item = settled(key);
        note_look_up(key, item != nullptr);
        return item ? const_iterator(item) : end();
    }
    bool contains(K const &key) const { return value(key) != V(); }
    V value(K const &key) const
    {
        V const found = peek(key);
        note_look_up(key, found != V());
        return found;
    }

    // As value, without making the look-up known: for the host's own use.
    V peek(K const &key) const
    {
        if (ITEM const *const item = settled(key))
            return item->second;
        if (!has_late.load(std::memory_order_acquire))
            return V();
        std::lock_guard<std::recursive_mutex> const guard(mutex);
        auto const found = late.find(key);
        return found == late.end() ? V() : found->second;
    }

    void lock() const { mutex.lock(); }
    void unlock() const { mutex.unlock(); }

    // Enters `value` unless the key is there; what stands there afterwards comes back.
    V insert(K const &key, V const &value) const
    {
        if (ITEM const *const item = settled(key))
            return item->second;
        std::lock_guard<std::recursive_mutex> const guard(mutex);
        V const stands = late.emplace(key, value).first->second;
        has_late.store(true, std::memory_order_release);
        return stands;
    }

    // Replaces everything by `entries`, which need not be sorted; of equal keys the first stays.
    void assign(std::vector<ITEM> entries)
    {
        auto const less = [](ITEM const &a, ITEM const &b) { return a.first < b.first; };
        items = std::move(entries);
        if (!std::is_sorted(items.begin(), items.end(), less))
            std::stable_sort(items.begin(), items.end(), less);
        auto const same = [](ITEM const &a, ITEM const &b) { return a.first == b.first; };
        items.erase(std::unique(items.begin(), items.end(), same), items.end());
        late.clear();
        has_late = false;
        index_items();
    }

    // Makes what was inserted part of the walked entries. Iterators end their life here.
    void settle() { settle(std::vector<ITEM>(late.begin(), late.end())); }

    // The same for entries that come in ascending order, none of which is there yet, in place of what was inserted.
    void settle(std::vector<ITEM> more)
    {
        late.clear();
        has_late = false;
        if (more.empty())
            return;
        std::vector<ITEM> merged;
        merged.reserve(items.size() + more.size());
        std::merge(std::make_move_iterator(items.begin()), std::make_move_iterator(items.end()),
                   std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()),
                   std::back_inserter(merged), [](ITEM const &a, ITEM const &b) { return a.first < b.first; });
        items.swap(merged);
        index_items();
    }

private:
    // Any good mixing will do: the index is rebuilt with the process and its order shows nowhere.
    static std::uint64_t hash(K const &key)
    {
        auto const *bytes = reinterpret_cast<unsigned char const *>(key.constData());
        std::size_t left = std::size_t(key.size()) * sizeof(*key.constData());
        std::uint64_t state = left * 0x9e3779b97f4a7c15u;
        for (; left >= 8; bytes += 8, left -= 8) {
            std::uint64_t word;
            std::memcpy(&word, bytes, 8);
            state = (state ^ word) * 0xff51afd7ed558ccdu;
            state ^= state >> 32;
        }
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, left);
        state = (state ^ word) * 0xc4ceb9fe1a85ec53u;
        return state ^ (state >> 29);
    }

    ITEM const *settled(K const &key) const
    {
        if (items.empty())
            return nullptr;
        std::uint64_t const wanted = hash(key);
        std::size_t const mask = slots_of_items.size() - 1;
        for (std::size_t slot = wanted & mask;; slot = (slot + 1) & mask) {
            PLACE const &candidate = slots_of_items[slot];
            if (candidate.item == 0)
                return nullptr;
            if (candidate.mark == std::uint32_t(wanted >> 32) && items[candidate.item - 1].first == key)
                return &items[candidate.item - 1];
        }
    }

    void index_items()
    {
        std::size_t capacity = 16;
        while (capacity < items.size() * 2)
            capacity *= 2;
        slots_of_items.assign(capacity, PLACE());
        for (std::size_t i = 0; i < items.size(); ++i) {
            std::uint64_t const mixed = hash(items[i].first);
            std::size_t slot = mixed & (capacity - 1);
            while (slots_of_items[slot].item != 0)
                slot = (slot + 1) & (capacity - 1);
            slots_of_items[slot] = {std::uint32_t(mixed >> 32), std::uint32_t(i + 1)};
        }
    }

    struct PLACE {
        std::uint32_t mark = 0;
        std::uint32_t item = 0;  // index into items plus 1; 0: free
    };

    std::vector<ITEM> items;  // ascending
    std::vector<PLACE> slots_of_items;
    // The table is handed to actions as const; entering a file that appeared is not what that const forbids.
    mutable std::recursive_mutex mutex;
    mutable std::map<K, V> late;
    mutable std::atomic<bool> has_late{false};
};
