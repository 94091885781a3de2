// Rules: what is to become of the files of a tree. A rule has a kind ("RigidModelV2") and named properties; the host
// finds, for a path and a kind, the values that the rule files of the tree give, from its root down to the nearest
// folder. Kinds and their properties are declared by schemas, which register themselves.
#pragma once

#include "Plugins/Vx2/host/paths.h"

#include <QtCore/QString>
#include <QtCore/QVariant>

struct RULE_DATA;  // the host's: values and where they come from
class RULE_STORE;  // the host's: the rule files

// The properties that hold for one path. A small value; valid as long as the rule cache that gave it.
class HOST_API RULE {
public:
    bool exists = false;  // a rule of the kind covers the path

    // Three states: absent (the variant is invalid), null (valid, isNull), and given, which may be an empty text. Texts
    // are QString, booleans bool, numbers qlonglong or double, as the rule file has them.
    QVariant value(QString const &property) const;

    // Rules of equal data have equal values of every property. Null where no rule covers the path.
    RULE_DATA const *data() const { return held; }

    RULE() = default;
    explicit RULE(RULE_DATA const *values) : exists(values != nullptr), held(values) {}

private:
    RULE_DATA const *held = nullptr;
};

// The look-up. Calls may be made from any thread.
class HOST_API RULE_CACHE {
public:
    explicit RULE_CACHE(RULE_STORE &rule_files) : store(&rule_files) {}

    RULE get(LOGICAL_PATH const &path, QString const &kind) const;
    // The rule of that kind which holds for the whole tree.
    RULE get_global(QString const &kind) const;

    RULE_STORE &rule_store() const { return *store; }

private:
    RULE_STORE *store;
};

// The declaration of a rule kind. Derived classes add their properties in their constructor and live as static objects;
// the base enters them in the process's list of schemas and takes them out again when their library is unloaded.
class HOST_API RULE_SCHEMA {
public:
    RULE_SCHEMA(QString const &key, QString const &description);
    virtual ~RULE_SCHEMA();
    RULE_SCHEMA(RULE_SCHEMA const &) = delete;
    RULE_SCHEMA &operator=(RULE_SCHEMA const &) = delete;

    // A property name that is already there gets the new help text.
    void add_property(QString const &name, QString const &help);
};
