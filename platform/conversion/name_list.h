// NAME_LIST: a text of a rule that lists names of bones.
#pragma once

#include "foundation/containers.h"
#include "foundation/string.h"

namespace TOOLDATABUILDER {

class NAME_LIST {
public:
    // Names separated by blanks, "," or ";"; one that ends in "*" stands for all that begin so. Case does not count.
    explicit NAME_LIST(KN::String const &text);

    bool contains(KN::String const &lower_case_name) const;

private:
    KN_STD::SET<KN::String> names;
    KN_STD::VECTOR<KN::String> beginnings;
};

}  // namespace TOOLDATABUILDER
