// A mesh is worked on in three steps: number the different keys of its vertices, give each key a slot of the table in
// the order of appearance, and walk the keys by slot, each key's vertices being one group, or several if frames split
// them. A group keeps its first vertex.

#include "mesh/duplicate_vertices.h"

#include "foundation/fp_state.h"
#include "mesh/key_index.h"
#include "mesh/slot_set.h"
#include "mesh/trim_mesh.h"
#include "scene/scene.h"

#include <algorithm>
#include <cmath>

namespace VEX2_LOADER {

namespace {

using INDICES = KN::DynamicArray<std::uint32_t>;

INDICES make_indices(std::uint32_t count)
{
    INDICES indices;
    indices.reserve(count);
    indices.count = count;
    return indices;
}

VERTEX_ATTRIBUTES attributes_of(VEX2_VERTEX const &vertex)
{
    return {&vertex.position.x, &vertex.normal.x, &vertex.colour.red, vertex.uvws.data ? &vertex.uvws.data->x : nullptr,
            vertex.uvws.count};
}

// Where a key stands among all keys when these are walked by slot. `hashes` are those of the keys in the order in which
// they enter the table; a key takes the first free slot from hash modulo slots on. At four slots a vertex and one more,
// the table never fills.
INDICES ranks_by_slot(INDICES const &hashes, std::uint32_t vertex_count)
{
    std::uint64_t const slot_count = std::uint64_t(vertex_count) * 4 + 1;
    SLOT_SET slots(slot_count);
    KN::DynamicArray<std::uint64_t> slot_of;
    slot_of.reserve(hashes.count);
    for (std::uint32_t const hash : hashes)
        slot_of.append(slots.occupy(slot_count > UINT32_MAX ? hash : hash % std::uint32_t(slot_count)));
    slots.count();

    INDICES ranks;
    ranks.reserve(hashes.count);
    for (std::uint64_t const slot : slot_of)
        ranks.append(slots.rank(slot));
    return ranks;
}

float dot(VEX2_VECTOR const &a, VEX2_VECTOR const &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

VEX2_VECTOR cross(VEX2_VECTOR const &a, VEX2_VECTOR const &b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

bool frames_close(VEX2_VERTEX const &leader, VEX2_VERTEX const &other, float cosine)
{
    std::uint32_t const count = std::min(leader.frames.count, other.frames.count);
    for (std::uint32_t k = 0; k < count; ++k)
        if (!(dot(leader.frames[k].binormal, other.frames[k].binormal) >= cosine) ||
            !(dot(leader.frames[k].tangent, other.frames[k].tangent) >= cosine))
            return false;
    return true;
}

struct FRAME_SORTED {
    float key;
    std::uint32_t vertex;
};

// Sorts the vertices of one slot, all equal but for their frames, by the direction of their first binormal around the
// normal of the first of them. An entry whose key is no number stays where it is, and none passes it.
template <class VERTEX>
void sort_by_frame(KN::DynamicArray<VERTEX> const &vertices, KN::DynamicArray<FRAME_SORTED> &bucket)
{
    VERTEX const &first = vertices[bucket[0].vertex];
    bool const has_side = first.frames.count != 0;
    VEX2_VECTOR const side = has_side ? cross(first.normal, first.frames[0].binormal) : VEX2_VECTOR{};
    bucket[0].key = 0;
    for (FRAME_SORTED *entry = bucket.begin() + 1; entry != bucket.end(); ++entry) {
        VERTEX const &vertex = vertices[entry->vertex];
        entry->key = has_side && vertex.frames.count != 0 ? dot(side, vertex.frames[0].binormal) : 0;
    }
    for (FRAME_SORTED *run = bucket.begin(); run != bucket.end();) {
        FRAME_SORTED *const barrier =
            std::find_if(run, bucket.end(), [](FRAME_SORTED const &entry) { return std::isnan(entry.key); });
        std::stable_sort(run, barrier, [](FRAME_SORTED const &a, FRAME_SORTED const &b) { return a.key < b.key; });
        run = barrier == bucket.end() ? barrier : barrier + 1;
    }
}

// The vertices that stay, in their new order, and in `new_index` where each vertex goes. numbers[i] is the key of
// vertex i, ranks[k] the place of key k.
template <class VERTEX>
INDICES split_groups(KN::DynamicArray<VERTEX> const &vertices, INDICES const &numbers, INDICES const &ranks,
                     float cosine, INDICES &new_index)
{
    // The vertices by rank of their key, ascending within a key.
    INDICES starts = make_indices(ranks.count + 1);
    std::fill(starts.begin(), starts.end(), 0);
    for (std::uint32_t const number : numbers)
        ++starts[ranks[number]];
    std::uint32_t sum = 0;
    for (std::uint32_t &start : starts)
        start = std::exchange(sum, sum + start);
    INDICES members = make_indices(vertices.count);
    for (std::uint32_t i = 0; i < vertices.count; ++i)
        members[starts[ranks[numbers[i]]]++] = i;  // starts[r] ends as the start of r + 1

    INDICES kept;
    KN::DynamicArray<FRAME_SORTED> bucket;
    std::uint32_t begin = 0;
    for (std::uint32_t rank = 0; rank < ranks.count; ++rank) {
        std::uint32_t const end = starts[rank];
        bucket.count = 0;
        for (; begin < end; ++begin)
            bucket.append(FRAME_SORTED{0, members[begin]});
        if (bucket.count > 1)
            sort_by_frame(vertices, bucket);
        VERTEX const *leader = nullptr;
        for (FRAME_SORTED const &entry : bucket) {
            VERTEX const &vertex = vertices[entry.vertex];
            if (leader == nullptr || !frames_close(*leader, vertex, cosine)) {
                leader = &vertex;
                kept.append(entry.vertex);
            }
            new_index[entry.vertex] = kept.count - 1;
        }
    }
    return kept;
}

// Turns the vertices that `kept` names into their numbers in ascending order, and gives for every vertex its number, or
// unused_vertex.
INDICES number_kept(INDICES &kept, std::uint32_t vertex_count)
{
    INDICES remap = make_indices(vertex_count);
    std::fill(remap.begin(), remap.end(), unused_vertex);
    for (std::uint32_t const vertex : kept)
        remap[vertex] = 0;
    std::uint32_t next = 0;
    for (std::uint32_t &number : remap)
        if (number != unused_vertex)
            number = next++;
    for (std::uint32_t &vertex : kept)
        vertex = remap[vertex];
    return remap;
}

// Asks for the cache lines of an element that is needed soon; any address will do.
template <class T>
void fetch(T const *element)
{
    for (std::size_t offset = 0; offset < sizeof(T); offset += 64)
        __builtin_prefetch(reinterpret_cast<char const *>(element) + offset);
}

// data[i] becomes what data[from[i]] was. `from` names every place once; it is used up.
template <class VERTEX>
void permute(VERTEX *data, INDICES &from)
{
    for (std::uint32_t start = 0; start < from.count; ++start) {
        if (from[start] == start)
            continue;
        VERTEX held(std::move(data[start]));
        std::uint32_t place = start;
        std::uint32_t ahead = start;  // on the same cycle, so far in front that what is fetched there arrives in time
        for (int step = 0; step < 12; ++step)
            fetch(data + (ahead = from[ahead]));
        while (from[place] != start) {
            std::uint32_t const next = from[place];
            fetch(data + (ahead = from[ahead]));
            data[place] = std::move(data[next]);
            from[place] = place;
            place = next;
        }
        data[place] = std::move(held);
        from[place] = place;
    }
}

template <class VERTEX>
void merge(KN::DynamicArray<VERTEX> &vertices, POLYGON_SETS &sections, DUPLICATE_OPTIONS const &options)
{
    if (vertices.empty())
        return;
    KN::FpStateScope const fixed;
    KEY_RULES const rules(options);
    bool const split = options.split_by_frames && vertices[0].frames.count != 0;
    std::uint32_t const vertex_count = vertices.count;

    // Without a split by frames only the first vertex of a key is needed: that of key k moves to place k at once, while
    // it is at hand, and its duplicates go.
    KEY_INDEX index(vertex_count / 4);
    INDICES numbers = make_indices(vertex_count);
    INDICES hashes;
    INDICES firsts;  // the first vertex of each key, where it has not moved
    VERTEX *const data = vertices.data;
    index.number_keys(
        vertex_count,
        [&](std::uint32_t i, VERTEX_KEY &key) {
            fetch(data + std::min(i + 24, vertex_count - 1));
            rules.make_key(attributes_of(data[i]), key);
        },
        [&](std::uint32_t i, std::uint32_t number) {
            return data[i].uvws.count < 2 ||
                   rules.same_further_sets(attributes_of(data[i]),
                                           attributes_of(data[split ? firsts[number] : number]));
        },
        [&](std::uint32_t i, std::uint32_t number) {
            numbers.data[i] = number;
            if (!split)
                data[i].VERTEX::~VERTEX();
        },
        [&](std::uint32_t i, VERTEX_KEY const &key) {
            std::uint32_t const number = hashes.count;
            numbers.data[i] = number;
            hashes.append(rules.table_hash(attributes_of(data[i]), key));
            if (split) {
                firsts.append(i);
            } else if (number != i) {
                new (data + number) VERTEX(std::move(data[i]));
                data[i].VERTEX::~VERTEX();
            }
        });

    INDICES const ranks = ranks_by_slot(hashes, vertex_count);
    INDICES kept;  // the place of each vertex that stays, in the new order
    if (split) {
        INDICES new_index = make_indices(vertex_count);
        kept = split_groups(vertices, numbers, ranks, options.frame_cosine, new_index);
        numbers.swap(new_index);
        keep_numbered(vertices, number_kept(kept, vertex_count), kept.count);
    } else {
        vertices.count = hashes.count;
        kept = make_indices(hashes.count);
        for (std::uint32_t number = 0; number < ranks.count; ++number)
            kept[ranks[number]] = number;
        for (std::uint32_t &number : numbers)
            number = ranks.data[number];
    }
    permute(vertices.data, kept);
    renumber(sections, numbers);
}

template <class MESH>
void merge_all(VEX2_LIST<MESH> &meshes, DUPLICATE_OPTIONS const &options)
{
    for (MESH *mesh : meshes) {
        if (mesh == nullptr)
            continue;
        DUPLICATE_OPTIONS of_mesh = options;
        of_mesh.compare_colours = options.compare_colours && mesh->colour_flag != 0;
        remove_duplicates_from_mesh(*mesh, of_mesh);
    }
}

}  // namespace

void remove_duplicates_from_mesh(VEX2_STATIC_MESH &mesh, DUPLICATE_OPTIONS const &options)
{
    merge(mesh.vertices, mesh.sections, options);
}

void remove_duplicates_from_mesh(VEX2_WEIGHTED_MESH &mesh, DUPLICATE_OPTIONS const &options)
{
    merge(mesh.vertices, mesh.sections, options);
}

void remove_duplicates_from_mesh(VEX2_MORPH_MESH &mesh, DUPLICATE_OPTIONS const &options)
{
    merge(mesh.vertices, mesh.sections, options);
}

void remove_duplicates(VEX2 &scene, DUPLICATE_OPTIONS const &options)
{
    merge_all(scene.static_meshes, options);
    merge_all(scene.weighted_meshes, options);
    merge_all(scene.morph_meshes, options);
    scene.refresh_weighted_frames();
    for (VEX2_LIST<VEX2_SCENE_REFERENCE> *references : {&scene.references_a, &scene.references_b})
        for (VEX2_SCENE_REFERENCE *reference : *references)
            if (reference != nullptr && reference->scene != nullptr)
                remove_duplicates(*reference->scene, options);
}

}  // namespace VEX2_LOADER
