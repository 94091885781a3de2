// Hashes of what a plan depends on. They stay in the build record, so they are the same in every process and on every
// machine; equal ones are taken for equal things.
#pragma once

#include "platform/build_host/api.h"

#include <QtCore/QString>
#include <QtCore/QVariant>

#include <cstdint>

// `state` with one more number, in this order.
inline std::uint64_t mix(std::uint64_t state, std::uint64_t number)
{
    state = (state ^ number) * 0x9fb21c651e98df25u;
    state ^= state >> 35;
    return (state + number) * 0xbf58476d1ce4e5b9u ^ (state >> 28);
}

BUILD_HOST_API std::uint64_t mix_text(std::uint64_t state, QString const &text);
// Absent, null and empty differ, and so do the text "1", the number 1 and true.
BUILD_HOST_API std::uint64_t mix_value(std::uint64_t state, QVariant const &value);
