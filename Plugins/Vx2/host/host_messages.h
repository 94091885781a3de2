// Messages of planning to the user.
#pragma once

#include "Plugins/Vx2/host/api.h"

#include <QtCore/QString>

namespace HOST_MESSAGES {

class SINK {
public:
    virtual void warning(QString const &title, QString const &text) = 0;

protected:
    ~SINK() = default;
};

// Goes to the sink; a host with windows shows a box and waits, a host without them prints. Without a sink: a line on
// standard error.
HOST_API void warning(QString const &title, QString const &text);

// Gives the sink that stood before; null takes it away. One thread.
HOST_API SINK *set_sink(SINK *sink);

}  // namespace HOST_MESSAGES
