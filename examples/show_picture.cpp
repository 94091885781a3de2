// show_picture FILE.tga: prints an uncompressed picture of 32 bits as characters, 128 columns wide; the denser the
// character, the more of it is covered and the darker it is.

#include "foundation/file.h"

#include <cstdio>
#include <vector>

namespace {

constexpr unsigned head_size = 18;
constexpr unsigned columns = 128;
constexpr char inks[] = " .:-=+*#%@";

}  // namespace

int main(int argument_count, char **arguments)
{
    if (argument_count != 2) {
        std::fputs("usage: show_picture FILE.tga\n", stderr);
        return 2;
    }
    KN::MemFileIn file;
    unsigned char head[head_size];
    if (!file.open(KN::String(arguments[1]), true) || file.read(head, head_size) != head_size || head[2] != 2 ||
        head[16] != 32) {
        std::fprintf(stderr, "%s: is no uncompressed TGA picture of 32 bits\n", arguments[1]);
        return 1;
    }
    unsigned const width = head[12] | unsigned(head[13]) << 8, height = head[14] | unsigned(head[15]) << 8;
    bool const is_from_top = (head[17] & 0x20) != 0;
    std::size_t const size = std::size_t(width) * height * 4;
    std::vector<unsigned char> pixels(size <= file.size() ? size : 0);
    if (pixels.empty() || file.read(pixels.data(), unsigned(size)) != size) {
        std::fprintf(stderr, "%s: is cut off\n", arguments[1]);
        return 1;
    }

    // Characters are about twice as high as wide.
    unsigned const step = width > columns ? width / columns : 1;
    for (unsigned top = 0; top + 2 * step <= height; top += 2 * step) {
        for (unsigned left = 0; left + step <= width; left += step) {
            float ink = 0;  // 0 to 1: opacity times darkness, at least a third where there is anything
            for (unsigned y = top; y < top + 2 * step; ++y) {
                for (unsigned x = left; x < left + step; ++x) {
                    unsigned const row = is_from_top ? y : height - 1 - y;
                    unsigned char const *const pixel = &pixels[(std::size_t(row) * width + x) * 4];
                    float const bright = float(pixel[0] + pixel[1] + pixel[2]) / (3 * 255);
                    ink += float(pixel[3]) / 255 * (1 - 0.66f * bright) / float(2 * step * step);
                }
            }
            std::putchar(inks[unsigned(ink * (sizeof inks - 2) + 0.5f)]);
        }
        std::putchar('\n');
    }
    return 0;
}
