#include "Plugins/Vx2/host/action_convert.h"

#include "platform/build_host/disk_name.h"

#include <filesystem>

ACTION_CONVERT::ACTION_CONVERT(PHYSICAL_PATH const &source_file, PROCESSOR_INTERFACE *planned_by)
    : ACTION_TDB(planned_by), source_path(source_file)
{
    int const slash = source_file.lastIndexOf(QLatin1Char('/'));
    int dot = source_file.lastIndexOf(QLatin1Char('.'));
    if (dot <= slash)
        dot = source_file.size();  // no extension
    target_folder = source_file.left(slash < 0 ? 0 : slash);
    target_name = source_file.mid(slash + 1, dot - slash - 1);
    target_suffix = source_file.mid(dot);
}

PHYSICAL_PATH ACTION_CONVERT::get_target() const
{
    QString target;
    target.reserve(target_folder.size() + 1 + target_name.size() + target_suffix.size());
    target += target_folder;
    target += QLatin1Char('/');
    target += target_name;
    target += target_suffix;
    return PHYSICAL_PATH(std::move(target));
}

QString ACTION_CONVERT::get_name(bool with_source) const
{
    QString const name = QStringLiteral("Convert");
    return with_source ? name + QStringLiteral(" (") + PATHS::logical_path(source_path) + QLatin1Char(')') : name;
}

void ACTION_CONVERT::get_source_files(QVector<LOGICAL_PATH> &sources, FILE_TABLE const &) const
{
    sources.append(PATHS::logical_path(source_path));
}

void ACTION_CONVERT::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &,
                                        FILE_TABLE const &files, RULE_CACHE const &) const
{
    get_source_files(sources, files);
    PHYSICAL_PATH const target = get_target();
    if (target != source_path)
        targets.append(TARGET_FILE(target, PATHS::logical_path(target), false));
}

bool ACTION_CONVERT::is_target_temporary() const { return is_temporary; }

bool ACTION_CONVERT::is_target_binary() const { return true; }

bool ACTION_CONVERT::convert(PHYSICAL_PATH const &, PHYSICAL_PATH const &, RULE_CACHE const &, FILE_TABLE const &)
{
    output_line(QStringLiteral("%1: this action knows no conversion").arg(source_path), 2);
    return false;
}

ACTION_INTERFACE::STATUS ACTION_CONVERT::run(FILE_TABLE const &files, RULE_CACHE const &rules)
{
    set_up_tdb_output();
    if (!error().isEmpty()) {
        output_line(error(), 2);
        return FAILED;
    }
    PHYSICAL_PATH const target = get_target();
    QString const folder = target.left(target.lastIndexOf(QLatin1Char('/')));
    if (!KN::make_directories(disk_name(folder))) {
        output_line(QStringLiteral("%1: the folder cannot be made").arg(folder), 2);
        return FAILED;
    }
    if (!convert(source_path, target, rules, files))
        return FAILED;
    std::error_code ignored;
    if (!is_target_temporary() && std::filesystem::is_regular_file(std::string(disk_name(target)), ignored))
        add_to_perforce(target, files, is_target_binary(), QString());
    return get_status_by_output();
}
