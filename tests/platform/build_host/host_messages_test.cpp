#include "Plugins/Vx2/host/host_messages.h"

#include "foundation/messages.h"

#include <QtCore/QTimer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

struct RECORDING_SINK final : KN::MessageSink {
    RECORDING_SINK() : before(KN::set_thread_message_sink(this)) {}
    ~RECORDING_SINK() { KN::set_thread_message_sink(before); }
    void message(KN::String const &line, int level) override { lines.push_back(std::to_string(level) + " " + line); }

    KN::MessageSink *before;
    std::vector<std::string> lines;
};

using LINES = std::vector<std::string>;

}  // namespace

TEST(HostMessages, WarningsAreLinesWithoutAnApplicationAndBoxesWithOne)
{
    LINES const printed = {"1 Animation: 100%1 wrong"};
    RECORDING_SINK sink;
    HOST_MESSAGES::warning("Animation", "100%1 wrong");
    EXPECT_EQ(sink.lines, printed);

    qputenv("QT_QPA_PLATFORM", "offscreen");
    int count = 1;
    char name[] = "test", *arguments[] = {name, nullptr};
    QApplication application(count, arguments);
    LINES shown;
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
        auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        shown.push_back((box->windowTitle() + "|" + box->text()).toStdString());
        EXPECT_EQ(box->standardButtons(), QMessageBox::Ok);
        EXPECT_FALSE(box->parent());
        box->accept();
    });
    user.start(1);
    HOST_MESSAGES::warning("Animation", "100%1 wrong");
    EXPECT_EQ(shown, LINES{"Animation|100%1 wrong"});
    EXPECT_EQ(sink.lines, printed);  // and no line beside the box

    // Boxes belong to the application's thread.
    std::thread([&] {
        RECORDING_SINK own;
        HOST_MESSAGES::warning("Animation", "100%1 wrong");
        EXPECT_EQ(own.lines, printed);
    }).join();
    EXPECT_EQ(shown.size(), 1u);
}
