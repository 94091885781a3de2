#include "Plugins/Vx2/host/vfs.h"
#include "foundation/task.h"
#include "plate_model.h"
#include "support/camera/camera.h"

#include <cmath>
#include <gmock/gmock.h>

using namespace KESTREL;
using namespace TEST_ENGINE;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr unsigned width = 64, height = 32;

class RENDERING : public ENGINES {
protected:
    RENDERING()
    {
        // 4 m x 2 m, 16 pixels a metre; the plate is half way between the eye and the target.
        camera.set_eye({0, 1, 10});
        camera.set_target({0, 1, -10});
        camera.set_near(0.01f);
        camera.set_far(100);
        camera.set_aspect(2);
        camera.set_view_height(2);
        camera.set_orthographic(true);
    }

    // Loads the plate, puts it where `matrix` says, and renders.
    void render(std::vector<float> const &matrix = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0},
                TEXTURE_NAME_MAPPER *mapper = nullptr)
    {
        ENGINE &engine = start(true);
        int const model = engine.load_model("models/plate.rigid_model_v2", ENGINE::BILLBOARD_MATERIALS, mapper);
        engine.set_mode(ENGINE::CAPTURE);
        engine.view()->set_clear({0x808080, 0, 0x80808080});
        engine.view()->set_viewport(0, 0, width, height);
        engine.view()->set_camera(&camera);
        engine.add_instance(model, matrix.data());
        engine.begin_frame();
        engine.end_frame();
    }

    PICTURE capture(int kind)
    {
        init->engine()->view()->save_image({width, height, at("out.tga"), kind});
        PICTURE picture;
        KN::String error;
        read_picture(at("out.tga"), picture, error);
        return picture;
    }

    static std::vector<int> pixel(PICTURE const &picture, unsigned x, unsigned y)
    {
        return {picture.at(x, y), picture.at(x, y) + 4};
    }

    SUPPORT::CAMERA camera;
};

}  // namespace

