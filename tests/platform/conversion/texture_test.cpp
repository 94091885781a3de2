#include "model_scene.h"
#include "platform/gltf/uri.h"

#include <gmock/gmock.h>
#include <stb/stb_image.h>

using namespace TEST_MODEL;

namespace {

// A picture of 2 x 2: red, green in the top row, blue and half transparent white below.
constexpr unsigned char red[] = {255, 0, 0, 255}, green[] = {0, 255, 0, 255}, blue[] = {0, 0, 255, 255},
                        white[] = {255, 255, 255, 128};

std::string tga(int type, int bits, int origin, std::initializer_list<unsigned char const *> pixels, bool packed)
{
    std::string bytes(18, '\0');
    bytes[2] = char(type);
    bytes[12] = bytes[14] = 2;
    bytes[16] = char(bits);
    bytes[17] = char(origin);
    for (unsigned char const *const pixel : pixels) {
        if (packed)
            bytes += '\x80';  // the next pixel, once
        bytes += {char(pixel[2]), char(pixel[1]), char(pixel[0])};
        if (bits == 32)
            bytes += char(pixel[3]);
    }
    return bytes;
}

std::string uri_of(MODEL const &model) { return model.json["images"][0]["uri"]; }

bool convert_with(TREE const &tree, char16_t const *picture, std::string const &model = "models/painted",
                  SETTINGS const &settings = {})
{
    VEX2 scene;
    add_material(scene, u"paint", picture);
    scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"sheet", 1));
    return convert(scene, tree, model, settings);
}

}  // namespace

TEST(Textures, EveryFormOfTgaBecomesTheSamePicture)
{
    struct {
        char const *form;
        std::string bytes;
        int channels;
    } const cases[] = {
        {"from the bottom", tga(2, 32, 8, {blue, white, red, green}, false), 4},
        {"from the top", tga(2, 32, 0x28, {red, green, blue, white}, false), 4},
        {"from the right", tga(2, 32, 0x38, {green, red, white, blue}, false), 4},
        {"packed", tga(10, 32, 8, {blue, white, red, green}, true), 4},
        {"without opacity", tga(2, 24, 0, {blue, white, red, green}, false), 3},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.form);
        TREE const tree;
        tree.put("raw_data/props/paint.tga", c.bytes);
        ASSERT_TRUE(convert_with(tree, u"paint.tga"));
        ASSERT_EQ(uri_of(MODEL(tree, "models/painted")), "../textures/paint.png");
        int width = 0, height = 0, channels = 0;
        stbi_uc *const pixels =
            stbi_load(tree.at("working_data/textures/paint.png").c_str(), &width, &height, &channels, 4);
        ASSERT_TRUE(pixels && width == 2 && height == 2);
        EXPECT_EQ(channels, c.channels);
        unsigned char const *expected[] = {red, green, blue, white};
        for (int i = 0; i < 4; ++i)
            for (int k = 0; k < c.channels; ++k)
                EXPECT_EQ(pixels[i * 4 + k], expected[i][k]) << i << " " << k;
        stbi_image_free(pixels);
    }
}

TEST(Textures, AreFoundBesideTheSceneAndBelowTheRawRootOnly)
{
    struct {
        char const *where;
        char const *file;
        char16_t const *name;
        bool found;
    } const cases[] = {
        {"beside", "raw_data/props/a.tga", u"a.tga", true},
        {"in a folder beside", "raw_data/props/maps/a b.tga", u"maps\\a b.tga", true},
        {"below the raw root", "raw_data/shared/a.tga", u"shared/a.tga", true},
        {"of another machine", "raw_data/props/a.tga", u"C:\\art\\a.tga", true},
        {"outside", "secret.tga", u"../../secret.tga", false},
        {"outside by its whole path", "secret.tga", nullptr, false},
        {"nowhere", "raw_data/else/a.tga", u"a.tga", false},
        {"no file name", "raw_data/props/a.tga", u"maps/", false},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.where);
        TREE const tree;
        LINES lines;
        std::filesystem::create_directories((tree.folder / c.file).parent_path());
        tree.put(c.file, tga(2, 24, 0, {red, red, red, red}, false));
        KN::UniString const whole = tree.path(c.file);
        ASSERT_TRUE(convert_with(tree, c.name ? c.name : whole.c_str()));
        EXPECT_EQ(MODEL(tree, "models/painted").json.contains("images"), c.found);
        EXPECT_EQ(lines.of_level[1].size(), c.found ? 0u : 1u);
    }
}

TEST(Textures, StayInTheirFolderBelowTheWorkingRoot)
{
    struct {
        char const *folder, *model, *uri;  // no URI: refused
    } const cases[] = {
        {"/textures/", "models/painted", "../textures/paint.png"},
        {"textures\\..\\a//b", "models/painted", "../a/b/paint.png"},
        {"textures", "/painted", "textures/paint.png"},
        {"/", "models/painted", "../paint.png"},
        {"", "/models//painted", "paint.png"},
        {"../textures", "models/painted", nullptr},
        {"a\\..\\..", "models/painted", nullptr},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.folder);
        TREE const tree;
        LINES lines;
        tree.put("raw_data/props/paint.tga", tga(2, 24, 0, {red, red, red, red}, false));
        ASSERT_EQ(convert_with(tree, u"paint.tga", c.model, {false, {}, false, "", c.folder}), c.uri != nullptr);
        if (c.uri != nullptr) {
            EXPECT_EQ(uri_of(MODEL(tree, c.model)), c.uri);
            std::string const folder = std::filesystem::path(c.model).parent_path().string();
            EXPECT_TRUE(tree.holds("working_data/" + folder + "/" + c.uri));
        } else {
            EXPECT_EQ(lines.of_level[2], std::vector<std::string>{std::string("the texture folder '") + c.folder +
                                                                  "' lies outside the tree"});
        }
    }
}

