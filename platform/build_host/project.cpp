#include "platform/build_host/project.h"

#include "platform/build_host/did_you_mean.h"
#include "platform/build_host/toml_node.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

namespace {

// Reads a table of mox.toml into fields: each key that the table may have stands beside the field that receives it.
class TABLE_READER {
public:
    struct FIELD {
        char const *key;
        QString *text = nullptr;
        QStringList *texts = nullptr;
        int *number = nullptr;
    };

    TABLE_READER(TOML_NODE const &root, QStringList &found_faults) : top(root), faults(found_faults) {}

    void read(char const *table, std::initializer_list<FIELD> fields)
    {
        TOML_NODE const *const node = top.find(QLatin1String(table));
        if (!node)
            return;
        if (node->kind != TOML_NODE::TABLE) {
            fail(*node, QStringLiteral("%1 is a table; write [%1]").arg(QLatin1String(table)));
            return;
        }
        for (TOML_NODE const &item : node->items)
            read_item(table, item, fields);
    }

    void fail(TOML_NODE const &at, QString const &what)
    {
        faults.append(QStringLiteral("mox.toml:%1: %2").arg(QString::number(at.line), what));
    }

private:
    void read_item(char const *table, TOML_NODE const &item, std::initializer_list<FIELD> fields)
    {
        QStringList known;
        for (FIELD const &field : fields) {
            known.append(QLatin1String(field.key));
            if (item.key != QLatin1String(field.key))
                continue;
            if (field.text && item.is_text())
                *field.text = item.value.toString();
            else if (field.number && item.is_number() && item.value.toLongLong() >= 0 &&
                     item.value.toLongLong() < 65536)
                *field.number = item.value.toInt();
            else if (!(field.texts && item.read_texts(*field.texts)))
                fail(item, QStringLiteral("%1 is %2")
                               .arg(item.key, field.text    ? "a text"
                                              : field.texts ? "a list of texts"
                                                            : "a number below 65536"));
            return;
        }
        fail(item,
             QStringLiteral("[%1] has no '%2'%3").arg(QLatin1String(table), item.key, did_you_mean(item.key, known)));
    }

    TOML_NODE const &top;
    QStringList &faults;
};

QString below(QString const &folder, QString const &path)
{
    return QDir::cleanPath(QDir(folder).absoluteFilePath(path));
}

void check_roots(PROJECT const &project, QStringList &faults)
{
    struct NAMED {
        char const *key;
        QString const &folder;
    } const named[] = {{"raw", project.roots.raw},
                       {"old_raw", project.roots.old_raw},
                       {"working", project.roots.working},
                       {"old_working", project.roots.old_working}};
    for (NAMED const &a : named) {
        for (NAMED const &b : named)
            if (&a != &b && (a.folder == b.folder || a.folder.startsWith(b.folder + QLatin1Char('/'))))
                faults.append(
                    QStringLiteral(
                        "mox.toml: the folder '%1' of %2 is or lies in that of %3; give them folders of their own")
                        .arg(a.folder, QLatin1String(a.key), QLatin1String(b.key)));
        if (a.folder.size() < 2)
            faults.append(
                QStringLiteral("mox.toml: %1 cannot be the root of the file system").arg(QLatin1String(a.key)));
    }
}

}  // namespace

TREE_ROOTS usual_roots(QString const &folder)
{
    return {folder + QStringLiteral("/raw_data"), folder + QStringLiteral("/old_raw_data"),
            folder + QStringLiteral("/working_data"), folder + QStringLiteral("/old_working_data")};
}

QString find_project(QString const &folder)
{
    for (QDir at(folder);;) {
        if (QFile::exists(at.filePath(QStringLiteral("mox.toml"))))
            return at.absolutePath();
        if (!at.cdUp())
            return {};
    }
}

bool read_project(QString const &folder, PROJECT &project, QStringList &faults)
{
    int const before = faults.size();
    project = PROJECT();
    project.folder = QDir(folder).absolutePath();

    QFile file(project.folder + QStringLiteral("/mox.toml"));
    if (!file.open(QIODevice::ReadOnly)) {
        faults.append(QStringLiteral("%1: cannot be read; 'mox init' makes one").arg(file.fileName()));
        return false;
    }
    TOML_NODE root;
    QString fault;
    if (!read_toml(file.read(largest_toml + 1), QStringLiteral("mox.toml"), root, fault)) {
        faults.append(fault);
        return false;
    }

    TREE_ROOTS roots = {QStringLiteral("raw_data"), QStringLiteral("old_raw_data"), QStringLiteral("working_data"),
                        QStringLiteral("old_working_data")};
    QString export_folder = QStringLiteral("database");
    TABLE_READER reader(root, faults);
    reader.read("paths", {{.key = "raw", .text = &roots.raw},
                          {.key = "old_raw", .text = &roots.old_raw},
                          {.key = "working", .text = &roots.working},
                          {.key = "old_working", .text = &roots.old_working}});
    reader.read("plug_ins", {{.key = "files", .texts = &project.plug_ins}});
    reader.read("database", {{.key = "driver", .text = &project.database.driver},
                             {.key = "name", .text = &project.database.name},
                             {.key = "host", .text = &project.database.host},
                             {.key = "port", .number = &project.database.port},
                             {.key = "user", .text = &project.database.user},
                             {.key = "password_variable", .text = &project.database.password_variable},
                             {.key = "export_folder", .text = &export_folder}});
    reader.read("depot", {{.key = "kind", .text = &project.depot.kind},
                          {.key = "program", .text = &project.depot.program},
                          {.key = "add", .texts = &project.depot.add},
                          {.key = "edit", .texts = &project.depot.edit},
                          {.key = "remove", .texts = &project.depot.remove}});

    project.roots = {below(project.folder, roots.raw), below(project.folder, roots.old_raw),
                     below(project.folder, roots.working), below(project.folder, roots.old_working)};
    check_roots(project, faults);
    for (QString &plug_in : project.plug_ins)
        plug_in = below(project.folder, plug_in);
    project.state_folder = project.roots.working + QStringLiteral("/.mox");
    if (project.database.driver == QLatin1String("sqlite"))
        project.database.name = below(project.folder, project.database.name.isEmpty()
                                                          ? project.roots.working + QStringLiteral("/assets.sqlite")
                                                          : project.database.name);
    // The tables as text belong to the working tree, so that they can be booked.
    project.database.export_folder = below(project.roots.working, export_folder);
    if (!project.database.export_folder.startsWith(project.roots.working + QLatin1Char('/')))
        faults.append(QStringLiteral("mox.toml: export_folder '%1' lies outside the working tree").arg(export_folder));
    if (!ASSET_DATABASE::check(project.database, fault) || !DEPOT::check(project.depot, fault))
        faults.append(QStringLiteral("mox.toml: ") + fault);
    return faults.size() == before;
}
