// How the build record names products. Logical paths do not tell the current trees from the old ones, while a product
// belongs to one of them: what lies below an old root is named by its physical path, all else by its logical one.
#pragma once

#include "Plugins/Vx2/host/paths.h"

bool is_of_old_tree(QString const &physical);

QString product_name(PHYSICAL_PATH const &physical, LOGICAL_PATH const &logical);

// The file of that name; empty if it lies outside the tree.
PHYSICAL_PATH product_path(QString const &name);
