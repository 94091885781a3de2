// An action as the plan knows it: what it declared when it was planned, and by what it is told apart from others and
// from its own earlier self.
#pragma once

#include "Plugins/Vx2/host/action.h"

#include <QtCore/QString>
#include <QtCore/QVector>

#include <cstdint>

struct PLANNED_ACTION {
    ACTION_INTERFACE *action = nullptr;
    int index = 0;       // place in the plan
    QString class_name;  // "ACTION_MODEL"
    QVector<LOGICAL_PATH> sources;
    QVector<TARGET_FILE> targets;
    qint64 time = 0;  // as the action declared it
    // Changes when something other than file contents calls for a new run: the converter's version, the rule values
    // that planning read for the sources, the declared sources, the error, the database rows and other actions that
    // this one pulls. What the action writes counts besides, as it is declared at the time.
    std::uint64_t signature = 0;
    // Writes at least one file that is not its own source. An action without products is never out of date by
    // itself: others bring it in, or a run that was broken off owes it.
    bool has_products = false;

    // The first target that is not a source; null if there is none.
    TARGET_FILE const *main_target() const
    {
        for (TARGET_FILE const &target : targets)
            if (!reads(target.logical))
                return &target;
        return nullptr;
    }
    bool reads(LOGICAL_PATH const &path) const { return sources.contains(path); }
};
