#include "platform/build_host/asset_database.h"

#include "foundation/finished_file.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRandomGenerator>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlError>
#include <QtSql/QSqlIndex>
#include <QtSql/QSqlQuery>
#include <QtSql/QSqlRecord>

#include <algorithm>
#include <atomic>
#include <utility>

namespace {

// Where the identity of a SQLite file stands: the user version of its header, set once when the file is made.
constexpr int identity_offset = 60;

bool is_memory(DATABASE_SETTINGS const &settings) { return settings.name == QLatin1String(":memory:"); }

bool is_name(QString const &text)
{
    auto const is_letter = [](QChar c) { return (c >= 'a' && c <= 'z') || c == '_'; };
    return !text.isEmpty() && text.size() <= 63 && is_letter(text[0]) &&
           std::all_of(text.begin(), text.end(), [&](QChar c) { return is_letter(c) || (c >= '0' && c <= '9'); });
}

bool check_name(QString const &name, QString &fault)
{
    if (is_name(name))
        return true;
    fault =
        QStringLiteral("database: '%1' is no name of a table or column; use small letters, digits and '_'").arg(name);
    return false;
}

QString quoted(QString const &name) { return QLatin1Char('"') + name + QLatin1Char('"'); }

bool run(QSqlQuery &query, QString const &statement, QVariantList const &values, QString &fault)
{
    bool good = query.prepare(statement);
    for (QVariant const &value : values)
        query.addBindValue(value);
    good = good && query.exec();
    if (!good)
        fault = QStringLiteral("database: %1").arg(query.lastError().text().simplified());
    return good;
}

char const *column_type(QVariant const &value)
{
    switch (value.userType()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return "BIGINT";
    case QMetaType::Float:
    case QMetaType::Double:
        return "DOUBLE PRECISION";
    default:
        return "TEXT";
    }
}

// What identifies a row of a table.
struct ROW_KEY {
    explicit ROW_KEY(DB_ROW const &row)
    {
        for (auto value = row.begin(); value != row.end(); ++value)
            if (value->flag1) {
                column = value.key();
                is_generated = value->flag2;
                break;
            }
    }
    QString column = QStringLiteral("key");
    bool is_generated = true;  // also where the row has no key column at all
};

// The columns that are not the key, in order of their names.
QStringList other_columns(DB_ROW const &row, ROW_KEY const &key)
{
    QStringList columns = row.keys();
    columns.removeAll(key.column);
    return columns;
}

// The columns by which a row is found again: one with a generated key is known by its file, or else by all that it
// holds.
QStringList known_by(DB_ROW const &row, ROW_KEY const &key)
{
    QString const file = QStringLiteral("filename");
    return !key.is_generated    ? QStringList{key.column}
           : row.contains(file) ? QStringList{file}
                                : other_columns(row, key);
}

bool make_table(QSqlDatabase &database, QString const &table, DB_ROW const &row, QString &fault)
{
    ROW_KEY const key(row);
    bool const is_sqlite = database.driverName() == QLatin1String("QSQLITE");
    QString columns = quoted(key.column) + QLatin1String(!key.is_generated ? " TEXT PRIMARY KEY"
                                                         : is_sqlite       ? " INTEGER PRIMARY KEY"
                                                                           : " BIGINT PRIMARY KEY");
    for (QString const &column : other_columns(row, key)) {
        if (!check_name(column, fault))
            return false;
        columns += QStringLiteral(", %1 %2").arg(quoted(column), QLatin1String(column_type(row[column].value)));
    }
    QSqlQuery query(database);
    if (!check_name(key.column, fault) ||
        !run(query, QStringLiteral("CREATE TABLE %1(%2)").arg(quoted(table), columns), {}, fault))
        return false;
    QString const file = QStringLiteral("filename");
    return !key.is_generated || !row.contains(file) ||
           run(query,
               QStringLiteral("CREATE INDEX %1 ON %2(%3)").arg(quoted(table + "_" + file), quoted(table), quoted(file)),
               {}, fault);
}

// "column" = ? for each column, joined.
QString assignments(QStringList const &columns, char const *joint)
{
    QString text;
    for (QString const &column : columns)
        text += (text.isEmpty() ? QString() : QString::fromLatin1(joint)) + quoted(column) + QStringLiteral(" = ?");
    return text;
}

QVariantList values_of(DB_ROW const &row, QStringList const &columns)
{
    QVariantList values;
    for (QString const &column : columns)
        values += row[column].value;
    return values;
}

// A row as RESERVED_KEYS has it.
QStringList reserved_name(DB_ROW const &row, QStringList const &known_columns)
{
    QStringList name = known_columns;
    for (QVariant const &value : values_of(row, known_columns))
        name += value.toString();
    return name;
}

bool has_columns(QSqlRecord const &columns, QString const &table, DB_ROW const &row, QString &fault)
{
    for (QString const &column : row.keys())
        if (!columns.contains(column)) {
            fault =
                QStringLiteral("database: table %1 has no column '%2'; add it to the table by hand").arg(table, column);
            return false;
        }
    return true;
}

// A row that is there already keeps its number, also if it is removed and entered anew.
bool reserve_key(QSqlDatabase &database, QString const &table, DB_ROW const &row, RESERVED_KEYS &reserved,
                 QString &fault)
{
    ROW_KEY const key(row);
    QStringList const known_columns = known_by(row, key);
    QStringList const name = reserved_name(row, known_columns);
    if (!key.is_generated || reserved.by_row.contains(name))
        return true;

    qint64 number = reserved.highest + 1;
    QSqlRecord const columns = database.record(table);
    if (!columns.isEmpty()) {
        QString const statement = QStringLiteral("SELECT min(%1), (SELECT max(%1) FROM %2) FROM %2 WHERE %3")
                                      .arg(quoted(key.column), quoted(table), assignments(known_columns, " AND "));
        QSqlQuery query(database);
        if (!has_columns(columns, table, row, fault) || !run(query, statement, values_of(row, known_columns), fault) ||
            !query.next())
            return false;
        bool const is_there = !query.value(0).isNull();
        number = is_there ? query.value(0).toLongLong() : std::max(number, query.value(1).toLongLong() + 1);
    }
    reserved.by_row.insert(name, number);
    reserved.highest = std::max(reserved.highest, number);
    return true;
}

// The number for a new row: the one reserved for it, unless somebody else has taken that by now, or the next free one.
bool next_key(QSqlDatabase &database, QString const &table, QString const &column, QStringList const &row_name,
              RESERVED_KEYS const &reserved, QVariant &key, QString &fault)
{
    QSqlQuery query(database);
    if (database.driverName() != QLatin1String("QSQLITE") &&  // others may write to a server at the same time
        !run(query, QStringLiteral("LOCK TABLE %1 IN EXCLUSIVE MODE").arg(quoted(table)), {}, fault))
        return false;
    qint64 const own = reserved.by_row.value(row_name, 0);
    if (!run(query,
             QStringLiteral("SELECT coalesce(max(%1), 0), (SELECT count(*) FROM %2 WHERE %1 = ?) FROM %2")
                 .arg(quoted(column), quoted(table)),
             {own}, fault) ||
        !query.next())
        return false;
    bool const is_own_free = own > 0 && query.value(1).toInt() == 0;
    key = is_own_free ? own : std::max(query.value(0).toLongLong(), reserved.highest) + 1;
    return true;
}

// Sets `has_changed` if the table is not what it was.
bool apply_row(QSqlDatabase &database, UPDATE_DB_TABLE const &table, DB_ROW const &row, bool patch,
               RESERVED_KEYS const &reserved, bool &has_changed, QString &fault)
{
    ROW_KEY const key(row);
    QStringList const others = other_columns(row, key);
    QString const name = quoted(table.name);
    QStringList const known_columns = known_by(row, key);
    QString const where = QStringLiteral(" WHERE ") + assignments(known_columns, " AND ");
    QVariantList const known_values = values_of(row, known_columns);

    QString wanted = quoted(key.column);
    for (QString const &column : others)
        wanted += QStringLiteral(", ") + quoted(column);
    QSqlQuery query(database);
    if (!run(query, QStringLiteral("SELECT %1 FROM %2%3 ORDER BY 1").arg(wanted, name, where), known_values, fault))
        return false;
    bool const is_there = query.next();
    QVariant key_value = is_there ? query.value(0) : row.value(key.column).value;
    bool is_equal = is_there;
    for (int i = 0; is_equal && i < others.size(); ++i)
        is_equal = query.value(i + 1).toString() == row[others[i]].value.toString();
    bool const is_single = !query.next();
    query.finish();

    bool const in_place = patch || !key.is_generated;
    if (is_there && !table.flags[1])
        return true;
    if (is_equal && is_single && in_place)
        return true;
    if (!is_there && !table.flags[0])
        return true;

    has_changed = true;
    if (is_there && in_place)
        return others.isEmpty() ||
               run(query, QStringLiteral("UPDATE %1 SET %2%3").arg(name, assignments(others, ", "), where),
                   values_of(row, others) + known_values, fault);
    if (is_there && !run(query, QStringLiteral("DELETE FROM %1%2").arg(name, where), known_values, fault))
        return false;
    if (!is_there && key.is_generated &&
        !next_key(database, table.name, key.column, reserved_name(row, known_columns), reserved, key_value, fault))
        return false;
    QString marks = QStringLiteral("?");
    for (int i = 0; i < others.size(); ++i)
        marks += QStringLiteral(", ?");
    return run(query, QStringLiteral("INSERT INTO %1(%2) VALUES(%3)").arg(name, wanted, marks),
               QVariantList{key_value} + values_of(row, others), fault);
}

bool apply_rows(QSqlDatabase &database, UPDATE_DB_TABLE const &table, bool patch, RESERVED_KEYS const &reserved,
                bool &has_changed, QString &fault)
{
    if (!check_name(table.name, fault))
        return false;
    for (DB_ROW const &row : table.rows) {
        QSqlRecord columns = database.record(table.name);
        if (columns.isEmpty()) {
            if (!make_table(database, table.name, row, fault))
                return false;
            columns = database.record(table.name);
        }
        if (!has_columns(columns, table.name, row, fault) ||
            !apply_row(database, table, row, patch, reserved, has_changed, fault))
            return false;
    }
    return true;
}

// A cell of an exported line: no tab and no line end stays as such.
QString cell_text(QVariant const &value)
{
    if (value.isNull())
        return QStringLiteral("\\N");
    QString text = value.toString();
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    text.replace(QLatin1Char('\t'), QLatin1String("\\t"));
    text.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    return text.replace(QLatin1Char('\r'), QLatin1String("\\r"));
}

// Columns by name, the key first; lines by key: numbers by value, texts by their code units, whatever the server's
// collation.
bool read_table(QSqlDatabase &database, QString const &table, QString &text, QString &fault)
{
    QSqlRecord const record = database.record(table);
    if (!is_name(table) || record.isEmpty()) {
        fault = QStringLiteral("database: there is no table '%1'").arg(table);
        return false;
    }
    QStringList columns;
    for (int i = 0; i < record.count(); ++i)
        columns += record.fieldName(i);
    QString const key = database.primaryIndex(table).fieldName(0);
    std::sort(columns.begin(), columns.end());
    if (columns.removeAll(key) != 0)
        columns.prepend(key);

    QStringList names;
    for (QString const &column : columns)
        names += quoted(column);
    QSqlQuery query(database);
    query.setForwardOnly(true);
    if (!run(query, QStringLiteral("SELECT %1 FROM %2").arg(names.join(QStringLiteral(", ")), quoted(table)), {},
             fault))
        return false;
    std::vector<std::pair<QVariant, QString>> lines;
    while (query.next()) {
        QStringList cells;
        for (int i = 0; i < columns.size(); ++i)
            cells += cell_text(query.value(i));
        lines.emplace_back(query.value(0), cells.join(QLatin1Char('\t')));
    }
    std::sort(lines.begin(), lines.end(), [](auto const &a, auto const &b) {
        bool const are_texts = a.first.userType() == QMetaType::QString;
        return are_texts ? a.first.toString() < b.first.toString() : a.first.toLongLong() < b.first.toLongLong();
    });
    text = columns.join(QLatin1Char('\t')) + QLatin1Char('\n');
    for (auto const &line : lines)
        text += line.second + QLatin1Char('\n');
    return true;
}

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
