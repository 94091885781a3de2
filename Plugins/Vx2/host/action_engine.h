// The engine in a plan: started by one action, stopped by another; the actions between them drive it through the first.
#pragma once

#include "Plugins/Vx2/host/action.h"
#include "Plugins/Vx2/host/engine.h"

#include <memory>

class HOST_API ACTION_INIT_KESTREL : public ACTION_INTERFACE {
public:
    ACTION_INIT_KESTREL(PROCESSOR_INTERFACE *planned_by, bool mount_data, bool start_services, bool open_view);
    ~ACTION_INIT_KESTREL() override;

    void reset() override;  // stops the engine
    QString get_name(bool with_source) const override;
    STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules) override;

    // Null unless the engine is up. Owned by this action.
    KESTREL::ENGINE *engine() const { return running.get(); }
    void stop() { running.reset(); }

    // Whoever has an engine registers how it is made, while it is loaded; null takes it away. Gives the one before.
    static KESTREL::ENGINE_MAKER set_engine_maker(KESTREL::ENGINE_MAKER maker);

private:
    std::unique_ptr<KESTREL::ENGINE> running;
    bool mounts_data, starts_services, opens_view;
};

// Scheduled whenever its start is, and run after it, also when an action between the two has failed.
class HOST_API ACTION_CLEANUP_KESTREL : public ACTION_INTERFACE {
public:
    ACTION_CLEANUP_KESTREL(ACTION_INIT_KESTREL *started_by, PROCESSOR_INTERFACE *planned_by);

    QString get_name(bool with_source) const override;
    STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules) override;
    bool auto_fail_if_dependency_failed() const override;

private:
    ACTION_INIT_KESTREL *init;
};
