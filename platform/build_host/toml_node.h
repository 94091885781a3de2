// A TOML file as a tree with line numbers, so that only one source sees the parser.
#pragma once

#include "platform/build_host/api.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

#include <vector>

struct TOML_NODE {
    enum KIND { TABLE, ARRAY, VALUE, OTHER };  // OTHER: dates and times, which nothing here uses

    QString key;  // empty for elements of arrays
    int line = 0;
    KIND kind = TABLE;
    QVariant value;                // QString, bool, qlonglong or double
    std::vector<TOML_NODE> items;  // of tables and arrays, in the order of the file

    TOML_NODE const *find(QString const &name) const;
    bool is_text() const { return kind == VALUE && value.userType() == QMetaType::QString; }
    bool is_flag() const { return kind == VALUE && value.userType() == QMetaType::Bool; }
    bool is_number() const { return kind == VALUE && value.userType() == QMetaType::LongLong; }
    // True if the node is an array of texts, which `texts` then receives.
    bool read_texts(QStringList &texts) const;
};

constexpr int largest_toml = 1 << 20;  // bytes; more is no file that people write

// False, with "SHOWN:LINE: what is wrong", if the text is no TOML, larger than that, or nested without sense.
BUILD_HOST_API bool read_toml(QByteArray const &text, QString const &shown, TOML_NODE &root, QString &fault);
