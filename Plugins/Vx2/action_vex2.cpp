#include "Plugins/Vx2/action_vex2.h"

ACTION_VEX2::ACTION_VEX2(PHYSICAL_PATH const &physical, PROCESSOR_INTERFACE *processor)
    : ACTION_CONVERT(physical, processor)
{
    set_progress_max(1000);
}

ACTION_VEX2::ACTION_VEX2(ACTION_VEX2 const &other) = default;
ACTION_VEX2::~ACTION_VEX2() = default;

QString ACTION_VEX2::get_name(bool with_source) const
{
    QString const name = QStringLiteral("Convert vex2");
    return with_source ? name + " (" + PATHS::logical_path(source()).section('/', 1) + ")" : name;
}
