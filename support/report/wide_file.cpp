#include "support/report/wide_file.h"

namespace SUPPORT {

bool WIDE_FILE_OUT::open(KN::String const &path)
{
    close();
    return file.open(path, false, true);
}

bool WIDE_FILE_OUT::close()
{
    flush();
    return file.close();
}

void WIDE_FILE_OUT::append(std::string_view bytes)
{
    buffer.reserve(buffer_size);
    while (!bytes.empty()) {
        if (used == buffer_size)
            flush();
        std::string_view const some = bytes.substr(0, buffer_size - used);
        std::memcpy(buffer.data + used, some.data(), some.size());
        used += some.size();
        bytes.remove_prefix(some.size());
    }
}

void WIDE_FILE_OUT::append(std::u16string_view text) { append(std::string_view(KN::to_utf8(text))); }

void WIDE_FILE_OUT::append(LINE_START start)
{
    append(std::string_view("\n"));
    for (std::uint32_t i = 0; i < start.tabs; ++i)
        append(std::string_view("\t"));
}

void WIDE_FILE_OUT::flush()
{
    if (used != 0)
        file.write(buffer.data, unsigned(used));
    used = 0;
}

}  // namespace SUPPORT
