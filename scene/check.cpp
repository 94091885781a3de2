#include "scene/check.h"

#include "scene/families.h"
#include "scene/fields.h"
#include "scene/scene.h"

#include <cmath>

namespace VEX2_LOADER {

namespace {

constexpr std::size_t most_lines = 100;

// Keeps the findings and where the walk stands.
class REPORT {
public:
    explicit REPORT(VEX2_FINDINGS &target) : findings(target) {}

    void error(KN::String const &what) { add(findings.errors, what); }
    void warning(KN::String const &what) { add(findings.warnings, what); }

    // The step of the walk that this object lives for.
    class PLACE {
    public:
        PLACE(REPORT &owner, KN::String const &step) : report(owner), length(owner.where.size())
        {
            if (length != 0 && step[0] != '[')
                report.where += '.';
            report.where += step;
        }
        ~PLACE() { report.where.resize(length); }
        PLACE(PLACE const &) = delete;
        PLACE &operator=(PLACE const &) = delete;

    private:
        REPORT &report;
        std::size_t length;
    };

private:
    void add(KN_STD::VECTOR<KN::String> &lines, KN::String const &what)
    {
        if (lines.size() < most_lines)
            lines.push_back(KN::String(where + ": " + what));
        else
            ++findings.omitted;
    }

    VEX2_FINDINGS &findings;
    KN::String where;
};

KN::String in_brackets(std::size_t i) { return KN::String("[" + std::to_string(i) + "]"); }

void check_index(REPORT &report, char const *what, std::uint32_t index, std::uint32_t count)
{
    if (index >= count)
        report.error(KN::String(what) + " is number " + std::to_string(index) + ", there are " + std::to_string(count));
}

bool all_finite(void const *floats, std::size_t size)
{
    float value;
    for (std::size_t i = 0; i + sizeof value <= size; i += sizeof value) {
        std::memcpy(&value, static_cast<unsigned char const *>(floats) + i, sizeof value);
        if (!std::isfinite(value))
            return false;
    }
    return true;
}

// ---- Channels, wherever they stand: a visitor of the field descriptions. ----

template <class VALUE>
void check_channel(REPORT &report, VEX2_KEYED_CHANNEL<VALUE> const &channel)
{
    if (channel.values.empty())
        report.warning("a channel without keys");
    if (channel.times.count != channel.values.count)
        report.warning(std::to_string(channel.times.count) + " key times and " + std::to_string(channel.values.count) +
                       " key values");
    for (std::uint32_t i = 0; i < channel.times.count; ++i) {
        float const time = channel.times[i];
        if (!std::isfinite(time) || (i > 0 && !(time > channel.times[i - 1]))) {
            report.warning("key time " + std::to_string(i) + " is " + std::to_string(time) +
                           ", times must be finite and ascend");
            break;
        }
    }
    std::uint32_t const last = channel.times.count == 0 ? 0 : channel.times.count - 1;
    if (channel.key > last || !(channel.fraction >= 0 && channel.fraction <= 1))
        report.warning("the position, key " + std::to_string(channel.key) + " and " + std::to_string(channel.fraction) +
                       ", is not between two keys");
    if constexpr (!std::is_integral_v<VALUE>)
        if (!all_finite(channel.values.data, channel.values.count * sizeof(VALUE)))
            report.warning("a key value is not finite");
}

template <class T>
void check_channels(REPORT &report, T const &item);

template <class T>
class CHANNEL_VISITOR : public FIELD_VISITOR<CHANNEL_VISITOR<T>> {
public:
    CHANNEL_VISITOR(REPORT &target, T const &record) : report(target), self(record) {}

