#include "platform/gltf/buffer.h"

namespace GLTF {

static std::size_t size_of(COMPONENT component)
{
    switch (component) {
    case COMPONENT::U8:
        return 1;
    case COMPONENT::U16:
        return 2;
    default:
        return 4;
    }
}

void BUFFER::reserve(std::size_t more)
{
    if (more <= largest)
        bytes.reserve(bytes.size() + more);
}

void BUFFER::drop_last()
{
    bytes.resize(list.back().offset);
    list.pop_back();
}

int BUFFER::add(COMPONENT component, int components, std::size_t count, USE use, bool bounded, bool normalised)
{
    std::size_t const element = size_of(component) * std::size_t(components);
    std::size_t const stride = use == USE::VERTICES ? (element + 3) & ~std::size_t(3) : element;
    std::size_t const offset = (bytes.size() + 3) & ~std::size_t(3);
    if (refused || count > (largest - offset) / stride) {
        refused = true;
        return -1;
    }
    bytes.resize(offset + count * stride);
    list.push_back({component, components, count, use, normalised, bounded, offset, stride});
    return int(list.size() - 1);
}

}  // namespace GLTF
