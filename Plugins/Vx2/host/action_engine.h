// The engine in a plan: started by one action, stopped by another; the actions between them drive it through the first.
#pragma once

#include "Plugins/Vx2/host/action.h"

namespace KESTREL {
class ENGINE;
}

class HOST_API ACTION_INIT_KESTREL : public ACTION_INTERFACE {
public:
    // The three switches are passed on to the engine.
    ACTION_INIT_KESTREL(PROCESSOR_INTERFACE *planned_by, bool first, bool second, bool third);

    QString get_name(bool with_source) const override;
    STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules) override;

    // Null unless the engine is up. Owned by this action.
    KESTREL::ENGINE *engine() const { return running; }

private:
    KESTREL::ENGINE *running = nullptr;
    bool switches[3];
};

// Runs also when an action between the two has failed.
class HOST_API ACTION_CLEANUP_KESTREL : public ACTION_INTERFACE {
public:
    ACTION_CLEANUP_KESTREL(ACTION_INIT_KESTREL *started_by, PROCESSOR_INTERFACE *planned_by);

    QString get_name(bool with_source) const override;
    STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules) override;
    bool auto_fail_if_dependency_failed() const override;

private:
    ACTION_INIT_KESTREL *init;
};
