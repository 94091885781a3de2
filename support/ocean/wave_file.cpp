// A wave field as a file, little-endian, without padding: magic, version, the header fields, the number of frames, and
// the frames: three planes, the crests, the pairs. docs/formats.md has the offsets.

#include "foundation/buffered_stream.h"
#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "support/ocean/ocean_wave_field.h"

#include <algorithm>
#include <bit>

namespace SUPPORT {

namespace {

static_assert(std::endian::native == std::endian::little, "files are little-endian and copied as they stand");

constexpr std::uint32_t magic = 0x12345678, version = 1;
constexpr std::uint32_t largest_grid = 1 << 15;

// What stands between the version and the number of frames.
template <class VISITOR, class FIELD>
void visit_header(VISITOR &visit, FIELD &field)
{
    visit(field.grid);
    visit(field.size);
    visit(field.period);
    visit(field.frame_count);
    visit(field.crests_enabled);
    visit(field.choppy);
    visit(field.ranges.height_min);
    visit(field.ranges.height_max);
    visit(field.ranges.slope_min_x);
    visit(field.ranges.slope_min_y);
    visit(field.ranges.slope_max_x);
    visit(field.ranges.slope_max_y);
    visit(field.ranges.displacement_min_x);
    visit(field.ranges.displacement_min_y);
    visit(field.ranges.displacement_max_x);
    visit(field.ranges.displacement_max_y);
}

template <class VISITOR, class FRAME>
void visit_frame(VISITOR &visit, FRAME &frame)
{
    visit.plane(frame.heights);
    visit.plane(frame.slopes);
    visit.plane(frame.displacements);
    visit.list(frame.crests);
    visit.list(frame.pairs);
}

class WAVE_WRITER {
public:
    explicit WAVE_WRITER(KN::FinishedFile &target) : file(target) {}

    template <class T>
    void operator()(T const &value)
    {
        file.write(&value, sizeof value);
    }
    template <class CELL>
    void plane(WAVE_PLANE<CELL> const &plane)
    {
        (*this)(plane.width);
        (*this)(plane.rows);
        elements(plane.cells);
    }
    template <class T>
    void list(KN::DynamicArray<T> const &list)
    {
        (*this)(list.count);
        elements(list);
    }

private:
    template <class T>
    void elements(KN::DynamicArray<T> const &array)
    {
        if (!array.empty())
            file.write(array.data, array.count * sizeof(T));
    }

    KN::FinishedFile &file;
};

// The first lack ends it. Memory is taken in pieces, each after the one before has been filled, so that a count costs
// no more than the bytes that follow it.
template <class SOURCE>
class WAVE_READER {
public:
    explicit WAVE_READER(SOURCE &given) : source(given) {}

    template <class T>
    void operator()(T &value)
    {
        T bytes{};
        good = good && source.read(&bytes, sizeof bytes) == sizeof bytes;
        if (good)
            value = bytes;
    }
    void operator()(bool &value)
    {
        std::uint8_t byte = 0;
        (*this)(byte);
        value = byte != 0;
    }
    template <class CELL>
    void plane(WAVE_PLANE<CELL> &plane)
    {
        std::uint32_t width = 0, rows = 0;
        (*this)(width);
        (*this)(rows);
        bool const has_shape = width == side && rows == side;
        good = good && (has_shape || (width == 0 && rows == 0));
        if (!good || !has_shape)
            return;
        plane.set_shape(width, rows);
        elements(plane.cells, width * rows);
    }
    template <class T>
    void list(KN::DynamicArray<T> &list)
    {
        std::uint32_t count = 0;
        (*this)(count);
        elements(list, count);
    }

    SOURCE &source;
    std::uint32_t side = 0;  // that planes have to have
    bool good = true;

private:
    template <class T>
    void elements(KN::DynamicArray<T> &array, std::uint32_t count)
    {
        constexpr std::uint32_t piece = 65536 / sizeof(T), largest_piece = (1u << 28) / sizeof(T);
        while (good && array.count < count) {
            std::uint32_t const first = array.count;
            std::uint32_t const wanted = std::min(count - first, std::clamp(first, piece, largest_piece));
            if (!array.try_reserve(first + wanted)) {
                good = false;
                return;
            }
            array.resize(first + wanted);
            unsigned const bytes = wanted * unsigned(sizeof(T));
            good = source.read(array.data + first, bytes) == bytes;
        }
    }
};

bool fits(WAVE_FRAME const &frame, std::uint32_t grid)
{
    return frame.heights.width == grid && frame.slopes.width == grid &&
           std::all_of(frame.crests.begin(), frame.crests.end(),
                       [&](CREST_POINT const &crest) { return crest.x < grid && crest.y < grid; });
}

}  // namespace

bool OCEAN_WAVE_FIELD::write(KN::String const &path) const
{
    KN::FinishedFile file(path);
    WAVE_WRITER writer(file);
    writer(magic);
    writer(version);
    visit_header(writer, *this);
    writer(frames.count);
    for (WAVE_FRAME const &frame : frames)
        visit_frame(writer, frame);
    return file.commit();
}

template <class SOURCE>
bool OCEAN_WAVE_FIELD::read_from(SOURCE &source)
{
    std::uint32_t first = 0, second = 0;
    WAVE_READER<SOURCE> reader(source);
    reader(first);
    reader(second);
    if (!reader.good || first != magic || second != version || source.status() != 0)
        return false;
    std::uint32_t number_of_frames = 0;
    visit_header(reader, *this);
    reader(number_of_frames);
    if (!reader.good || !std::has_single_bit(grid) || grid > largest_grid || frame_count == 0 ||
        number_of_frames != frame_count)
        return false;
    reader.side = grid;
    for (std::uint32_t i = 0; i < number_of_frames; ++i) {
        WAVE_FRAME frame;
        visit_frame(reader, frame);
        if (!reader.good || !fits(frame, grid))
            return false;
        frames.append(std::move(frame));
    }
    looped = true;
    fixed_scale = float(grid) * 4096 / size;
    scales.set(ranges);
    return true;
}

bool OCEAN_WAVE_FIELD::read(KN::FileIn &file) { return read_from(file); }

bool OCEAN_WAVE_FIELD::read(KN::BufferedStream &stream) { return read_from(stream); }

}  // namespace SUPPORT
