#include "plate_model.h"

#include <gmock/gmock.h>

using namespace KESTREL;
using namespace TEST_ENGINE;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using SERVICE = ENGINES;

constexpr unsigned with_assets = RIGID_MODEL_SERVICE::WITH_ASSETS, header_only = RIGID_MODEL_SERVICE::HEADER_ONLY;

}  // namespace

TEST_F(SERVICE, OpensModelsAndTellsWhatTheyNeed)
{
    put_plate({.levels = 3, .skeleton = "man"});
    ENGINE &engine = start(false);
    EXPECT_EQ(engine.view(), nullptr);
    RIGID_MODEL_SERVICE &service = *engine.rigid_model_service();
    unsigned const model = service.open(with_assets, "models/plate.rigid_model_v2", nullptr, false);
    EXPECT_EQ(service.level_count(model), 3u);
    EXPECT_EQ(service.skeleton_name(model), "man");
    auto const assets = service.level_assets(model, 2);
    ASSERT_THAT(assets, SizeIs(1));
    EXPECT_THAT(assets[0].paths, ElementsAre("tex/plate_diffuse.tga"));
    EXPECT_THAT(service.level_assets(model, 3), IsEmpty());

    unsigned const again = service.open(header_only, at("models/plate.rigid_model_v2"), nullptr, false);
    EXPECT_NE(again, model);
    service.close(model);
    EXPECT_EQ(service.level_count(model), 0u);
    EXPECT_EQ(service.level_count(again), 3u);
}

TEST_F(SERVICE, NamesAreOneByteACharacter)
{
    put_plate({.skeleton = "b\xc3\xa4r"});
    std::filesystem::create_directories(at("models/h\xc3\xb6hle"));
    std::filesystem::rename(at("models/plate.rigid_model_v2"), at("models/h\xc3\xb6hle/plate.rigid_model_v2"));
    RIGID_MODEL_SERVICE &service = *start(false).rigid_model_service();
    unsigned const model = service.open(with_assets, "models/h\xf6hle/plate.rigid_model_v2", nullptr, false);
    EXPECT_EQ(service.skeleton_name(model), "b\xe4r");
    auto const assets = service.level_assets(model, 0);
    ASSERT_THAT(assets, SizeIs(1));
    EXPECT_THAT(assets[0].paths, ElementsAre("models/tex/plate_diffuse.tga"));
}

// As a tree's model does before it is moved.
TEST_F(SERVICE, AModelThatStandsElsewhereNamesItsTexturesFromItsPlace)
{
    put_plate({.place = "rigidmodels/trees"});
    std::filesystem::rename(at("models/plate.rigid_model_v2"), scratch.folder / "raw_data/plate.rigid_model_v2");
    RIGID_MODEL_SERVICE &service = *start(false).rigid_model_service();
    std::string const file = (scratch.folder / "raw_data/plate.rigid_model_v2").string();
    auto const assets = service.level_assets(service.open(with_assets, file, nullptr, false), 0);
    ASSERT_THAT(assets, SizeIs(1));
    EXPECT_THAT(assets[0].paths, ElementsAre("rigidmodels/tex/plate_diffuse.tga"));
}

TEST_F(SERVICE, ToleratesInvalidHandlesAndDamagedModels)
{
    RIGID_MODEL_SERVICE &service = *start(false).rigid_model_service();
    for (char const *text : {"", "glTF", "{}"}) {
        lines.of_level[KN::MESSAGE_ERROR].clear();
        scratch.put("working_data/models/plate.rigid_model_v2", text);
        unsigned const model = service.open(with_assets, "models/plate.rigid_model_v2", nullptr, false);
        EXPECT_EQ(model, RIGID_MODEL_SERVICE::INVALID);
        EXPECT_THAT(lines.of_level[KN::MESSAGE_ERROR], SizeIs(1));
        EXPECT_EQ(service.level_count(model), 0u);
        EXPECT_EQ(service.skeleton_name(model), "");
        EXPECT_THAT(service.level_assets(model, 0), IsEmpty());
        service.close(model);
    }
}

// Whether a service took the header from the cache or from the model is told apart by a model that has changed behind
// the cache's back: with an older time than the cache has.
TEST_F(SERVICE, HeadersComeFromTheCacheWhereItIsNewer)
{
    std::string const model_path = at("models/plate.rigid_model_v2");
    KN::UniString const cache = KN::must_fix_string_widen(at("rigid_db.bin"));
    put_plate({.skeleton = "horse"});
    auto const levels = [this, &model_path] {
        RIGID_MODEL_SERVICE &service = *start(false).rigid_model_service();
        return service.level_count(service.open(header_only, model_path, nullptr, false));
    };
    RIGID_HEADER_CACHE::enable_usage_save();
    EXPECT_EQ(levels(), 1u);
    ASSERT_TRUE(RIGID_HEADER_CACHE::save(cache));
    std::string const saved = scratch.get("working_data/rigid_db.bin");
    EXPECT_EQ(saved.substr(0, 4), "RHDB");
    EXPECT_NE(saved.find("models/plate.rigid_model_v2"), saved.npos);

    auto const cache_time = std::filesystem::last_write_time(at("rigid_db.bin"));
    put_plate({.levels = 2});
    std::filesystem::last_write_time(model_path, cache_time - std::chrono::seconds(1));
    EXPECT_EQ(levels(), 1u) << "from the cache";
    std::filesystem::last_write_time(model_path, cache_time + std::chrono::seconds(1));
    EXPECT_EQ(levels(), 2u) << "the model is younger";

    std::filesystem::last_write_time(model_path, cache_time - std::chrono::hours(1));
    for (std::size_t size = 0; size < saved.size(); size += 3) {
        scratch.put("working_data/rigid_db.bin", saved.substr(0, size));
        EXPECT_EQ(levels(), 2u) << size << " bytes of a damaged cache";
    }
    scratch.put("working_data/rigid_db.bin", saved);
    RIGID_HEADER_CACHE::disable_usage_load();  // for the rest of the process
    EXPECT_EQ(levels(), 2u);

    EXPECT_FALSE(RIGID_HEADER_CACHE::save(KN::must_fix_string_widen(at("no/folder/rigid_db.bin"))));
}
