// The life of a scene file, on hostile bytes: load, walk, seek, clean, write, and load again. Whatever loads must pass
// the walker, and what was written of it must load. Seeds: the files that scene_seeds writes, or any scenes.
#include "foundation/messages.h"
#include "mesh/prepare.h"
#include "scene/buffer.h"
#include "scene/check.h"
#include "scene/dump.h"
#include "scene/scene.h"
#include "scene/writer.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

namespace {

using namespace VEX2_LOADER;

struct NO_MESSAGES final : KN::MessageSink {
    void message(KN::String const &, int) override {}
};

void require(bool held, char const *what)
{
    if (!held) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

std::string written(VEX2 const &scene)
{
    static std::string const path = std::filesystem::temp_directory_path() / ("scene_fuzz_" + std::to_string(getpid()));
    VEX2_CHUNK_WRITER writer(KN::from_utf8(path), false, true);
    writer.write_references = false;
    bool good = scene.write(writer);
    good &= writer.close();
    require(good, "a scene that was loaded can be written");
    std::ifstream in(path, std::ios::binary);
    std::string const bytes{std::istreambuf_iterator<char>(in), {}};
    std::filesystem::remove(path);
    return bytes;
}

bool load(VEX2 &scene, void const *bytes, std::size_t size)
{
    // A path whose folder does not exist: no reference leads to a file.
    VEX2_READ_BUFFER buffer(u"/no such folder/scene.vx2", bytes, unsigned(size));
    return scene.load(buffer, true);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    static NO_MESSAGES no_messages;
    KN::set_thread_message_sink(&no_messages);
    VEX2 scene;
    if (!load(scene, bytes, size))
        return 0;
    check_scene(scene);
    scene.seek(3);
    scene.advance(-1);
    prepare_scene(scene);
    scene.seek(1);
    dump_scene(scene);
    std::string const first = written(scene);
    VEX2 again;
    require(load(again, first.data(), first.size()), "a scene that was written loads");
    written(again);
    return 0;
}
