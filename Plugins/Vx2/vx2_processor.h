// VX2_PROCESSOR: plans what is to become of the scene files (".vx2") of a tree, by the rules that cover them. Planning
// opens no file: a fault in a rule becomes an error on an action or an ACTION_ERROR, and the plan goes on.
#pragma once

#include "Plugins/Vx2/host/processor.h"

class ACTION_MODEL;

class VX2_PROCESSOR : public COMPLEX_ASSET_PROCESSOR {
public:
    VX2_PROCESSOR();
    ~VX2_PROCESSOR() override;

    QString get_name() const override;
    QStringList get_affected_directories() const override;
    // Walks the table in its order; the actions of one file stand together. Calls do not overlap.
    QVector<ACTION_INTERFACE *> plan_actions(FILE_TABLE const &files, RULE_CACHE const &rules) override;
    QString processor_prefix() const override;

    // Plans the rows of a model in the asset database: one in a main table, one in a LOD table. `db_path`: of the model
    // below the working root, with its file name. `enabled`: old LOD rows stay and are changed; else an action that
    // removes them comes in front. `actions`: receives the actions, and is empty before.
    void add_database_actions(QString const &db_path, QString const &texture_path, bool animated,
                              QString const &category, bool enabled, QVector<ACTION_INTERFACE *> &actions,
                              FILE_TABLE const &files);

private:
    struct PLANNING;
    struct SCENE_FILE;
    struct RIGID_PLAN;

    void plan_rigid_model(PLANNING &planning, SCENE_FILE const &file);
    ACTION_MODEL *plan_model_and_tech(PLANNING &planning, SCENE_FILE const &file, RIGID_PLAN const &plan,
                                      RULE const &tech_rule, int group);
    void plan_database(PLANNING &planning, SCENE_FILE const &file, RIGID_PLAN const &plan, ACTION_MODEL &model);
    void plan_tree(PLANNING &planning, SCENE_FILE const &file, RIGID_PLAN const &plan, ACTION_MODEL &model);
    void plan_generic_mesh(PLANNING &planning, SCENE_FILE const &file);
    void plan_animation(PLANNING &planning, SCENE_FILE const &file);
    void plan_complex_animation(PLANNING &planning, SCENE_FILE const &file);
};
