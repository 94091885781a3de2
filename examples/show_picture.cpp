// show_picture FILE.tga: prints a picture, of 32 bits if parts of it are clear, as characters, 128 columns wide; the
// denser the character, the more of it is covered and the darker it is.

#include "foundation/file.h"
#include "foundation/image.h"

#include <cstdio>
#include <vector>

namespace {

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
    KN::TGAHeader header;
    if (!file.open(KN::String(arguments[1]), true) || !header.read(file) ||
        !header.is_plausible(file.size() - file.tell())) {
        std::fprintf(stderr, "%s: is no TGA picture without a palette, or is cut off\n", arguments[1]);
        return 1;
    }
    unsigned const width = header.width, height = header.height;
    std::vector<KN::PIXEL_8888> pixels(std::size_t(width) * height);
    if (!KN::read_pixels(file, header, {pixels.data(), width, height, width * 4, KN::FORMAT_A8R8G8B8})) {
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
                    KN::PIXEL_8888 const &pixel = pixels[std::size_t(y) * width + x];
                    float const bright = float(pixel.blue + pixel.green + pixel.red) / (3 * 255);
                    ink += float(pixel.alpha) / 255 * (1 - 0.66f * bright) / float(2 * step * step);
                }
            }
            std::putchar(inks[unsigned(ink * (sizeof inks - 2) + 0.5f)]);
        }
        std::putchar('\n');
    }
    return 0;
}
