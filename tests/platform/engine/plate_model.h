// A plate to look at: 2 m wide and 2 m high, standing on the ground at z = 0, its front towards z. It has the picture
// "tex/plate_diffuse.tga": red and blue above, green and white below.
#pragma once

#include "Plugins/Vx2/host/action_engine.h"
#include "foundation/messages.h"
#include "platform/build_host/project.h"
#include "platform/build_host/run.h"
#include "platform/gltf/document.h"
#include "platform/gltf/writer.h"
#include "platform/texture/tga.h"
#include "tests/platform/build_host/asset_tree.h"
#include "tests/scene/make_scene.h"

#include <algorithm>

namespace TEST_ENGINE {

struct PLATE {
    GLTF::MATERIAL::ALPHA alpha = GLTF::MATERIAL::SOLID;
    std::uint8_t right_alpha = 255;  // of the right half of the picture
    int levels = 1;
    std::string skeleton = {};
    std::string place = {};  // where its textures are named from, if that is not where it stands
};

class LINES final : public KN::MessageSink {
public:
    LINES() : before(KN::set_thread_message_sink(this)) {}
    ~LINES() { KN::set_thread_message_sink(before); }
    void message(KN::String const &line, int level) override { of_level[level].push_back(line); }
    bool goes_on() const override { return !is_interrupted; }
    std::vector<std::string> of_level[3];
    bool is_interrupted = false;

private:
    KN::MessageSink *before;
};

// A tree in a scratch folder with the model "models/plate.rigid_model_v2" below its working root.
class ENGINES : public testing::Test {
protected:
    ENGINES()
    {
        for (char const *folder : {"working_data/models", "working_data/tex", "raw_data"})
            std::filesystem::create_directories(scratch.folder / folder);
        set_current_roots(usual_roots(QString::fromStdString(scratch.folder.string())));
    }

    std::string at(std::string const &name) const { return (scratch.folder / "working_data" / name).string(); }

    void put_plate(PLATE const &plate) const
    {
        KESTREL::PICTURE picture{64, 64, std::vector<std::uint8_t>(64 * 64 * 4)};
        for (unsigned y = 0; y < 64; ++y)
            for (unsigned x = 0; x < 64; ++x) {
                bool const right = x >= 32, below = y >= 32;
                // Red, blue; green, white. What nobody is to see is black.
                bool const seen = !right || plate.right_alpha != 0;
                std::uint8_t *const pixel = picture.at(x, y);
                pixel[0] = right == below && seen ? 255 : 0;
                pixel[1] = below && seen ? 255 : 0;
                pixel[2] = right && seen ? 255 : 0;
                pixel[3] = right ? plate.right_alpha : 255;
            }
        KN::String error;
        EXPECT_TRUE(write_tga(picture, at("tex/plate_diffuse.tga"), error)) << error;

        GLTF::DOCUMENT document;
        auto const add = [&document](int components, std::initializer_list<float> values) {
            int const accessor =
                document.buffer.add(GLTF::COMPONENT::F32, components, 4, GLTF::USE::VERTICES, components == 3);
            std::ranges::copy(values, document.buffer.at<float>(accessor));
            return accessor;
        };
        GLTF::PRIMITIVE primitive;
        primitive.attributes = {{"POSITION", add(3, {-1, 0, 0, 1, 0, 0, 1, 2, 0, -1, 2, 0})},
                                {"NORMAL", add(3, {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1})},
                                {"TEXCOORD_0", add(2, {0.02f, 0.98f, 0.98f, 0.98f, 0.98f, 0.02f, 0.02f, 0.02f})}};
        primitive.indices = document.buffer.add(GLTF::COMPONENT::U16, 1, 6, GLTF::USE::INDICES);
        std::ranges::copy(std::initializer_list<std::uint16_t>{0, 1, 2, 0, 2, 3},
                          document.buffer.at<std::uint16_t>(primitive.indices));
        primitive.material = 0;
        GLTF::MATERIAL material;
        material.diffuse.uri = "../tex/plate%5Fdiffuse.tga";
        material.alpha = plate.alpha;
        document.materials = {material};
        document.meshes = {{"plate", {primitive}, {}, {}}};
        document.nodes.resize(std::size_t(plate.levels));
        for (int i = 0; i < plate.levels; ++i) {
            document.nodes[std::size_t(i)].mesh = 0;
            if (i > 0)
                document.nodes[0].coarser_levels.push_back(i);
        }
        document.roots = {0};
        if (!plate.skeleton.empty())
            document.extras.emplace_back("skeleton", plate.skeleton);
        if (!plate.place.empty())
            document.extras.emplace_back("place", plate.place);
        EXPECT_TRUE(write_glb(document, at("models/plate.rigid_model_v2"), error)) << error;
    }

    KESTREL::ENGINE &start(bool with_view)
    {
        init = std::make_unique<ACTION_INIT_KESTREL>(nullptr, true, true, with_view);
        EXPECT_EQ(init->run(nothing.files.table, nothing.rule_cache), ACTION_INTERFACE::DONE);
        return *init->engine();
    }

    ASSET_TREE nothing;
    TEST_SCENE::SCRATCH_FOLDER scratch;
    LINES lines;
    std::unique_ptr<ACTION_INIT_KESTREL> init;
};

}  // namespace TEST_ENGINE
