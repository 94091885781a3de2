#include "Plugins/Vx2/host/tweaker.h"

#include <sstream>

namespace UTILITYDLL {

I_TWEAKER::I_TWEAKER(char const *tweaker_name, char const *source_file, int source_line, char const *, char const *,
                     char const *, bool)
    : name(KN::from_utf8(tweaker_name)), source(source_file), line(source_line)
{}

I_TWEAKER::~I_TWEAKER()
{
    auto const entry = tweakers().find(name);
    if (entry != tweakers().end() && entry->second == this)
        tweakers().erase(entry);
}

KN_STD::MAP<KN::UniString, I_TWEAKER *> &tweakers()
{
    // Never destroyed: tweakers of other libraries may leave it later than this library's own statics.
    static auto *const table = new KN_STD::MAP<KN::UniString, I_TWEAKER *>;
    return *table;
}

bool set_tweaker(KN::UniString const &name, KN::String const &text)
{
    auto const entry = tweakers().find(name);
    if (entry == tweakers().end())
        return false;
    std::istringstream stream(text);
    entry->second->read(stream);
    return !stream.fail() && (stream.eof() || (stream >> std::ws).eof());
}

}  // namespace UTILITYDLL
