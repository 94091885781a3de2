#include "Plugins/Vx2/action_clean_up_vex2.h"

#include "scene/scene.h"

ACTION_CLEAN_UP_VEX2::ACTION_CLEAN_UP_VEX2(PHYSICAL_PATH const &physical, VEX2_LOADER::VEX2 *&scene,
                                           PROCESSOR_INTERFACE *processor)
    : ACTION_VEX2(physical, processor), shared_scene(scene)
{}

QString ACTION_CLEAN_UP_VEX2::get_name(bool with_source) const
{
    // The text of the action itself stands in the brackets, not the source: kept as people know it.
    return with_source ? QStringLiteral("Clean up vex2 (Clean up vex2)") : QStringLiteral("Clean up vex2");
}

void ACTION_CLEAN_UP_VEX2::get_affected_files(QVector<LOGICAL_PATH> &, QVector<TARGET_FILE> &, qint64 &,
                                              FILE_TABLE const &, RULE_CACHE const &) const
{}

ACTION_INTERFACE::STATUS ACTION_CLEAN_UP_VEX2::run(FILE_TABLE const &, RULE_CACHE const &)
{
    set_up_tdb_output();
    delete shared_scene;
    shared_scene = nullptr;
    return get_status_by_output();
}

bool ACTION_CLEAN_UP_VEX2::auto_fail_if_dependency_failed() const { return false; }
