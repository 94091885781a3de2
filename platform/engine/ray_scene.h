// RAY_SCENE: instances of models, and the first thing that a ray meets among them. What a surface's texture leaves
// transparent is not met. Embree does the work, and is known to this class's source only.
#pragma once

#include "platform/engine/render_model.h"

namespace KESTREL {

// Rays that are cast together; those of one pixel do well, because they go the same way.
struct RAY_PACKET {
    static constexpr unsigned size = 16;

    unsigned count = 0;  // of the rays that are cast
    float origins[3][size];
    float directions[3][size];  // of length 1
    float reach[size];          // how far they go
    float thresholds[size];     // what is half transparent is met where its alpha is above
};

struct RAY_HIT {
    unsigned instance = none;
    unsigned part;  // of the instance's model
    PLACE place;
    float distance;

    static constexpr unsigned none = ~0u;
};

class RAY_SCENE {
public:
    RAY_SCENE();
    ~RAY_SCENE();
    RAY_SCENE(RAY_SCENE const &) = delete;
    RAY_SCENE &operator=(RAY_SCENE const &) = delete;

    void clear();
    // The model is not copied and outlives its use; the number that add_instance knows it by. RAY_HIT::none, with a
    // message, if memory runs out.
    unsigned add_model(RENDER_MODEL const &model);
    // `matrix`: three rows of four, acting on column vectors.
    void add_instance(unsigned model, float const matrix[12]);
    // Has to be called before the first ray, and after the last change.
    void commit();

    // Any thread, several at once.
    void cast(RAY_PACKET const &rays, RAY_HIT hits[RAY_PACKET::size]) const;

    RENDER_PART const &part_of(RAY_HIT const &hit) const;
    // From model space; directions keep no length.
    void turn(RAY_HIT const &hit, float direction[3]) const;

private:
    struct STATE;
    std::unique_ptr<STATE> state;
};

}  // namespace KESTREL
