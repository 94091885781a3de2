#include "Plugins/Vx2/action_genericmesh.h"
#include "Plugins/Vx2/vx2_planning.h"

void VX2_PROCESSOR::plan_generic_mesh(PLANNING &planning, SCENE_FILE const &file)
{
    RULE const rule = planning.rules.get(file.logical, QStringLiteral("GenericMesh"));
    if (!rule.exists || !rule.value(QStringLiteral("TargetPath")).isValid())
        return;
    auto *const mesh = new ACTION_GENERICMESH(file.physical, this);
    file.set_target_from_rule(*mesh, rule, false);
    planning.result.append(mesh);
}
