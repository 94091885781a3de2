// Finished models on hostile bytes: looked at by the model service, loaded and rendered by the engine, and read as bare
// geometry. The input is the JSON, a NUL, and the buffer, so that the sizes in front of them are sound; or a whole
// file. Seeds: platform_seeds.
#include "Plugins/Vx2/host/engine.h"
#include "foundation/messages.h"
#include "fuzz_kit.h"
#include "platform/build_host/project.h"
#include "platform/gltf/geometry.h"
#include "support/camera/camera.h"

#include <cmath>
#include <memory>

using namespace FUZZ;

namespace {

std::string u32(std::size_t value) { return {char(value), char(value >> 8), char(value >> 16), char(value >> 24)}; }

std::string file_of(std::string_view parts)
{
    std::size_t const end = std::min(parts.find('\0'), parts.size());
    std::string const json(parts.substr(0, end));
    std::string_view const buffer = parts.substr(std::min(end + 1, parts.size()));
    std::string const chunks = u32(json.size()) + "JSON" + json + u32(buffer.size()) + std::string("BIN\0", 4);
    return "glTF" + u32(2) + u32(12 + chunks.size() + buffer.size()) + chunks + std::string(buffer);
}

struct SILENCE final : KN::MessageSink {
    void message(KN::String const &, int) override {}
};

class STAGE {
public:
    STAGE()
    {
        KN::set_thread_message_sink(&silence);
        QString const root = QString::fromStdString(scratch.folder.string());
        set_current_roots({root, root, root, root});
        // What the seeds name: two pixels of 32 bits.
        std::string const picture("\0\0\2\0\0\0\0\0\0\0\0\0\2\0\1\0\x20\x08"
                                  "abc\xff"
                                  "def\x90",
                                  26);
        for (char const *name : {"diffuse", "normal"})
            scratch.put("trees/tex/leaf_" + std::string(name) + ".tga", picture);
        engine.reset(KESTREL::make_engine(true, true, true));
        camera.set_orthographic(true);
        camera.set_view_height(4);
    }

    void look_at(KN::String const &path)
    {
        KESTREL::RIGID_MODEL_SERVICE &service = *engine->rigid_model_service();
        for (unsigned const flags : {service.HEADER_ONLY, service.WITH_ASSETS}) {
            unsigned const handle = service.open(flags, path, nullptr, false);
            unsigned const levels = service.level_count(handle);
            require((handle == service.INVALID) == (levels == 0), "a model has at least one level");
            for (unsigned i = 0; i < levels; ++i)
                service.level_assets(handle, i);
            service.skeleton_name(handle);
            service.close(handle);
        }
    }

    void render(KN::String const &path)
    {
        engine->recreate_scene();
        int const model = engine->load_model(path, KESTREL::ENGINE::BILLBOARD_MATERIALS, nullptr);
        float box[6];
        engine->bounding_box(model, box);
        for (unsigned i = 0; i < 3; ++i)
            require(box[i] <= box[i + 3] && std::isfinite(box[i]) && std::isfinite(box[i + 3]), "a box has a size");
        float const matrix[12] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 2};
        engine->add_instance(model, matrix);
        engine->set_mode(KESTREL::ENGINE::PREVIEW);
        engine->view()->set_viewport(0, 0, 4, 4);
        engine->view()->set_camera(&camera);
        engine->begin_frame();
        engine->end_frame();
    }

    SCRATCH const scratch;

private:
    SILENCE silence;
    std::unique_ptr<KESTREL::ENGINE> engine;
    SUPPORT::CAMERA camera;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    static STAGE stage;
    std::string_view const input(reinterpret_cast<char const *>(bytes), size);
    KN::String const path(
        stage.scratch.put("x.rigid_model_v2", input.starts_with("glTF") ? std::string(input) : file_of(input)));
    stage.look_at(path);
    stage.render(path);

    std::vector<GLTF::GEOMETRY> meshes;
    KN::String error;
    require(GLTF::read_geometry(path, meshes, error) == error.empty(), "a line exactly where a file is refused");
    for (GLTF::GEOMETRY const &mesh : meshes)
        for (std::uint32_t const index : mesh.indices)
            require(index < mesh.positions.size() / 3, "indices are those of vertices");
    return 0;
}
