// A scene from a file: the magic, then chunks (scene/write.cpp). A chunk of a known type ends where its record's reader
// stops, not where its size says; only chunks of other types are left by their size. What stands before the header is
// read as version 0.0.
#include "foundation/file.h"
#include "foundation/messages.h"
#include "scene/read_fields.h"
#include "scene/scene.h"

#include <algorithm>

namespace VEX2_LOADER {

namespace {

constexpr std::int32_t chunk_types = 24;
constexpr char const *chunk_names[chunk_types] = {"header",
                                                  "counts",
                                                  "scene info",
                                                  "global tint",
                                                  "global ambient",
                                                  "light",
                                                  "camera",
                                                  "static mesh",
                                                  "animated mesh",
                                                  "morph mesh",
                                                  "weighted mesh",
                                                  "shape",
                                                  "hierarchy",
                                                  "material",
                                                  "attachment",
                                                  "scene reference",
                                                  "index attachment",
                                                  "helper",
                                                  "weight attachment",
                                                  "polygon attachment",
                                                  "scene reference",
                                                  "link",
                                                  "int track",
                                                  "name link"};

class SCENE_READER {
public:
    SCENE_READER(VEX2 &target, VEX2_READ_BUFFER &source) : scene(target), buffer(source) {}

    bool read_chunks()
    {
        while (buffer.cursor < buffer.end)
            if (!read_chunk())
                return false;
        return true;
    }

private:
    bool read_chunk()
    {
        constexpr std::uint32_t head_size = 8;
        std::size_t const chunk_start = buffer.offset();
        std::uint32_t size = 0;
        std::int32_t type = 0;
        if (!read_bytes(buffer, &size, sizeof size) || !read_bytes(buffer, &type, sizeof type)) {
            buffer.add_place("chunk head");
            return false;
        }
        if (size - head_size > buffer.left())
            return buffer.fail("chunk " + std::to_string(type) + " at byte " + std::to_string(chunk_start) +
                               " claims " + std::to_string(size) + " bytes, " +
                               std::to_string(buffer.left() + head_size) +
                               " are left; the file is cut off or damaged, export it again");
        if (type < 0 || type >= chunk_types) {
            buffer.cursor += size - head_size;
            return true;
        }
        if (read_record_of(type))
            return true;
        buffer.add_chunk("chunk " + std::to_string(type) + " (" + chunk_names[type] + ") at byte " +
                         std::to_string(chunk_start));
        return false;
    }

    bool read_record_of(std::int32_t type)
    {
        switch (type) {
        case 0:
            if (!scene.header.read(buffer, version))
                return false;
            version = scene.header.version;
            return true;
        case 1:
            return read_counts();
        case 2:
            return scene.info.read(buffer, version);
        case 3:
            return replace(scene.tint);
        case 4:
            return replace(scene.ambient);
        case 5:
            return append_of_subtype(scene.lights);
        case 6:
            return append_to(scene.cameras);
        case 7:
            return append_to(scene.static_meshes);
        case 8:
            return append_to(scene.animated_meshes);
        case 9:
            return append_to(scene.morph_meshes);
        case 10:
            return append_to(scene.weighted_meshes);
        case 11:
            return append_to(scene.shapes);
        case 12:
            return scene.hierarchy.read(buffer, version);
        case 13:
            return append_of_subtype(scene.materials);
        case 14:
            return append_attachment(VEX2_ATTACHMENT::kind);
        case 15:
            return append_to(scene.references_a, 15);
        case 16:
            return append_attachment(VEX2_INDEX_ATTACHMENT::kind);
        case 17:
            return append_to(scene.helpers);
        case 18:
            return append_attachment(VEX2_WEIGHT_ATTACHMENT::kind);
        case 19:
            return append_attachment(VEX2_POLYGON_ATTACHMENT::kind);
        case 20:
            return append_to(scene.references_b, 20);
        case 21:
            return append_to(scene.links);
        case 22:
            return scene.int_track.read(buffer, version);
        default:
            return append_to(scene.name_links);
        }
    }

    template <class T>
    bool replace(VEX2_OWNED<T> &record)
    {
        record = new T;
        return record->read(buffer, version);
    }

