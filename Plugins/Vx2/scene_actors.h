// The actors of a scene: groups of nodes, told apart by names. "CH:man:hips" or "CH_rider:hips" is the root bone of a
// character if "hips" is the root bone of a skeleton; the character is what hangs on that node's parent, and whatever
// else bears its name. "cam:..." or "cam_..." is the camera, at most one.
#pragma once

#include "scene/hierarchy.h"

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <map>

class PROGRESS_CALLBACK;

struct ACTOR {
    int key = -1;               // the node on top, by its place in the scene
    QString name;               // up to its last ":", as in the scene; "camera"
    QVector<int> node_indices;  // its nodes' places in the scene, ascending
    // Copies of those nodes: named by what stands behind the last ":", with parents among each other.
    KN::DynamicArray<VEX2_LOADER::VEX2_MATRIX_NODE> nodes;
    QString skeleton;  // that fits, once it is known
};

using ACTORS = std::map<int, ACTOR>;  // by key

// False, with error lines in `output`, if nodes have names of no such form. Parents may be any numbers.
bool find_actors(KN::DynamicArray<VEX2_LOADER::VEX2_MATRIX_NODE> const &nodes, QStringList const &skeletons,
                 PROGRESS_CALLBACK &output, ACTORS &actors);
