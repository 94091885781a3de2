// The plan for a file with a rule of kind RigidModelV2: the model, and what its other properties ask for beside it.
#include "Plugins/Vx2/action_animation.h"
#include "Plugins/Vx2/action_clean_up_vex2.h"
#include "Plugins/Vx2/action_model.h"
#include "Plugins/Vx2/action_prepare_vex2.h"
#include "Plugins/Vx2/action_process_tech.h"
#include "Plugins/Vx2/action_remove_rigid_lods.h"
#include "Plugins/Vx2/database_rows.h"
#include "Plugins/Vx2/host/action_error.h"
#include "Plugins/Vx2/rule_reading.h"
#include "Plugins/Vx2/vx2_planning.h"

#include <QtCore/QStringBuilder>

void VX2_PROCESSOR::plan_rigid_model(PLANNING &planning, SCENE_FILE const &file)
{
    RULE const rule = planning.rules.get(file.logical, QStringLiteral("RigidModelV2"));
    if (!rule.exists)
        return;
    RIGID_RULE const &settings = planning.rigid_rule(rule);
    if (!settings.has_target)
        return;

    RIGID_PLAN plan{rule, settings, file.relative_folder(rule, QStringLiteral("TargetPath")), {}, {}};
    if (settings.has_textures) {
        plan.texture_path = file.relative_folder(rule, QStringLiteral("TextureFolder")) + settings.texture_sub_folder;
        plan.texture_logical = LOGICAL_PATH("<working>/" % plan.texture_path.toLower());
    }

    if (settings.has_reference_pose) {
        auto *const pose =
            new ACTION_ANIMATION(file.physical, this, settings.animation_type, QString(), QString(), 0.0f, true, true);
        pose->set_target_path(file.working_root % '/' % plan.target_folder % settings.reference_pose_folder);
        planning.result.append(pose);
    }

    int const group = allocate_action_group();  // one a file, also where nothing shares a scene
    RULE const tech_rule = planning.rules.get(file.logical, QStringLiteral("Vx2Tech"));
    ACTION_MODEL *const model = tech_rule.exists ? plan_model_and_tech(planning, file, plan, tech_rule, group)
                                                 : new ACTION_MODEL(file.physical, plan.texture_logical,
                                                                    settings.animation_type, settings.single_lod, this);
    if (!settings.extension.isEmpty())
        model->set_target_extension(settings.extension);

    if (!settings.has_textures)
        model->set_error(QStringLiteral("No texture folder has been specified for the process_model action!"));
    else if (settings.update_database)
        plan_database(planning, file, plan, *model);

    if (settings.tree)
        plan_tree(planning, file, plan, *model);
    else
        file.set_target_from_rule(*model, rule, false);
    planning.result.append(model);
}

// The four actions that work on one loaded scene: prepare it, convert the model and the tech meshes in either order,
// destroy it. All but the model are appended.
ACTION_MODEL *VX2_PROCESSOR::plan_model_and_tech(PLANNING &planning, SCENE_FILE const &file, RIGID_PLAN const &plan,
                                                 RULE const &tech_rule, int group)
{
    auto *const prepare = new ACTION_PREPARE_VEX2(file.physical, this);
    prepare->group = group;
    planning.result.append(prepare);

    auto *const model = new ACTION_MODEL(prepare->scene, file.physical, plan.texture_logical,
                                         plan.settings.animation_type, plan.settings.single_lod, this);
    model->group = group;
    model->add_dependency(prepare, true);

    auto *const cleanup = new ACTION_CLEAN_UP_VEX2(file.physical, prepare->scene, this);
    cleanup->group = group;
    planning.result.append(cleanup);
    prepare->pull(cleanup);
    cleanup->add_dependency(model, false);

    // Appended as it stands: slashes at its ends stay.
    QString tech_folder = tech_rule.value(QStringLiteral("Vx2TechSubFolder")).toString();
    if (!tech_folder.isEmpty())
        tech_folder.prepend('/');
    tech_folder.prepend(plan.target_folder);
    tech_folder.replace('\\', '/');

    // A null radius is 0 here, while the model's description takes the default for it.
    QVariant const radius = plan.rule.value(QStringLiteral("IncendiaryRadius"));
    auto *const tech =
        new ACTION_PROCESS_TECH(prepare->scene, file.physical, this,
                                radius.isValid() ? radius.toFloat() : default_incendiary_radius, tech_folder);
    tech->group = group;
    tech->add_dependency(prepare, true);
    cleanup->add_dependency(tech, false);
    planning.result.append(tech);
    return model;
}

void VX2_PROCESSOR::plan_database(PLANNING &planning, SCENE_FILE const &file, RIGID_PLAN const &plan,
                                  ACTION_MODEL &model)
{
    if (plan.settings.category.isEmpty())
        model.set_error(QStringLiteral("Missing rule property 'RigidCategory'!"));

    QVector<ACTION_INTERFACE *> db_actions;
    if (plan.settings.is_target_null) {
        auto *const error = new ACTION_ERROR(QStringLiteral("Update database"),
                                             QStringLiteral("TargetPath property missing from the rule."), this);
        error->add_source_file(file.logical);
        db_actions.append(error);
    } else {
        // Stem and extension stand already, though the model has not got its folder yet.
        QString const target = model.get_target();
        QString const file_name = target.mid(target.lastIndexOf('/') + 1);
        add_database_actions(plan.target_folder % '/' % file_name, plan.texture_path,
                             !plan.settings.animation_type.isEmpty(), plan.settings.category, planning.patching_enabled,
                             db_actions, planning.files);
    }

    for (ACTION_INTERFACE *const waiting : qAsConst(waiting_actions)) {
        planning.result.append(waiting);
        model.pull(waiting);
        waiting->add_dependency(&model, false);
    }
    waiting_actions.clear();
    planning.result += db_actions;
}

void VX2_PROCESSOR::add_database_actions(QString const &db_path, QString const &texture_path, bool animated,
                                         QString const &category, bool enabled, QVector<ACTION_INTERFACE *> &actions,
                                         FILE_TABLE const &files)
{
    // Up to the first dot, while tech files are named up to the last one.
    QString const file_name = db_path.mid(db_path.lastIndexOf('/') + 1);
    QString const key = file_name.left(file_name.indexOf('.')).toLower();
    create_db_actions(model_tables({key, db_path, texture_path, category, animated, enabled}), key, enabled, actions,
                      files, true);
    if (enabled)
        return;
    auto *const remove = new ACTION_REMOVE_RIGID_LODS(key, this);
    actions.append(remove);
    actions[0]->add_dependency(remove, false);
    actions[0]->pull(remove);
}