    template <class C, class M>
    void operator()(char const *name, M C::*member, float = 0)
    {
        if constexpr (!stored_as_is<M>) {
            REPORT::PLACE const place(report, name);
            check_channels(report, self.*member);
        }
    }

private:
    REPORT &report;
    T const &self;
};

template <class T>
constexpr bool may_hold_channels = !stored_as_is<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, KN::UniString> &&
                                   !std::is_same_v<T, VEX2_VERTEX> && !std::is_same_v<T, VEX2_WEIGHTED_VERTEX> &&
                                   !std::is_same_v<T, VEX2_MORPH_VERTEX> && !std::is_same_v<T, VEX2_POLYGON_SET>;

template <class T>
void check_channels(REPORT &report, T const &item)
{
    if constexpr (!may_hold_channels<T> || std::is_array_v<T>) {
        return;
    } else if constexpr (VEX2_HAS_SUBTYPE<T>) {
        with_own_class(item, [&]<class CLASS>(CLASS const &whole) {
            if constexpr (std::is_base_of_v<VEX2_CHANNEL, CLASS>) {
                check_channel(report, whole);
            } else {
                CHANNEL_VISITOR<CLASS> visitor(report, whole);
                CLASS::fields(visitor);
            }
        });
    } else if constexpr (RECORD<T>) {
        CHANNEL_VISITOR<T> visitor(report, item);
        T::fields(visitor);
    } else if constexpr (requires { item.capacity; }) {
        if constexpr (may_hold_channels<std::remove_cvref_t<decltype(item[0])>>)
            for (std::uint32_t i = 0; i < item.count; ++i) {
                REPORT::PLACE const place(report, in_brackets(i));
                check_channels(report, item[i]);
            }
    } else if constexpr (std::is_pointer_v<T>) {
        if constexpr (!std::is_same_v<T, VEX2_SCENE_REFERENCE *>)
            if (item)
                check_channels(report, *item);
    } else {
        if (item)
            check_channels(report, *item.get());
    }
}

// ---- What is particular to the parts of a scene. ----

void check_nodes(REPORT &report, VEX2_MATRIX_HIERARCHY const &hierarchy)
{
    for (std::uint32_t i = 0; i < hierarchy.nodes.count; ++i) {
        VEX2_MATRIX_NODE const &node = hierarchy.nodes[i];
        REPORT::PLACE const place(report, KN::String("hierarchy.nodes" + in_brackets(i)));
        if (node.parent_index >= 0) {
            check_index(report, "the parent", std::uint32_t(node.parent_index), hierarchy.nodes.count);
            if (std::uint32_t(node.parent_index) >= i)
                report.warning("the parent, " + std::to_string(node.parent_index) +
                               ", stands behind it: world matrices lag behind");
        }
        if (!node.translation || !node.rotation)
            report.warning("without translation or rotation: its matrix never changes");
    }
}

// A mesh's own vertices, beyond their channels.
void check_vertex(REPORT &, VEX2_VERTEX const &, VEX2_STATIC_MESH const &, VEX2 const &) {}
void check_vertex(REPORT &, VEX2_ANIMATED_VERTEX const &, VEX2_ANIMATED_MESH const &, VEX2 const &) {}
void check_vertex(REPORT &report, VEX2_MORPH_VERTEX const &vertex, VEX2_MORPH_MESH const &mesh, VEX2 const &)
{
    for (VEX2_MORPH_DELTA const &delta : vertex.deltas)
        check_index(report, "a delta's target", delta.target, mesh.targets.count);
}
void check_vertex(REPORT &report, VEX2_WEIGHTED_VERTEX const &vertex, VEX2_WEIGHTED_MESH const &, VEX2 const &scene)
{
    constexpr float tolerance = 0.01f;
    float sum = 0;
    for (VEX2_INFLUENCE const &influence : vertex.influences) {
        check_index(report, "an influence's node", influence.matrix_index, scene.hierarchy.nodes.count);
        sum += influence.weight;
    }
    if (vertex.influences.empty())
        report.warning("no influence");
    else if (!(std::abs(sum - 1) <= tolerance))
        report.warning("the weights sum to " + std::to_string(sum) + ", not to 1");
    if (!vertex.has_local_frames())
        report.error("its local frames do not match its influences and frames");
}

template <class MESH>
void check_meshes(REPORT &report, char const *name, VEX2_LIST<MESH> const &list, VEX2 const &scene)
{
    for (std::uint32_t number = 0; number < list.count; ++number) {
        if (!list[number])
            continue;
        MESH const &mesh = *list[number];
        REPORT::PLACE const place(report, KN::String(name + in_brackets(number)));
        for (std::uint32_t s = 0; s < mesh.sections.count; ++s) {
            REPORT::PLACE const section_place(report, KN::String("sections" + in_brackets(s)));
            VEX2_POLYGON_SET const &section = mesh.sections[s];
            if (section.material_index >= 0 && std::uint32_t(section.material_index) >= scene.materials.count)
                report.warning("the material is number " + std::to_string(section.material_index) + ", there are " +
                               std::to_string(scene.materials.count));
            for (VEX2_TRIANGLE const &triangle : section.triangles)
                for (std::uint32_t corner : triangle.vertices)
                    check_index(report, "a triangle's vertex", corner, mesh.vertices.count);
        }
        for (std::uint32_t i = 0; i < mesh.vertices.count; ++i) {
            REPORT::PLACE const vertex_place(report, KN::String("vertices" + in_brackets(i)));
            check_vertex(report, mesh.vertices[i], mesh, scene);
            if (mesh.vertices[i].uvw_count() != mesh.vertices[0].uvw_count() ||
                mesh.vertices[i].frame_count() != mesh.vertices[0].frame_count())
                report.warning("not as many UVW sets or frames as the mesh's first vertex");
            VEX2_VECTOR position;
            mesh.vertices[i].get_position(position);
            if (!all_finite(&position, sizeof position))
                report.warning("the position is not finite");
        }
    }
}

template <class T>
void check_placed(REPORT &report, char const *name, VEX2_LIST<T> const &list, VEX2 const &scene)
{
    for (std::uint32_t i = 0; i < list.count; ++i)
        if (list[i] && list[i]->matrix_index >= scene.hierarchy.nodes.count && !scene.hierarchy.nodes.empty()) {
            REPORT::PLACE const place(report, KN::String(name + in_brackets(i)));
            report.warning("its node is number " + std::to_string(list[i]->matrix_index) + ", there are " +
                           std::to_string(scene.hierarchy.nodes.count));
        }
}

template <class SPLINE>
void check_splines(REPORT &report, KN::DynamicArray<SPLINE> const &splines)
{
    for (SPLINE const &spline : splines) {
        std::uint64_t points = 1;
        for (VEX2_SPLINE_SEGMENT const &segment : spline.segments) {
            points += segment.degree;
            if (segment.degree > 3)
                report.error("a segment of degree " + std::to_string(segment.degree));
        }
        if (!spline.segments.empty() && points != spline.points.count)
            report.error("a spline whose segments stand on " + std::to_string(points) + " points has " +
                         std::to_string(spline.points.count));
    }
}

void check_all(REPORT &report, VEX2 const &scene);

void check_references(REPORT &report, char const *name, VEX2_LIST<VEX2_SCENE_REFERENCE> const &list)
{
    for (std::uint32_t i = 0; i < list.count; ++i)
        if (list[i] && list[i]->scene) {
            REPORT::PLACE const place(report, KN::String(name + in_brackets(i)));
            check_all(report, *list[i]->scene);
        }
}

void check_all(REPORT &report, VEX2 const &scene)
{
    if (!(scene.info.start_time <= scene.info.end_time))
        report.warning("info: the time range does not run forward");
    check_nodes(report, scene.hierarchy);
    check_meshes(report, "static_meshes", scene.static_meshes, scene);
    check_meshes(report, "animated_meshes", scene.animated_meshes, scene);
    check_meshes(report, "morph_meshes", scene.morph_meshes, scene);
    check_meshes(report, "weighted_meshes", scene.weighted_meshes, scene);
    check_placed(report, "static_meshes", scene.static_meshes, scene);
    check_placed(report, "animated_meshes", scene.animated_meshes, scene);
    check_placed(report, "morph_meshes", scene.morph_meshes, scene);
    check_placed(report, "weighted_meshes", scene.weighted_meshes, scene);
    check_placed(report, "lights", scene.lights, scene);
    check_placed(report, "cameras", scene.cameras, scene);
    for (std::uint32_t i = 0; i < scene.shapes.count; ++i)
        if (scene.shapes[i]) {
            REPORT::PLACE const place(report, KN::String("shapes" + in_brackets(i)));
            check_splines(report, scene.shapes[i]->splines);
            check_splines(report, scene.shapes[i]->animated_splines);
        }
    CHANNEL_VISITOR<VEX2> visitor(report, scene);
    VEX2::fields(visitor);
    check_references(report, "references_a", scene.references_a);
    check_references(report, "references_b", scene.references_b);
}

}  // namespace

VEX2_FINDINGS check_scene(VEX2 const &scene)
{
    VEX2_FINDINGS findings;
    REPORT report(findings);
    check_all(report, scene);
    return findings;
}

}  // namespace VEX2_LOADER
