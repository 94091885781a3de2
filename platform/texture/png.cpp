// A mark of 8 bytes, then chunks of { u32 size, type, bytes, u32 checksum }, big-endian: IHDR tells the form, PLTE and
// tRNS the palette and what is transparent, the IDATs together are one compressed stream of rows. Each row begins with
// the number of its filter. An interlaced picture is stored as seven smaller ones.

#include "platform/texture/png.h"

#include <algorithm>
#include <bit>
#include <zlib.h>

namespace KESTREL {

namespace {

constexpr std::string_view mark = "\x89PNG\r\n\x1a\n";

enum FORM { GREY = 0, COLOUR = 2, PALETTE = 3, GREY_ALPHA = 4, COLOUR_ALPHA = 6 };

unsigned u32_at(std::string_view bytes, std::size_t at)
{
    unsigned value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

unsigned u16_at(std::string_view bytes, std::size_t at)
{
    return unsigned(static_cast<unsigned char>(bytes[at])) << 8 | static_cast<unsigned char>(bytes[at + 1]);
}

struct PNG {
    unsigned width = 0, height = 0, depth = 0, form = 0;
    bool is_interlaced = false;
    std::uint8_t palette[256][4] = {};
    bool has_key = false;
    unsigned key[3] = {};  // the one transparent colour
    std::string compressed;

    unsigned channels() const { return form == COLOUR ? 3 : form == GREY_ALPHA ? 2 : form == COLOUR_ALPHA ? 4 : 1; }
    std::size_t row_size(unsigned columns) const { return (std::size_t(columns) * channels() * depth + 7) / 8; }
};

bool read_head(std::string_view data, PNG &png)
{
    if (data.size() != 13)
        return false;
    png.width = u32_at(data, 0);
    png.height = u32_at(data, 4);
    png.depth = static_cast<unsigned char>(data[8]);
    png.form = static_cast<unsigned char>(data[9]);
    png.is_interlaced = data[12] == 1;
    unsigned const depths = png.form == GREY ? 1 | 2 | 4 | 8 | 16 : png.form == PALETTE ? 1 | 2 | 4 | 8 : 8 | 16;
    bool const known = png.form <= COLOUR_ALPHA && png.form != 1 && png.form != 5;
    return known && std::has_single_bit(png.depth) && (depths & png.depth) != 0 && data[10] == 0 && data[11] == 0 &&
           (data[12] == 0 || data[12] == 1);
}

void read_palette(std::string_view data, PNG &png)
{
    for (std::size_t i = 0; i < std::min<std::size_t>(data.size() / 3, 256); ++i) {
        for (std::size_t c = 0; c < 3; ++c)
            png.palette[i][c] = static_cast<std::uint8_t>(data[i * 3 + c]);
        png.palette[i][3] = 255;
    }
}

void read_transparency(std::string_view data, PNG &png)
{
    if (png.form == PALETTE) {
        for (std::size_t i = 0; i < std::min<std::size_t>(data.size(), 256); ++i)
            png.palette[i][3] = static_cast<std::uint8_t>(data[i]);
    } else if (png.form <= COLOUR && data.size() >= 2 * png.channels()) {
        png.has_key = true;
        for (unsigned c = 0; c < 3; ++c)
            png.key[c] = u16_at(data, png.form == COLOUR ? c * 2 : 0);
    }
}

// False if a chunk is cut off or its checksum does not hold, or if the first is no sound head.
bool read_chunks(std::string_view bytes, PNG &png)
{
    bool is_first = true;
    while (bytes.size() >= 12) {
        std::size_t const size = u32_at(bytes, 0);
        if (size > bytes.size() - 12)
            return false;
        std::string_view const type = bytes.substr(4, 4), data = bytes.substr(8, size);
        auto const *const checked = reinterpret_cast<Bytef const *>(type.data());
        if (crc32(0, checked, uInt(size + 4)) != u32_at(bytes, size + 8))
            return false;
        if (is_first != (type == "IHDR") || (is_first && !read_head(data, png)))
            return false;
        is_first = false;
        if (type == "PLTE")
            read_palette(data, png);
        else if (type == "tRNS")
            read_transparency(data, png);
        else if (type == "IDAT")
            png.compressed += data;
        else if (type == "IEND")
            return true;
        bytes.remove_prefix(size + 12);
    }
    return false;
}

// Takes rows out of the compressed stream.
class ROWS {
public:
    explicit ROWS(PNG const &png) : sample_size(std::max<std::size_t>(png.channels() * png.depth / 8, 1))
    {
        stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(png.compressed.data()));
        stream.avail_in = uInt(png.compressed.size());
        good = inflateInit(&stream) == Z_OK;
    }
    ~ROWS() { inflateEnd(&stream); }
    ROWS(ROWS const &) = delete;
    ROWS &operator=(ROWS const &) = delete;

    void begin(std::size_t row_size)
    {
        row.assign(row_size, 0);
        before.assign(row_size, 0);
    }

    // The next row without its filter, or null.
    std::uint8_t const *next()
    {
        std::swap(row, before);
        std::uint8_t filter = 0;
        if (!good || !take(&filter, 1) || filter > 4 || !take(row.data(), row.size()))
            return nullptr;
        for (std::size_t i = 0; i < row.size(); ++i) {
            int const left = i < sample_size ? 0 : row[i - sample_size];
            int const above_left = i < sample_size ? 0 : before[i - sample_size];
            row[i] = std::uint8_t(row[i] + foretold(filter, left, before[i], above_left));
        }
        return row.data();
    }

private:
    static int foretold(unsigned filter, int left, int above, int above_left)
    {
        switch (filter) {
        case 1:
            return left;
        case 2:
            return above;
        case 3:
            return (left + above) / 2;
        case 4:
            break;
        default:
            return 0;
        }
        int const to_left = std::abs(above - above_left), to_above = std::abs(left - above_left);
        int const to_both = std::abs(left + above - 2 * above_left);
        return to_left <= to_above && to_left <= to_both ? left : to_above <= to_both ? above : above_left;
    }

    bool take(std::uint8_t *to, std::size_t size)
    {
        stream.next_out = to;
        stream.avail_out = uInt(size);
        int const result = size == 0 ? Z_OK : inflate(&stream, Z_SYNC_FLUSH);
        return stream.avail_out == 0 && (result == Z_OK || result == Z_STREAM_END);
    }

    z_stream stream = {};
    bool good = false;
    std::size_t sample_size;
    std::vector<std::uint8_t> row, before;
};

// Sample `index` of a row at the picture's own depth.
unsigned sample(std::uint8_t const *row, std::size_t index, unsigned depth)
{
    if (depth == 16)
        return unsigned(row[index * 2]) << 8 | row[index * 2 + 1];
    std::size_t const bit = index * depth;
    return row[bit / 8] >> (8 - depth - bit % 8) & ((1u << depth) - 1);
}

void put_pixel(PNG const &png, std::uint8_t const *row, unsigned column, std::uint8_t *to)
{
    unsigned values[4];
    unsigned const channels = png.channels();
    for (unsigned c = 0; c < channels; ++c)
        values[c] = sample(row, std::size_t(column) * channels + c, png.depth);
    if (png.form == PALETTE) {
        std::copy_n(png.palette[values[0]], 4, to);
        return;
    }
    bool const has_colour = png.form == COLOUR || png.form == COLOUR_ALPHA;
    unsigned const most = (1u << png.depth) - 1;
    auto const byte = [&](unsigned value) { return std::uint8_t(png.depth == 16 ? value >> 8 : value * 255 / most); };
    bool is_key = png.has_key;
    for (unsigned c = 0; c < 3; ++c) {
        unsigned const value = values[has_colour ? c : 0];
        is_key = is_key && value == png.key[c];
        to[c] = byte(value);
    }
    to[3] = channels == 2 || channels == 4 ? byte(values[channels - 1]) : is_key ? 0 : 255;
}

bool read_rows(PNG const &png, PICTURE &picture)
{
    // Start and step of the columns and rows of each part.
    static constexpr unsigned whole[1][4] = {{0, 0, 1, 1}};
    static constexpr unsigned interlaced[7][4] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                                                  {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
    ROWS rows(png);
    for (unsigned part = 0; part < (png.is_interlaced ? 7u : 1u); ++part) {
        auto const &[x0, y0, step_x, step_y] = png.is_interlaced ? interlaced[part] : whole[part];
        if (x0 >= png.width || y0 >= png.height)
            continue;
        unsigned const columns = (png.width - x0 + step_x - 1) / step_x;
        rows.begin(png.row_size(columns));
        for (unsigned y = y0; y < png.height; y += step_y) {
            std::uint8_t const *const row = rows.next();
            if (row == nullptr)
                return false;
            for (unsigned column = 0; column < columns; ++column)
                put_pixel(png, row, column, picture.at(x0 + column * step_x, y));
        }
    }
    return true;
}

}  // namespace

bool is_png(std::string_view bytes) { return bytes.starts_with(mark); }

bool read_png(std::string_view bytes, PICTURE &picture, KN::String &error)
{
    picture = {};
    PNG png;
    error = "the picture is damaged";
    if (!is_png(bytes) || !read_chunks(bytes.substr(mark.size()), png) || png.width == 0 || png.height == 0)
        return false;
    if (png.width > PICTURE::largest || png.height > PICTURE::largest) {
        error = "the picture is larger than " + std::to_string(PICTURE::largest) + " pixels";
        return false;
    }
    constexpr std::size_t best_ratio = 1032;  // of the compression: what the stream cannot hold is not made room for
    if (png.row_size(png.width) * png.height / best_ratio > png.compressed.size())
        return false;
    picture.width = png.width;
    picture.height = png.height;
    picture.pixels.resize(std::size_t(png.width) * png.height * 4);
    if (read_rows(png, picture)) {
        error.clear();
        return true;
    }
    picture = {};
    return false;
}

}  // namespace KESTREL
