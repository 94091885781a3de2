// What a build shows while it runs: on a terminal one line that changes, in a pipe a line an action, for tools a JSON
// object an event, or nothing but what went wrong.
#pragma once

#include "apps/mox/commands.h"
#include "platform/build_host/run_hooks.h"

#include <chrono>
#include <map>

class DISPLAY final : public RUN_DISPLAY {
public:
    explicit DISPLAY(OPTIONS const &options);

    void run_begins(int scheduled, int planned) override;
    void action_begins(PLANNED_ACTION const &action, QString const &reason) override;
    void action_ends(PLANNED_ACTION const &action, int status) override;
    void line(PLANNED_ACTION const &action, QString const &text, int level) override;

    // The last line of a build. `result_word`: "done", "failed" or "interrupted".
    void summary(QString const &result_word, int done, int failed, int left_out, int up_to_date);
    int warnings() const { return warning_count; }

private:
    enum class FORM { TERMINAL, LINES, JSON, QUIET };

    void show_progress();
    void clear_progress();

    FORM form;
    int total = 0;
    int ended = 0;
    int warning_count = 0;
    bool has_progress = false;
    struct RUNNING {
        QString name;
        std::chrono::steady_clock::time_point start;
    };
    std::map<int, RUNNING> running;  // by index in the plan
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point shown{};
};
