#include "Plugins/Vx2/host/action_convert.h"
#include "apps/mox/commands.h"
#include "apps/mox/graph_scope.h"
#include "platform/build_host/session.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace {

using JSON = nlohmann::ordered_json;

std::string utf8(QString const &text) { return text.toStdString(); }

// What an action works on and makes, as logical paths; empty where it has none.
struct ACTION_FILES {
    explicit ACTION_FILES(PLANNED_ACTION const &planned)
    {
        if (auto const *convert = dynamic_cast<ACTION_CONVERT const *>(planned.action)) {
            source = PATHS::logical_path(convert->source());
            target = PATHS::logical_path(convert->get_target());
            extension = convert->target_extension();
            if (target == source)
                target.clear();
            return;
        }
        source = planned.sources.value(0);
        if (TARGET_FILE const *const main_target = planned.main_target()) {
            target = main_target->logical;
            QString const name = target.section(QLatin1Char('/'), -1);
            if (name.contains(QLatin1Char('.')))
                extension = QLatin1Char('.') + name.section(QLatin1Char('.'), -1);
        }
    }
    QString source, target, extension;
};

char const *by(PLAN_EDGE const &edge) { return edge.by_host ? "host" : "plugin"; }

JSON action_json(PLAN const &plan, PLANNED_ACTION const &planned)
{
    ACTION_FILES const files(planned);
    JSON errors = JSON::array(), dependencies = JSON::array(), pulls = JSON::array();
    for (QString const &line : planned.action->error().split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        errors.push_back(utf8(line));
    for (PLAN_EDGE const &edge : plan.dependencies.of(planned.index))
        dependencies.push_back({{"on", edge.other}, {"flag", edge.flag}, {"by", by(edge)}});
    for (PLAN_EDGE const &edge : plan.pulls.of(planned.index))
        pulls.push_back({{"action", edge.other}, {"by", by(edge)}});
    return {{"index", planned.index},
            {"class", utf8(planned.class_name)},
            {"name", utf8(planned.action->get_name(true))},
            {"source", utf8(files.source)},
            {"target", utf8(files.target)},
            {"extension", utf8(files.extension)},
            {"errors", errors},
            {"group", planned.action->group},
            {"dependencies", dependencies},
            {"pulls", pulls}};
}

// An array with an object a line: a plan of a large tree is never held as one text.
void print_json(PLAN const &plan)
{
    char const *separator = "[\n";
    for (PLANNED_ACTION const &planned : plan.actions) {
        std::string const text = action_json(plan, planned).dump(-1, ' ', false, JSON::error_handler_t::replace);
        std::fputs(separator, stdout);
        std::fwrite(text.data(), 1, text.size(), stdout);
        separator = ",\n";
    }
    std::fputs(plan.actions.empty() ? "[]\n" : "\n]\n", stdout);
}

void print_text(PLAN const &plan)
{
    auto const list = [](std::span<PLAN_EDGE const> edges, char const *flag_word) {
        QStringList texts;
        for (PLAN_EDGE const &edge : edges)
            texts += QStringLiteral("#%1%2%3")
                         .arg(edge.other)
                         .arg(edge.flag ? QLatin1String(flag_word) : QLatin1String(),
                              edge.by_host ? QStringLiteral(" (host)") : QString());
        return texts.join(QStringLiteral(", "));
    };
    for (PLANNED_ACTION const &planned : plan.actions) {
        ACTION_FILES const files(planned);
        print_line(QStringLiteral("#%1 %2").arg(planned.index).arg(planned.action->get_name(true)));
        if (!files.target.isEmpty())
            print_line(QStringLiteral("    makes %1").arg(files.target));
        if (planned.action->group != 0)
            print_line(QStringLiteral("    group %1").arg(planned.action->group));
        if (auto const edges = plan.dependencies.of(planned.index); !edges.empty())
            print_line(QStringLiteral("    after %1").arg(list(edges, " with its memory")));
        if (auto const edges = plan.pulls.of(planned.index); !edges.empty())
            print_line(QStringLiteral("    pulls %1").arg(list(edges, "")));
        for (QString const &line : planned.action->error().split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            print_line(QStringLiteral("    error: %1").arg(line));
    }
    print_line(QStringLiteral("%1 actions").arg(plan.actions.size()));
}

// An arrow leads from what comes first to what comes later; bold where memory is shared, dashed where the host drew it,
// dotted for a pull.
void print_graph(PLAN const &plan)
{
    for (char const *line : {"digraph plan {", "    rankdir = LR;", "    node [shape = box];"})
        print_line(QLatin1String(line));
    for (PLANNED_ACTION const &planned : plan.actions) {
        QString name = planned.action->get_name(true);
        name.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('"'), QLatin1String("\\\""));
        print_line(QStringLiteral("    a%1 [label = \"#%1 %2\"%3];")
                       .arg(planned.index)
                       .arg(name, planned.action->error().isEmpty() ? QString() : QStringLiteral(", color = red")));
    }
    for (PLANNED_ACTION const &planned : plan.actions) {
        for (PLAN_EDGE const &edge : plan.dependencies.of(planned.index))
            print_line(QStringLiteral("    a%1 -> a%2 [style = %3];")
                           .arg(edge.other)
                           .arg(planned.index)
                           .arg(edge.flag      ? QStringLiteral("bold")
                                : edge.by_host ? QStringLiteral("dashed")
                                               : QStringLiteral("solid")));
        for (PLAN_EDGE const &edge : plan.pulls.of(planned.index))
            print_line(QStringLiteral("    a%1 -> a%2 [style = dotted, arrowhead = open, constraint = false];")
                           .arg(planned.index)
                           .arg(edge.other));
    }
    print_line(QStringLiteral("}"));
}

}  // namespace

int plan_command(OPTIONS const &options)
{
    SESSION session;
    if (int const code = open_tree(session, options, RECORD::UNUSED); code != EXIT_DONE)
        return code;
    GRAPH_SCOPE const graph(session);
    session.make_plan();
    print_warnings(session, options);
    if (!options.graph_format.empty())
        print_graph(session.plan());
    else if (options.plan_format == "json")
        print_json(session.plan());
    else
        print_text(session.plan());
    return EXIT_DONE;
}