// As one who stands there sees it: not mirrored, upright.
TEST_F(RENDERING, APictureShowsWhatTheCameraSees)
{
    put_plate({});
    render();
    PICTURE const colour = capture(CAPTURE_REQUEST::COLOUR);
    EXPECT_THAT(pixel(colour, 18, 2), ElementsAre(255, 0, 0, 255));
    EXPECT_THAT(pixel(colour, 45, 2), ElementsAre(0, 0, 255, 255));
    EXPECT_THAT(pixel(colour, 18, 29), ElementsAre(0, 255, 0, 255));
    EXPECT_THAT(pixel(colour, 45, 29), ElementsAre(255, 255, 255, 255));
    EXPECT_THAT(pixel(colour, 0, 2), ElementsAre(255, 0, 0, 0)) << "the nearest colour, transparent";
    EXPECT_THAT(pixel(colour, 63, 2), ElementsAre(0, 0, 255, 0));

    PICTURE const normal = capture(CAPTURE_REQUEST::NORMAL);
    EXPECT_THAT(pixel(normal, 20, 10), ElementsAre(128, 128, 255, 255));
    EXPECT_THAT(pixel(normal, 0, 0), ElementsAre(128, 128, 128, 128));
    PICTURE const relief = capture(CAPTURE_REQUEST::HEIGHT);
    EXPECT_THAT(pixel(relief, 20, 10), ElementsAre(128, 128, 128, 255));
    EXPECT_THAT(pixel(relief, 0, 0), ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(lines.of_level[KN::MESSAGE_ERROR], IsEmpty());
}

// Turned by 45 degrees about y, its right side further away, and moved half a pixel to the right.
TEST_F(RENDERING, CoverageNormalAndHeightFollowTheInstance)
{
    put_plate({});
    float const s = std::sqrt(0.5f);
    render({s, 0, s, 0, 0, 1, 0, 0, -s, 0, s, 0});
    PICTURE const normal = capture(CAPTURE_REQUEST::NORMAL);
    EXPECT_THAT(pixel(normal, 32, 10), ElementsAre(218, 128, 218, 255));
    PICTURE const relief = capture(CAPTURE_REQUEST::HEIGHT);
    // Half a metre to the left it is half a metre nearer: 1 - 9.5 / 20.
    EXPECT_NEAR(relief.at(24, 10)[0], 255 * (1 - 9.53 / 20), 1);
    EXPECT_NEAR(relief.at(40, 10)[0], 255 * (1 - 10.53 / 20), 1);

    render({1, 0, 0, 0.5f / 16, 0, 1, 0, 0, 0, 0, 1, 0});
    PICTURE const colour = capture(CAPTURE_REQUEST::COLOUR);
    EXPECT_THAT(pixel(colour, 16, 4), ElementsAre(255, 0, 0, 128));
    EXPECT_THAT(pixel(colour, 48, 4), ElementsAre(0, 0, 255, 128));
}

TEST_F(RENDERING, TransparentPartsLeaveNoFringe)
{
    put_plate({GLTF::MATERIAL::CUT_OFF, 0});
    render();
    PICTURE const colour = capture(CAPTURE_REQUEST::COLOUR);
    unsigned covered = 0;
    for (unsigned x = 0; x < width; ++x) {
        std::vector<int> const seen = pixel(colour, x, 2);
        EXPECT_THAT(std::vector<int>(seen.begin(), seen.begin() + 3), ElementsAre(255, 0, 0)) << x;
        covered += unsigned(seen[3]);
    }
    EXPECT_EQ(covered / 255, 16u) << "where the alpha is half or more";

    put_plate({GLTF::MATERIAL::BLENDED, 64});
    render();
    PICTURE const blended = capture(CAPTURE_REQUEST::COLOUR);
    EXPECT_EQ(blended.at(20, 2)[3], 255);
    EXPECT_NEAR(blended.at(40, 2)[3], 64, 8);
}

TEST_F(RENDERING, ThePictureIsTheSameOnAnyNumberOfThreads)
{
    put_plate({GLTF::MATERIAL::BLENDED, 100});
    unsigned const usual = task::query::number_of_worker_threads();
    std::vector<std::uint8_t> pictures[2];
    for (unsigned threads : {0u, 3u}) {
        task::query::set_number_of_worker_threads(threads);
        render({0.9f, 0.1f, 0.2f, 0, 0, 1, 0.1f, 0, -0.3f, 0, 0.8f, 0});
        pictures[threads == 0] = capture(CAPTURE_REQUEST::COLOUR).pixels;
    }
    task::query::set_number_of_worker_threads(usual);
    EXPECT_FALSE(pictures[0].empty());
    EXPECT_EQ(pictures[0], pictures[1]);
}

TEST_F(RENDERING, TheMapperGivesOtherTextures)
{
    struct MAPPER final : TEXTURE_NAME_MAPPER {
        KN::String map(int kind, KN::String const &name) override
        {
            asked.push_back(std::to_string(kind) + " " + name);
            return "tex/other.tga";
        }
        std::vector<std::string> asked;
    } mapper;
    put_plate({});
    KN::String error;
    ASSERT_TRUE(write_tga({1, 1, {9, 99, 199, 255}}, at("tex/Other.tga"), error));
    UTILITYDLL::vfs().set_roots({KN::String((scratch.folder / "working_data").string())});
    render({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}, &mapper);
    UTILITYDLL::vfs().set_roots({});
    EXPECT_THAT(mapper.asked, ElementsAre("0 tex/plate_diffuse.tga"));
    EXPECT_THAT(pixel(capture(CAPTURE_REQUEST::COLOUR), 32, 10), ElementsAre(9, 99, 199, 255));
}

TEST_F(RENDERING, FaultsAreLinesAndHandlesThatEverythingTolerates)
{
    ENGINE &engine = start(true);
    int const model = engine.load_model("models/none.rigid_model_v2", ENGINE::BILLBOARD_MATERIALS, nullptr);
    EXPECT_EQ(model, ENGINE::INVALID_MODEL);
    EXPECT_THAT(lines.of_level[KN::MESSAGE_ERROR], SizeIs(1));
    float box[6] = {1, 1, 1, 1, 1, 1}, none[12] = {};
    engine.bounding_box(model, box);
    EXPECT_THAT(box, ElementsAre(0, 0, 0, 0, 0, 0));
    engine.add_instance(model, none);
    engine.begin_frame();
    engine.end_frame();
    EXPECT_THAT(lines.of_level[KN::MESSAGE_ERROR], SizeIs(2)) << "no camera";
    EXPECT_TRUE(capture(CAPTURE_REQUEST::COLOUR).pixels.empty());
    EXPECT_THAT(lines.of_level[KN::MESSAGE_ERROR], SizeIs(3));

    put_plate({});
    std::string const whole = scratch.get("working_data/models/plate.rigid_model_v2");
    for (std::size_t size = 0; size < whole.size(); size += 7) {
        scratch.put("working_data/models/cut.rigid_model_v2", whole.substr(0, size));
        lines.of_level[KN::MESSAGE_ERROR].clear();
        EXPECT_EQ(engine.load_model("models/cut.rigid_model_v2", ENGINE::BILLBOARD_MATERIALS, nullptr),
                  ENGINE::INVALID_MODEL);
        EXPECT_THAT(lines.of_level[KN::MESSAGE_ERROR], SizeIs(1)) << size << " bytes";
    }
}

TEST_F(RENDERING, AnInterruptedFrameWritesNoPicture)
{
    put_plate({});
    lines.is_interrupted = true;
    render();
    EXPECT_TRUE(capture(CAPTURE_REQUEST::COLOUR).pixels.empty());
    EXPECT_THAT(lines.of_level[KN::MESSAGE_ERROR], SizeIs(1));
}
