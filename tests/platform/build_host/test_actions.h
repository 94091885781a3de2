// Processors and actions whose whole behaviour a test writes down, and a state that keeps its books in memory.
#pragma once

#include "Plugins/Vx2/host/processor.h"
#include "platform/build_host/run.h"

#include <functional>
#include <mutex>

class TEST_ACTION : public ACTION_INTERFACE {
public:
    TEST_ACTION(QString const &called, QStringList const &reads = {}, QStringList const &writes = {})
        : ACTION_INTERFACE(nullptr), name(called), source_files(reads), target_files(writes)
    {}
    QString get_name(bool) const override { return name; }
    void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &, FILE_TABLE const &,
                            RULE_CACHE const &) const override
    {
        for (QString const &file : source_files)
            sources.append(LOGICAL_PATH(file));
        for (QString const &file : target_files) {
            QString physical = file;
            physical.replace("<working>", "/tree/working_data");
            targets.append(TARGET_FILE(PHYSICAL_PATH(physical), LOGICAL_PATH(file), false));
        }
    }
    STATUS run(FILE_TABLE const &, RULE_CACHE const &) override { return work ? work() : DONE; }
    bool auto_fail_if_dependency_failed() const override { return auto_fail; }

    std::function<STATUS()> work;
    bool auto_fail = true;

private:
    QString name;
    QStringList source_files, target_files;
};

// Plans what the function returns.
class TEST_PROCESSOR : public PROCESSOR_INTERFACE {
public:
    using PLAN_FUNCTION = std::function<QVector<ACTION_INTERFACE *>(FILE_TABLE const &, RULE_CACHE const &)>;

    explicit TEST_PROCESSOR(PLAN_FUNCTION function) : plan(std::move(function)) {}
    explicit TEST_PROCESSOR(QVector<ACTION_INTERFACE *> const &actions)
        : plan([actions](FILE_TABLE const &, RULE_CACHE const &) { return actions; })
    {}
    QString get_name() const override { return "test"; }
    QVector<ACTION_INTERFACE *> plan_actions(FILE_TABLE const &files, RULE_CACHE const &rules) override
    {
        return plan(files, rules);
    }

private:
    PLAN_FUNCTION plan;
};

// Says what is stale as the test has it, and notes in which order actions began and ended.
class MEMORY_STATE : public RUN_STATE {
public:
    // Names of stale actions; "*" stands for all that have products.
    explicit MEMORY_STATE(QStringList const &names = {"*"}) : stale(names) {}

    QString stale_reason(PLANNED_ACTION const &planned) override
    {
        return (planned.has_products && stale.contains("*")) || stale.contains(planned.action->get_name(false))
                   ? "changed"
                   : "";
    }
    bool run_begins(QVector<PLANNED_ACTION const *> const &) override { return true; }
    bool action_begins(PLANNED_ACTION const &planned) override
    {
        note("+", planned);
        return true;
    }
    int action_ends(PLANNED_ACTION const &planned, int status) override
    {
        note("-", planned);
        return status;
    }
    void action_left_out(PLANNED_ACTION const &planned) override { note("x", planned); }
    bool run_ends() override { return true; }

    // "+NAME" began, "-NAME" ended, "xNAME" was left out.
    QStringList events;

    // The names of those that began, in this order.
    QString began() const
    {
        QString names;
        for (QString const &event : events)
            if (event.startsWith('+'))
                names += event.mid(1);
        return names;
    }

private:
    void note(char const *what, PLANNED_ACTION const &planned)
    {
        std::lock_guard const guard(lock);
        events.append(what + planned.action->get_name(false));
    }

    QStringList stale;
    std::mutex lock;
};
