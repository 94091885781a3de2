// Planning of a large tree that exists in memory only: four actions a file, wired and declared as a model with tech
// data is. The time an action is to be read beside what a build tool needs to parse as many edges of a manifest.

#include "Plugins/Vx2/host/action_convert.h"
#include "platform/build_host/plan.h"
#include "platform/build_host/run.h"

#include <benchmark/benchmark.h>

namespace {

constexpr int files_a_folder = 50;

// As the scene planner does it: rule look-ups for each file, three conversions and a clean-up on one scene.
class MODELS : public PROCESSOR_INTERFACE {
public:
    QString get_name() const override { return QStringLiteral("models"); }
    QVector<ACTION_INTERFACE *> plan_actions(FILE_TABLE const &files, RULE_CACHE const &rules) override
    {
        QVector<ACTION_INTERFACE *> actions;
        for (auto entry = files.begin(); entry != files.end(); ++entry) {
            if (!entry.key().endsWith(QLatin1String(".vx2")))
                continue;
            PHYSICAL_PATH const &physical = entry.value()->physical;
            RULE const rule = rules.get(entry.key(), QStringLiteral("Model"));
            if (!rule.exists || !rule.value(QStringLiteral("TargetPath")).isValid())
                continue;
            QString const folder =
                PATHS::target_working_data(physical) + QLatin1Char('/') +
                PATHS::relative_target_path_from_rule_path(rule, QStringLiteral("TargetPath"), entry.key(), physical);
            for (char const *const kind : {"Tech", "Mesh", "Animation"})
                benchmark::DoNotOptimize(rules.get(entry.key(), QLatin1String(kind)).exists);

            ACTION_CONVERT *const prepare = new ACTION_CONVERT(physical, this);
            ACTION_CONVERT *const clean_up = new ACTION_CONVERT(physical, this);
            ACTION_CONVERT *const tech = new ACTION_CONVERT(physical, this);
            ACTION_CONVERT *const model = new ACTION_CONVERT(physical, this);
            prepare->pull(clean_up);
            model->add_dependency(prepare, true);
            tech->add_dependency(prepare, true);
            clean_up->add_dependency(model, false);
            clean_up->add_dependency(tech, false);
            prepare->group = clean_up->group = tech->group = model->group = allocate_action_group();
            model->set_target_extension(QStringLiteral(".rigid_model_v2"));
            model->set_target_path(folder);
            tech->set_target_extension(QStringLiteral("_tech.vx2.parsed"));
            tech->set_target_path(folder);
            actions << prepare << clean_up << tech << model;
        }
        return actions;
    }
};

void fill(FILE_TREE &tree, int files)
{
    std::vector<FILE_TABLE::ITEM> items;
    for (int i = 0; i < files; ++i) {
        QString const name = QStringLiteral("/props/set_%1/model_%2.vx2")
                                 .arg(i / files_a_folder, 4, 10, QLatin1Char('0'))
                                 .arg(i, 6, 10, QLatin1Char('0'));
        FILE_ENTRY *const entry = new FILE_ENTRY;
        entry->physical = PHYSICAL_PATH(QStringLiteral("/art/tree/raw_data") + name);
        items.emplace_back(LOGICAL_PATH(QStringLiteral("<raw>") + name), entry);
    }
    tree.assign(std::move(items));
}

}  // namespace

static void Planning(benchmark::State &state)
{
    int const actions = int(state.range(0));
    set_current_roots(usual_roots(QStringLiteral("/art/tree")));
    RULE_SCHEMA schema(QStringLiteral("Model"), QString());
    schema.add_property(QStringLiteral("TargetPath"), QString());
    MODELS models;
    for (auto _ : state) {
        state.PauseTiming();
        {
            FILE_TREE tree;
            fill(tree, actions / 4);
            RULE_STORE rules;
            QStringList faults;
            rules.add("[Model]\nTargetPath = 'models'", QStringLiteral("mox.toml"), LOGICAL_PATH("<raw>"), true,
                      faults);
            PLAN plan;
            state.ResumeTiming();
            make_plan({&models}, tree, rules, plan);
            state.PauseTiming();
            if (int(plan.actions.size()) != actions || plan.dependencies.edges.size() != std::size_t(actions))
                state.SkipWithError("wrong plan");
        }
        state.ResumeTiming();
    }
    state.counters["s/action"] = benchmark::Counter(double(actions), benchmark::Counter::kIsIterationInvariantRate |
                                                                         benchmark::Counter::kInvert);
}
BENCHMARK(Planning)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
