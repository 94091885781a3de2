#include "platform/build_host/build_lock.h"

#include <QtCore/QLockFile>

#include <cerrno>

#include <signal.h>

bool process_lives(int process) { return ::kill(process, 0) == 0 || errno == EPERM; }

BUILD_LOCK::BUILD_LOCK() = default;
BUILD_LOCK::~BUILD_LOCK() = default;

void BUILD_LOCK::give_back() { file.reset(); }

bool BUILD_LOCK::take(QString const &state_folder, QString &fault)
{
    QString const name = state_folder + QStringLiteral("/lock");
    file = std::make_unique<QLockFile>(name);
    file->setStaleLockTime(0);  // a long build is not a dead one; whether the holder lives is tested all the same
    if (file->tryLock(0))
        return true;

    qint64 process = 0;
    QString machine, program;
    if (file->error() == QLockFile::LockFailedError && file->getLockInfo(&process, &machine, &program))
        fault =
            QStringLiteral("%1: another build of this tree is running (%2, process %3 on %4); wait for it or end it")
                .arg(name, program, QString::number(process), machine);
    else
        fault = QStringLiteral("%1: the lock of this tree cannot be taken; is the folder writable?").arg(name);
    file.reset();
    return false;
}
