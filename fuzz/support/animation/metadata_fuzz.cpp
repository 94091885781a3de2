// Any bytes as records of every layout, one behind the other: from a file, and from streams of several window sizes,
// which agree where both take the first number for a version or both do not. What was read is written and read again.

#include "loaded_twice.h"
#include "support/animation/metadata_records.h"

#include <cstdint>
#include <vector>

using namespace SUPPORT;

namespace {

using RECORDS = std::vector<std::unique_ptr<METADATA_RECORD>>;

constexpr std::size_t most_records = 64;

RECORDS from_stream(std::int32_t category, std::uint8_t const *bytes, std::size_t size, unsigned window)
{
    KN::BufferedMemory stream(bytes, size, window);
    RECORDS records;
    do {
        records.push_back(make_metadata_record(category));
        records.back()->read(stream);
        require(stream.total <= size, "a stream gives no more bytes than there are");
    } while (stream.status() == 0 && stream.total < size && records.size() < most_records);
    return records;
}

// Versions from 101 to 10000 are versions for streams alone; both read something else from there on.
bool is_version_of_one(METADATA_RECORD const &record) { return record.version > 100; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *bytes, std::size_t size)
{
    static NO_MESSAGES quiet;
    KN::set_process_message_sink(&quiet);
    if (size < 2)
        return 0;
    std::int32_t const category = bytes[0] % CATEGORY_COUNT;
    unsigned const window = 1u + bytes[1];
    bytes += 2;
    size -= 2;

    RECORDS const whole = from_stream(category, bytes, size, 1u << 20);
    RECORDS const pieces = from_stream(category, bytes, size, window);
    require(whole.size() == pieces.size(), "the window makes no difference to the number of records");
    for (std::size_t i = 0; i < whole.size(); ++i)
        require(whole[i]->equals(*pieces[i]), "the window makes no difference to a record");

    FILE_OF_BYTES in(bytes, size);
    for (std::size_t i = 0; i + 1 < whole.size() && !is_version_of_one(*whole[i]); ++i) {  // the last may be cut off
        auto const record = make_metadata_record(category);
        record->read(in.file);
        require(record->equals(*whole[i]), "file and stream agree");
    }

    KN::String const name("/dev/shm/metadata_fuzz_" + std::to_string(getpid()));
    std::unique_ptr<METADATA_RECORD> const record = make_metadata_record(category);
    KN::BufferedMemory stream(bytes, size, window);
    record->read(stream);
    record->version = newest_metadata_version;
    KN::FileOut out;
    require(out.open(name, false, true), "a file can be written");
    record->write(out);
    require(out.close(), "a file can be written");
    KN::MemFileIn stored;
    require(stored.open(name, true), "what was written opens");
    std::vector<std::uint8_t> again(stored.size());
    stored.read(again.data(), stored.size());
    RECORDS const once_more = from_stream(category, again.data(), again.size(), window);
    require(once_more.size() == 1, "what was written is one record");
    require(once_more[0]->tag_text == record->tag_text, "what was written reads back");
    return 0;
}
