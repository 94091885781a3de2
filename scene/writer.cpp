#include "scene/writer.h"

namespace VEX2_LOADER {

namespace {

constexpr std::size_t pending_size = std::size_t(1) << 18;
constexpr std::size_t longest_path = 260;
constexpr std::uint32_t largest_file = 0x7fffffff;  // positions above count from the end

}  // namespace

VEX2_CHUNK_WRITER::VEX2_CHUNK_WRITER(KN::UniString const &file_path, bool append, bool chunk_rule)
    : chunked(chunk_rule), file(std::make_unique<KN::FileOut>()), path(file_path),
      pending(std::make_unique_for_overwrite<unsigned char[]>(pending_size)), next(pending.get()),
      room(next + pending_size)
{
    good = file->open(KN::String(KN::disk_path(path).substr(0, longest_path)), append, true);
    if (good)
        flushed = file->tell();
}

VEX2_CHUNK_WRITER::~VEX2_CHUNK_WRITER() { close(); }

bool VEX2_CHUNK_WRITER::begin_chunk()
{
    if (in_chunk)
        return false;
    chunk_start = position();
    std::uint32_t const size_place = 0;
    write_unframed(&size_place, sizeof size_place);
    in_chunk = 1;
    return true;
}

bool VEX2_CHUNK_WRITER::end_chunk()
{
    if (!in_chunk)
        return false;
    in_chunk = 0;
    return overwrite(chunk_start, position() - chunk_start);
}

bool VEX2_CHUNK_WRITER::write_string(KN::UniString const &text)
{
    if (text.size() > 0xffff)
        return false;
    std::uint16_t const length = std::uint16_t(text.size());
    return write_unframed(&length, sizeof length) && write_unframed(text.data(), text.size() * sizeof(char16_t));
}

bool VEX2_CHUNK_WRITER::write_large(void const *bytes, std::size_t size)
{
    if (!flush())
        return false;
    if (size <= pending_size)
        return write_unframed(bytes, size);
    if (size > largest_file - flushed)
        return good = false;
    good = file->write(bytes, unsigned(size)) == size;
    flushed += std::uint32_t(size);
    return good;
}

bool VEX2_CHUNK_WRITER::flush()
{
    std::size_t const size = std::size_t(next - pending.get());
    next = pending.get();
    if (!good || size == 0)
        return good;
    if (size > largest_file - flushed)
        return good = false;
    good = file->write(pending.get(), unsigned(size)) == size;
    flushed += std::uint32_t(size);
    return good;
}

bool VEX2_CHUNK_WRITER::overwrite(std::uint32_t at, std::uint32_t value)
{
    if (!good)
        return false;
    if (at >= flushed) {
        std::memcpy(pending.get() + (at - flushed), &value, sizeof value);
        return true;
    }
    if (!flush())
        return false;
    file->seek(at);
    good = file->write(&value, sizeof value) == sizeof value;
    file->seek(flushed);
    return good;
}

bool VEX2_CHUNK_WRITER::close()
{
    if (!file)
        return good;
    flush();
    good &= file->close();
    file.reset();
    return good;
}

}  // namespace VEX2_LOADER
