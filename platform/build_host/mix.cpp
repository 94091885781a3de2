#include "platform/build_host/mix.h"

#include <xxhash.h>

std::uint64_t mix_text(std::uint64_t state, QString const &text)
{
    return mix(state, XXH3_64bits(text.constData(), std::size_t(text.size()) * sizeof(QChar)));
}

std::uint64_t mix_value(std::uint64_t state, QVariant const &value)
{
    state = mix(state, std::uint64_t(value.userType()));
    return value.isNull() ? mix(state, 0) : mix_text(mix(state, 1), value.toString());
}
