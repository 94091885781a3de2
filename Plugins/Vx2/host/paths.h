// Paths of an asset tree, in their two forms, and the roots between which they are translated. Both forms are texts
// that separate folders with "/"; they are types of their own so that one is not taken for the other.
#pragma once

#include "Plugins/Vx2/host/api.h"

#include <QtCore/QMetaType>
#include <QtCore/QString>

class RULE;

// A path inside the tree, behind the word for its root: "<raw>/props/hut.vx2", "<working>/props". Compared and ordered
// by UTF-16 code units, with regard to case, so that the entries of a folder and those below it stand together.
class LOGICAL_PATH : public QString {
public:
    LOGICAL_PATH() = default;
    explicit LOGICAL_PATH(QString const &text) : QString(text) {}
    explicit LOGICAL_PATH(QString &&text) noexcept : QString(std::move(text)) {}
};

// A path on disk, absolute: "/art/tree/raw_data/props/hut.vx2". It may hold backslashes that a converter put in; the
// layer that touches the disk knows what to do with them.
class PHYSICAL_PATH : public QString {
public:
    PHYSICAL_PATH() = default;
    explicit PHYSICAL_PATH(QString const &text) : QString(text) {}
    explicit PHYSICAL_PATH(QString &&text) noexcept : QString(std::move(text)) {}
};

Q_DECLARE_TYPEINFO(LOGICAL_PATH, Q_MOVABLE_TYPE);
Q_DECLARE_TYPEINFO(PHYSICAL_PATH, Q_MOVABLE_TYPE);

// A file that an action says it writes. `flag` is carried for the action's sake: an absent file is no fault of its own,
// since the host remembers which targets stood after a success.
struct TARGET_FILE {
    PHYSICAL_PATH physical;
    LOGICAL_PATH logical;
    bool flag = false;

    TARGET_FILE() = default;
    TARGET_FILE(PHYSICAL_PATH const &physical_path, LOGICAL_PATH const &logical_path, bool carried)
        : physical(physical_path), logical(logical_path), flag(carried)
    {}
};
Q_DECLARE_TYPEINFO(TARGET_FILE, Q_MOVABLE_TYPE);

// The roots of the current project. A process works on one project at a time: the program (or a test) sets it before
// anything else and keeps it until the last action has ended, so the calls are free of locks. No root ends in a slash,
// and none is empty, not even where a project has no old data.
class HOST_API PATHS {
public:
    static QString working_data();
    static QString raw_data();
    static QString old_raw_data();
    // Where the products of a source belong: the old working root for sources below the old raw root.
    static QString target_working_data(PHYSICAL_PATH const &source);

    // "<raw>/..." below a raw root, "<working>/..." below a working root, the bare word for a root itself. Backslashes
    // become slashes, repeated slashes one, sections "." go, case is kept. A path outside all roots comes back with its
    // separators turned.
    static LOGICAL_PATH logical_path(PHYSICAL_PATH const &physical);

    // The folder below the working root that a rule's property names for a file. A value that starts with "<working>/"
    // or "/" is that folder; any other is followed by the path from the folder that holds the rule to that of the file.
    // Backslashes count as slashes; those at its ends are cut. Empty if the property is absent or null.
    static QString relative_target_path_from_rule_path(RULE const &rule, QString const &property,
                                                       LOGICAL_PATH const &logical, PHYSICAL_PATH const &physical);
};
