#include "support/report/frame_report.h"

#include "foundation/file.h"
#include "support/report/text_form.h"

#include <algorithm>
#include <cmath>

namespace SUPPORT {

namespace {

constexpr double per_second = 1e6;  // microseconds
constexpr double in_milliseconds = 0.001;

void add_samples(FRAME_SAMPLES const &times, char const *title, KN::String &text)
{
    std::uint32_t const count = std::min(times.count, times.samples.count);
    if (count == 0)
        return;
    std::uint32_t const mean = times.sum / times.count;
    auto const [least, greatest] = std::minmax_element(times.samples.begin(), times.samples.begin() + count);
    double squares = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        double const away = double(times.samples[i] - mean) * in_milliseconds;
        squares += away * away;
    }
    KN::String const rule(80, '=');
    text += rule + "\n\n" + title + "\n\n";
    text += text_form("# frames: %u\n\n", times.count);
    text += text_form("frames per second:\n   mean %.1f\n   min  %.1f\n   max  %.1f\n\n",
                      times.count * per_second / times.sum, per_second / *greatest, per_second / *least);
    text += text_form("frame times (ms):\n   mean    %.1f\n   min     %.1f\n   max     %.1f\n   std dev %.1f\n\n",
                      mean * in_milliseconds, *least * in_milliseconds, *greatest * in_milliseconds,
                      std::sqrt(squares / times.count));
    text += "individual frame times (ms):\n";
    for (std::uint32_t i = 0; i < count; ++i)
        text += text_form(i == 0 ? "%.1f" : ", %.1f", times.samples[i] * in_milliseconds);
    text += "\n" + rule + "\n\n";
}

}  // namespace

KN::String frame_report_text(FRAME_REPORT const &report)
{
    KN::String text;
    add_samples(report.frame, "Frame time", text);
    add_samples(report.main_thread, "CPU main thread time", text);
    add_samples(report.render_thread, "CPU render thread time", text);
    add_samples(report.threads_and_sync, "CPU max of main and render thread plus sync time", text);
    add_samples(report.gpu, "GPU time", text);
    return text;
}

void write_frame_report(FRAME_REPORT const &report, KN::String const &file_name)
{
    KN::FileOut file;
    if (!file.open(file_name, false, false))
        return;
    KN::String const text = frame_report_text(report);
    file.write(text.data(), unsigned(text.size()));
    file.close();
}

}  // namespace SUPPORT
