#include "Plugins/Vx2/action_animation.h"
#include "Plugins/Vx2/host/host_messages.h"
#include "Plugins/Vx2/vx2_planning.h"

// Of rules from before StripTranslations and StripRotations. Sources of old data may keep them.
static void warn_of_deprecated_properties(RULE const &rule, PHYSICAL_PATH const &physical)
{
    if (physical.contains(PATHS::old_raw_data(), Qt::CaseInsensitive))
        return;
    static QString const deprecated[] = {
        "CoreTranslations",
        "FaceTranslations",
        "FaceRotations",
        "LeftHandTranslations",
        "LeftHandRotations",
        "RightHandTranslations",
        "RightHandRotations",
        "CinematicCoreTranslations",
        "CinematicFaceTranslations",
        "CinematicFaceRotations",
        "CinematicLeftHandTranslations",
        "CinematicLeftHandRotations",
        "CinematicRightHandTranslations",
        "CinematicRightHandRotations",
    };
    for (QString const &property : deprecated)
        if (rule.value(property).isValid())
            HOST_MESSAGES::warning(
                QStringLiteral("Animation"),
                QStringLiteral("Rule value %1 is deprecated while processing %2!").arg(property, physical));
}

void VX2_PROCESSOR::plan_animation(PLANNING &planning, SCENE_FILE const &file)
{
    RULE const rule = planning.rules.get(file.logical, QStringLiteral("Animation"));
    if (!rule.exists)
        return;
    warn_of_deprecated_properties(rule, file.physical);

    QString const type = rule.value(QStringLiteral("AnimationType")).toString();
    bool const reference_pose = rule.value(QStringLiteral("ExportAsReferencePose")).toBool();
    if (type.isEmpty() && !reference_pose)
        return;
    auto *const animation =
        new ACTION_ANIMATION(file.physical, this, type, rule.value(QStringLiteral("StripTranslations")).toString(),
                             rule.value(QStringLiteral("StripRotations")).toString(),
                             rule.value(QStringLiteral("FPS")).toFloat(), reference_pose, false);
    file.set_target_from_rule(*animation, rule, true);
    planning.result.append(animation);
}
