// ACTION_RIGID_HEADER_CACHE: the engine's cache of the headers of all finished rigid models, <working>/rigid_db.bin. No
// processor plans it: writing it is a step of its own (write_cache), which a host makes when it wants the cache.
#pragma once

#include "Plugins/Vx2/host/action.h"

namespace KESTREL {
class RIGID_MODEL_SERVICE;
}

class ACTION_RIGID_HEADER_CACHE : public ACTION_INTERFACE {
public:
    explicit ACTION_RIGID_HEADER_CACHE(PROCESSOR_INTERFACE *processor);

    QString get_name(bool with_source) const override;
    void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                            FILE_TABLE const &files, RULE_CACHE const &rules) const override;
    // After the one action that makes a model, where there is one.
    void add_external_dependencies(FILE_TABLE const &files, RULE_CACHE const &rules) override;
    STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules) override;  // has nothing to do
    bool auto_fail_if_dependency_failed() const override;

    // Opens each model that stands below the working root, which is how the engine comes to know its header, and saves
    // the cache. True always: what went wrong, the engine has said (KN::message).
    static bool write_cache(FILE_TABLE const &files, KESTREL::RIGID_MODEL_SERVICE &service);
};
