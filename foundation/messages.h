// Messages of the libraries to whoever runs them. A line goes to the sink of the current thread (a build host installs
// the running action there), else to that of the process, else warnings and errors go to standard error.
#pragma once

#include "foundation/string.h"

namespace KN {

enum MESSAGE_LEVEL : int { MESSAGE_INFORMATION = 0, MESSAGE_WARNING = 1, MESSAGE_ERROR = 2 };

class MessageSink {
public:
    // One line without its end. May be called from any thread if the sink is that of the process.
    virtual void message(String const &line, int level) = 0;
    // False once the work of this thread is to end early.
    virtual bool goes_on() const { return true; }

protected:
    ~MessageSink() = default;
};

// Both give the sink that stood before; null takes the sink away. The sink outlives its installation.
FOUNDATION_API MessageSink *set_thread_message_sink(MessageSink *sink);
FOUNDATION_API MessageSink *set_process_message_sink(MessageSink *sink);

FOUNDATION_API void message(int level, String const &line);
// For information; a "\n" at the end of the text is taken off.
FOUNDATION_API void message_txt(String const &text);

// Asked in the loops of long work, some thousand times a second at most. False: whoever runs this thread's work wants
// it to end; the work then fails at once, and need not say why.
FOUNDATION_API bool goes_on();

}  // namespace KN
