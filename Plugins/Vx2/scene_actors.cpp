#include "Plugins/Vx2/scene_actors.h"

#include "Plugins/Vx2/host/bone_name_table.h"
#include "Plugins/Vx2/host/progress_callback.h"
#include "Plugins/Vx2/text.h"

#include <QtCore/QMap>

#include <algorithm>
#include <vector>

using VEX2_LOADER::VEX2_MATRIX_NODE;

namespace {

using NODES = KN::DynamicArray<VEX2_MATRIX_NODE>;

QString text_of(KN::UniString const &units)
{
    return QString(reinterpret_cast<QChar const *>(units.data()), int(units.size()));
}

bool has_prefix(QString const &lower_name, char const *word)
{
    return lower_name.startsWith(QLatin1String(word) + ':') || lower_name.startsWith(QLatin1String(word) + '_');
}

QString without_last_section(QString const &name) { return name.section(':', 0, -2); }

// ":" and the root bone of each skeleton, in lower case.
QStringList root_bone_endings(QStringList const &skeletons)
{
    QStringList endings;
    for (QString const &skeleton : skeletons) {
        TOOLDATABUILDER::BONE_NAME_TABLE const table(local_8_bit(skeleton));
        if (table.valid)
            endings.append(":" + QString::fromUtf8(table.root_bone().lower().c_str()));
    }
    return endings;
}

class WALKER {
public:
    WALKER(NODES const &scene_nodes, ACTORS &found) : nodes(scene_nodes), actors(found)
    {
        for (VEX2_MATRIX_NODE const &node : nodes) {
            names.append(text_of(node.name));
            lower_names.append(text_of(node.name.lower()));
        }
    }

    // False if there are nodes that nothing is known of; each is told.
    bool find_tops(QStringList const &endings, PROGRESS_CALLBACK &output)
    {
        bool all_known = true;
        for (int i = 0; i < names.size(); ++i) {
            if (is_known(i, endings))
                continue;
            output.output_line("Unrecognised node name: " + names[i], 2);
            all_known = false;
        }
        return all_known;
    }

    void share_out()
    {
        tops.assign(std::size_t(names.size()), unknown);
        for (int i = 0; i < names.size(); ++i) {
            auto const actor = actors.find(owner_of(i));
            if (actor != actors.end())
                actor->second.node_indices.append(i);
        }
    }

private:
    bool is_known(int i, QStringList const &endings)
    {
        QString const &name = lower_names[i];
        if (has_prefix(name, "cam") && !by_name.contains(QStringLiteral("camera"))) {
            add(i, QStringLiteral("camera"));
            return true;
        }
        int const parent = nodes[unsigned(i)].parent_index;
        if (has_prefix(name, "ch") && parent >= 0) {
            for (QString const &ending : endings)
                if (name.endsWith(ending))
                    add(parent, without_last_section(names[i]));
            return true;
        }
        return name == QLatin1String("exporter inserted root") || name == QLatin1String("scene");
    }

    void add(int key, QString const &name)
    {
        ACTOR &actor = actors[key] = ACTOR();
        actor.key = key;
        actor.name = name;
        by_name[name] = key;
    }

    // The key of the actor that node i belongs to, or a negative number.
    int owner_of(int i)
    {
        int const owner = top_above(i);
        return owner < 0 && has_prefix(lower_names[i], "ch") ? by_name.value(without_last_section(names[i]), -1)
                                                             : owner;
    }

    // The nearest actor's key at or above node i. Each node is passed once, so parents that lead round in a ring end at
    // a node that has been passed.
    int top_above(int i)
    {
        std::vector<int> passed;
        while (i >= 0 && actors.count(i) == 0) {
            if (i >= names.size() || tops[std::size_t(i)] != unknown) {
                i = i < names.size() ? tops[std::size_t(i)] : -1;
                break;
            }
            tops[std::size_t(i)] = -1;
            passed.push_back(i);
            i = nodes[unsigned(i)].parent_index;
        }
        for (int const node : passed)
            tops[std::size_t(node)] = i;
        return i;
    }

    static constexpr int unknown = -2;
    NODES const &nodes;
    ACTORS &actors;
    QStringList names, lower_names;
    QMap<QString, int> by_name;
    std::vector<int> tops;  // of each node: what top_above gave, or unknown
};

void copy_nodes(NODES const &nodes, ACTOR &actor)
{
    QVector<int> const &indices = actor.node_indices;
    for (int const index : indices) {
        VEX2_MATRIX_NODE &copy = actor.nodes.append(nodes[unsigned(index)]);
        auto const parent = std::lower_bound(indices.begin(), indices.end(), copy.parent_index);
        bool const is_inside = parent != indices.end() && *parent == copy.parent_index;
        copy.parent_index = is_inside ? int(parent - indices.begin()) : -1;
        copy.name = copy.name.substr(copy.name.rfind(u':') + 1);
    }
}

}  // namespace

bool find_actors(NODES const &nodes, QStringList const &skeletons, PROGRESS_CALLBACK &output, ACTORS &actors)
{
    WALKER walker(nodes, actors);
    if (!walker.find_tops(root_bone_endings(skeletons), output)) {
        output.output_line(QStringLiteral("The name of actor nodes must be prefixed by CH: or CH_!"), 2);
        return false;
    }
    walker.share_out();
    for (auto &[key, actor] : actors)
        copy_nodes(nodes, actor);
    return true;
}
