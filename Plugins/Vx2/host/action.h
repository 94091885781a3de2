// Actions: the units of work that processors plan and the host runs. An action is created at planning, linked with
// others, handed to the host, run at most once a build on one of its worker threads, and deleted by it.
//
// ACTION_INTERFACE is the base of all; ACTION_TDB adds that the result is judged by what was output.
#pragma once

#include "Plugins/Vx2/host/file_table.h"
#include "Plugins/Vx2/host/progress_callback.h"
#include "Plugins/Vx2/host/rules.h"

#include <QtCore/QString>
#include <QtCore/QVector>

class PROCESSOR_INTERFACE;
namespace QTSHARED {
class ASSET_FRAGMENT_BUILDER;
class ASSET_GRAPH;
}  // namespace QTSHARED

class ACTION_INTERFACE;

// From an action to another one. `flag` counts for dependencies only.
struct ACTION_LINK {
    ACTION_INTERFACE *other;
    bool flag;
    bool by_host;  // drawn by the host itself, not by a processor
};
Q_DECLARE_TYPEINFO(ACTION_LINK, Q_PRIMITIVE_TYPE);

struct ACTION_LINE {
    QString text;
    int level;  // 0 information, 1 warning, 2 error
};
Q_DECLARE_TYPEINFO(ACTION_LINE, Q_MOVABLE_TYPE);

class HOST_API ACTION_INTERFACE {
public:
    enum STATUS { IDLE, RUNNING, DONE = 2, SKIPPED, FAILED = 4 };

    virtual ~ACTION_INTERFACE();
    // Asks a running action to end early, from any thread: add_progress then answers false.
    virtual void abort();
    // Back to the state before the first run: no lines, no progress, not aborted.
    virtual void reset();
    virtual bool ignore_assert();
    // What the action does, for people; with the source if wanted.
    virtual QString get_name(bool with_source) const;
    // Appends the files that the action reads and writes. Called while planning and again after a successful run, when
    // what is declared then counts. `time` starts at 0; an action that depends on something that is no file raises it
    // to that thing's time (any unit): another value makes the action out of date.
    virtual void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                                    FILE_TABLE const &files, RULE_CACHE const &rules) const;
    // Called once all processors have planned: dependencies on actions of others, found through the file table.
    virtual void add_external_dependencies(FILE_TABLE const &files, RULE_CACHE const &rules);
    // The work, on a worker thread; the result is DONE or FAILED. No exception may leave it.
    virtual STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules);
    // Whether the action fails without running when one that it depends on has failed. True unless overridden.
    virtual bool auto_fail_if_dependency_failed() const;
    virtual bool auto_fail_if_asserts_occured() const;
    // Whether the targets are put back as they were when the action fails. True unless overridden.
    virtual bool revert_target_files_if_failed() const;

    // Actions of one group, other than 0, never overlap. A group says nothing about their order.
    int group = 0;

    // This action starts only after `other` has ended, if that is run at all. With `flag`, this action reads what the
    // other holds in memory: the other is run whenever this one is.
    void add_dependency(ACTION_INTERFACE *other, bool flag);
    // Whenever this action is run, `other` is; in any order.
    void pull(ACTION_INTERFACE *other);
    void pull_both_ways(ACTION_INTERFACE *other);
    // The same as drawn by the host itself, told apart in the printed plan.
    void add_host_dependency(ACTION_INTERFACE *other, bool flag);
    void host_pull(ACTION_INTERFACE *other);

    // A fault found while planning: the action will fail with this text instead of running. Texts add up, a line each.
    void set_error(QString const &text);

    // For the thread that runs the action. Lines are kept with the action and shown when it has ended.
    void add_output_line(QString const &line) { output_line(line, 0); }
    void output_line(QString const &line, int level);
    void set_progress_max(int amount) { progress_end = amount; }
    bool add_progress(int amount);  // false if the run is to end early

    // Books a file that the action has written, as text or binary. A file that is not there is a warning.
    void add_to_perforce(PHYSICAL_PATH const &file, FILE_TABLE const &files, bool binary, QString const &description);
    // Books the removal of a file and deletes it, if it is there.
    void remove_from_perforce(PHYSICAL_PATH const &file, FILE_TABLE const &files);

    // Enters the fragments in the asset graph in place of those that their file held, and saves and books that file.
    // False, with an error line, if that failed.
    bool add_to_asset_graph_and_save(QTSHARED::ASSET_FRAGMENT_BUILDER &builder, FILE_TABLE const &files,
                                     RULE_CACHE const &rules);
    // The id under which an asset's fragment is or will be known; empty if there is no such file.
    static QString asset_fragment_id(LOGICAL_PATH const &asset, RULE_CACHE const &rules);
    static QTSHARED::ASSET_GRAPH *s_asset_graph;

    // What was told to the action, for the host and for tests.
    PROCESSOR_INTERFACE *processor() const { return planned_for; }
    QVector<ACTION_LINK> const &dependencies() const { return depends_on; }
    QVector<ACTION_LINK> const &pulls() const { return pulled; }
    QString const &error() const { return error_text; }  // empty: none
    QVector<ACTION_LINE> const &lines() const { return output_lines; }
    int progress_max() const { return progress_end; }
    int progress() const;     // any thread
    bool is_aborted() const;  // any thread

    int plan_index = -1;  // the host's: place in its plan

protected:
    explicit ACTION_INTERFACE(PROCESSOR_INTERFACE *planned_by) : planned_for(planned_by) {}
    ACTION_INTERFACE(ACTION_INTERFACE const &) = default;
    ACTION_INTERFACE &operator=(ACTION_INTERFACE const &) = default;

private:
    PROCESSOR_INTERFACE *planned_for;
    QVector<ACTION_LINK> depends_on;
    QVector<ACTION_LINK> pulled;
    QString error_text;
    QVector<ACTION_LINE> output_lines;
    int progress_end = 1;
    // Shared between threads; atomic in use, plain here because actions are copied while they are planned.
    alignas(4) mutable int progress_now = 0;
    alignas(4) mutable int abort_wanted = 0;
};

// An action that passes itself to libraries and succeeds unless an error line came out.
class HOST_API ACTION_TDB : public ACTION_INTERFACE, public PROGRESS_CALLBACK {
public:
    void reset() override;

    void output_line(QString const &line, int level) override { ACTION_INTERFACE::output_line(line, level); }
    bool add_progress(int amount) override { return ACTION_INTERFACE::add_progress(amount); }

protected:
    explicit ACTION_TDB(PROCESSOR_INTERFACE *planned_by) : ACTION_INTERFACE(planned_by) {}

    // Begins a run: what the libraries say on this thread (KN::message) becomes lines of this action until the host
    // takes the thread back, and lines count for the result from here on.
    void set_up_tdb_output();
    // FAILED if an error line (level 2) has come since, else DONE.
    STATUS get_status_by_output() const;

private:
    int first_line = 0;
};
