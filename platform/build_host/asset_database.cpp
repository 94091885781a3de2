#include "platform/build_host/asset_database.h"

#include "foundation/finished_file.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRandomGenerator>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlError>
#include <QtSql/QSqlQuery>
#include <QtSql/QSqlRecord>

#include <algorithm>
#include <atomic>
#include <utility>

using namespace ASSET_ROWS;

namespace {

// Where the identity of a SQLite file stands: the user version of its header, set once when the file is made.
constexpr int identity_offset = 60;

bool is_memory(DATABASE_SETTINGS const &settings) { return settings.name == QLatin1String(":memory:"); }

bool write_file(QString const &file, QString const &text, QString &fault)
{
    KN::String error;
    QDir().mkpath(QFileInfo(file).path());
    bool const good = KN::write_finished_file(KN::String(file.toStdString()), text.toStdString(), error);
    if (!good)
        fault = QString::fromStdString(error);
    return good;
}

}  // namespace

ASSET_DATABASE::ASSET_DATABASE(DATABASE_SETTINGS told, QString state)
    : settings(std::move(told)), state_folder(std::move(state))
{
    QFile list(changed_list());
    if (list.open(QIODevice::ReadOnly))
        marked = QString::fromUtf8(list.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

ASSET_DATABASE::~ASSET_DATABASE()
{
    {
        std::lock_guard const guard(lock);
        is_ending = true;
    }
    changed.notify_all();
    if (thread.joinable())
        thread.join();
}

bool ASSET_DATABASE::check(DATABASE_SETTINGS const &settings, QString &fault)
{
    if (settings.driver != QLatin1String("sqlite") && settings.driver != QLatin1String("postgresql"))
        fault = QStringLiteral("database driver '%1' is unknown; choose sqlite or postgresql").arg(settings.driver);
    else if (settings.name.isEmpty())
        fault = QStringLiteral("the database has no name; add name = \"...\"");
    return fault.isEmpty();
}

bool ASSET_DATABASE::open(QSqlDatabase &database, QString &fault) const
{
    bool const is_sqlite = settings.driver == QLatin1String("sqlite");
    database.setDatabaseName(settings.name);
    if (is_sqlite) {
        QDir().mkpath(QFileInfo(settings.name).path());
        database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=10000"));
    } else {
        database.setHostName(settings.host);
        database.setUserName(settings.user);
        if (settings.port != 0)
            database.setPort(settings.port);
        if (!settings.password_variable.isEmpty())
            database.setPassword(qEnvironmentVariable(settings.password_variable.toLatin1().constData()));
    }
    if (!database.open()) {
        fault = QStringLiteral("database %1 cannot be opened: %2")
                    .arg(settings.name, database.lastError().text().simplified());
        return false;
    }
    if (!is_sqlite)
        return true;

    QSqlQuery query(database);
    bool good = run(query, QStringLiteral("PRAGMA user_version"), {}, fault) && query.next();
    if (good && query.value(0).toInt() == 0) {
        int const identity = QRandomGenerator::system()->bounded(1, 0x7fffffff);
        good = run(query, QStringLiteral("PRAGMA user_version = %1").arg(identity), {}, fault);
    }
    // A row's transaction need not wait for the disk: after a power cut the file is sound and the rows are written
    // again with the models whose records are lost with them.
    return good && run(query, QStringLiteral("PRAGMA journal_mode = WAL"), {}, fault) &&
           run(query, QStringLiteral("PRAGMA synchronous = NORMAL"), {}, fault);
}

void ASSET_DATABASE::serve()
{
    static std::atomic<int> number = 0;
    QString const connection = QStringLiteral("assets%1").arg(++number);
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(
            settings.driver == QLatin1String("sqlite") ? QStringLiteral("QSQLITE") : QStringLiteral("QPSQL"),
            connection);
        QString open_fault;
        bool const is_open = open(database, open_fault);

        std::unique_lock guard(lock);
        for (;;) {
            changed.wait(guard, [&] { return waiting_work != nullptr || is_ending; });
            if (waiting_work == nullptr)
                break;
            work_fault = open_fault;
            work_result = is_open && (*waiting_work)(database, work_fault);
            waiting_work = nullptr;
            changed.notify_all();
        }
        database.close();
    }
    QSqlDatabase::removeDatabase(connection);
}

bool ASSET_DATABASE::on_thread(WORK const &work, QString &fault)
{
    std::lock_guard const one_caller(callers);
    std::unique_lock guard(lock);
    if (!thread.joinable())
        thread = std::thread([this] { serve(); });
    waiting_work = &work;
    changed.notify_all();
    changed.wait(guard, [&] { return waiting_work == nullptr; });
    if (!work_result)
        fault = work_fault;
    return work_result;
}

QString ASSET_DATABASE::identity()
{
    if (settings.driver != QLatin1String("sqlite"))
        return QStringLiteral("%1 %2 %3 %4")
            .arg(settings.driver, settings.host, settings.name, QString::number(settings.port));
    QString fault;
    if (may_make && !is_memory(settings) && !QFile::exists(settings.name))
        on_thread([](QSqlDatabase &, QString &) { return true; }, fault);  // a fault comes with the first row
    QFile file(settings.name);
    QByteArray mark;
    if (!is_memory(settings) && file.open(QIODevice::ReadOnly) && file.seek(identity_offset))
        mark = file.read(4).toHex();
    return QStringLiteral("sqlite %1 %2").arg(settings.name, QString::fromLatin1(mark));
}

// The list is written before the change is: an export too many does no harm, one too few would.
bool ASSET_DATABASE::mark_changed(QString const &table, QString &fault)
{
    std::lock_guard const guard(lists);
    auto const wanted = wanted_exports.constFind(table);
    if (wanted == wanted_exports.constEnd())
        return true;
    QString const line = table + (*wanted ? QStringLiteral(" 1") : QStringLiteral(" 0"));
    if (marked.contains(line))
        return true;
    marked += line;
    return is_memory(settings) || write_file(changed_list(), marked.join(QLatin1Char('\n')), fault);
}

void ASSET_DATABASE::announce(UPDATE_DB_TABLE const &table)
{
    QString fault;  // told when the rows come
    on_thread(
        [&](QSqlDatabase &database, QString &why) {
            return check_name(table.name, why) &&
                   std::all_of(table.rows.begin(), table.rows.end(), [&](DB_ROW const &row) {
                       return reserve_key(database, table.name, row, reserved[table.name], why);
                   });
        },
        fault);
}

bool ASSET_DATABASE::apply(UPDATE_DB_TABLE const &table, QString const &key, bool patch, QString &fault)
{
    if (table.flags[2])
        want_export(table.name, table.flags[3]);
    QVector<REMOVAL> removals;
    {
        std::lock_guard const guard(lists);
        std::copy_if(staged.begin(), staged.end(), std::back_inserter(removals),
                     [&](REMOVAL const &removal) { return removal.key == key; });
    }
    bool const good = on_thread(
        [&](QSqlDatabase &database, QString &why) {
            if (!database.transaction()) {
                why = QStringLiteral("database: %1").arg(database.lastError().text().simplified());
                return false;
            }
            bool done = true;
            for (REMOVAL const &removal : removals) {
                QSqlQuery query(database);
                QString const column = removal.folded ? QStringLiteral("lower(%1)") : QStringLiteral("%1");
                done = done && mark_changed(removal.table, why) &&
                       run(query,
                           QStringLiteral("DELETE FROM %1 WHERE %2 = ?")
                               .arg(quoted(removal.table), column.arg(quoted(removal.column))),
                           {removal.folded ? removal.value.toLower() : removal.value}, why);
            }
            bool has_changed = false;
            done = done && apply_rows(database, table, patch, reserved[table.name], has_changed, why) &&
                   (!has_changed || mark_changed(table.name, why));
            if (done && database.commit())
                return true;
            if (why.isEmpty())
                why = QStringLiteral("database: %1").arg(database.lastError().text().simplified());
            database.rollback();
            return false;
        },
        fault);
    if (good && !removals.isEmpty()) {
        std::lock_guard const guard(lists);
        staged.erase(
            std::remove_if(staged.begin(), staged.end(), [&](REMOVAL const &removal) { return removal.key == key; }),
            staged.end());
    }
    return good;
}

bool ASSET_DATABASE::remove(QString const &key, QString const &table, QString const &column, QString const &value,
                            bool folded, bool dry_run, bool &found, QString &fault)
{
    if (!check_name(table, fault) || !check_name(column, fault))
        return false;
    bool has_rows = false;
    bool const good = on_thread(
        [&](QSqlDatabase &database, QString &why) {
            QSqlRecord const columns = database.record(table);
            if (columns.isEmpty())
                return !database.tables().contains(table);  // a table that is still to come has no rows
            if (!columns.contains(column)) {
                why = QStringLiteral("database: table %1 has no column '%2'").arg(table, column);
                return false;
            }
            QSqlQuery query(database);
            QString const folding = folded ? QStringLiteral("lower(%1)") : QStringLiteral("%1");
            if (!run(query,
                     QStringLiteral("SELECT 1 FROM %1 WHERE %2 = ?").arg(quoted(table), folding.arg(quoted(column))),
                     {folded ? value.toLower() : value}, why))
                return false;
            has_rows = query.next();
            return true;
        },
        fault);
    if (!good || !has_rows)
        return good;
    if (dry_run) {
        found = true;
        return true;
    }
    std::lock_guard const guard(lists);
    staged.append({key, table, column, value, folded});
    return true;
}

void ASSET_DATABASE::want_export(QString const &table, bool book)
{
    std::lock_guard const guard(lists);
    wanted_exports[table] |= book;
}

bool ASSET_DATABASE::finish(QStringList &booked, QString &fault)
{
    {
        std::lock_guard const guard(lock);
        reserved.clear();
    }
    std::lock_guard const guard(lists);
    staged.clear();
    wanted_exports.clear();
    while (!marked.isEmpty()) {
        QString const table = marked.last().section(QLatin1Char(' '), 0, 0);
        QString const file = settings.export_folder + QLatin1Char('/') + table + QStringLiteral(".txt");
        QString text;
        bool const good = on_thread(
            [&](QSqlDatabase &database, QString &why) { return read_table(database, table, text, why); }, fault);
        if (!good || !write_file(file, text, fault))
            return false;
        if (marked.last().endsWith(QLatin1String(" 1")))
            booked += file;
        marked.removeLast();
    }
    if (!is_memory(settings))
        QFile::remove(changed_list());
    return true;
}

bool ASSET_DATABASE::tables(QStringList &names, QString &fault)
{
    return on_thread(
        [&](QSqlDatabase &database, QString &) {
            names = database.tables();
            names.sort();
            return true;
        },
        fault);
}

bool ASSET_DATABASE::table_text(QString const &table, QString &text, QString &fault)
{
    return on_thread([&](QSqlDatabase &database, QString &why) { return read_table(database, table, text, why); },
                     fault);
}
