// While it lives, what libraries say on this thread becomes lines of an action.
#pragma once

#include "Plugins/Vx2/host/action.h"
#include "foundation/messages.h"

class ACTION_OUTPUT_SCOPE {
public:
    explicit ACTION_OUTPUT_SCOPE(ACTION_INTERFACE &action);
    ~ACTION_OUTPUT_SCOPE();
    ACTION_OUTPUT_SCOPE(ACTION_OUTPUT_SCOPE const &) = delete;
    ACTION_OUTPUT_SCOPE &operator=(ACTION_OUTPUT_SCOPE const &) = delete;

private:
    ACTION_INTERFACE *before;
    KN::MessageSink *sink_before;
};
