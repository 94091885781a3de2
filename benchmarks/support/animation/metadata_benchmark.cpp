// Many records of metadata from a stream, beside the same bytes through the file reader, which asks the system for each
// field, and beside a memory copy of them.
#include "benchmarks/support/side_by_side.h"
#include "foundation/buffered_stream.h"
#include "foundation/file.h"
#include "support/animation/metadata_records.h"

#include <cstring>
#include <filesystem>
#include <vector>

namespace {

using namespace SUPPORT;

constexpr unsigned record_count = 2000;

// Effects and blends in turn.
std::unique_ptr<METADATA_RECORD> new_record(unsigned i)
{
    return make_metadata_record(i % 2 == 0 ? CATEGORY_EFFECT_AT_NODE : CATEGORY_SPLICE_WITH_WEIGHTS);
}

template <class SOURCE>
float read_all(SOURCE &source)
{
    float sum = 0;
    METADATA_NAMED_EFFECT effect;
    METADATA_NAMED_BLEND blend;
    for (unsigned i = 0; i < record_count; ++i) {
        METADATA_RECORD *const record = i % 2 == 0 ? static_cast<METADATA_RECORD *>(&effect) : &blend;
        for (KN::String *const text : {&effect.name, &effect.tag_text, &blend.name_a, &blend.name_b, &blend.tag_text})
            text->clear();
        record->read(source);
        sum += record->start_time;
    }
    return sum;
}

void MetadataRecords(benchmark::State &state)
{
    KN::String const name((std::filesystem::temp_directory_path() / "mox_metadata_benchmark").string());
    float expected = 0;
    {
        KN::FileOut out;
        out.open(name, false, true);
        for (unsigned i = 0; i < record_count; ++i) {
            auto const record = new_record(i);
            record->start_time = float(i % 64);
            record->tag_text = "some tag of usual length";
            expected += record->start_time;
            record->write(out);
        }
        out.close();
    }
    KN::MemFileIn held;
    held.open(name, true);
    std::vector<char> bytes(held.size()), copy(held.size());
    held.read(bytes.data(), held.size());

    SIDE_BY_SIDE times;
    for (auto _ : state) {
        times.time("stream", [&] {
            KN::BufferedMemory stream(bytes.data(), bytes.size());
            if (read_all(stream) != expected)
                state.SkipWithError("wrong records");
        });
        times.time("file", [&] {
            KN::FileIn file;
            file.open(name, true);
            if (read_all(file) != expected)
                state.SkipWithError("wrong records");
        });
        times.time("copy", [&] {
            std::memcpy(copy.data(), bytes.data(), bytes.size());
            benchmark::ClobberMemory();
        });
    }
    std::filesystem::remove(name.c_str());
    times.report(state);
    state.counters["file/stream"] = times.ratio("file", "stream");
    state.counters["stream/copy"] = times.ratio("stream", "copy");
}
BENCHMARK(MetadataRecords)->Unit(benchmark::kMillisecond);

}  // namespace
