#include "platform/conversion/texture_files.h"

#include "Plugins/Vx2/host/engine.h"
#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "foundation/messages.h"
#include "platform/texture/tga.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <stb/stb_image_write.h>
#include <utility>

namespace TOOLDATABUILDER {

namespace {

constexpr std::string_view png_mark = "\x89PNG\r\n\x1a\n";

bool read_file(KN::String const &path, KN::String &bytes)
{
    KN::FileIn file;
    if (!file.open(path, true))
        return false;
    bytes.resize(file.size());
    return file.read(bytes.data(), file.size()) == file.size();
}

// True if the path neither starts anew nor leaves the folder that it is put behind.
bool stays_below(std::string_view path)
{
    if (path.empty() || path.front() == '/' || path.find(':') != path.npos || path.find('\0') != path.npos)
        return false;
    int depth = 0;
    for (std::size_t start = 0; start <= path.size();) {
        std::size_t const end = std::min(path.find('/', start), path.size());
        std::string_view const section = path.substr(start, end - start);
        depth += section == ".." ? -1 : section.empty() || section == "." ? 0 : 1;
        if (depth < 0)
            return false;
        start = end + 1;
    }
    return true;
}

KN::String last_section(KN::String const &path) { return path.substr(path.rfind('/') + 1); }

unsigned u32_big_endian(std::string_view bytes, std::size_t at)
{
    unsigned value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

// The picture as the bytes of a PNG file.
bool as_png(KN::String &bytes, KN::String &error)
{
    if (bytes.starts_with(png_mark)) {
        if (bytes.size() < 24 || u32_big_endian(bytes, 16) > KESTREL::PICTURE::largest ||
            u32_big_endian(bytes, 20) > KESTREL::PICTURE::largest) {
            error = "the picture is cut off, or larger than " + std::to_string(KESTREL::PICTURE::largest) + " pixels";
            return false;
        }
        return true;
    }
    KESTREL::TGA_PICTURE picture;
    if (!KESTREL::read_tga(bytes, picture, error))
        return false;
    bytes.clear();
    auto const append = [](void *to, void *piece, int size) {
        static_cast<KN::String *>(to)->append(static_cast<char const *>(piece), std::size_t(size));
    };
    if (stbi_write_png_to_func(append, &bytes, int(picture.width), int(picture.height), int(picture.channels),
                               picture.pixels.data(), int(picture.width * picture.channels)) == 0) {
        error = "the picture could not be compressed";
        return false;
    }
    return true;
}

}  // namespace

KN::String tidy_folder(KN::String const &folder)
{
    KN::String tidy = (std::filesystem::path(std::string(KN::disk_path(folder))) / "").lexically_normal().string();
    tidy.pop_back();  // the slash that the empty section stands for
    return tidy;
}

TEXTURE_FILES::TEXTURE_FILES(KN::String scenes, KN::String raw, KN::String textures)
    : scene_folder(std::move(scenes)), raw_root(std::move(raw)), texture_folder(std::move(textures))
{}

KN::String TEXTURE_FILES::publish(KN::String const &name)
{
    auto const [place, is_new] = published.try_emplace(name);
    if (is_new)
        place->second = make(name);
    return place->second;
}

void TEXTURE_FILES::publish_seasons(KN::String const &name)
{
    std::size_t const mark = name.lower().rfind("_diffuse");
    if (mark == name.npos)
        return;
    for (int season = 0; season < 5; ++season) {
        KN::String seasonal = name.substr(0, mark), bytes;
        seasonal += '_';
        seasonal += season < 4 ? KESTREL::get_season_shortname(season) : "br";
        seasonal += name.substr(mark);
        std::ranges::replace(seasonal, '\\', '/');
        if (!find(seasonal, bytes).empty())
            publish(seasonal);
    }
}

KN::String TEXTURE_FILES::find(KN::String const &name, KN::String &bytes) const
{
    if (stays_below(name))
        for (KN::String const &folder : {scene_folder, raw_root})
            if (KN::String const path = folder + "/" + name; read_file(path, bytes))
                return path;
    KN::String const beside = scene_folder + "/" + last_section(name);
    return read_file(beside, bytes) ? beside : KN::String();
}

KN::String TEXTURE_FILES::make(KN::String const &name)
{
    KN::String turned = name;
    std::ranges::replace(turned, '\\', '/');
    KN::String bytes, error;
    KN::String const path = last_section(turned).empty() ? KN::String() : find(turned, bytes);
    if (path.empty()) {
        KN::message(KN::MESSAGE_WARNING, "texture '" + KN::printable(name) +
                                             "' is neither beside the scene nor below " + raw_root +
                                             "; the material goes without it");
        return {};
    }
    if (!as_png(bytes, error)) {
        KN::message(KN::MESSAGE_WARNING, path + ": " + error + "; the material goes without it");
        return {};
    }
    KN::String stem = last_section(turned);
    stem = stem.substr(0, stem.rfind('.'));
    KN::String const target = texture_folder + "/" + stem + ".png";
    static std::mutex one_at_a_time;  // models that share a picture write it once
    std::lock_guard const guard(one_at_a_time);
    static std::map<std::string, KN::String> sources;  // by target: what this process has published there
    KN::String const before = std::exchange(sources[target], path);
    KN::String standing;
    if (read_file(target, standing) && standing == bytes)
        return target;
    if (std::ranges::any_of(published, [&](auto const &other) { return other.second == target; })) {
        KN::message(KN::MESSAGE_WARNING, path + ": another picture of this model is published as " + target +
                                             " already, give one of them another name; the material goes without it");
        sources[target] = before;
        return {};
    }
    if (!before.empty() && before != path)
        KN::message(KN::MESSAGE_WARNING, path + ": takes the place of " + before + " as " + target +
                                             ", which another model has; give one of them another name");
    if (!KN::make_directories(texture_folder) || !KN::write_finished_file(target, bytes, error)) {
        KN::message(KN::MESSAGE_WARNING, target + ": cannot be written; the material goes without it");
        return {};
    }
    return target;
}

}  // namespace TOOLDATABUILDER
