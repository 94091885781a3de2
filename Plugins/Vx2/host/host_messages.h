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

// Goes to the sink, if there is one. Else a box, and the call waits for the user, where the process has an application
// for widgets and a screen; without them, or on another thread than the application's, a warning (KN::message) of the
// same text behind its title.
HOST_API void warning(QString const &title, QString const &text);

// Gives the sink that stood before; null takes it away. One thread.
HOST_API SINK *set_sink(SINK *sink);

}  // namespace HOST_MESSAGES
