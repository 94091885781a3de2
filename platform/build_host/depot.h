// What the build tells the version control of the tree: which products came, changed and went. Files are collected
// while actions run and handed over at the end of the run, each once, in order of their paths.
#pragma once

#include "Plugins/Vx2/host/api.h"

#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <mutex>

// How mox.toml describes the depot.
struct DEPOT_SETTINGS {
    QString kind = QStringLiteral("none");  // none: the journal alone; git; p4; command
    // For `command`: one program and the arguments in front of the paths, for each of the three changes. A change
    // whose arguments are empty is not told.
    QString program;
    QStringList add, edit, remove;
};

class HOST_API DEPOT {
public:
    // `state_folder` takes the journal, depot.txt: lines "add PATH", "edit PATH", "remove PATH", paths relative to
    // `project`, which is also where a client program runs.
    DEPOT(DEPOT_SETTINGS settings, QString project, QString state_folder);

    // From any thread. `path` is physical. Adding a file that was removed in the same run makes it edited; removing
    // one that was added in it forgets it.
    void added(QString const &path, bool was_there_before);
    void removed(QString const &path);

    // Writes the journal, also of what a build that was killed has left, and calls the client. False with the reason in
    // `fault`; the products stand all the same.
    bool finish(QString &fault);

    // The settings, as one line for messages, or what is wrong with them.
    static bool check(DEPOT_SETTINGS const &settings, QString &fault);

private:
    enum class CHANGE { ADD, EDIT, REMOVE };

    void recover();
    void note(CHANGE const *change, QString const &name);
    bool call(QStringList const &arguments, QStringList const &paths, QString &fault) const;

    DEPOT_SETTINGS settings;
    QString project;
    QString state_folder;
    std::mutex lock;
    QMap<QString, CHANGE> changes;  // by path relative to the project
    // Keeps the changes, one a line, until they are in the journal: a build that is killed leaves them to the next.
    QFile pending;
    bool has_recovered = false;
};
