// Where a virtual operation stands in the table of its class, for compilers whose pointers to members tell it. Programs
// that were built against a class call by that place: it must not change.
#pragma once

#include <cstddef>
#include <cstring>

#if defined(__GNUG__)
#define HAS_SLOT_OF 1

template <class MEMBER>
int slot_of(MEMBER member)
{
    std::ptrdiff_t words[2];
    static_assert(sizeof(member) == sizeof(words));
    std::memcpy(words, &member, sizeof(words));
    return int((words[0] - 1) / std::ptrdiff_t(sizeof(void *)));
}
#endif
