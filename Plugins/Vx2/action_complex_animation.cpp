#include "Plugins/Vx2/action_complex_animation.h"

ACTION_COMPLEX_ANIMATION::ACTION_COMPLEX_ANIMATION(PHYSICAL_PATH const &physical,
                                                   KN_STD::VECTOR<TOOLDATABUILDER::BONE_NAME_TABLE> const &,
                                                   PROCESSOR_INTERFACE *processor)
    : ACTION_VEX2(physical, processor)
{
    set_target_extension(QString());  // a folder
}

bool ACTION_COMPLEX_ANIMATION::convert(PHYSICAL_PATH const &, PHYSICAL_PATH const &, RULE_CACHE const &,
                                       FILE_TABLE const &)
{
    output_line(QStringLiteral("Complex animations are not built yet."), 2);
    return false;
}
