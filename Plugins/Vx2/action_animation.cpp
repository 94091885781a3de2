#include "Plugins/Vx2/action_animation.h"

ACTION_ANIMATION::ACTION_ANIMATION(PHYSICAL_PATH const &physical, PROCESSOR_INTERFACE *processor, QString const &type,
                                   QString const &translations, QString const &rotations, float rate, bool reference,
                                   bool rigid)
    : ACTION_VEX2(physical, processor), animation_type(type), strip_translations(translations),
      strip_rotations(rotations), fps(rate), reference_pose(reference), rigid_reference(rigid)
{
    set_target_extension(QStringLiteral(".anim"));
}

ACTION_ANIMATION::ACTION_ANIMATION(ACTION_ANIMATION const &other) = default;
ACTION_ANIMATION::~ACTION_ANIMATION() = default;

void ACTION_ANIMATION::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                                          FILE_TABLE const &files, RULE_CACHE const &rules) const
{
    ACTION_CONVERT::get_affected_files(sources, targets, time, files, rules);
}

bool ACTION_ANIMATION::convert(PHYSICAL_PATH const &, PHYSICAL_PATH const &, RULE_CACHE const &, FILE_TABLE const &)
{
    output_line(QStringLiteral("Animations are not built yet."), 2);
    return false;
}
