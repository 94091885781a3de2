#include "foundation/messages.h"

#include <atomic>
#include <cstdio>
#include <utility>

namespace KN {

namespace {

thread_local MessageSink *thread_sink = nullptr;
std::atomic<MessageSink *> process_sink = nullptr;

}  // namespace

MessageSink *set_thread_message_sink(MessageSink *sink) { return std::exchange(thread_sink, sink); }
MessageSink *set_process_message_sink(MessageSink *sink) { return process_sink.exchange(sink); }

void message(int level, String const &line)
{
    if (thread_sink != nullptr)
        thread_sink->message(line, level);
    else if (MessageSink *const sink = process_sink.load())
        sink->message(line, level);
    else if (level >= MESSAGE_WARNING)
        std::fprintf(stderr, "%s\n", printable(line).c_str());
}

void message_txt(String const &text)
{
    message(MESSAGE_INFORMATION, KN::String(text.substr(0, text.size() - text.ends_with('\n'))));
}

bool goes_on() { return thread_sink == nullptr || thread_sink->goes_on(); }

}  // namespace KN