    template <class T, class... ARGUMENTS>
    bool append_to(VEX2_LIST<T> &list, ARGUMENTS... arguments)
    {
        return buffer.charge(sizeof(T) + 32) && list.append(new T(arguments...))->read(buffer, version);
    }

    template <class T>
    bool append_of_subtype(VEX2_LIST<T> &list)
    {
        std::uint32_t subtype = 0;
        if (!read_bytes(buffer, &subtype, sizeof subtype))
            return false;
        T *const record = make_record<T>(buffer, subtype);
        return record && list.append(record)->read(buffer, version);
    }

    bool append_attachment(std::uint32_t subtype)
    {
        std::uint32_t id = 0;
        if (!read_bytes(buffer, &id, sizeof id))
            return false;
        VEX2_LIST<VEX2_ATTACHMENT> *const list = scene.attachment_list(id);
        if (!list)
            return buffer.fail_here("there is no attachment list " + std::to_string(id));
        VEX2_ATTACHMENT *const record = make_record<VEX2_ATTACHMENT>(buffer, subtype);
        return record && list->append(record)->read(buffer, version);
    }

    // Room for the elements to come. The numbers are hints of the file: no more room is made than it can fill.
    bool read_counts()
    {
        std::uint32_t announced = 0;  // of no meaning: the version says how many follow
        std::uint32_t counts[23] = {};
        std::size_t const number = version >= 1.12f ? 23 : version >= 1.1f ? 21 : 18;
        if (!read_bytes(buffer, &announced, sizeof announced) || !read_bytes(buffer, counts, number * sizeof counts[0]))
            return false;
        constexpr std::size_t least_chunk = 10;
        std::size_t places = buffer.left() / least_chunk;
        std::uint32_t const *next = counts;
        auto const reserve = [&](auto &...lists) {
            (
                [&](auto &list) {
                    std::size_t const wanted = std::min<std::size_t>(*next++, places);
                    places -= wanted;
                    list.reserve(unsigned(wanted));
                }(lists),
                ...);
        };
        reserve(scene.lights, scene.cameras, scene.static_meshes, scene.animated_meshes, scene.morph_meshes,
                scene.weighted_meshes, scene.shapes, scene.helpers, scene.materials, scene.attachments_3,
                scene.attachments_2, scene.attachments_5, scene.attachments_0, scene.attachments_4, scene.attachments_6,
                scene.attachments_1, scene.attachments_7, scene.references_a, scene.references_b, scene.links,
                scene.attachments_8, scene.name_links, scene.attachments_9);
        return true;
    }

    VEX2 &scene;
    VEX2_READ_BUFFER &buffer;
    float version = 0;
};

// Whether all corners are below `count`, itself below 2^31. With corners below 2^31 too, corner - count is negative for
// those in range only; both is seen from the top bits, without a comparison for each.
bool all_below(KN::DynamicArray<VEX2_TRIANGLE> const &triangles, std::uint32_t count)
{
    std::uint32_t const *const corners = reinterpret_cast<std::uint32_t const *>(triangles.data);
    std::size_t const corner_count = std::size_t(triangles.count) * 3;
    std::uint32_t any_bits = 0;
    std::uint32_t common_bits = ~0u;
    for (std::size_t i = 0; i < corner_count; ++i) {
        any_bits |= corners[i];
        common_bits &= corners[i] - count;
    }
    constexpr std::uint32_t top_bit = 1u << 31;
    return !(any_bits & top_bit) && (common_bits & top_bit);
}

// What others will index with, tested once.
class INDEX_CHECK {
public:
    INDEX_CHECK(VEX2 const &target, VEX2_READ_BUFFER &source) : scene(target), buffer(source) {}

    bool all_in_range()
    {
        return nodes() && meshes("static mesh", scene.static_meshes) &&
               meshes("animated mesh", scene.animated_meshes) && meshes("morph mesh", scene.morph_meshes) &&
               meshes("weighted mesh", scene.weighted_meshes);
    }

private:
    bool nodes()
    {
        std::uint32_t const count = scene.hierarchy.nodes.count;
        for (std::uint32_t i = 0; i < count; ++i) {
            VEX2_MATRIX_NODE const &node = scene.hierarchy.nodes[i];
            if (node.parent_index >= 0 && std::uint32_t(node.parent_index) >= count)
                return fail("hierarchy", "node", i, node.name, "parent", std::uint32_t(node.parent_index), count);
        }
        return true;
    }

