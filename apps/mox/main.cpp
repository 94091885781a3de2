// mox: the build host as a program. Arguments in, output out; docs/mox.md is its manual.

#include "apps/mox/commands.h"
#include "platform/build_host/did_you_mean.h"

#include <CLI/CLI.hpp>

#include <QtCore/QCoreApplication>
#include <QtCore/QHash>
#include <QtCore/QTextCodec>

#include <clocale>
#include <cstdio>

namespace {

// An option or argument whose value is kept as QString.
CLI::Option *text_option(CLI::App *app, std::string const &name, QString &value, std::string const &help)
{
    return app->add_option_function<std::string>(
        name, [&value](std::string const &text) { value = QString::fromStdString(text); }, help);
}

CLI::Option *texts_option(CLI::App *app, std::string const &name, QStringList &values, std::string const &help)
{
    return app
        ->add_option_function<std::vector<std::string>>(
            name,
            [&values](std::vector<std::string> const &texts) {
                for (std::string const &text : texts)
                    values += QString::fromStdString(text);
            },
            help)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

}  // namespace

int main(int count, char **arguments)
{
    // Before Qt hashes anything: what is written in the order of a hash is the same on every run.
    qunsetenv("QT_HASH_SEED");
    qSetGlobalQHashSeed(0);
    QCoreApplication application(count, arguments);
    QCoreApplication::setApplicationName(QStringLiteral("mox"));
    // Names of files are UTF-8 and numbers have a point, whatever the user's language.
    std::setlocale(LC_ALL, "C.UTF-8");
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));

    OPTIONS options;
    int (*command)(OPTIONS const &) = nullptr;

    CLI::App app("Builds a tree of assets by its rules.", "mox");
    app.require_subcommand(0, 1);
    app.fallthrough();
    app.set_version_flag("--version", "mox " MOX_VERSION);
    text_option(&app, "-C,--project", options.folder, "folder of the project (default: the nearest with a mox.toml)");
    texts_option(&app, "--plugin", options.plug_ins, "a further plug-in module, or a folder of such");

    auto const add = [&](char const *name, char const *help, int (*function)(OPTIONS const &)) {
        CLI::App *const sub = app.add_subcommand(name, help);
        sub->callback([&command, function] { command = function; });
        return sub;
    };
    auto const add_tweak = [&](CLI::App *sub) {
        texts_option(sub, "--tweak", options.tweaks, "NAME=VALUE: sets a value of a plug-in");
    };

    CLI::App *const init = add("init", "make a project: mox.toml, folders, first rules", init_command);
    text_option(init, "folder", options.path, "where (default: here)");

    CLI::App *const build = add("build", "bring all products up to date", build_command);
    build->add_option("-j,--jobs", options.jobs, "actions at once (default: one a core)")->check(CLI::Range(1, 1024));
    build->add_flag("-k,--keep-going", options.keep_going, "go on after a failure with what does not depend on it");
    build->add_flag("-n,--dry-run", options.dry_run, "only say what would run, and why");
    build->add_flag("-q,--quiet", options.quiet, "only errors");
    build->add_flag("--json", options.json, "events as JSON, one a line");
    add_tweak(build);

    CLI::App *const plan = add("plan", "show the actions for the tree, with their order", plan_command);
    plan->add_option("--format", options.plan_format, "text or json")->check(CLI::IsMember({"text", "json"}));
    plan->add_option("--graph", options.graph_format, "dot: as a graph for Graphviz")->check(CLI::IsMember({"dot"}));
    add_tweak(plan);

    CLI::App *const explain = add("explain", "a file: its rules, what makes it, what is out of date", explain_command);
    text_option(explain, "path", options.path, "a file of the tree")->required();

    CLI::App *const rules = add("rules", "the rules of the tree, or those that hold for a file", rules_command);
    text_option(rules, "path", options.path, "a file of the tree");

    add("schema", "the kinds of rules and their properties", schema_command);

    CLI::App *const db = add("db", "the tables of the asset database, or the rows of one", db_command);
    text_option(db, "table", options.table, "a table");

    CLI::App *const graph = add("graph", "what a finished asset needs, and what needs it", graph_command);
    text_option(graph, "asset", options.path, "an asset's path or id")->required();
    graph->add_flag("--all", options.all, "also over others");
    graph->add_option("--graph", options.graph_format, "dot: for Graphviz")->check(CLI::IsMember({"dot"}));

    add("cache", "write the engine's cache of the headers of all models", cache_command);

    CLI::App *const clean = add("clean", "remove what builds have written", clean_command);
    clean->add_flag("--gone", options.only_gone, "only products for which no source or rule is left");

    try {
        app.parse(count, arguments);
    } catch (CLI::ExtrasError const &error) {
        if (app.get_subcommands().empty() && app.remaining().front()[0] != '-') {
            QString const word = QString::fromStdString(app.remaining().front());
            QStringList known;
            for (CLI::App const *const sub : app.get_subcommands({}))
                known += QString::fromStdString(sub->get_name());
            QString const hint = did_you_mean(word, known);
            print_error(QStringLiteral("mox: there is no command '%1'%2")
                            .arg(word, hint.isEmpty() ? QStringLiteral("; 'mox --help' lists them") : hint));
        } else {
            app.exit(error);
        }
        return EXIT_USAGE;
    } catch (CLI::ParseError const &error) {
        bool const is_help = error.get_exit_code() == 0;
        app.exit(error);
        return is_help ? EXIT_DONE : EXIT_USAGE;
    }
    if (command == nullptr) {
        print_error(QStringLiteral("mox: which command? 'mox --help' lists them"));
        return EXIT_USAGE;
    }
    int const code = command(options);
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return code;
    print_error(QStringLiteral("standard output cannot be written; is the disk full?"));
    return EXIT_FAILED;
}
