#include "platform/build_host/depot.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>

#include <utility>

namespace {

constexpr int paths_a_call = 500;             // what fits a command line with room to spare
constexpr int longest_call = 10 * 60 * 1000;  // ms

QByteArray const words[] = {"add ", "edit ", "remove "};
QByteArray const forgotten = "forget ";  // only while a build runs

}  // namespace

DEPOT::DEPOT(DEPOT_SETTINGS told, QString project_folder, QString state)
    : settings(std::move(told)), project(std::move(project_folder)), state_folder(std::move(state)),
      pending(state_folder + QStringLiteral("/depot_pending.txt"))
{
    if (settings.kind == QLatin1String("git")) {
        settings.program = settings.kind;
        settings.add = settings.edit =
            QStringList{QStringLiteral("add"), QStringLiteral("--force"), QStringLiteral("--")};
        settings.remove = QStringList{QStringLiteral("rm"), QStringLiteral("--cached"), QStringLiteral("--quiet"),
                                      QStringLiteral("--ignore-unmatch"), QStringLiteral("--")};
    } else if (settings.kind == QLatin1String("p4")) {
        settings.program = settings.kind;
        settings.add = QStringList{QStringLiteral("add")};
        settings.edit = QStringList{QStringLiteral("edit")};
        settings.remove = QStringList{QStringLiteral("delete")};
    }
}

bool DEPOT::check(DEPOT_SETTINGS const &settings, QString &fault)
{
    static QStringList const kinds = {QStringLiteral("none"), QStringLiteral("git"), QStringLiteral("p4"),
                                      QStringLiteral("command")};
    if (!kinds.contains(settings.kind))
        fault = QStringLiteral("depot kind '%1' is unknown; choose none, git, p4 or command").arg(settings.kind);
    else if (settings.kind == QLatin1String("command") && settings.program.isEmpty())
        fault = QStringLiteral("depot kind 'command' names no program; add program = \"...\"");
    return fault.isEmpty();
}

// Only a build that holds the lock of the tree changes anything, so the lines are those of one that has ended.
void DEPOT::recover()
{
    if (std::exchange(has_recovered, true) || !pending.open(QIODevice::ReadOnly))
        return;
    for (QByteArray const &line : pending.readAll().split('\n')) {
        if (line.startsWith(forgotten))
            changes.remove(QString::fromUtf8(line.mid(forgotten.size())));
        for (CHANGE const change : {CHANGE::ADD, CHANGE::EDIT, CHANGE::REMOVE})
            if (QByteArray const &word = words[int(change)]; line.startsWith(word))
                changes.insert(QString::fromUtf8(line.mid(word.size())), change);
    }
    pending.close();
}

// Null: the file is forgotten. Without a pending list, a kill alone would be noticed.
void DEPOT::note(CHANGE const *change, QString const &name)
{
    if (pending.isOpen() || pending.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
        pending.write((change != nullptr ? words[int(*change)] : forgotten) + name.toUtf8() + '\n');
}

void DEPOT::added(QString const &path, bool was_there_before)
{
    QString const name = QDir(project).relativeFilePath(path);
    std::lock_guard const guard(lock);
    recover();
    auto found = changes.find(name);
    if (found == changes.end())
        found = changes.insert(name, was_there_before ? CHANGE::EDIT : CHANGE::ADD);
    else if (*found == CHANGE::REMOVE)
        *found = CHANGE::EDIT;
    else
        return;
    note(&*found, name);
}

void DEPOT::removed(QString const &path)
{
    QString const name = QDir(project).relativeFilePath(path);
    std::lock_guard const guard(lock);
    recover();
    auto const found = changes.find(name);
    if (found != changes.end() && *found == CHANGE::ADD) {
        changes.erase(found);
        note(nullptr, name);
    } else {
        note(&*changes.insert(name, CHANGE::REMOVE), name);
    }
}

bool DEPOT::call(QStringList const &arguments, QStringList const &paths, QString &fault) const
{
    for (int first = 0; first < paths.size() && !arguments.isEmpty(); first += paths_a_call) {
        QProcess client;
        client.setWorkingDirectory(project);
        client.setProcessChannelMode(QProcess::MergedChannels);
        client.start(settings.program, arguments + paths.mid(first, paths_a_call));
        bool const ended = client.waitForFinished(longest_call);
        if (!ended || client.exitStatus() != QProcess::NormalExit || client.exitCode() != 0) {
            QString const said = QString::fromLocal8Bit(client.readAll()).section(QLatin1Char('\n'), 0, 0).trimmed();
            fault = QStringLiteral("depot: '%1 %2' failed: %3; the files are listed in %4/depot.txt")
                        .arg(settings.program, arguments.first(), ended ? said : client.errorString(), state_folder);
            return false;
        }
    }
    return true;
}

bool DEPOT::finish(QString &fault)
{
    std::lock_guard const guard(lock);
    recover();
    if (changes.isEmpty())
        return true;

    QByteArray lines;
    QStringList paths[3];
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        lines += words[int(*change)] + change.key().toUtf8() + '\n';
        paths[int(*change)] += change.key();
    }
    changes.clear();

    QFile journal(state_folder + QStringLiteral("/depot.txt"));
    if (!journal.open(QIODevice::WriteOnly | QIODevice::Append) || journal.write(lines) != lines.size() ||
        !journal.flush()) {
        fault = QStringLiteral("%1: cannot be written: %2").arg(journal.fileName(), journal.errorString());
        return false;
    }
    journal.close();
    pending.close();
    pending.remove();
    if (settings.program.isEmpty())
        return true;
    return call(settings.edit, paths[int(CHANGE::EDIT)], fault) && call(settings.add, paths[int(CHANGE::ADD)], fault) &&
           call(settings.remove, paths[int(CHANGE::REMOVE)], fault);
}
