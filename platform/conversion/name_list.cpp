#include "platform/conversion/name_list.h"

#include <algorithm>

namespace TOOLDATABUILDER {

NAME_LIST::NAME_LIST(KN::String const &text)
{
    constexpr char const *separators = " \t\r\n,;";
    for (std::size_t begin = text.find_first_not_of(separators); begin != text.npos;) {
        std::size_t const end = std::min(text.find_first_of(separators, begin), text.size());
        KN::String name = KN::String(text.substr(begin, end - begin)).lower();
        if (name.back() == '*')
            beginnings.push_back(name.substr(0, name.size() - 1));
        else
            names.insert(name);
        begin = text.find_first_not_of(separators, end);
    }
}

bool NAME_LIST::contains(KN::String const &lower_case_name) const
{
    return names.count(lower_case_name) != 0 ||
           std::any_of(beginnings.begin(), beginnings.end(),
                       [&](KN::String const &beginning) { return lower_case_name.starts_with(beginning); });
}

}  // namespace TOOLDATABUILDER
