#include "scene/attributes.h"

#include "scene/define_record.h"

namespace VEX2_LOADER {

VEX2_DEFINE_SERIAL(VEX2_NAMED)
VEX2_DEFINE_SERIAL(VEX2_STRING_ATTRIBUTE)
VEX2_DEFINE_SERIAL(VEX2_ATTRIBUTES)

VEX2_DEFINE_SERIAL(VEX2_CHANNEL_ATTRIBUTE<CHANNEL>, template <class CHANNEL>)
VEX2_DEFINE_ANIMATED(VEX2_CHANNEL_ATTRIBUTE<CHANNEL>, template <class CHANNEL>)

template class VEX2_CHANNEL_ATTRIBUTE<VEX2_INT_CHANNEL>;
template class VEX2_CHANNEL_ATTRIBUTE<VEX2_FLOAT_CHANNEL>;
template class VEX2_CHANNEL_ATTRIBUTE<VEX2_VECTOR_CHANNEL>;
template class VEX2_CHANNEL_ATTRIBUTE<VEX2_VECTOR4_CHANNEL>;

KN::UniString const *VEX2_ATTRIBUTES::single_string(std::u16string_view attribute) const
{
    for (VEX2_STRING_ATTRIBUTE const &candidate : strings)
        if (candidate.name == attribute && candidate.values.count == 1)
            return &candidate.values[0];
    return nullptr;
}

void VEX2_ATTRIBUTES::add_string(std::u16string_view attribute, std::u16string_view value)
{
    VEX2_STRING_ATTRIBUTE &added = strings.append();
    added.name = KN::UniString(attribute);
    added.values.append(value);
}

}  // namespace VEX2_LOADER
