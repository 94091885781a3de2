// Files that are damaged or meant to do harm: no load may crash, hang, read outside its bytes or take more memory than
// the file's size allows. Most of what can go wrong here is seen by the sanitizers.
#include "foundation/messages.h"
#include "scene/check.h"
#include "tests/scene/bytes.h"
#include "tests/scene/make_scene.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

namespace {

using namespace TEST_SCENE;
using testing::HasSubstr;

class HostileScene : public testing::Test, KN::MessageSink {
protected:
    HostileScene() : before(KN::set_thread_message_sink(this)) {}
    ~HostileScene() override { KN::set_thread_message_sink(before); }
    void message(KN::String const &, int level) override { errors += level == KN::MESSAGE_ERROR; }

    unsigned errors = 0;

private:
    KN::MessageSink *before;
};

// Loads, and does with what loads what a program would do.
bool load_and_use(std::string const &bytes)
{
    VEX2 scene;
    if (!load_bytes(scene, bytes))
        return false;
    EXPECT_TRUE(scene.hierarchy.nodes.count < bytes.size());
    scene.seek(3);
    scene.advance(100);
    scene.refresh_weighted_frames();
    check_scene(scene);
    return true;
}

TEST_F(HostileScene, EveryTruncation)
{
    std::string const whole = file_of(*make_full_scene());
    unsigned loaded = 0;
    for (std::size_t size = 0; size < whole.size(); ++size)
        loaded += load_and_use(whole.substr(0, size));
    // Only a file that ends where a chunk ends can be whole, and each that is not says so in one line.
    EXPECT_LT(loaded, 50u);
    EXPECT_EQ(errors, whole.size() - loaded);
}

TEST_F(HostileScene, EveryByteFlipped)
{
    std::string const whole = file_of(*make_full_scene());
    for (std::size_t i = 0; i < whole.size(); ++i)
        for (char const flip : {'\x01', '\x80', '\xff'}) {
            std::string damaged = whole;
            damaged[i] = char(damaged[i] ^ flip);
            load_and_use(damaged);
        }
}

// Counts and lengths of 32 bits where they hurt: each four bytes of the file become a huge number in turn.
TEST_F(HostileScene, EveryWordHuge)
{
    std::string const whole = file_of(*make_full_scene());
    for (std::size_t i = 4; i + 4 <= whole.size(); i += 2)
        for (std::uint32_t const value : {0x7fffffffu, 0xffffffffu, 0x00010000u}) {
            std::string damaged = whole;
            damaged.replace(i, 4, u32(value));
            load_and_use(damaged);
        }
}

BYTES nested_maps(unsigned depth)
{
    // Each blend map has its first child in line, no second, and its own flags behind the child.
    BYTES const head = u32(1) + u32(1) + text(u"") + text(u"") + absent;
    BYTES const tail = absent + times(4, u32(0));
    return times(depth, head) + absent + times(depth, tail);
}

BYTES material_with(BYTES const &map)
{
    return chunk(13,
                 u32(0) + text(u"m") + text(u"") + attributes() + times(8, absent) + u32(0) + u32(0) + u32(1) + map);
}

// On a stack of 1 MiB, the smallest that a worker of the systems we run on gets.
TEST_F(HostileScene, MapsNestDeepButNotWithoutEnd)
{
#if defined(HOUSE_SANITIZED)
    constexpr std::size_t stack = 16u << 20;  // a sanitizer's frames are many times as large
#else
    constexpr std::size_t stack = 1u << 20;
#endif
    auto const run = [&] {
        VEX2 scene;
        KN::String fault;
        BYTES const good = magic + header(1.16f);
        EXPECT_TRUE(load_bytes(scene, good + material_with(nested_maps(1024)), &fault)) << fault;
        scene.seek(1);
        VEX2_OWNED<VEX2_MATERIAL> const copy(scene.materials[0]->clone());
        EXPECT_TRUE(copy->equals(*scene.materials[0]));
        check_scene(scene);
        EXPECT_GT(file_of(scene).size(), 1024u * 20);
        EXPECT_FALSE(load_bytes(scene, good + material_with(nested_maps(1025)), &fault));
        EXPECT_THAT(fault, HasSubstr("maps nest deeper than 1024"));
        EXPECT_FALSE(load_bytes(scene, good + material_with(nested_maps(100000)), &fault));
    };
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, stack);
    pthread_t thread;
    auto const start = [](void *function) -> void * {
        (*static_cast<decltype(run) *>(function))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, start, const_cast<void *>(static_cast<void const *>(&run))), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

// One vertex with n influences and n frames: n * n frames to be computed from a file of 32 n bytes.
TEST_F(HostileScene, ComputedFramesHaveABudget)
{
    constexpr unsigned n = 20000;
    BYTES const vertex = times(10, f32(0)) + none + u32(n) + times(6 * n, f32(1)) + u32(n) + times(n, u32(0) + f32(1)) +
                         times(6, f32(1));
    BYTES const mesh = object(1.16f) + none + none + u32(1) + vertex + none + u32(0);
    BYTES const node = text(u"") + u32(0xffffffff) + times(3, absent) + text(u"") + attributes();
    VEX2 scene;
    KN::String fault;
    EXPECT_FALSE(load_bytes(scene, magic + header(1.16f) + chunk(12, u32(1) + node) + chunk(10, mesh), &fault));
    EXPECT_THAT(fault, HasSubstr("weighted mesh: mesh 0 \"object\": the scene would take more than"));
}

// A reference takes ten bytes and makes a whole scene; a thousand of them may name one large file.
TEST_F(HostileScene, ReferencesHaveABudget)
{
    SCRATCH_FOLDER scratch;
    scratch.put("large.vx2", magic + header(1.16f) + chunk(99, BYTES(8 << 20, 'x')));
    scratch.put("small.vx2", magic + header(1.16f));
    auto const fault_of = [&](BYTES const &chunks) {
        scratch.put("outer.vx2", magic + header(1.16f) + chunks);
        VEX2_READ_BUFFER buffer(scratch.path("outer.vx2"));
        VEX2 scene;
        scene.load(buffer, true);
        return buffer.fault;
    };
    EXPECT_THAT(fault_of(times(200, chunk(15, text(u"large.vx2")))), HasSubstr("the scene would take more than"));
    EXPECT_THAT(fault_of(times(1024, chunk(15, text(u"small.vx2")))), testing::IsEmpty());
    EXPECT_THAT(fault_of(times(1025, chunk(15, text(u"small.vx2")))), HasSubstr("more than 1024 referenced files"));
    EXPECT_THAT(fault_of(times(65537, chunk(20, text(u"none")))), HasSubstr("more than 65536 references"));
}

}  // namespace
