// The rows of models in the asset database. A rigid model stands in kestrel_rigid and kestrel_rigid_lod, an animated
// one in kestrel_animated and kestrel_animated_lod; the columns of the two pairs differ in names and types.
#pragma once

#include "Plugins/Vx2/host/database.h"

struct MODEL_ROWS {
    QString key;           // of the model; ties its rows together
    QString db_path;       // of the model file, below the working root
    QString texture_path;  // of the texture folder, below the working root
    QString category;      // may be empty
    bool animated;
    bool enabled;  // an old LOD row is changed in place, and found by its generated key
};

// The main table, then the LOD table, with one row each.
QVector<UPDATE_DB_TABLE> model_tables(MODEL_ROWS const &rows);
