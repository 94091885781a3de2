#include "Plugins/Vx2/action_rigid_header_cache.h"
#include "Plugins/Vx2/host/action_engine.h"
#include "apps/mox/commands.h"
#include "foundation/messages.h"
#include "platform/build_host/run.h"
#include "platform/build_host/session.h"

namespace {

// Prints what the engine says, and remembers whether it was an error.
class ENGINE_MESSAGES final : public KN::MessageSink {
public:
    ENGINE_MESSAGES() : before(KN::set_thread_message_sink(this)) {}
    ~ENGINE_MESSAGES() { KN::set_thread_message_sink(before); }
    void message(KN::String const &line, int level) override
    {
        if (level > KN::MESSAGE_INFORMATION)
            print_error(QString::fromUtf8(line.data(), int(line.size())));
        has_failed |= level >= KN::MESSAGE_ERROR;
    }
    bool has_failed = false;

private:
    KN::MessageSink *before;
};

}  // namespace

int cache_command(OPTIONS const &options)
{
    SESSION session;
    if (int const code = open_session(session, options); code != EXIT_DONE)
        return code;
    if (!session.take_lock() || !session.list_files())
        return print_faults(session);
    print_warnings(session, options);

    FILE_TABLE const &files = session.files().table;
    RULE_CACHE const rules(session.rules());
    ACTION_INIT_KESTREL init(nullptr, true, true, false);
    if (run_action(init, files, rules) != ACTION_INTERFACE::DONE) {
        for (ACTION_LINE const &line : init.lines())
            print_error(line.text);
        return EXIT_FAILED;
    }
    ENGINE_MESSAGES messages;
    ACTION_RIGID_HEADER_CACHE const cache(nullptr);
    ACTION_RIGID_HEADER_CACHE::write_cache(files, *init.engine()->rigid_model_service());
    if (messages.has_failed)
        return EXIT_FAILED;
    QVector<LOGICAL_PATH> models;
    QVector<TARGET_FILE> targets;
    qint64 time = 0;
    cache.get_affected_files(models, targets, time, files, rules);
    print_line(QStringLiteral("%1: %2 models").arg(targets[0].physical).arg(models.size()));
    return EXIT_DONE;
}
