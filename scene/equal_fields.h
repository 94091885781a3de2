// Comparing: the visitor that finds out whether two records of one class hold the same. Two floats are equal if neither
// is less than the other, so a NaN equals anything.
#pragma once

#include "scene/fields.h"

namespace VEX2_LOADER {

template <class T>
bool equal_items(T const &a, T const &b);

template <class T>
class RECORD_COMPARER : public FIELD_VISITOR<RECORD_COMPARER<T>> {
public:
    RECORD_COMPARER(T const &first, T const &second) : a(first), b(second) {}

    template <class C, class M>
    void operator()(char const *, M C::*member, float = 0)
    {
        equal = equal && equal_items(a.*member, b.*member);
    }

    bool equal = true;

private:
    T const &a;
    T const &b;
};

inline bool equal_floats(float const *a, float const *b, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        if (a[i] < b[i] || b[i] < a[i])
            return false;
    return true;
}

template <class T>
bool equal_arrays(KN::DynamicArray<T> const &a, KN::DynamicArray<T> const &b)
{
    if (a.count != b.count)
        return false;
    for (unsigned i = 0; i < a.count; ++i)
        if (!equal_items(a[i], b[i]))
            return false;
    return true;
}

template <class T>
bool equal_items(T const &a, T const &b)
{
    if constexpr (RECORD<T>) {
        RECORD_COMPARER<T> comparer(a, b);
        T::fields(comparer);
        return comparer.equal;
    } else if constexpr (std::is_array_v<T>) {
        for (std::size_t i = 0; i < std::extent_v<T>; ++i)
            if (!equal_items(a[i], b[i]))
                return false;
        return true;
    } else if constexpr (std::is_integral_v<T> || std::is_same_v<T, KN::UniString>) {
        return a == b;
    } else if constexpr (stored_as_is<T>) {
        static_assert(sizeof(T) % sizeof(float) == 0, "the values are runs of floats");
        return equal_floats(reinterpret_cast<float const *>(&a), reinterpret_cast<float const *>(&b),
                            sizeof(T) / sizeof(float));
    } else if constexpr (requires { a.capacity, a.count; }) {
        return equal_arrays(a, b);
    } else {
        return a.get() && b.get() ? a->equals(*b) : a.get() == b.get();
    }
}

// For the `equals` of a family: another class is never equal.
template <class T, class BASE>
bool equal_records(T const &a, BASE const &b)
{
    return b.subtype() == T::kind && equal_items(a, static_cast<T const &>(b));
}

}  // namespace VEX2_LOADER
