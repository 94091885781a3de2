// The plan for a tree: its model becomes a file beside the source that is only an input of the tree action, which
// renders the billboard and puts the model in its place; each picture of the billboard becomes a texture.
#include "Plugins/Vx2/action_model.h"
#include "Plugins/Vx2/action_tree.h"
#include "Plugins/Vx2/host/action_engine.h"
#include "Plugins/Vx2/host/action_texture.h"
#include "Plugins/Vx2/vx2_planning.h"

#include <QtCore/QStringBuilder>

void VX2_PROCESSOR::plan_tree(PLANNING &planning, SCENE_FILE const &file, RIGID_PLAN const &plan, ACTION_MODEL &model)
{
    model.set_target_path(file.physical.section('/', 0, -2));
    model.set_target_temporary(true);

    if (!planning.tree_init) {
        planning.tree_init = new ACTION_INIT_KESTREL(this, true, true, true);
        planning.tree_cleanup = new ACTION_CLEANUP_KESTREL(planning.tree_init, this);
        planning.tree_group = allocate_action_group();
        planning.tree_init->group = planning.tree_cleanup->group = planning.tree_group;
        planning.result.append(planning.tree_init);
        planning.result.append(planning.tree_cleanup);
    }

    auto *const tree = new ACTION_TREE(model.get_target(), this, planning.tree_init, planning.files);
    model.pull_both_ways(tree);
    tree->add_dependency(&model, false);
    tree->add_dependency(planning.tree_init, true);
    planning.tree_cleanup->add_dependency(tree, false);
    tree->group = planning.tree_group;  // trees share the engine's one scene
    file.set_target_from_rule(*tree, plan.rule, false);
    planning.result.append(tree);
    model.set_final_target_path(PHYSICAL_PATH(tree->get_target().section('/', 0, -2)));

    auto const append_texture = [&](ACTION_CONVERT *texture) {
        texture->set_target_path(file.working_root % '/' % plan.texture_path);
        texture->add_dependency(tree, false);
        tree->pull_both_ways(texture);
        planning.result.append(texture);
    };
    for (int slot = 0; slot < ACTION_TREE::SLOT_COUNT; ++slot) {
        if (!tree->slot_used(slot))
            continue;
        QString const base = tree->image_base(slot);
        append_texture(new ACTION_DDS_N(PHYSICAL_PATH(base % "_diffuse.tga"), this));
        if (slot == ACTION_TREE::WHOLE_YEAR)
            append_texture(new ACTION_BILLBOARD(PHYSICAL_PATH(base), this));
    }
}
