#include "Plugins/Vx2/host/uvw_test.h"

#include "model_scene.h"

#include <gtest/gtest.h>

using namespace TEST_MODEL;

TEST(UvwTest, NamesTheFirstVertexThatDoesNotFit)
{
    struct {
        char const *what;
        void (*change)(VEX2_STATIC_MESH &);
        char const *message;
    } const cases[] = {
        {"sound", [](VEX2_STATIC_MESH &) {}, ""},
        {"no sets at all",
         [](VEX2_STATIC_MESH &m) {
             for (VEX2_VERTEX &vertex : m.vertices)
                 vertex.uvws.clear();
         },
         ""},
        {"a set missing", [](VEX2_STATIC_MESH &m) { m.vertices[5].uvws.clear(); },
         "Mesh 'sheet': vertex 5 has another number of UVW sets than vertex 0; give the whole mesh the same map "
         "channels."},
        {"a frame too many", [](VEX2_STATIC_MESH &m) { m.vertices[2].frames.append(); },
         "Mesh 'sheet': vertex 2 has another number of tangent frames than vertex 0; export the scene again."},
        {"no number", [](VEX2_STATIC_MESH &m) { m.vertices[3].uvws[0].z = INFINITY; },
         "Mesh 'sheet': vertex 3 has a texture coordinate that is no finite number; unwrap it again."},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.what);
        VEX2 scene;
        scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"sheet", 2));
        c.change(*scene.static_meshes[0]);
        KN::UniString message;
        TOOLDATABUILDER::test_vex2_uvws(scene, message);
        EXPECT_EQ(KN::to_utf8(message), c.message);
    }
}
