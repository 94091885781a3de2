#include "apps/mox/commands.h"
#include "apps/mox/graph_scope.h"
#include "platform/asset_graph/reach.h"
#include "platform/build_host/session.h"

#include <QtCore/QDir>
#include <QtCore/QSet>

using namespace QTSHARED;

namespace {

// What stands behind an id: the asset of its fragment, or a file of that path, or nothing.
class KNOWN {
public:
    KNOWN(QMap<QString, ASSET_FRAGMENT> const &of_graph, FILE_TABLE const &files) : fragments(of_graph)
    {
        QString const root = QStringLiteral("<working>/");
        for (auto entry = files.lowerBound(LOGICAL_PATH(root)); entry != files.end(); ++entry) {
            if (!entry.key().startsWith(root))
                break;
            paths.insert(entry.key().mid(root.size()).toLower());
        }
    }

    QString note(QString const &id) const
    {
        auto const fragment = fragments.find(id);
        if (fragment != fragments.end())
            return fragment->asset.compare(id, Qt::CaseInsensitive) == 0 ? QString() : fragment->asset;
        return paths.contains(id) ? QStringLiteral("a file") : QStringLiteral("not known");
    }

private:
    QMap<QString, ASSET_FRAGMENT> const &fragments;
    QSet<QString> paths;
};

void print_steps(QString const &heading, std::vector<GRAPH_STEP> const &steps, QString GRAPH_STEP::*end,
                 KNOWN const &known)
{
    print_line(steps.empty() ? heading + QStringLiteral(" nothing") : heading);
    QSet<QString> printed;
    for (GRAPH_STEP const &step : steps) {
        QString const id = step.*end;
        if (printed.contains(id))
            continue;
        printed.insert(id);
        QString const note = known.note(id);
        print_line(QString(4 * step.distance, QLatin1Char(' ')) + id +
                   (note.isEmpty() ? QString() : QStringLiteral("  (%1)").arg(note)));
    }
}

QString quoted(QString text)
{
    return QLatin1Char('"') +
           text.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('"'), QLatin1String("\\\"")) +
           QLatin1Char('"');
}

// An arrow leads from what needs to what is needed.
void print_dot(QString const &id, std::vector<GRAPH_STEP> const &needed, std::vector<GRAPH_STEP> const &needing)
{
    print_line(QStringLiteral("digraph assets {"));
    print_line(QStringLiteral("    rankdir = LR;"));
    print_line(QStringLiteral("    node [shape = box];"));
    print_line(QStringLiteral("    %1 [style = bold];").arg(quoted(id)));
    QSet<QString> printed;  // a cycle leads both ways
    for (auto const *const steps : {&needed, &needing}) {
        for (GRAPH_STEP const &step : *steps) {
            QString const arrow = quoted(step.from) + QStringLiteral(" -> ") + quoted(step.to);
            if (!printed.contains(arrow))
                print_line(QStringLiteral("    %1;").arg(arrow));
            printed.insert(arrow);
        }
    }
    print_line(QStringLiteral("}"));
}

}  // namespace

int graph_command(OPTIONS const &options)
{
    SESSION session;
    if (int const code = open_tree(session, options, RECORD::READ); code != EXIT_DONE)
        return code;
    GRAPH_SCOPE const scope(session);
    print_warnings(session, options);
    ASSET_GRAPH const &graph = *ACTION_INTERFACE::s_asset_graph;
    QMap<QString, ASSET_FRAGMENT> const fragments = graph.asset_fragments();

    QString id = options.path.toLower();
    if (!fragments.contains(id)) {
        // A relative path is one below the working root.
        bool const is_whole = options.path.startsWith(QLatin1Char('<')) || QDir::isAbsolutePath(options.path);
        QString asset = is_whole ? QString(session.logical_path(options.path)) : options.path;
        asset.remove(QStringLiteral("<working>/"));
        QString const found = graph.fragment_id_from_asset_filename(asset);
        id = found.isEmpty() ? asset.toLower() : found.toLower();
    }
    auto const needed = reach(fragments, id, REACH::NEEDS, options.all);
    auto const needing = reach(fragments, id, REACH::NEEDED_BY, options.all);
    if (!fragments.contains(id) && needing.empty()) {
        print_error(QStringLiteral("%1: the asset graph knows nothing of that name; it is made by 'mox build'")
                        .arg(options.path));
        return EXIT_FAILED;
    }
    if (!options.graph_format.empty()) {
        print_dot(id, needed, needing);
        return EXIT_DONE;
    }
    KNOWN const known(fragments, session.files().table);
    QString const note = known.note(id);
    print_line(note.isEmpty() ? id : QStringLiteral("%1  (%2)").arg(id, note));
    print_steps(QStringLiteral("needs"), needed, &GRAPH_STEP::to, known);
    print_steps(QStringLiteral("needed by"), needing, &GRAPH_STEP::from, known);
    return EXIT_DONE;
}
