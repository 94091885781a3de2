// Rows of asset tables in SQL: entering and changing them, numbers for generated keys, tables as text. All on an open
// connection and on its thread; a false result comes with one line in `fault`. Names are checked before they become
// part of a statement, values are always bound.
#pragma once

#include "Plugins/Vx2/host/database.h"

#include <QtCore/QMap>
#include <QtCore/QStringList>

class QSqlDatabase;
class QSqlQuery;

// The numbers that are set aside for rows of one table with a generated key.
struct RESERVED_KEYS {
    qint64 highest = 0;                // numbers begin at 1
    QMap<QStringList, qint64> by_row;  // by the columns that a row is known by, followed by their values
};

namespace ASSET_ROWS {

// A name of a table or column: small letters, digits and underscores.
bool check_name(QString const &name, QString &fault);
QString quoted(QString const &name);

bool run(QSqlQuery &query, QString const &statement, QVariantList const &values, QString &fault);

// Sets a number aside for a row with a generated key. A row that is there already keeps its number, also if it is
// removed and entered anew.
bool reserve_key(QSqlDatabase &database, QString const &table, DB_ROW const &row, RESERVED_KEYS &reserved,
                 QString &fault);

// Enters or changes the rows of `table`, which is made if it is not there. `patch` as ASSET_STORE::apply. Sets
// `has_changed` if the table is not what it was.
bool apply_rows(QSqlDatabase &database, UPDATE_DB_TABLE const &table, bool patch, RESERVED_KEYS const &reserved,
                bool &has_changed, QString &fault);

// Columns by name, the key first; lines by key: numbers by value, texts by their code units, whatever the server's
// collation.
bool read_table(QSqlDatabase &database, QString const &table, QString &text, QString &fault);

}  // namespace ASSET_ROWS
