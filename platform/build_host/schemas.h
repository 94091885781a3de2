// The rule kinds that the loaded plug-ins have declared.
#pragma once

#include "platform/build_host/api.h"

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

struct SCHEMA_PROPERTY {
    QString name;
    QString help;
};

struct SCHEMA {
    QString key;
    QString description;
    QVector<SCHEMA_PROPERTY> properties;  // in the order of their declaration
};

// As they stand now, in the order of their registration.
BUILD_HOST_API QVector<SCHEMA> schemas();

// Empty if rules may use it, else what is wrong with it and what was meant.
BUILD_HOST_API QString check_rule_kind(QString const &kind);
BUILD_HOST_API QString check_rule_property(QString const &kind, QString const &property);
