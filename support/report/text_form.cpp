#include "support/report/text_form.h"

#include <cstdarg>
#include <cstdio>

namespace SUPPORT {

KN::String text_form(char const *form, ...)
{
    std::va_list values, again;
    va_start(values, form);
    va_copy(again, values);
    int const size = std::vsnprintf(nullptr, 0, form, values);
    va_end(values);
    KN::String text;
    if (size > 0) {
        text.resize(std::size_t(size) + 1);
        std::vsnprintf(text.data(), text.size(), form, again);
        text.pop_back();
    }
    va_end(again);
    return text;
}

}  // namespace SUPPORT
