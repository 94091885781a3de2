#include "scene/dump.h"
#include "tests/scene/make_scene.h"
#include <gtest/gtest.h>
using namespace TEST_SCENE;
TEST(SceneWrite, WriteReadWriteIsByteIdentical)
{
    std::string const first = file_of(*make_full_scene());
    VEX2 scene;
    KN::String fault;
    ASSERT_TRUE(load_bytes(scene, first, &fault)) << fault;
    EXPECT_EQ(file_of(scene).size(), first.size());
    EXPECT_EQ(file_of(scene), first);
    std::ofstream("/tmp/full.json") << dump_scene(scene);
}