    template <class MESH>
    bool meshes(char const *chunk, VEX2_LIST<MESH> const &list)
    {
        for (std::uint32_t i = 0; i < list.count; ++i)
            if (!triangles(chunk, i, *list[i]) || !vertices(chunk, i, *list[i]))
                return false;
        return true;
    }

    bool triangles(char const *chunk, std::uint32_t number, VEX2_MESH const &mesh)
    {
        std::uint32_t const count = mesh.vertex_count();
        for (VEX2_POLYGON_SET const &section : mesh.sections) {
            if (all_below(section.triangles, count))
                continue;
            std::uint32_t highest = 0;
            for (VEX2_TRIANGLE const &triangle : section.triangles)
                for (std::uint32_t corner : triangle.vertices)
                    highest = std::max(highest, corner);
            return fail(chunk, "mesh", number, mesh.name, "a triangle's vertex", highest, count);
        }
        return true;
    }

    bool vertices(char const *chunk, std::uint32_t number, VEX2_WEIGHTED_MESH const &mesh)
    {
        std::uint32_t const count = scene.hierarchy.nodes.count;
        for (VEX2_WEIGHTED_VERTEX const &vertex : mesh.vertices)
            for (VEX2_INFLUENCE const &influence : vertex.influences)
                if (influence.matrix_index >= count)
                    return fail(chunk, "mesh", number, mesh.name, "an influence's node", influence.matrix_index, count);
        if (!buffer.charge(mesh.local_frame_bytes())) {
            buffer.add_place(object_name(chunk, "mesh", number, mesh.name));
            return false;
        }
        return true;
    }
    bool vertices(char const *chunk, std::uint32_t number, VEX2_MORPH_MESH const &mesh)
    {
        for (VEX2_MORPH_VERTEX const &vertex : mesh.vertices)
            for (VEX2_MORPH_DELTA const &delta : vertex.deltas)
                if (delta.target >= mesh.targets.count)
                    return fail(chunk, "mesh", number, mesh.name, "a delta's target", delta.target, mesh.targets.count);
        return true;
    }
    bool vertices(char const *, std::uint32_t, VEX2_MESH const &) { return true; }

    static KN::String object_name(char const *chunk, char const *object, std::uint32_t number,
                                  KN::UniString const &name)
    {
        return KN::String(KN::String(chunk) + ": " + object + " " + std::to_string(number) + " \"" +
                          KN::printable(KN::to_utf8(name)) + "\"");
    }

    bool fail(char const *chunk, char const *object, std::uint32_t number, KN::UniString const &name, char const *what,
              std::uint32_t index, std::uint32_t count)
    {
        buffer.add_place(object_name(chunk, object, number, name));
        return buffer.fail(KN::String(what) + " is number " + std::to_string(index) + ", there are " +
                           std::to_string(count));
    }

    VEX2 const &scene;
    VEX2_READ_BUFFER &buffer;
};

bool load_into(VEX2 &scene, VEX2_READ_BUFFER &buffer)
{
    if (buffer.cursor >= buffer.end)
        return buffer.fail("cannot be read, or is empty");
    std::uint32_t first = 0;
    if (!buffer.read_value(first) || first != VEX2::magic)
        return buffer.fail("is not a scene file, or one whose writing was not finished");
    return SCENE_READER(scene, buffer).read_chunks() && INDEX_CHECK(scene, buffer).all_in_range();
}

}  // namespace

bool VEX2::load(VEX2_READ_BUFFER &buffer, bool apply_start_pose)
{
    clear();
    if (!load_into(*this, buffer)) {
        buffer.fault = KN::String(KN::printable(KN::disk_path(buffer.path)) + ": " + buffer.fault_text());
        if (buffer.session().first_fault.empty())
            buffer.session().first_fault = buffer.fault;
        if (!buffer.outer)
            KN::message(KN::MESSAGE_ERROR, buffer.fault);
        return false;
    }
    prepare_weighted_meshes();
    if (apply_start_pose)
        seek(info.start_time);
    return true;
}

}  // namespace VEX2_LOADER
