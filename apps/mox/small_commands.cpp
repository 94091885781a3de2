// The commands that are a few lines each, and what all commands share.

#include "Plugins/Vx2/host/tweaker.h"
#include "apps/mox/commands.h"
#include "foundation/string.h"
#include "platform/build_host/schemas.h"
#include "platform/build_host/session.h"

#include <QtCore/QCoreApplication>

#include <cstdio>

namespace {

void print_to(std::FILE *stream, QString const &line)
{
    KN::String const text = KN::printable(line.toStdString());
    std::fprintf(stream, "%s\n", text.c_str());
}

}  // namespace

void print_line(QString const &line) { print_to(stdout, line); }
void print_error(QString const &line)
{
    std::fflush(stdout);
    print_to(stderr, line);
}

int print_faults(SESSION const &session)
{
    for (QString const &fault : session.faults())
        print_error(fault);
    return EXIT_FAILED;
}

void print_warnings(SESSION const &session, OPTIONS const &options)
{
    for (QString const &warning : session.warnings())
        if (!options.quiet)
            print_error(QStringLiteral("warning: ") + warning);
}

int open_session(SESSION &session, OPTIONS const &options)
{
    QStringList const plug_ins =
        QStringList(QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/plugins")) + options.plug_ins;
    if (!session.open(options.folder, plug_ins))
        return print_faults(session);
    for (QString const &tweak : options.tweaks) {
        QString const name = tweak.section(QLatin1Char('='), 0, 0);
        QString const value = tweak.section(QLatin1Char('='), 1);
        if (!tweak.contains(QLatin1Char('=')) ||
            !UTILITYDLL::set_tweaker(KN::UniString(name.toStdU16String()), KN::String(value.toStdString()))) {
            QStringList known;
            for (auto const &entry : UTILITYDLL::tweakers())
                known += QString::fromStdU16String(entry.first);
            print_error(QStringLiteral("--tweak %1: write NAME=VALUE with one of these names: %2")
                            .arg(tweak, known.join(QStringLiteral(", "))));
            return EXIT_USAGE;
        }
    }
    return EXIT_DONE;
}

int open_tree(SESSION &session, OPTIONS const &options, RECORD use)
{
    if (int const code = open_session(session, options); code != EXIT_DONE)
        return code;
    bool const is_open = use == RECORD::UNUSED || (use == RECORD::READ ? session.open_record_to_read()
                                                                       : session.take_lock() && session.open_record());
    return is_open && session.list_files() ? EXIT_DONE : print_faults(session);
}

int init_command(OPTIONS const &options)
{
    QString fault;
    if (!init_project(options.path.isEmpty() ? QStringLiteral(".") : options.path, fault)) {
        print_error(fault);
        return EXIT_FAILED;
    }
    print_line(QStringLiteral("made mox.toml, raw_data with a rules.toml, and working_data; put scenes (.vx2) below "
                              "raw_data, write rules, then 'mox build'"));
    return EXIT_DONE;
}

int schema_command(OPTIONS const &options)
{
    // Plug-ins declare the kinds; a project is not needed for that.
    SESSION session;
    if (!session.load_plug_ins(QStringList(QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/plugins")) +
                               options.plug_ins))
        return print_faults(session);
    for (SCHEMA const &schema : schemas()) {
        print_line(QStringLiteral("%1: %2").arg(schema.key, schema.description));
        for (SCHEMA_PROPERTY const &property : schema.properties)
            print_line(
                QStringLiteral("    %1%2%3")
                    .arg(property.name, property.help.isEmpty() ? QString() : QStringLiteral(": "), property.help));
    }
    return EXIT_DONE;
}

int db_command(OPTIONS const &options)
{
    SESSION session;
    if (int const code = open_session(session, options); code != EXIT_DONE)
        return code;
    QString fault, text;
    QStringList names;
    bool const good = options.table.isEmpty() ? session.database().tables(names, fault)
                                              : session.database().table_text(options.table, text, fault);
    if (!good) {
        print_error(fault);
        return EXIT_FAILED;
    }
    for (QString const &line : names + text.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        std::fprintf(stdout, "%s\n", line.toUtf8().constData());  // tabs stay, others are escaped in the text
    return EXIT_DONE;
}

int clean_command(OPTIONS const &options)
{
    SESSION session;
    if (int const code = open_tree(session, options, RECORD::WRITTEN); code != EXIT_DONE)
        return code;
    if (options.only_gone) {
        session.make_plan();
        session.make_state();
    }
    QStringList removed;
    bool const good = session.clean(options.only_gone, removed);
    print_warnings(session, options);
    for (QString const &file : removed)
        print_line(QStringLiteral("removed %1").arg(file));
    print_line(QStringLiteral("%1 files removed").arg(removed.size()));
    return good ? EXIT_DONE : print_faults(session);
}
