#include "platform/build_host/depot.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>

namespace {

constexpr int paths_a_call = 500;             // what fits a command line with room to spare
constexpr int longest_call = 10 * 60 * 1000;  // ms

}  // namespace

DEPOT::DEPOT(DEPOT_SETTINGS told, QString project_folder, QString state)
    : settings(std::move(told)), project(std::move(project_folder)), state_folder(std::move(state))
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

void DEPOT::added(QString const &path, bool was_there_before)
{
    QString const name = QDir(project).relativeFilePath(path);
    std::lock_guard const guard(lock);
    auto const found = changes.find(name);
    if (found == changes.end())
        changes.insert(name, was_there_before ? CHANGE::EDIT : CHANGE::ADD);
    else if (*found == CHANGE::REMOVE)
        *found = CHANGE::EDIT;
}

void DEPOT::removed(QString const &path)
{
    QString const name = QDir(project).relativeFilePath(path);
    std::lock_guard const guard(lock);
    auto const found = changes.find(name);
    if (found != changes.end() && *found == CHANGE::ADD)
        changes.erase(found);
    else
        changes.insert(name, CHANGE::REMOVE);
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
    if (changes.isEmpty())
        return true;

    static QByteArray const words[] = {"add ", "edit ", "remove "};
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
    if (settings.program.isEmpty())
        return true;
    return call(settings.edit, paths[int(CHANGE::EDIT)], fault) && call(settings.add, paths[int(CHANGE::ADD)], fault) &&
           call(settings.remove, paths[int(CHANGE::REMOVE)], fault);
}
