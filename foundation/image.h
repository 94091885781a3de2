// KN::Image: a picture behind one interface, whatever the format of its pixels. KN::PixelAccessorDescriptor: a
// rectangle of somebody else's pixels, by which pictures are copied, converted and scaled. x runs to the right; row 0
// is the top one.
//
// Threads: const calls may run at once.
#pragma once

#include "foundation/api.h"
#include "foundation/pixel_format.h"
#include "foundation/string.h"
#include "foundation/tga.h"

#include <atomic>
#include <cstddef>

namespace KN {

class FileOut;

struct PixelAccessorDescriptor {
    void *data = nullptr;  // the first pixel of row 0
    unsigned width = 0, height = 0;
    unsigned pitch = 0;  // bytes from row to row
    unsigned format = 0;

    std::uint8_t *row(unsigned y) const { return static_cast<std::uint8_t *>(data) + std::size_t(y) * pitch; }

    // Fills the rectangle that both have, from the top left corner. Pixels of another format are converted by way of
    // PIXEL_8888. False, with nothing written, if a format is unknown. The two must not overlap.
    FOUNDATION_API bool copy(PixelAccessorDescriptor const &source) const;
    // Fills all of this with the source scaled to it: each pixel becomes the rounded mean of those that it covers, at
    // least one. False as above, and if the source is empty.
    FOUNDATION_API bool resize_copy(PixelAccessorDescriptor const &source) const;
};

// The order of the operations is that of their slots.
class FOUNDATION_API Image {
public:
    virtual unsigned format() const = 0;
    virtual unsigned width() const = 0;
    virtual unsigned height() const = 0;
    // x and y must lie inside.
    virtual void set_pixel(unsigned x, unsigned y, PIXEL_8888 const &pixel) = 0;
    virtual void get_pixel(PIXEL_8888 &out, unsigned x, unsigned y) const = 0;
    // The pixels are undefined afterwards.
    virtual void resize(unsigned width, unsigned height) = 0;
    // Valid until the next resize. The rectangle must lie inside; through a const accessor nothing may be written.
    virtual PixelAccessorDescriptor accessor(unsigned x, unsigned y, unsigned w, unsigned h) = 0;
    virtual PixelAccessorDescriptor accessor() = 0;
    virtual PixelAccessorDescriptor const accessor(unsigned x, unsigned y, unsigned w, unsigned h) const = 0;
    virtual PixelAccessorDescriptor const accessor() const = 0;

    // The picture as an uncompressed TGA whose pixels are of `format`. False if a side has more than 65535 pixels or
    // the file fails; at a path there is then what was there before.
    virtual bool write_tga(String const &path, TGAFormat format) const;
    virtual bool write_tga(FileOut &file, TGAFormat format) const;
    virtual ~Image() = default;

protected:
    Image() = default;
    Image(Image const &) = default;
    Image &operator=(Image const &) = default;
};

// Bytes in the pixels of living images, and the most that there have been at once.
struct FOUNDATION_API ImageDefaultAllocator {
    static std::atomic<std::size_t> mem, hwm;
};
struct FOUNDATION_API ImageLargeAllocator {
    static std::atomic<std::size_t> mem, hwm;
};

}  // namespace KN
