// Tweakers: named values of the program that can be set from outside, by a console or a command line.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "foundation/containers.h"
#include "foundation/string.h"

#include <iosfwd>

namespace UTILITYDLL {

// Static objects of libraries derive from it. Whoever makes one enters it in tweakers() unless its name is taken there;
// it leaves the table when it goes, if the entry is its own.
class UTILITY_API I_TWEAKER {
public:
    // Name, place of the definition in the source (`source`, `line`), the part of the program it belongs to, its label
    // and help for people, and whether it is kept out of sight.
    I_TWEAKER(char const *name, char const *source, int line, char const *part, char const *label, char const *help,
              bool hidden);
    virtual ~I_TWEAKER();
    I_TWEAKER(I_TWEAKER const &) = delete;
    I_TWEAKER &operator=(I_TWEAKER const &) = delete;

    virtual void write(std::ostream &stream) const = 0;  // the value as text
    virtual void read(std::istream &stream) = 0;         // a text that is no value leaves the old one

    KN::UniString const name;
    char const *const source;
    int const line;

protected:
    unsigned char was_read = 0;  // 1: the value came from outside
};

// By name. Changed while libraries are loaded and unloaded, on the thread that does this; read between.
UTILITY_API KN_STD::MAP<KN::UniString, I_TWEAKER *> &tweakers();

// Hands `text` to the tweaker; false if there is none of that name, or it is no value or more than one.
UTILITY_API bool set_tweaker(KN::UniString const &name, KN::String const &text);

}  // namespace UTILITYDLL
