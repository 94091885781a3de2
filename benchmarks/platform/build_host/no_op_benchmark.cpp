// A build with nothing to do, as it happens most often: files are listed, the plan is made, every row of the record is
// held against them, nothing runs. Read it beside Ninja of the same run, which finds out the same about a tree of as
// many edges with the same files; that one starts a process, which at these sizes is a few milliseconds of its time.
//
// An edge is one source with two products and two files that all edges read.

#include "Plugins/Vx2/host/action_convert.h"
#include "foundation/finished_file.h"
#include "platform/build_host/disk_name.h"
#include "platform/build_host/session.h"

#include <QtCore/QDir>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <benchmark/benchmark.h>

#include <chrono>
#include <map>
#include <memory>

namespace {

constexpr int files_a_folder = 200;

class COPY_SCHEMA : public RULE_SCHEMA {
public:
    COPY_SCHEMA() : RULE_SCHEMA(QStringLiteral("Copy"), QStringLiteral("Copies scenes"))
    {
        add_property(QStringLiteral("TargetPath"), {});
        add_property(QStringLiteral("Suffix"), {});
    }
};

class COPY_ACTION : public ACTION_CONVERT {
public:
    using ACTION_CONVERT::ACTION_CONVERT;
    QString statistics() const { return get_target() + QStringLiteral(".statistics"); }
    void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                            FILE_TABLE const &files, RULE_CACHE const &rules) const override
    {
        ACTION_CONVERT::get_affected_files(sources, targets, time, files, rules);
        PHYSICAL_PATH const file(statistics());
        targets.append({file, PATHS::logical_path(file), false});
        sources.append(LOGICAL_PATH(QStringLiteral("<raw>/lighting/materials.xml")));
        sources.append(LOGICAL_PATH(QStringLiteral("<raw>/lighting/lods.xml")));
    }
    bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                 FILE_TABLE const &) override
    {
        rules.get(PATHS::logical_path(from), QStringLiteral("Copy")).value(QStringLiteral("Suffix"));
        KN::String error;
        return KN::write_finished_file(disk_name(to), "x", error) &&
               KN::write_finished_file(disk_name(statistics()), "x", error);
    }
};

class COPY_PROCESSOR : public PROCESSOR_INTERFACE {
public:
    QString get_name() const override { return QStringLiteral("copies"); }
    QVector<ACTION_INTERFACE *> plan_actions(FILE_TABLE const &files, RULE_CACHE const &rules) override
    {
        QVector<ACTION_INTERFACE *> actions;
        for (auto entry = files.begin(); entry != files.end(); ++entry) {
            if (!entry.key().endsWith(QLatin1String(".vx2")))
                continue;
            RULE const rule = rules.get(entry.key(), QStringLiteral("Copy"));
            PHYSICAL_PATH const &physical = entry.value()->physical;
            auto *const action = new COPY_ACTION(physical, this);
            action->set_target_path(
                PATHS::target_working_data(physical) + '/' +
                PATHS::relative_target_path_from_rule_path(rule, QStringLiteral("TargetPath"), entry.key(), physical));
            action->set_target_extension(QStringLiteral(".model"));
            actions.append(action);
        }
        return actions;
    }
};

struct OUTCOME {
    int planned = 0;
    int ran = 0;
    std::uint64_t contents_read = 0;
};

// `seconds`: until everything is known and written; the program ends there and leaves its memory to the system.
OUTCOME build(QString const &folder, double &seconds)
{
    static COPY_SCHEMA const schema;
    auto const start = std::chrono::steady_clock::now();
    COPY_PROCESSOR processor;
    SESSION session;
    if (!session.open(folder, {}) || !session.take_lock() || !session.open_record() || !session.list_files())
        return {};
    session.make_plan({&processor});
    session.make_state();
    std::vector<QString> const reasons = choose_actions(session.plan(), session.state());
    RUN_RESULT const result =
        run_plan(session.plan(), reasons, session.files(), session.rules(), {}, session.state(), nullptr);
    session.state().left_overs();
    OUTCOME const outcome = {int(session.plan().actions.size()), result.done + result.failed,
                             session.state().contents_read()};
    session.close();
    seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return outcome;
}

// Built once a size, by mox; the same files are described to ninja. Its rule counts as the generator of its own files,
// so that it needs no log of commands, which is to its advantage.
QString tree(int edges)
{
    static std::map<int, std::unique_ptr<QTemporaryDir>> trees;
    std::unique_ptr<QTemporaryDir> &made = trees[edges];
    if (made)
        return made->path();
    made = std::make_unique<QTemporaryDir>();
    QString const folder = made->path();
    KN::String error;
    auto const write = [&](QString const &name, std::string const &text) {
        KN::write_finished_file(disk_name(folder + '/' + name), text, error);
    };
    QDir(folder).mkpath("raw_data/lighting");
    write("mox.toml", "");
    write("raw_data/rules.toml", "[Copy]\nTargetPath = \"models\"\n");
    write("raw_data/lighting/materials.xml", "x");
    write("raw_data/lighting/lods.xml", "x");
    std::string ninja = "rule copy\n  command = cp $in $out\n  generator = 1\n";
    for (int i = 0; i < edges; ++i) {
        QString const sub = QStringLiteral("props/set%1").arg(i / files_a_folder, 4, 10, QLatin1Char('0'));
        if (i % files_a_folder == 0)
            QDir(folder).mkpath("raw_data/" + sub);
        QString const stem = QStringLiteral("%1/prop%2").arg(sub).arg(i, 6, 10, QLatin1Char('0'));
        write("raw_data/" + stem + ".vx2", "x");
        std::string const in = stem.toStdString();
        ninja += "build working_data/models/" + in + ".model working_data/models/" + in +
                 ".model.statistics: copy raw_data/" + in +
                 ".vx2 | raw_data/lighting/materials.xml raw_data/lighting/lods.xml\n";
    }
    write("build.ninja", ninja);
    double seconds;
    build(folder, seconds);
    return folder;
}

void NoOpBuild(benchmark::State &state)
{
    int const edges = int(state.range(0));
    QString const folder = tree(edges);
    OUTCOME outcome;
    for (auto _ : state) {
        double seconds = 0;
        outcome = build(folder, seconds);
        state.SetIterationTime(seconds);
    }
    if (outcome.planned != edges || outcome.ran != 0 || outcome.contents_read != 0)
        state.SkipWithError("not a build with nothing to do");
}
BENCHMARK(NoOpBuild)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond)->UseManualTime();

void Ninja(benchmark::State &state)
{
    QString const folder = tree(int(state.range(0)));
    QByteArray said;
    for (auto _ : state) {
        QProcess ninja;
        ninja.start("ninja", {"-C", folder});
        ninja.waitForFinished(-1);
        said = ninja.readAll();
    }
    if (!said.contains("no work to do"))
        state.SkipWithError("ninja is not there, or found work");
}
BENCHMARK(Ninja)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
