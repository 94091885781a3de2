// Takes something from each library of the package: the exit code is the number of the first that does not answer as
// it should.
#include "all_headers.h"

using namespace SUPPORT;

static bool a_clip_says_that_it_is_empty()
{
    KN::BufferedMemory nothing(nullptr, 0);
    return !ANIMATION_CLIP(nothing, nullptr, 0, {}, animation_heap()).valid;
}

static bool a_scene_goes_through_the_clean_up()
{
    VEX2_LOADER::VEX2 scene;
    KN::String const before = VEX2_LOADER::dump_scene(scene);
    VEX2_LOADER::prepare_scene(scene);
    return !before.empty() && VEX2_LOADER::dump_scene(scene) == before;
}

static bool a_square_is_cut()
{
    POLYLINE square, line;
    for (VECTOR2 const &corner : {VECTOR2{0, 0}, VECTOR2{9, 0}, VECTOR2{9, 9}, VECTOR2{0, 9}})
        square.append(corner);
    line.append(VECTOR2{-1, 4});
    line.append(VECTOR2{10, 5});
    POLYGON_CUTTER cutter;
    return cutter.set_outline(square) && cutter.cut(line, false) == OPEN_CUT && cutter.build_shapes() &&
           cutter.output_shapes.size() == 2;
}

static bool still_water_is_flat()
{
    CREST_PARAMETERS const crests;
    OCEAN_WAVE_FIELD const water({"", 16, 1, 1, 10, false, false}, {1, 0, 5, 0, 0}, crests, false);
    return water.height_at({0, 0, 0}, 3, 4) == 0;
}

static bool a_body_has_mass()
{
    RIGID_BODY body;
    set_box_mass(body, 4, 1);
    return body.inverse_mass == 0.25f;
}

int main()
{
    float const numbers[] = {1, 2, 3};
    bool const good[] = {KN::to_utf8(KN::UniString::format(7)) == "7",
                         a_scene_goes_through_the_clean_up(),
                         rotated({0, 0, 1}, quaternion_from_angle_y(0)) == VECTOR3{0, 0, 1},
                         a_clip_says_that_it_is_empty(),
                         CAMERA().forward() == VECTOR3{0, 0, 1},
                         a_square_is_cut(),
                         TYPED_IMAGE<KN::FORMAT_GREY8>(3, 2).width() == 3,
                         disc_points({{}, 1}, 5).size() == 5,
                         still_water_is_flat(),
                         parallel_sum(numbers) == 6,
                         a_body_has_mass(),
                         frame_report_text({}).empty()};
    for (unsigned i = 0; i < std::size(good); ++i)
        if (!good[i])
            return int(i + 1);
    return 0;
}
