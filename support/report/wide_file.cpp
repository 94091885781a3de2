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

// False for more than the buffer takes.
bool WIDE_FILE_OUT::make_room(std::size_t size)
{
    flush();
    buffer.reserve(buffer_size);
    return size <= buffer_size;
}

void WIDE_FILE_OUT::put_slowly(std::string_view bytes)
{
    while (!bytes.empty()) {
        std::string_view const some = bytes.substr(0, buffer_size);
        put(some);
        bytes.remove_prefix(some.size());
    }
}

void WIDE_FILE_OUT::put_slowly(std::u16string_view text) { put_slowly(KN::to_utf8(text)); }

void WIDE_FILE_OUT::flush()
{
    if (used != 0)
        file.write(buffer.data, unsigned(used));
    used = 0;
}

}  // namespace SUPPORT
