#include "apps/mox/commands.h"
#include "apps/mox/display.h"
#include "apps/mox/graph_scope.h"
#include "platform/build_host/interrupt.h"
#include "platform/build_host/session.h"

#include <memory>

namespace {

// What belongs to no action any more is named, not removed: a file may have been kept on purpose.
void name_products_of_nobody(SESSION &session, OPTIONS const &options)
{
    QStringList const gone = session.state().left_overs().products;
    if (!gone.isEmpty() && !options.quiet)
        print_error(
            QStringLiteral("warning: %1 products belong to no source or rule any more (%2%3); 'mox clean --gone' "
                           "removes them")
                .arg(gone.size())
                .arg(gone.first(), gone.size() > 1 ? QStringLiteral(", ...") : QString()));
}

// At the program's end a session is closed, and its memory left to the system, which is quicker at it.
struct CLOSE {
    void operator()(SESSION *session) const { session->close(); }
};

int dry_run(SESSION &session, std::vector<QString> const &reasons)
{
    for (PLANNED_ACTION const &action : session.plan().actions)
        if (QString const &reason = reasons[std::size_t(action.index)]; !reason.isEmpty())
            print_line(QStringLiteral("%1: %2").arg(action.action->get_name(true), reason));
    return EXIT_DONE;
}

}  // namespace

int build_command(OPTIONS const &options)
{
    install_interrupt_handlers();
    std::unique_ptr<SESSION, CLOSE> const held(new SESSION);
    SESSION &session = *held;
    RECORD const use = options.dry_run ? RECORD::READ : RECORD::WRITTEN;
    if (int const code = open_tree(session, options, use); code != EXIT_DONE)
        return code;
    GRAPH_SCOPE const graph(session);
    session.make_plan();
    session.make_state();
    print_warnings(session, options);

    std::vector<QString> const reasons = choose_actions(session.plan(), session.state());
    if (options.dry_run)
        return dry_run(session, reasons);

    RUN_OPTIONS run_options;
    run_options.jobs = options.jobs;
    run_options.keep_going = options.keep_going;
    run_options.interrupted = interrupt_requested;
    DISPLAY display(options);
    RUN_RESULT const result =
        run_plan(session.plan(), reasons, session.files(), session.rules(), run_options, session.state(), &display);
    for (QString const &fault : session.state().faults())
        print_error(fault);
    name_products_of_nobody(session, options);
    int const chosen = result.done + result.failed + result.left_out;
    display.summary(result.interrupted ? QStringLiteral("interrupted")
                    : result.good()    ? QStringLiteral("done")
                                       : QStringLiteral("failed"),
                    result.done, result.failed, result.left_out, int(session.plan().actions.size()) - chosen);
    return result.good() ? EXIT_DONE : EXIT_FAILED;
}
