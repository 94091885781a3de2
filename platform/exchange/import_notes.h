// What an import has to say besides its result: lines that are kept once each, in the order in which they came up.
#pragma once

#include "foundation/containers.h"
#include "foundation/string.h"

#include <algorithm>

class IMPORT_NOTES {
public:
    void add(KN::String const &line)
    {
        if (lines.size() < most && std::find(lines.begin(), lines.end(), line) == lines.end())
            lines.push_back(line);
    }
    KN_STD::VECTOR<KN::String> const &all() const { return lines; }

private:
    static constexpr std::size_t most = 100;
    KN_STD::VECTOR<KN::String> lines;
};
