// Rows for the asset database, as processors describe them.
#pragma once

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVariant>
#include <QtCore/QVector>

struct DB_COLUMN_VALUE {
    QVariant value;
    bool flag1 = false;  // the column is the row's key
    bool flag2 = false;  // with flag1: the key is generated when the row is entered; `value` only holds its place
};

using DB_ROW = QMap<QString, DB_COLUMN_VALUE>;  // by column name

struct UPDATE_DB_TABLE {
    QString name;
    QVector<DB_ROW> rows;
    bool flags[4] = {};  // rows may be entered; may be changed; the table is exported as text; the export is booked
};
