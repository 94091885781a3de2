#include "apps/mox/display.h"

#include <nlohmann/json.hpp>

#include <cstdio>

#include <unistd.h>

namespace {

using JSON = nlohmann::ordered_json;

std::string utf8(QString const &text) { return text.toStdString(); }

void print_event(JSON const &event)
{
    std::string const line = event.dump(-1, ' ', false, JSON::error_handler_t::replace) + "\n";
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fflush(stdout);
}

char const *status_word(int status)
{
    return status == ACTION_INTERFACE::DONE ? "done" : status == ACTION_INTERFACE::FAILED ? "failed" : "left out";
}

double seconds_since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

QString clock_text(double seconds)
{
    int const whole = int(seconds + 0.5);
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

}  // namespace

DISPLAY::DISPLAY(OPTIONS const &options)
    : form(options.json              ? FORM::JSON
           : options.quiet           ? FORM::QUIET
           : ::isatty(STDOUT_FILENO) ? FORM::TERMINAL
                                     : FORM::LINES)
{}

void DISPLAY::run_begins(int scheduled, int planned)
{
    total = scheduled;
    if (form == FORM::JSON)
        print_event({{"event", "begin"}, {"scheduled", scheduled}, {"planned", planned}});
}

void DISPLAY::action_begins(PLANNED_ACTION const &action, QString const &reason)
{
    RUNNING &now = running[action.index];
    now = {action.action->get_name(true), std::chrono::steady_clock::now()};
    if (form == FORM::JSON)
        print_event({{"event", "start"},
                     {"action", action.index},
                     {"class", utf8(action.class_name)},
                     {"name", utf8(now.name)},
                     {"reason", utf8(reason)}});
    else if (form == FORM::TERMINAL)
        show_progress();
}

void DISPLAY::action_ends(PLANNED_ACTION const &action, int status)
{
    ++ended;
    auto const begun = running.find(action.index);  // not there if the action was left out
    double const seconds = begun == running.end() ? 0 : seconds_since(begun->second.start);
    running.erase(action.index);
    QString const name = action.action->get_name(true);
    bool const is_bad = status != ACTION_INTERFACE::DONE;
    if (form == FORM::JSON) {
        print_event(
            {{"event", "end"}, {"action", action.index}, {"status", status_word(status)}, {"seconds", seconds}});
    } else if (form == FORM::LINES || (is_bad && form == FORM::TERMINAL)) {
        clear_progress();
        print_line(QStringLiteral("[%1/%2] %3%4")
                       .arg(ended)
                       .arg(total)
                       .arg(name, is_bad ? QStringLiteral(": %1").arg(QLatin1String(status_word(status))) : QString()));
    }
    if (form == FORM::TERMINAL)
        show_progress();
}

void DISPLAY::line(PLANNED_ACTION const &action, QString const &text, int level)
{
    warning_count += level == 1;
    if (form == FORM::JSON) {
        print_event({{"event", "line"}, {"action", action.index}, {"level", level}, {"text", utf8(text)}});
        return;
    }
    if (level == 0 || (level == 1 && form == FORM::QUIET))
        return;
    clear_progress();
    QString const head =
        action.action->get_name(true) + (level == 1 ? QStringLiteral(": warning: ") : QStringLiteral(": "));
    for (QString const &part : text.split(QLatin1Char('\n')))
        print_error(head + part);
    if (form == FORM::TERMINAL)
        show_progress();
}

// At most ten times a second: a terminal is slower than a small action.
void DISPLAY::show_progress()
{
    auto const now = std::chrono::steady_clock::now();
    if (now - shown < std::chrono::milliseconds(100))
        return;
    shown = now;
    QString text = QStringLiteral("[%1/%2]").arg(ended).arg(total);
    double const seconds = std::chrono::duration<double>(now - start).count();
    if (ended > 0 && seconds > 2)
        text += QStringLiteral(" %1 left").arg(clock_text(seconds / ended * (total - ended)));
    for (auto const &[index, action] : running)
        text += QStringLiteral("  ") + action.name;
    constexpr int width = 100;  // columns; names beyond are cut
    std::fputs(("\r\033[K" + utf8(text.left(width))).c_str(), stdout);
    std::fflush(stdout);
    has_progress = true;
}

void DISPLAY::clear_progress()
{
    if (has_progress)
        std::fputs("\r\033[K", stdout);
    has_progress = false;
    shown = {};
}

void DISPLAY::summary(QString const &result_word, int done, int failed, int left_out, int up_to_date)
{
    double const seconds = seconds_since(start);
    clear_progress();
    if (form == FORM::JSON) {
        print_event({{"event", "summary"},
                     {"result", utf8(result_word)},
                     {"done", done},
                     {"failed", failed},
                     {"left_out", left_out},
                     {"up_to_date", up_to_date},
                     {"warnings", warning_count},
                     {"seconds", seconds}});
        return;
    }
    if (form == FORM::QUIET)
        return;
    QString text = QStringLiteral("%1: %2 actions run, %3 up to date").arg(result_word).arg(done).arg(up_to_date);
    if (failed != 0)
        text += QStringLiteral(", %1 failed").arg(failed);
    if (left_out != 0)
        text += QStringLiteral(", %1 left out").arg(left_out);
    if (warning_count != 0)
        text += QStringLiteral(", %1 warnings").arg(warning_count);
    print_line(text + QStringLiteral(", %1 s").arg(seconds, 0, 'f', 2));
}
