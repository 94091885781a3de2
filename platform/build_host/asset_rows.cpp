#include "platform/build_host/asset_rows.h"

#include <QtCore/QVariant>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlError>
#include <QtSql/QSqlIndex>
#include <QtSql/QSqlQuery>
#include <QtSql/QSqlRecord>

#include <algorithm>

namespace ASSET_ROWS {

static bool is_name(QString const &text)
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
    bool good;
    if (values.isEmpty()) {  // also what makes tables, which some servers do not prepare
        good = query.exec(statement);
    } else {
        good = query.prepare(statement);
        for (QVariant const &value : values)
            query.addBindValue(value);
        good = good && query.exec();
    }
    if (!good)
        fault = QStringLiteral("database: %1").arg(query.lastError().text().simplified());
    return good;
}

static char const *column_type(QVariant const &value)
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

namespace {

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

}  // namespace

// The columns that are not the key, in order of their names.
static QStringList other_columns(DB_ROW const &row, ROW_KEY const &key)
{
    QStringList columns = row.keys();
    columns.removeAll(key.column);
    return columns;
}

// The columns by which a row is found again: one with a generated key is known by its file, or else by all that it
// holds.
static QStringList known_by(DB_ROW const &row, ROW_KEY const &key)
{
    QString const file = QStringLiteral("filename");
    return !key.is_generated    ? QStringList{key.column}
           : row.contains(file) ? QStringList{file}
                                : other_columns(row, key);
}

static bool make_table(QSqlDatabase &database, QString const &table, DB_ROW const &row, QString &fault)
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
static QString assignments(QStringList const &columns, char const *joint)
{
    QString text;
    for (QString const &column : columns)
        text += (text.isEmpty() ? QString() : QString::fromLatin1(joint)) + quoted(column) + QStringLiteral(" = ?");
    return text;
}

static QVariantList values_of(DB_ROW const &row, QStringList const &columns)
{
    QVariantList values;
    for (QString const &column : columns)
        values += row[column].value;
    return values;
}

// A row as RESERVED_KEYS has it.
static QStringList reserved_name(DB_ROW const &row, QStringList const &known_columns)
{
    QStringList name = known_columns;
    for (QVariant const &value : values_of(row, known_columns))
        name += value.toString();
    return name;
}

static bool has_columns(QSqlRecord const &columns, QString const &table, DB_ROW const &row, QString &fault)
{
    for (QString const &column : row.keys())
        if (!columns.contains(column)) {
            fault =
                QStringLiteral("database: table %1 has no column '%2'; add it to the table by hand").arg(table, column);
            return false;
        }
    return true;
}

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
static bool next_key(QSqlDatabase &database, QString const &table, QString const &column, QStringList const &row_name,
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
static bool apply_row(QSqlDatabase &database, UPDATE_DB_TABLE const &table, DB_ROW const &row, bool patch,
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
static QString cell_text(QVariant const &value)
{
    if (value.isNull())
        return QStringLiteral("\\N");
    QString text = value.toString();
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    text.replace(QLatin1Char('\t'), QLatin1String("\\t"));
    text.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    return text.replace(QLatin1Char('\r'), QLatin1String("\\r"));
}

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

}  // namespace ASSET_ROWS