TEST(Textures, APublishedPictureIsWrittenOnceAndDamagedOnesNever)
{
    TREE const tree;
    std::string const good = tga(2, 24, 0, {red, green, blue, white}, false);
    tree.put("raw_data/props/paint.tga", good);
    ASSERT_TRUE(convert_with(tree, u"paint.tga"));
    auto const published = tree.folder / "working_data/textures/paint.png";
    auto const early = std::filesystem::last_write_time(published) - std::chrono::hours(1);
    std::filesystem::last_write_time(published, early);
    ASSERT_TRUE(convert_with(tree, u"paint.tga"));
    EXPECT_EQ(std::filesystem::last_write_time(published), early);

    LINES lines;
    std::string too_wide = good;
    too_wide[13] = '\x7f';
    for (std::string const &bytes :
         {good.substr(0, good.size() - 1), too_wide, std::string("JPEG and so on, long enough"),
          std::string("\x89PNG\r\n\x1a\n cut")}) {
        tree.put("raw_data/props/paint.tga", bytes);
        ASSERT_TRUE(convert_with(tree, u"paint.tga"));
        EXPECT_FALSE(MODEL(tree, "models/painted").json.contains("images"));
    }
    EXPECT_EQ(lines.of_level[1].size(), 4u);
}

TEST(Textures, OfDifferentPicturesThatShareAStemTheFirstStays)
{
    TREE const tree;
    LINES lines;
    std::string const first = tga(2, 24, 0, {red, red, red, red}, false);
    tree.put("raw_data/props/paint.tga", first);
    for (auto const &[folder, bytes] :
         {std::pair("same", first), {"other", tga(2, 24, 0, {red, red, red, blue}, false)}}) {
        std::filesystem::create_directories(tree.folder / "raw_data/props" / folder);
        tree.put("raw_data/props/" + std::string(folder) + "/paint.tga", bytes);
    }
    VEX2 scene;
    char16_t const *const pictures[] = {u"paint.tga", u"same/paint.tga", u"other/paint.tga"};
    for (int i = 0; i < 3; ++i) {
        add_material(scene, u"paint", pictures[i]);
        scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"sheet", 1, i));
    }
    ASSERT_TRUE(convert(scene, tree, "models/painted"));
    auto const materials = MODEL(tree, "models/painted").json["materials"];
    EXPECT_TRUE(materials[0]["pbrMetallicRoughness"].contains("baseColorTexture"));
    EXPECT_TRUE(materials[1]["pbrMetallicRoughness"].contains("baseColorTexture"));
    EXPECT_FALSE(materials[2]["pbrMetallicRoughness"].contains("baseColorTexture"));
    EXPECT_EQ(lines.of_level[1].size(), 1u);
}

TEST(Textures, AModelThatTakesTheNameOfAnothersPictureSaysSo)
{
    TREE const tree;
    LINES lines;
    std::filesystem::create_directories(tree.folder / "raw_data/castle");
    tree.put("raw_data/props/paint.tga", tga(2, 24, 0, {red, red, red, red}, false));
    tree.put("raw_data/castle/paint.tga", tga(2, 24, 0, {red, red, red, red}, false));
    ASSERT_TRUE(convert_with(tree, u"paint.tga", "models/hut"));
    ASSERT_TRUE(convert_with(tree, u"castle/../castle/paint.tga", "models/wall"));
    EXPECT_EQ(lines.of_level[1], std::vector<std::string>()) << "the same picture";
    tree.put("raw_data/props/paint.tga", tga(2, 24, 0, {blue, red, red, red}, false));
    ASSERT_TRUE(convert_with(tree, u"paint.tga", "models/hut"));
    ASSERT_TRUE(convert_with(tree, u"paint.tga", "models/barn"));
    ASSERT_EQ(lines.of_level[1].size(), 1u);
    EXPECT_THAT(lines.of_level[1][0], testing::HasSubstr("castle/paint.tga as "));
}

TEST(Uris, LeadFromFileToFile)
{
    struct {
        char const *from, *to, *way;
    } const cases[] = {
        {"/w/a/m.glb", "/w/a/t.png", "t.png"},
        {"/w/a/m.glb", "/w/ab/t.png", "../ab/t.png"},
        {"/w/a/b/m.glb", "/w/t/u v%.png", "../../t/u%20v%25.png"},
        {"/w/m.glb", "/w/t/\xc3\xbc.png", "t/%C3%BC.png"},
    };
    for (auto const &c : cases)
        EXPECT_EQ(GLTF::encoded_uri(GLTF::relative_path(c.from, c.to)), c.way);
}
