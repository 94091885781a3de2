#include "platform/build_host/target_guard.h"

#include "platform/build_host/disk_name.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

fs::path path_of(QString const &file) { return std::string(disk_name(file)); }
bool is_below_raw(LOGICAL_PATH const &path) { return path.startsWith(QLatin1String("<raw>/")); }

// With the time of its last change, so that a file which is put back looks untouched.
void copy_with_time(fs::path const &from, fs::path const &to, std::error_code &fault)
{
    fs::copy_file(from, to, fs::copy_options::overwrite_existing, fault);
    if (fault)
        return;
    std::error_code no_matter;
    auto const time = fs::last_write_time(from, no_matter);
    if (!no_matter)
        fs::last_write_time(to, time, no_matter);
}

QString text_of(std::error_code const &fault) { return QString::fromLocal8Bit(fault.message().c_str()); }

bool is_same(fs::path const &a, fs::path const &b)
{
    std::error_code fault;
    return fs::file_size(a, fault) == fs::file_size(b, fault) && !fault &&
           fs::last_write_time(a, fault) == fs::last_write_time(b, fault) && !fault;
}

}  // namespace

TARGET_GUARD::TARGET_GUARD(PLANNED_ACTION const &planned, QString const &side_folder, bool keeps_copies)
    : action(planned)
{
    for (TARGET_FILE const &target : action.targets) {
        if (action.reads(target.logical))
            continue;
        TARGET noted{target.physical, {}, false, is_below_raw(target.logical)};
        std::error_code fault;
        noted.stood = fs::exists(path_of(noted.file), fault);
        if (fs::is_regular_file(path_of(noted.file), fault) && keeps_copies && !noted.is_raw) {
            QString const name = side_folder + QStringLiteral("/%1-%2").arg(action.index).arg(targets.size());
            copy_with_time(path_of(noted.file), path_of(name), fault);
            if (!fault)
                noted.copy = name;
            else
                copy_fault = QStringLiteral("%1: cannot be kept aside while the action runs: %2")
                                 .arg(noted.file, text_of(fault));
        }
        targets.push_back(noted);
    }
}

TARGET_GUARD::~TARGET_GUARD()
{
    std::error_code fault;
    for (TARGET const &target : targets)
        if (!target.copy.isEmpty())
            fs::remove(path_of(target.copy), fault);
}

void TARGET_GUARD::add(PHYSICAL_PATH const &file, bool stood)
{
    LOGICAL_PATH const logical = PATHS::logical_path(file);
    QString const name = QString::fromStdString(disk_name(file));
    for (TARGET const &target : targets)
        if (QString::fromStdString(disk_name(target.file)) == name)
            return;
    if (!action.reads(logical))
        targets.push_back({name, {}, stood, is_below_raw(logical)});
}

bool TARGET_GUARD::restore(QString &fault)
{
    for (TARGET const &target : targets) {
        fs::path const file = path_of(target.file);
        std::error_code error;
        if (!target.stood) {
            if (fs::is_regular_file(file, error))
                fs::remove(file, error);
        } else if (!target.copy.isEmpty() && !is_same(file, path_of(target.copy))) {
            fs::rename(path_of(target.copy), file, error);
            if (error == std::errc::cross_device_link)
                copy_with_time(path_of(target.copy), file, error);
        }
        if (error && error != std::errc::no_such_file_or_directory)
            fault = QStringLiteral("%1: cannot be put back as it was: %2").arg(target.file, text_of(error));
    }
    return fault.isEmpty();
}
