#include "scene/buffer.h"

#include "foundation/file.h"

#include <cstdio>

namespace VEX2_LOADER {

VEX2_READ_BUFFER::VEX2_READ_BUFFER(KN::UniString const &file_path) : path(file_path) { read_file(); }

VEX2_READ_BUFFER::VEX2_READ_BUFFER(KN::UniString const &file_path, VEX2_READ_BUFFER &outer_buffer)
    : path(file_path), outer(&outer_buffer), load(outer_buffer.load)
{
    read_file();
}

VEX2_READ_BUFFER::VEX2_READ_BUFFER(KN::UniString const &file_path, void const *bytes, unsigned size) : path(file_path)
{
    start = cursor = static_cast<unsigned char *>(const_cast<void *>(bytes));
    end = start + size;
    load->input = size;
}

VEX2_READ_BUFFER::~VEX2_READ_BUFFER() { KN::custom_free(block); }

void VEX2_READ_BUFFER::read_file()
{
    KN::FileIn file;
    file.open(path, false);
    if (file.status() != 0)
        return;
    unsigned const size = file.size();
    constexpr std::size_t granularity = 65536;
    block = static_cast<unsigned char *>(
        KN::malloc_aligned((std::size_t(size) + granularity - 1) / granularity * granularity, 4096));
    if (file.read(block, size) != size) {
        std::puts("Some error message here");
        return;
    }
    start = cursor = block;
    end = block + size;
    if (load->files.insert(KN::disk_path(path)).second)
        load->input += size;
    if (outer)
        load->used += size;  // what is copied out of the first file is in the limit; that of the further ones counts
}

bool VEX2_READ_BUFFER::fail(KN::String const &what)
{
    if (cause.empty())
        cause = what;
    return false;
}

bool VEX2_READ_BUFFER::fail_here(KN::String const &what)
{
    return fail(KN::String(what + " (byte " + std::to_string(offset()) + ")"));
}

void VEX2_READ_BUFFER::add_place(KN::String const &where)
{
    constexpr std::size_t longest_place = 120;  // nested maps would make one of thousands of names
    if (place.size() > longest_place)
        return;
    if (!place.empty() && place[0] != '[')
        place.insert(0, 1, '.');
    place.insert(0, where);
}

void VEX2_READ_BUFFER::add_index(std::uint32_t index)
{
    KN::String where = "[";
    where += std::to_string(index) + "]";
    add_place(where);
}

void VEX2_READ_BUFFER::add_chunk(KN::String const &where) { chunk = where; }

KN::String VEX2_READ_BUFFER::fault_text() const
{
    KN::String text;
    for (KN::String const *part : {&chunk, &place})
        if (!part->empty())
            text += *part + ": ";
    return KN::String(text + cause);
}

bool VEX2_READ_BUFFER::fail_short(std::uint64_t wanted)
{
    return fail_here(std::to_string(wanted) + " bytes are needed, " + std::to_string(left()) + " are left");
}

bool VEX2_READ_BUFFER::fail_count(std::uint32_t count)
{
    return fail_here(KN::String("a count of ") + std::to_string(count) + " with " + std::to_string(left()) +
                     " bytes left");
}

bool VEX2_READ_BUFFER::fail_charge()
{
    return fail("the scene would take more than " + std::to_string(memory_limit() >> 20) +
                " MiB, more than a file of its size may");
}

}  // namespace VEX2_LOADER
