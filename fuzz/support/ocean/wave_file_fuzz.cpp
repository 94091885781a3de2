// The life of a wave field on hostile bytes: read from a file and from a stream, with equal results, then sampled at
// usual and unusual places, and written; what was written is what was read. Seeds: support_ocean_seeds.
#include "foundation/buffered_stream.h"
#include "foundation/file.h"
#include "foundation/image.h"
#include "support/ocean/ocean_simulation.h"

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

using namespace SUPPORT;

namespace {

void require(bool held, char const *what)
{
    if (!held) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

template <class T>
bool same(KN::DynamicArray<T> const &a, KN::DynamicArray<T> const &b)
{
    return a.count == b.count && (a.empty() || std::memcmp(a.data, b.data, a.count * sizeof(T)) == 0);
}

bool same_fields(OCEAN_WAVE_FIELD const &a, OCEAN_WAVE_FIELD const &b)
{
    bool equal = a.grid == b.grid && a.frames.count == b.frames.count && a.choppy == b.choppy &&
                 std::memcmp(&a.ranges, &b.ranges, sizeof a.ranges) == 0;
    for (unsigned i = 0; equal && i < a.frames.count; ++i)
        equal = same(a.frames[i].heights.cells, b.frames[i].heights.cells) &&
                same(a.frames[i].slopes.cells, b.frames[i].slopes.cells) &&
                same(a.frames[i].displacements.cells, b.frames[i].displacements.cells) &&
                same(a.frames[i].crests, b.frames[i].crests) && same(a.frames[i].pairs, b.frames[i].pairs);
    return equal;
}

void sample(OCEAN_WAVE_FIELD const &field)
{
    float const none = std::numeric_limits<float>::quiet_NaN();
    for (float const at : {0.0f, -1.5f, 17.25f, 1e30f, none}) {
        FRAME_BLEND const blend = field.frame_blend(at);
        field.height_at(blend, at, 1);
        field.displacement_at(blend, 1, at);
        field.normal_at(blend, unsigned(blend.t * 1e9f), ~0u);
    }
    std::vector<std::uint32_t> words(std::size_t(field.grid) * field.grid);
    field.fill_slope_image(field.frame_blend(0.3f), {words.data(), field.grid, field.grid, 4 * field.grid, 7});
}

KN::String written_path() { return KN::String("/tmp/wave_file_fuzz." + std::to_string(getpid())); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    if (size < 1)
        return 0;
    unsigned const window = 1 + bytes[0];
    ++bytes;
    --size;

    int const handle = memfd_create("fuzz", 0);
    require(handle >= 0 && write(handle, bytes, size) == ssize_t(size), "bytes can stand in a file");
    KN::FileIn file;
    require(file.open(KN::String("/proc/self/fd/" + std::to_string(handle)), true), "the file opens");
    KN::BufferedMemory stream(bytes, size, window);
    OCEAN_WAVE_FIELD a, b;
    bool const good = a.read(file);
    require(b.read(stream) == good, "a file and a stream are taken or refused alike");
    close(handle);
    if (!good)
        return 0;
    require(same_fields(a, b), "a file and a stream give one field");
    sample(a);

    KN::FileIn again_file;
    OCEAN_WAVE_FIELD again;
    require(a.write(written_path()) && again_file.open(written_path(), true) && again.read(again_file),
            "what was written is read");
    require(same_fields(a, again), "and is the same");
    unlink(written_path().c_str());
    return 0;
}
