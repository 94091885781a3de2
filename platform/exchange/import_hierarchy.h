// The nodes of an imported scene: the tree as one list, parents first, with the tracks of one clip.
//
// A skin is exact only if the scene starts in the pose in which it was bound, for a weighted vertex keeps one bind
// position for all its influences. So where that pose differs from the one at the clip's begin, the start pose stands
// one thirtieth of a second before it, and the scene's start time is that moment; from the clip's begin on everything
// is as the file has it.
#pragma once

#include "foundation/containers.h"
#include "foundation/string.h"
#include "platform/exchange/import_notes.h"
#include "platform/exchange/pose.h"
#include "scene/values.h"

#include <map>

struct aiAnimation;
struct aiNode;
struct aiScene;

namespace VEX2_LOADER {
class VEX2;
}

class IMPORT_HIERARCHY {
public:
    // `clip` may be null. `unit`: metres in one unit of length of the source. The source outlives this object.
    IMPORT_HIERARCHY(aiScene const &source, aiAnimation const *clip, double unit, IMPORT_NOTES &notes);

    // Nodes, start time and end time of an empty scene.
    void fill(VEX2_LOADER::VEX2 &scene) const;

    std::size_t size() const { return nodes.size(); }
    aiNode const &source_node(std::size_t index) const { return *nodes[index].source; }
    // The first node of that name, or -1.
    int find(std::string const &name) const;
    // Of node `index` at the scene's start time, in metres.
    POSE_MATRIX const &start_matrix(std::size_t index) const { return start_matrices[index]; }

private:
    template <class VALUE>
    struct TRACK {
        KN_STD::VECTOR<float> times;  // seconds, strictly ascending; at least one
        KN_STD::VECTOR<VALUE> values;
        void add(double time, VALUE const &value);
        void lead_in(float start, float begin, VALUE const &value);
    };
    struct NODE {
        aiNode const *source;
        int parent;
        POSE rest;
        TRACK<VEX2_LOADER::VEX2_VECTOR> translation;
        TRACK<VEX2_LOADER::VEX2_QUATERNION> rotation;
        TRACK<VEX2_LOADER::VEX2_VECTOR> scale;
        POSE begin() const;  // at the first keys
    };

    void take_tree(aiScene const &source, IMPORT_NOTES &notes);
    void take_clip(aiAnimation const *clip, IMPORT_NOTES &notes);
    KN_STD::VECTOR<POSE> bound_poses(aiScene const &source, IMPORT_NOTES &notes) const;
    void start_in(KN_STD::VECTOR<POSE> const &poses);
    KN_STD::VECTOR<POSE_MATRIX> world_matrices(KN_STD::VECTOR<POSE> const &poses) const;

    double unit;
    KN_STD::VECTOR<NODE> nodes;
    std::multimap<std::string, int> by_name;
    KN_STD::VECTOR<POSE_MATRIX> start_matrices;
    float start_time = 0, begin_time = 0, end_time = 0;
};
