// A scene as a file: the magic, then chunks of a u32 size (these 8 head bytes included), an i32 type and a payload. The
// magic is written last: a file whose writing stopped begins with 0 and is no scene file.
#include "scene/scene.h"
#include "scene/write_fields.h"

namespace VEX2_LOADER {

namespace {

class SCENE_WRITER {
public:
    explicit SCENE_WRITER(VEX2_CHUNK_WRITER &chunk_writer) : writer(chunk_writer) {}

    // `lead`: the u32s between the chunk's type and the record.
    template <class RECORD, class... LEAD>
    void chunk(RECORD const &record, LEAD... lead)
    {
        good &= writer.begin_chunk();
        good &= write_item(writer, record.chunk_type());
        ((good &= write_item(writer, std::uint32_t(lead))), ...);
        good &= record.write(writer);
        good &= writer.end_chunk();
    }

    template <class RECORD>
    void chunks(VEX2_LIST<RECORD> const &list)
    {
        for (RECORD const *record : list) {
            if (!record)
                continue;
            if constexpr (std::is_same_v<RECORD, VEX2_LIGHT> || std::is_same_v<RECORD, VEX2_MATERIAL>)
                chunk(*record, record->subtype());
            else
                chunk(*record);
        }
    }

    void attachments(VEX2_LIST<VEX2_ATTACHMENT> const &list, std::uint32_t id)
    {
        for (VEX2_ATTACHMENT const *record : list)
            if (record)
                chunk(*record, id);
    }

    void counts(VEX2 const &scene)
    {
        std::uint32_t const counts[] = {
            scene.lights.count,          scene.cameras.count,       scene.static_meshes.count,
            scene.animated_meshes.count, scene.morph_meshes.count,  scene.weighted_meshes.count,
            scene.shapes.count,          scene.helpers.count,       scene.materials.count,
            scene.attachments_3.count,   scene.attachments_2.count, scene.attachments_5.count,
            scene.attachments_0.count,   scene.attachments_4.count, scene.attachments_6.count,
            scene.attachments_1.count,   scene.attachments_7.count, scene.references_a.count,
            scene.references_b.count,    scene.links.count,         scene.attachments_8.count,
            scene.name_links.count,      scene.attachments_9.count};
        constexpr std::uint32_t counts_chunk = 1;
        good &= writer.begin_chunk();
        good &= write_item(writer, counts_chunk);
        good &= write_item(writer, std::uint32_t(std::size(counts)));
        good &= write_item(writer, counts);
        good &= writer.end_chunk();
    }

    bool good = true;

private:
    VEX2_CHUNK_WRITER &writer;
};

}  // namespace

bool VEX2::write(VEX2_CHUNK_WRITER &writer) const
{
    std::uint32_t const beginning = writer.position();
    std::uint32_t const no_magic = 0;
    SCENE_WRITER out(writer);
    out.good &= writer.write_unframed(&no_magic, sizeof no_magic);
    out.chunk(header);
    out.counts(*this);
    out.chunk(info);
    if (tint)
        out.chunk(*tint);
    if (ambient)
        out.chunk(*ambient);
    out.chunk(int_track);
    out.chunks(lights);
    out.chunks(cameras);
    out.chunks(static_meshes);
    out.chunks(animated_meshes);
    out.chunks(morph_meshes);
    out.chunks(weighted_meshes);
    out.chunks(shapes);
    out.chunks(helpers);
    out.chunks(name_links);
    out.chunk(hierarchy);
    out.chunks(materials);
    out.attachments(attachments_3, 3);
    out.attachments(attachments_2, 2);
    out.attachments(attachments_5, 5);
    out.attachments(attachments_0, 0);
    out.attachments(attachments_4, 4);
    out.attachments(attachments_6, 6);
    out.attachments(attachments_1, 1);
    out.attachments(attachments_7, 7);
    out.chunks(references_a);
    out.chunks(references_b);
    out.chunks(links);
    out.attachments(attachments_8, 8);
    out.attachments(attachments_9, 9);
    out.good &= writer.overwrite(beginning, magic);
    return out.good;
}

}  // namespace VEX2_LOADER
