// ACTION_TREE: renders the billboard pictures of a tree's temporary model in the engine, one strip of four views for
// each season whose textures lie beside the model, and then copies the model to its place. All trees of a plan share
// one engine, whose scene belongs to one slot of one tree at a time: they have one group.
#pragma once

#include "Plugins/Vx2/billboard_camera.h"
#include "Plugins/Vx2/host/action_convert.h"
#include "Plugins/Vx2/host/action_engine.h"

class ACTION_TREE : public ACTION_CONVERT {
public:
    // `model`: the target of the tree's ACTION_MODEL. `files` is looked through for textures at once.
    ACTION_TREE(PHYSICAL_PATH const &model, PROCESSOR_INTERFACE *processor, ACTION_INIT_KESTREL *engine,
                FILE_TABLE const &files);

    // The strips: four seasons, one for the suffix "_br", and one without a suffix, which is always made.
    static constexpr int SLOT_COUNT = 6, WHOLE_YEAR = 5;
    bool slot_used(int slot) const { return slots[slot].used; }
    // The path of a slot's pictures without "_diffuse.tga" and the like.
    QString image_base(int slot) const;

    void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                            FILE_TABLE const &files, RULE_CACHE const &rules) const override;
    // True in any case; without a view nothing is rendered. The model reaches `to` after all pictures.
    bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                 FILE_TABLE const &files) override;

private:
    struct SLOT {
        QString suffix;
        bool used;
    };
    // Of one view: pixels and metres.
    struct VIEW_SIZE {
        int tile_width, tile_height;
        float width, height;
        bool is_sound;  // false: there is nothing to look at
    };

    void find_seasons(FILE_TABLE const &files);
    VIEW_SIZE view_size();
    VIEW_SIZE set_up_view();
    void place_instances(VIEW_SIZE const &size);
    void render_slot(PHYSICAL_PATH const &from, int slot);
    void capture(QString const &file, int kind, VIEW_SIZE const &size);

    PHYSICAL_PATH folder;
    QString stem;
    ACTION_INIT_KESTREL *init;
    BILLBOARD_CAMERA camera;
    int model = -1;  // the engine's handle
    SLOT slots[SLOT_COUNT];
};

// The size of a side of a tile in pixels, for a side of `length` metres: a power of two by the tweaker's density, at
// least 16 times `divisor`, at most `total_limit` / `divisor`. For a length without a size the smallest one.
int tile_pixels(float length, int total_limit, int divisor);
