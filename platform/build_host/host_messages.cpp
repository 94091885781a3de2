#include "Plugins/Vx2/host/host_messages.h"

#include "foundation/messages.h"

#include <utility>

namespace {
HOST_MESSAGES::SINK *installed = nullptr;
}

HOST_MESSAGES::SINK *HOST_MESSAGES::set_sink(SINK *sink) { return std::exchange(installed, sink); }

void HOST_MESSAGES::warning(QString const &title, QString const &text)
{
    if (installed) {
        installed->warning(title, text);
        return;
    }
    QByteArray const line = (title + QStringLiteral(": ") + text).toUtf8();
    KN::message(KN::MESSAGE_WARNING, KN::String(std::string_view(line.constData(), std::size_t(line.size()))));
}
