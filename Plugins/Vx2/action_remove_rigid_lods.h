// ACTION_REMOVE_RIGID_LODS: takes a model's old rows out of both LOD tables, whichever kind of model it is or was.
#pragma once

#include "Plugins/Vx2/host/action_remove_from_db.h"

class ACTION_REMOVE_RIGID_LODS : public ACTION_REMOVE_FROM_DB {
public:
    ACTION_REMOVE_RIGID_LODS(QString const &model_key, PROCESSOR_INTERFACE *processor);

protected:
    bool remove_rows() override;
};
