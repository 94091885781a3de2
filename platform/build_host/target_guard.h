// Puts an action's targets back as they were when it fails: copies of those that stood are kept aside while it runs,
// and those that came with it go. A target that is also a source is never touched; below the raw root only what this
// run created is.
#pragma once

#include "platform/build_host/planned_action.h"

#include <vector>

class TARGET_GUARD {
public:
    // Notes which targets stand, and copies them into `side_folder` if `keeps_copies`. What could not be copied is told
    // by fault(); the action must not run then.
    TARGET_GUARD(PLANNED_ACTION const &action, QString const &side_folder, bool keeps_copies);
    ~TARGET_GUARD();  // removes the copies
    TARGET_GUARD(TARGET_GUARD const &) = delete;
    TARGET_GUARD &operator=(TARGET_GUARD const &) = delete;

    QString const &fault() const { return copy_fault; }

    // A file that the action turned out to write, with the news whether it was there before. Of such a file there is no
    // copy: it goes if it was not there, and stays as it is otherwise.
    void add(PHYSICAL_PATH const &file, bool stood);

    // False, with the file in `fault`, if one could not be put back.
    bool restore(QString &fault);

private:
    struct TARGET {
        QString file;
        QString copy;  // empty: none
        bool stood;
        bool is_raw;
    };

    PLANNED_ACTION const &action;
    std::vector<TARGET> targets;
    QString copy_fault;
};
