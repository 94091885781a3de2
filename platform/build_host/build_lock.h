// One build at a time in a tree. The lock is a file of the tree's state folder that names its holder; that of a process
// which has died without giving it back is taken over.
#pragma once

#include "Plugins/Vx2/host/api.h"

#include <QtCore/QString>

#include <memory>

class QLockFile;

class HOST_API BUILD_LOCK {
public:
    BUILD_LOCK();
    ~BUILD_LOCK();  // gives the lock back
    BUILD_LOCK(BUILD_LOCK const &) = delete;
    BUILD_LOCK &operator=(BUILD_LOCK const &) = delete;

    // At once: true, or false with a line in `fault` that names the holder. The folder must stand.
    bool take(QString const &state_folder, QString &fault);
    void give_back();

private:
    std::unique_ptr<QLockFile> file;
};

// Whether a process of that number runs on this machine.
bool process_lives(int process);
