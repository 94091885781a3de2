// Texts by the forms of printf.
#pragma once

#include "foundation/string.h"

namespace SUPPORT {

[[gnu::format(printf, 1, 2)]] KN::String text_form(char const *form, ...);

}  // namespace SUPPORT
