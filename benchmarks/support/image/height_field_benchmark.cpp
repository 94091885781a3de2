// A height field to a TIFF file and back: floats in memory at both ends. Beside it libtiff with the 16-bit samples as
// they stand in the file, which need no work at all, and a copy of those samples in memory. libtiff's samples lie in
// the C library's memory, as in a program without our heap; libtiff_read_large is its reading into our large pages. 513
// and 2049 are the sides of a terrain tile and of a small map. The files lie in the folder for temporary files; no
// writer finds its file there before, because file systems take long to replace one.

#include "benchmarks/support/side_by_side.h"
#include "foundation/file.h"
#include "support/image/height_field.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <tiffio.h>
#include <unistd.h>
#include <vector>

using namespace SUPPORT;

namespace {

bool write_with_libtiff(std::string const &path, unsigned side, std::span<std::uint16_t> samples)
{
    TIFF *const file = TIFFOpen(path.c_str(), "w");
    TIFFSetField(file, TIFFTAG_IMAGEWIDTH, side);
    TIFFSetField(file, TIFFTAG_IMAGELENGTH, side);
    TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, side);
    TIFFSetField(file, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    bool const written = TIFFWriteEncodedStrip(file, 0, samples.data(), tmsize_t(2 * samples.size())) > 0;
    TIFFClose(file);
    return written;
}

bool read_with_libtiff(std::string const &path, std::span<std::uint16_t> samples)
{
    TIFF *const file = TIFFOpen(path.c_str(), "rc");  // c: the strip as it is, not in pieces
    bool const read = TIFFReadEncodedStrip(file, 0, samples.data(), tmsize_t(2 * samples.size())) > 0;
    TIFFClose(file);
    return read;
}

void HeightFieldTiff(benchmark::State &state)
{
    unsigned const side = unsigned(state.range(0));
    HEIGHT_FIELD field(side, side), back;
    KN::MemFileIn held;  // keeps its memory, as in a loader of many tiles
    std::size_t const count = std::size_t(side) * side;
    std::vector<std::uint16_t> samples(count), other(samples), read_large(samples);
    std::unique_ptr<std::uint16_t, void (*)(void *)> const c_memory(
        static_cast<std::uint16_t *>(std::calloc(count, sizeof(std::uint16_t))), std::free);
    std::span<std::uint16_t> const read_samples(c_memory.get(), count);
    for (unsigned y = 0; y < side; ++y)
        for (unsigned x = 0; x < side; ++x) {
            float const value = 0.5f + 0.5f * std::sin(0.01f * float(x)) * std::cos(0.013f * float(y));
            field.row(y)[x] = value;
            samples[(side - 1 - y) * side + x] = std::uint16_t(value * 65535);
        }
    std::filesystem::path const folder =
        std::filesystem::temp_directory_path() / ("height_field_benchmark_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    KN::String const ours = KN::String((folder / "ours.tif").string()),
                     ranged = KN::String((folder / "ranged.tif").string()),
                     theirs = KN::String((folder / "theirs.tif").string());

    float const zero = 0, one = 1;
    bool good = true;
    SIDE_BY_SIDE times;
    for (auto _ : state) {
        // Each file is read right after it was written, so that all have the same chance to stand near the processor.
        std::filesystem::remove(ranged.c_str());
        times.time("write_own_range", [&] { good &= field.write_tiff(ranged, nullptr, nullptr); });
        times.time("read_held", [&] { good &= held.open(ranged, true) && back.read_tiff(held); });
        std::filesystem::remove(ours.c_str());
        times.time("write", [&] { good &= field.write_tiff(ours, &zero, &one); });
        times.time("read", [&] {
            KN::FileIn file;
            good &= file.open(ours, true) && back.read_tiff(file);
        });
        std::filesystem::remove(theirs.c_str());
        times.time("libtiff_write", [&] { good &= write_with_libtiff(theirs, side, samples); });
        times.time("libtiff_read", [&] { good &= read_with_libtiff(theirs, read_samples); });
        times.time("libtiff_read_large", [&] { good &= read_with_libtiff(theirs, read_large); });
        times.time("copy", [&] {
            std::memcpy(other.data(), samples.data(), 2 * samples.size());
            benchmark::ClobberMemory();
        });
    }
    times.report(state);
    state.counters["write_ratio"] = times.ratio("write", "libtiff_write");
    state.counters["read_ratio"] = times.ratio("read", "libtiff_read");
    state.counters["read_ratio_large"] = times.ratio("read", "libtiff_read_large");

    good &= read_large == samples && std::ranges::equal(read_samples, samples);
    read_large.assign(samples.size(), 0);
    good &= read_with_libtiff(ours, read_large) && read_large == samples;
    for (std::size_t i = 0; i < samples.size(); ++i)
        good &= std::fabs(back.values[i] - field.values[i]) < 1.6e-5f;
    std::filesystem::remove_all(folder);
    if (!good)
        state.SkipWithError("wrong samples");
}
BENCHMARK(HeightFieldTiff)->Arg(513)->Arg(2049)->Iterations(60)->Unit(benchmark::kMillisecond);

}  // namespace
