#include "platform/engine/header_cache.h"

#include "Plugins/Vx2/host/engine.h"
#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "foundation/mem_buffer.h"
#include "foundation/messages.h"

#include <filesystem>
#include <mutex>

namespace KESTREL {

namespace {

using HEADS = std::map<std::string, GLTF::MODEL_HEAD>;

// What a process has remembered.
struct REMEMBERED {
    std::mutex mutex;
    bool loads = true, saves = false;
    HEADS heads;
};

REMEMBERED &remembered()
{
    static REMEMBERED only;
    return only;
}

// Reading and writing go through the same description of the fields; `good` stays true while bytes are there.
struct CACHE_WRITER {
    KN::String bytes;
    bool good = true;

    void field(std::uint32_t number) { bytes.append(reinterpret_cast<char const *>(&number), sizeof(number)); }
    void field(int number) { field(std::uint32_t(number)); }
    void field(std::string const &text)
    {
        field(std::uint32_t(text.size()));
        bytes += text;
    }
    template <class LIST>
    void size(LIST &list, std::size_t)
    {
        field(std::uint32_t(list.size()));
    }
};

struct CACHE_READER {
    KN::MemBuffer from;
    bool good = true;

    void field(std::uint32_t &number) { good = good && from.read_value(number); }
    void field(int &number)
    {
        std::uint32_t stored = 0;
        field(stored);
        number = int(stored);
    }
    void field(std::string &text)
    {
        std::uint32_t count = 0;
        field(count);
        good = good && count <= from.left();
        if (!good)
            return;
        text.assign(reinterpret_cast<char const *>(from.cursor), count);
        from.cursor += count;
    }
    // Elements of at least `least_size` bytes each.
    template <class LIST>
    void size(LIST &list, std::size_t least_size)
    {
        std::uint32_t count = 0;
        field(count);
        good = good && count <= from.left() / least_size;
        list.resize(good ? count : 0);
    }
};

template <class STREAM, class HEAD>
void head_fields(STREAM &stream, HEAD &head)
{
    stream.field(head.skeleton);
    stream.field(head.place);
    stream.size(head.materials, 12);
    for (auto &material : head.materials) {
        stream.field(material.name);
        stream.field(material.diffuse.uri);
        stream.field(material.normal.uri);
    }
    stream.size(head.levels, 4);
    for (auto &level : head.levels) {
        stream.size(level, 8);
        for (auto &use : level) {
            stream.field(use.mesh);
            stream.size(use.materials, 4);
            for (auto &material : use.materials)
                stream.field(material);
        }
    }
}

constexpr char mark[4] = {'R', 'H', 'D', 'B'};
constexpr std::uint32_t version = 1;

bool has_sound_indices(GLTF::MODEL_HEAD const &head)
{
    for (auto const &level : head.levels)
        for (GLTF::MODEL_HEAD::MESH_USE const &use : level)
            for (int const material : use.materials)
                if (material < 0 || std::size_t(material) >= head.materials.size())
                    return false;
    return !head.levels.empty();
}

bool read_heads(CACHE_READER &stream, HEADS &heads)
{
    char first[4];
    std::uint32_t stored_version = 0, count = 0;
    if (!stream.from.read_value(first) || std::memcmp(first, mark, 4) != 0)
        return false;
    stream.field(stored_version);
    stream.field(count);
    for (std::uint32_t i = 0; i < count && stream.good; ++i) {
        std::string name;
        GLTF::MODEL_HEAD head;
        stream.field(name);
        head_fields(stream, head);
        stream.good = stream.good && has_sound_indices(head);
        heads.emplace(std::move(name), std::move(head));
    }
    return stream.good && stored_version == version;
}

}  // namespace

void RIGID_HEADER_CACHE::disable_usage_load()
{
    std::lock_guard const guard(remembered().mutex);
    remembered().loads = false;
}

void RIGID_HEADER_CACHE::enable_usage_save()
{
    std::lock_guard const guard(remembered().mutex);
    remembered().saves = true;
}

bool RIGID_HEADER_CACHE::save(KN::UniString const &path)
{
    CACHE_WRITER stream;
    {
        std::lock_guard const guard(remembered().mutex);
        HEADS const heads = std::exchange(remembered().heads, {});
        stream.bytes.append(mark, sizeof(mark));
        stream.field(version);
        stream.field(std::uint32_t(heads.size()));
        for (auto const &[name, head] : heads) {
            stream.field(name);
            head_fields(stream, head);
        }
    }
    KN::String error;
    if (KN::write_finished_file(KN::disk_path(path), stream.bytes, error))
        return true;
    KN::message(KN::MESSAGE_ERROR, error);
    return false;
}

void remember_header(KN::String const &name, GLTF::MODEL_HEAD const &head)
{
    std::lock_guard const guard(remembered().mutex);
    if (remembered().saves)
        remembered().heads.insert_or_assign(name, head);
}

bool HEADER_CACHE_FILE::find(KN::String const &model_path, KN::String const &name, GLTF::MODEL_HEAD &head)
{
    {
        std::lock_guard const guard(remembered().mutex);
        if (!remembered().loads || path.empty())
            return false;
    }
    if (!is_read)
        read();
    auto const entry = heads.find(name);
    std::error_code fault, cache_fault;
    auto const model_time = std::filesystem::last_write_time(std::string(KN::disk_path(model_path)), fault);
    auto const cache_time = std::filesystem::last_write_time(std::string(KN::disk_path(path)), cache_fault);
    if (entry == heads.end() || fault || cache_fault || model_time > cache_time)
        return false;
    head = entry->second;
    return true;
}

void HEADER_CACHE_FILE::read()
{
    is_read = true;
    KN::FileIn file;
    if (!file.open(path, true))
        return;
    KN::DynamicArray<unsigned char> bytes;
    bytes.resize(file.size());
    CACHE_READER stream;
    stream.from.start = stream.from.cursor = bytes.data;
    stream.from.end = bytes.data + bytes.count;
    if (file.read(bytes.data, bytes.count) == bytes.count && read_heads(stream, heads))
        return;
    heads.clear();
    KN::message(KN::MESSAGE_WARNING, path + ": is damaged and not used; 'mox cache' writes it anew");
}

}  // namespace KESTREL
