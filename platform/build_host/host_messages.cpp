#include "Plugins/Vx2/host/host_messages.h"

#include "foundation/messages.h"

#include <QtCore/QThread>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

#include <utility>

namespace {
HOST_MESSAGES::SINK *installed = nullptr;
}

HOST_MESSAGES::SINK *HOST_MESSAGES::set_sink(SINK *sink) { return std::exchange(installed, sink); }

// Without an application for widgets, a box would end the process.
static bool can_show_boxes()
{
    auto const *const application = qobject_cast<QApplication *>(QCoreApplication::instance());
    return application && application->thread() == QThread::currentThread() && QGuiApplication::primaryScreen();
}

void HOST_MESSAGES::warning(QString const &title, QString const &text)
{
    if (installed) {
        installed->warning(title, text);
        return;
    }
    if (can_show_boxes()) {
        QMessageBox::warning(nullptr, title, text, QMessageBox::Ok);
        return;
    }
    QByteArray const line = (title + QStringLiteral(": ") + text).toUtf8();
    KN::message(KN::MESSAGE_WARNING, KN::String(std::string_view(line.constData(), std::size_t(line.size()))));
}
