#include "apps/mox/commands.h"
#include "apps/mox/graph_scope.h"
#include "platform/build_host/session.h"

namespace {

QString value_text(QVariant const &value)
{
    if (value.isNull())
        return QStringLiteral("null");
    return value.userType() == QMetaType::QString ? QLatin1Char('"') + value.toString() + QLatin1Char('"')
                                                  : value.toString();
}

QString place_text(RULE_ORIGIN const *origin)
{
    return origin != nullptr ? QStringLiteral("%1:%2").arg(origin->file, QString::number(origin->line)) : QString();
}

void print_rule(QString const &title, RULE const &rule)
{
    QStringList places;
    for (RULE_ORIGIN const *origin : rule.data()->rules)
        places += place_text(origin);
    print_line(QStringLiteral("%1  %2").arg(title, places.join(QStringLiteral(", "))));
    for (RULE_PROPERTY const &property : rule.data()->properties)
        print_line(QStringLiteral("    %1 = %2  %3")
                       .arg(property.name, value_text(property.value), place_text(property.origin)));
}

void print_rules_of(SESSION &session, LOGICAL_PATH const &path)
{
    RULE_CACHE const rules(session.rules());
    bool is_covered = false;
    for (QString const &kind : session.rules().kinds())
        if (RULE const rule = rules.get(path, kind); rule.exists) {
            print_rule(kind, rule);
            is_covered = true;
        }
    if (!is_covered)
        print_line(QStringLiteral("no rule covers it"));
}

}  // namespace

int rules_command(OPTIONS const &options)
{
    SESSION session;
    if (int const code = open_tree(session, options, RECORD::UNUSED); code != EXIT_DONE)
        return code;
    if (!options.path.isEmpty()) {
        print_rules_of(session, session.logical_path(options.path));
        return EXIT_DONE;
    }
    RULE_CACHE const rules(session.rules());
    for (QString const &kind : session.rules().global_kinds())
        print_rule(QStringLiteral("global %1").arg(kind), rules.get_global(kind));
    for (RULE_FILE const &file : session.files().rule_files) {
        print_line(QStringLiteral("%1/rules.toml").arg(file.folder));
        // What holds for any file of the folder; patterns may narrow it.
        for (QString const &kind : session.rules().kinds())
            if (RULE const rule = rules.get(LOGICAL_PATH(file.folder + QStringLiteral("/*")), kind); rule.exists)
                print_rule(QStringLiteral("  ") + kind, rule);
    }
    return EXIT_DONE;
}

int explain_command(OPTIONS const &options)
{
    SESSION session;
    if (int const code = open_tree(session, options, RECORD::READ); code != EXIT_DONE)
        return code;
    GRAPH_SCOPE const graph(session);
    session.make_plan();
    session.make_state();

    LOGICAL_PATH const path = session.logical_path(options.path);
    FILE_ENTRY const *const entry = session.files().table.peek(path);
    if (entry == nullptr) {
        print_error(QStringLiteral("%1: no file of the tree, and none that the plan makes").arg(path));
        return EXIT_FAILED;
    }
    print_warnings(session, options);
    print_line(path);
    if (!entry->is_on_disk())
        print_line(QStringLiteral("is not on disk; the plan makes it"));
    print_rules_of(session, path);

    std::vector<QString> const reasons = choose_actions(session.plan(), session.state());
    bool is_used = false;
    for (PLANNED_ACTION const &action : session.plan().actions) {
        bool const makes = std::any_of(action.targets.begin(), action.targets.end(),
                                       [&](TARGET_FILE const &target) { return target.logical == path; });
        bool const reads = action.reads(path) || (!makes && session.state().has_read(action, path));
        if (!makes && !reads)
            continue;
        is_used = true;
        QString const &reason = reasons[std::size_t(action.index)];
        print_line(QStringLiteral("%1 #%2 %3")
                       .arg(reads ? QStringLiteral("read by") : QStringLiteral("made by"),
                            QString::number(action.index), action.action->get_name(true)));
        print_line(QStringLiteral("    %1").arg(reason.isEmpty() ? QStringLiteral("up to date")
                                                                 : QStringLiteral("will run: %1").arg(reason)));
        for (QString const &line : session.state().last_output(action).split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            print_line(QStringLiteral("    %1%2")
                           .arg(line.startsWith(QLatin1Char('0'))   ? QString()
                                : line.startsWith(QLatin1Char('1')) ? QStringLiteral("warning: ")
                                                                    : QStringLiteral("error: "),
                                line.mid(2)));
    }
    if (!is_used)
        print_line(QStringLiteral("no action reads or makes it"));
    return EXIT_DONE;
}
