#include "Plugins/Vx2/action_rigid_header_cache.h"

#include "Plugins/Vx2/host/engine.h"
#include "Plugins/Vx2/text.h"

#include <QtCore/QFile>

using KESTREL::RIGID_HEADER_CACHE;
using KESTREL::RIGID_MODEL_SERVICE;

static QString cache_path() { return PATHS::working_data() + "/rigid_db.bin"; }

static bool is_in_working_data(LOGICAL_PATH const &path) { return path.startsWith(QLatin1String("<working>/")); }

static bool is_finished_model(LOGICAL_PATH const &path)
{
    return is_in_working_data(path) && path.endsWith(QLatin1String(".rigid_model_v2"));
}

ACTION_RIGID_HEADER_CACHE::ACTION_RIGID_HEADER_CACHE(PROCESSOR_INTERFACE *processor) : ACTION_INTERFACE(processor)
{
    set_progress_max(100000);
}

QString ACTION_RIGID_HEADER_CACHE::get_name(bool) const { return QStringLiteral("Create rigid header cache"); }

void ACTION_RIGID_HEADER_CACHE::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets,
                                                   qint64 &, FILE_TABLE const &files, RULE_CACHE const &) const
{
    for (auto entry = files.begin(); entry != files.end(); ++entry)
        if (is_finished_model(entry.key()))
            sources.append(entry.key());
    PHYSICAL_PATH const cache(cache_path());
    targets.append(TARGET_FILE(cache, PATHS::logical_path(cache), false));
}

void ACTION_RIGID_HEADER_CACHE::add_external_dependencies(FILE_TABLE const &files, RULE_CACHE const &)
{
    for (auto entry = files.begin(); entry != files.end(); ++entry)
        if (is_finished_model(entry.key()) && entry.value()->actions.size() == 1)
            add_dependency(entry.value()->actions.first(), false);
}

ACTION_INTERFACE::STATUS ACTION_RIGID_HEADER_CACHE::run(FILE_TABLE const &, RULE_CACHE const &) { return DONE; }

bool ACTION_RIGID_HEADER_CACHE::auto_fail_if_dependency_failed() const { return false; }

bool ACTION_RIGID_HEADER_CACHE::write_cache(FILE_TABLE const &files, RIGID_MODEL_SERVICE &service)
{
    RIGID_HEADER_CACHE::disable_usage_load();
    RIGID_HEADER_CACHE::enable_usage_save();
    for (auto entry = files.begin(); entry != files.end(); ++entry) {
        PHYSICAL_PATH const &physical = entry.value()->physical;
        if (physical.endsWith(QLatin1String(".rigid_model_v2"), Qt::CaseInsensitive) &&
            is_in_working_data(entry.key()) && QFile(physical).open(QIODevice::ReadOnly))
            service.open(RIGID_MODEL_SERVICE::HEADER_ONLY, local_8_bit(physical), nullptr, false);
    }
    RIGID_HEADER_CACHE::save(wide(cache_path()));
    return true;
}
