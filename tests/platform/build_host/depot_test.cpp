#include "platform/build_host/build_lock.h"
#include "platform/build_host/depot.h"

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace {

class DepotTest : public testing::Test {
protected:
    std::string journal() const
    {
        QFile file(folder.path() + "/depot.txt");
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "(none)";
    }
    QString path(char const *name) const { return folder.path() + '/' + name; }
    void write(char const *name)
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    std::string git(QStringList const &arguments) const
    {
        QProcess client;
        client.setWorkingDirectory(folder.path());
        client.start("git", arguments);
        client.waitForFinished();
        return client.readAllStandardOutput().toStdString();
    }
    QTemporaryDir folder;
};

TEST_F(DepotTest, TheJournalHasEachFileOnceWithWhatBecameOfIt)
{
    DEPOT depot({}, folder.path(), folder.path());
    QString fault;
    EXPECT_TRUE(depot.finish(fault));
    EXPECT_EQ(journal(), "(none)");
    depot.added(path("new"), false);
    depot.added(path("new"), true);
    depot.added(path("old"), true);
    depot.removed(path("gone"));
    depot.added(path("scratch"), false);
    depot.removed(path("scratch"));
    depot.removed(path("back"));
    depot.added(path("back"), false);
    EXPECT_TRUE(depot.finish(fault));
    EXPECT_EQ(journal(), "edit back\nremove gone\nadd new\nedit old\n");
}

TEST_F(DepotTest, ABuildThatWasKilledLeavesItsChangesToTheNext)
{
    {
        DEPOT killed({}, folder.path(), folder.path());
        killed.added(path("made"), false);
        killed.added(path("scratch"), false);
        killed.removed(path("scratch"));
        killed.removed(path("gone"));
    }
    DEPOT depot({}, folder.path(), folder.path());
    depot.added(path("made"), true);
    QString fault;
    EXPECT_TRUE(depot.finish(fault));
    EXPECT_EQ(journal(), "remove gone\nadd made\n");
    EXPECT_TRUE(DEPOT({}, folder.path(), folder.path()).finish(fault));
    EXPECT_EQ(journal(), "remove gone\nadd made\n");
}

// Names are arguments, never part of a command line.
TEST_F(DepotTest, GitStagesWhatCameChangedAndWent)
{
    git({"init", "-q"});
    write("gone");
    git({"add", "gone"});
    write("-n; touch x");
    DEPOT depot({"git", {}, {}, {}, {}}, folder.path(), folder.path());
    depot.added(path("-n; touch x"), false);
    depot.removed(path("gone"));
    QString fault;
    EXPECT_TRUE(depot.finish(fault)) << fault.toStdString();
    EXPECT_EQ(git({"ls-files"}), "-n; touch x\n");
}

TEST_F(DepotTest, AClientThatFailsIsNamedAndTheJournalStands)
{
    for (char const *program : {"false", "/nowhere/client"}) {
        SCOPED_TRACE(program);
        DEPOT depot({"command", program, {"add"}, {"edit"}, {"remove"}}, folder.path(), folder.path());
        depot.added(path("a"), false);
        QString fault;
        EXPECT_FALSE(depot.finish(fault));
        EXPECT_TRUE(fault.startsWith("depot: '" + QString(program) + " add' failed")) << fault.toStdString();
    }
    EXPECT_EQ(journal(), "add a\nadd a\n");
}

TEST_F(DepotTest, TheLockOfADeadProcessIsTakenOver)
{
    pid_t const child = ::fork();
    if (child == 0) {
        auto *const held = new BUILD_LOCK;  // never given back
        QString fault;
        ::_exit(held->take(folder.path(), fault) ? 0 : 1);
    }
    int status = 1;
    ::waitpid(child, &status, 0);
    ASSERT_EQ(status, 0);
    ASSERT_TRUE(QFile::exists(folder.path() + "/lock"));
    BUILD_LOCK lock;
    QString fault;
    EXPECT_TRUE(lock.take(folder.path(), fault)) << fault.toStdString();
}

}  // namespace
