// scene_seeds FOLDER: writes small scene files that between them hold every record, for fuzzing to start from.
#include "tests/scene/make_scene.h"

#include <cstdio>

namespace {

using namespace TEST_SCENE;

void put(std::filesystem::path const &folder, char const *name, VEX2 const &scene)
{
    std::ofstream(folder / name, std::ios::binary) << file_of(scene);
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: scene_seeds FOLDER\n");
        return 2;
    }
    std::filesystem::path const folder = argv[1];
    std::filesystem::create_directories(folder);
    VEX2 hierarchy, meshes, materials, light, shape, camera;
    add_hierarchy(hierarchy);
    add_hierarchy(meshes);
    add_meshes(meshes);
    add_materials(materials);
    light.lights.append(TEST_SCENE::light<VEX2_SPOT_LIGHT>(u"spot"));
    shape.shapes.append(TEST_SCENE::shape());
    camera.cameras.append(TEST_SCENE::camera());
    put(folder, "full", *make_full_scene());
    put(folder, "empty", VEX2());
    put(folder, "hierarchy", hierarchy);
    put(folder, "meshes", meshes);
    put(folder, "materials", materials);
    put(folder, "light", light);
    put(folder, "shape", shape);
    put(folder, "camera", camera);
    return 0;
}
