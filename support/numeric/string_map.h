// STRING_MAP: values under text keys in one open-addressed table of fixed size, with linear probing: built once, looked
// up often. A reserved text marks the slots that are not in use. Const operations may run on many threads at once.
#pragma once

#include "foundation/dynamic_array.h"
#include "foundation/string.h"

#include <cstdint>
#include <string_view>

namespace SUPPORT {

// The hash of the bytes from last to first; part of stored tables. An empty text gives 0xF73A51C9.
std::uint32_t string_hash(std::string_view text);

template <class VALUE>
class STRING_MAP {
public:
    struct SLOT {
        KN::String key;
        VALUE value{};
    };

    explicit STRING_MAP(unsigned slot_count = 256, KN::String const &reserved_key = "unused_key")
        : capacity(slot_count), unused_key(reserved_key)
    {
        slots.reserve(capacity);
        for (unsigned i = 0; i < capacity; ++i)
            slots.append(SLOT{unused_key, VALUE{}});
    }

    // Null if the key is not in the map. `unused_key` itself finds the value of an unused slot while there is one.
    VALUE const *find(KN::String const &key) const
    {
        SLOT const *const slot = slot_for(key);
        return slot != nullptr && slot->key == key ? &slot->value : nullptr;
    }
    VALUE *find(KN::String const &key) { return const_cast<VALUE *>(std::as_const(*this).find(key)); }

    // Puts `value` under `key`, in place of what is there. False if there is no slot left or the key is `unused_key`.
    bool insert(KN::String const &key, VALUE const &value)
    {
        SLOT *const slot = const_cast<SLOT *>(slot_for(key));
        if (slot == nullptr || key == unused_key)
            return false;
        slot->key = key;
        slot->value = value;
        return true;
    }

    unsigned const capacity;
    KN::String const unused_key;
    KN::DynamicArray<SLOT> slots;

private:
    // The slot that holds `key`, else the unused one where it would go; null if there is neither.
    SLOT const *slot_for(KN::String const &key) const
    {
        unsigned const start = capacity != 0 ? string_hash(key) % capacity : 0;
        for (unsigned step = 0; step < capacity; ++step) {
            SLOT const &slot = slots[start + step < capacity ? start + step : start + step - capacity];
            if (slot.key == key || slot.key == unused_key)
                return &slot;
        }
        return nullptr;
    }
};

}  // namespace SUPPORT
