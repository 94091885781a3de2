// What must hold for every picture that a reader accepts or refuses.
#pragma once

#include "fuzz_kit.h"
#include "platform/texture/mip.h"

namespace FUZZ {

// `read`: one of the readers of whole files.
template <class READER>
void walk_picture(READER *read, std::string_view bytes)
{
    KESTREL::PICTURE picture;
    KN::String error;
    bool const good = read(bytes, picture, error);
    require(good == error.empty(), "a line exactly where a picture is refused");
    require(good || picture.pixels.empty(), "a picture that is refused is empty");
    if (!good)
        return;
    require(picture.width >= 1 && picture.width <= KESTREL::PICTURE::largest && picture.height >= 1 &&
                picture.height <= KESTREL::PICTURE::largest,
            "a size within the limits");
    require(picture.pixels.size() == std::size_t(picture.width) * picture.height * 4, "four bytes a pixel");
    for (KESTREL::CONTENT const content : {KESTREL::CONTENT::COLOUR, KESTREL::CONTENT::NORMAL})
        half_of(picture, content);
}

}  // namespace FUZZ
