// The commands of mox. Each takes the options as they were given, prints, and answers with the program's exit code:
// 0 done, 1 something failed, 2 wrong usage. What they do is in platform/build_host; here stand output and its forms.
#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <string>

class SESSION;

enum EXIT_CODE : int { EXIT_DONE = 0, EXIT_FAILED = 1, EXIT_USAGE = 2 };

struct OPTIONS {
    QString folder;        // of the project; empty: the nearest
    QStringList plug_ins;  // modules to load besides those beside the program
    QStringList tweaks;    // NAME=VALUE

    int jobs = 0;
    bool keep_going = false;
    bool dry_run = false;
    bool quiet = false;
    bool json = false;  // events of a build, one a line

    std::string plan_format = "text";  // or json
    std::string graph_format;          // dot, or empty
    QString path;                      // explain, graph, rules, init
    bool all = false;                  // graph
    QString table;                     // db
    bool only_gone = false;            // clean
};

int init_command(OPTIONS const &options);
int build_command(OPTIONS const &options);
int plan_command(OPTIONS const &options);
int explain_command(OPTIONS const &options);
int rules_command(OPTIONS const &options);
int schema_command(OPTIONS const &options);
int db_command(OPTIONS const &options);
int graph_command(OPTIONS const &options);
int cache_command(OPTIONS const &options);
int clean_command(OPTIONS const &options);

// What a command wants of the build record. For writing, it takes the lock of the tree.
enum class RECORD { UNUSED, READ, WRITTEN };

// Opens the project and sets the tweakers. EXIT_DONE, or the code to end with; what is wrong has been printed then.
int open_session(SESSION &session, OPTIONS const &options);
// The same, and then opens the record for `use` and lists the files.
int open_tree(SESSION &session, OPTIONS const &options, RECORD use);
// Prints the faults, one a line, on standard error; the code that goes with them.
int print_faults(SESSION const &session);
void print_warnings(SESSION const &session, OPTIONS const &options);

// One line on standard output or standard error, with control bytes made visible.
void print_line(QString const &line);
void print_error(QString const &line);
