#include "platform/build_host/session.h"

#include "Plugins/Vx2/host/vfs.h"
#include "foundation/finished_file.h"
#include "platform/build_host/disk_name.h"
#include "platform/build_host/product_path.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <filesystem>

// Unfinished files bear the number of the process that writes them: NAME.PROCESS-NUMBER.unfinished. Those of processes
// that live are left alone.
static void remove_leftovers(QStringList const &files)
{
    for (QString const &file : files) {
        int const process = file.section(QLatin1Char('.'), -2, -2).section(QLatin1Char('-'), 0, 0).toInt();
        if (process > 0 && !process_lives(process))
            QFile::remove(file);
    }
}

SESSION::SESSION() = default;

SESSION::~SESSION()
{
    up_to_date.reset();
    actions.reset();
    close();
}

void SESSION::close()
{
    set_asset_store(nullptr);
    rows_of_assets.reset();
    rows.close();
    record_copy.reset();
    lock.give_back();
}

bool SESSION::open(QString const &folder, QStringList const &plug_ins)
{
    QString const where = folder.isEmpty() ? find_project(QDir::currentPath()) : folder;
    if (where.isEmpty()) {
        fault_lines +=
            QStringLiteral("%1: neither here nor above is a mox.toml; 'mox init' makes one, -C names a folder")
                .arg(QDir::currentPath());
        return false;
    }
    if (!read_project(where, current, fault_lines))
        return false;
    set_current_roots(current.roots);
    UTILITYDLL::vfs().set_roots({disk_name(current.roots.working), disk_name(current.roots.old_working)});
    if (!load_plug_ins(plug_ins + current.plug_ins))
        return false;
    rows_of_assets = std::make_unique<ASSET_DATABASE>(current.database, current.state_folder);
    depot = std::make_unique<DEPOT>(current.depot, current.folder, current.state_folder);
    set_asset_store(rows_of_assets.get());
    return true;
}

bool SESSION::load_plug_ins(QStringList const &plug_ins)
{
    for (QString const &name : plug_ins) {
        QString fault;
        if (QFileInfo(name).isDir())
            modules.load_folder(name, fault_lines);
        else if (!modules.load(name, fault))
            fault_lines += fault;
    }
    return fault_lines.isEmpty();
}

bool SESSION::list_files()
{
    tree.scan(current.roots, fault_lines);
    if (has_lock)
        remove_leftovers(tree.unfinished);

    rule_files = std::make_unique<RULE_STORE>();
    auto const add = [&](QString const &file, LOGICAL_PATH const &folder, bool is_project) {
        constexpr qint64 largest = 1 << 20;  // bytes
        QString const shown = QDir(current.folder).relativeFilePath(file);
        QFile text(file);
        if (!text.open(QIODevice::ReadOnly))
            fault_lines += QStringLiteral("%1: cannot be read: %2").arg(shown, text.errorString());
        else if (text.size() > largest)
            fault_lines += QStringLiteral("%1: a rule file holds at most 1 MiB; is it one?").arg(shown);
        else
            rule_files->add(text.readAll(), shown, folder, is_project, fault_lines);
    };
    add(current.folder + QStringLiteral("/mox.toml"), LOGICAL_PATH(QStringLiteral("<raw>")), true);
    for (RULE_FILE const &file : tree.rule_files)
        add(file.physical, file.folder, false);
    return fault_lines.isEmpty();
}

bool SESSION::take_lock()
{
    QString fault;
    if (!QDir().mkpath(current.state_folder))
        fault = QStringLiteral("%1: cannot be made; is the working tree writable?").arg(current.state_folder);
    else
        lock.take(current.state_folder, fault);
    if (!fault.isEmpty())
        fault_lines += fault;
    has_lock = fault.isEmpty();
    if (has_lock)
        rows_of_assets->allow_making();
    return has_lock;
}

bool SESSION::open_record()
{
    QString note;
    bool const good = rows.open(current.state_folder + QStringLiteral("/record.sqlite"), note);
    if (!note.isEmpty())
        (good ? warning_lines : fault_lines) += note;
    return good;
}

// A build that runs meanwhile has the file for itself, so a copy is read. The file as such changes only now and then,
// when the log of what was written lately is merged into it.
bool SESSION::open_record_to_read()
{
    QString const file = current.state_folder + QStringLiteral("/record.sqlite");
    QString copy = QStringLiteral(":memory:");
    if (QFile::exists(file)) {
        record_copy = std::make_unique<QTemporaryDir>();
        copy = record_copy->filePath(QStringLiteral("record.sqlite"));
        bool good = false;
        for (int attempt = 0; attempt < 3 && !good; ++attempt) {
            FILE_STAMP const before = stamp_of(file);
            good = true;
            for (char const *part : {"", "-wal"}) {
                QString const from = file + QLatin1String(part), to = copy + QLatin1String(part);
                QFile::remove(to);
                good = good && (!QFile::exists(from) || QFile::copy(from, to));
            }
            FILE_STAMP const after = stamp_of(file);
            good = good && before.size == after.size && before.time == after.time;
        }
        if (!good) {
            fault_lines += QStringLiteral("%1: cannot be copied to be read; try again later").arg(file);
            return false;
        }
    }
    QString note;
    bool const good = rows.open(copy, note);
    if (!note.isEmpty())
        (good ? warning_lines : fault_lines) += note;
    return good;
}

void SESSION::make_plan(std::vector<PROCESSOR_INTERFACE *> const &processors)
{
    actions = std::make_unique<PLAN>();
    ::make_plan(processors, tree, *rule_files, *actions);
    warning_lines += actions->warnings;
}

void SESSION::make_state()
{
    up_to_date = std::make_unique<BUILD_STATE>(rows, *actions, tree, *rule_files, *depot, *rows_of_assets,
                                               current.state_folder + QStringLiteral("/aside"));
}

bool SESSION::clean(bool only_gone, QStringList &removed)
{
    BUILD_STATE::LEFT_OVERS const gone = only_gone ? up_to_date->left_overs() : BUILD_STATE::LEFT_OVERS();
    std::size_t const faults_before = std::size_t(fault_lines.size());
    rows.for_each([&](std::uint64_t key, RECORD_ROW const &row) {
        if (only_gone && gone.rows.count(key) == 0)
            return;
        // What a killed action may have written: it was not there when the action was chosen to run.
        std::uint64_t const wanted =
            RECORDED_TARGET::WRITTEN |
            ((row.flags & RECORD_ROW::OWED) != 0 ? std::uint64_t(RECORDED_TARGET::AWAITED) : 0);
        bool is_needed = false;
        for (RECORDED_TARGET const &target : row.targets) {
            if ((target.flags & wanted) == 0)
                continue;
            QString const name = rows.text(target.path);
            PHYSICAL_PATH const file = product_path(name);
            if (stamp_of(file).size == FILE_STAMP::absent)
                continue;
            if (only_gone && !gone.products.contains(name)) {
                is_needed = true;  // by others; that a build wrote it is known from this row alone
                continue;
            }
            std::uint64_t const state = target.flags & ~RECORDED_TARGET::all_flags;
            bool const is_awaited = (target.flags & wanted & RECORDED_TARGET::AWAITED) != 0;
            if (!is_awaited && state != 0 && state != written_state(file)) {
                warning_lines += QStringLiteral("%1: was changed since a build wrote it, and is left").arg(file);
                continue;
            }
            std::error_code fault;
            if (std::filesystem::remove(std::string(disk_name(file)), fault))
                removed += file;
            else if (fault)
                fault_lines += QStringLiteral("%1: cannot be removed: %2")
                                   .arg(file, QString::fromLocal8Bit(fault.message().c_str()));
        }
        if (!is_needed)
            rows.remove(key);
    });
    QString fault;
    if (std::size_t(fault_lines.size()) == faults_before && !rows.flush(fault))
        fault_lines += fault;
    removed.sort();
    return std::size_t(fault_lines.size()) == faults_before;
}

LOGICAL_PATH SESSION::logical_path(QString const &told) const
{
    if (told.startsWith(QLatin1Char('<')))
        return LOGICAL_PATH(told);
    return PATHS::logical_path(PHYSICAL_PATH(QDir::cleanPath(QDir::current().absoluteFilePath(told))));
}

namespace {

constexpr char project_text[] =
    R"(# A tree of assets: what 'mox build' reads and where its products go. Every setting may be left out; what stands
# behind a # is what then holds.

[paths]
# raw = "raw_data"                 # scenes, pictures and rules, as the artists leave them
# working = "working_data"         # finished products, as the game loads them
# old_raw = "old_raw_data"         # a second pair of trees, for data that is no longer worked on
# old_working = "old_working_data"

[plug_ins]
# files = []                       # modules to load besides those of the program, and folders of such

[database]
# driver = "sqlite"                # or "postgresql", with host, port, user and password_variable (the name of an
#                                  # environment variable)
# name = "working_data/assets.sqlite"
# export_folder = "database"       # below the working tree: tables as text, for version control

[depot]
# kind = "none"                    # "git" stages the products, "p4" opens them; "command" calls the program told:
# program = "client"
# add = ["add"]                    # its arguments in front of the files that came, changed and went
# edit = ["edit"]
# remove = ["delete"]

# Rules for the whole tree, by their kind.
[global.RigidDatabasePatching]
Enabled = true                     # database rows of a model are changed in place
)";

constexpr char rules_text[] =
    R"(# What is to become of the files in this folder and below it. A rules.toml in a folder further down adds to it and goes
# first, property by property. 'mox schema' lists the kinds and their properties, 'mox explain FILE' what holds for a
# file. Three lines make a finished model of every scene:
#
# [RigidModelV2]
# TargetPath = "rigidmodels"       # below the working tree, followed by the scene's folder below this one
# TextureFolder = "rigidmodels/tex"
)";

bool write_new(QString const &file, char const *text, QString &fault)
{
    if (QFile::exists(file)) {
        fault = QStringLiteral("%1: is there already and stays as it is").arg(file);
        return false;
    }
    KN::String error;
    if (KN::write_finished_file(disk_name(file), text, error))
        return true;
    fault = QString::fromStdString(error);
    return false;
}

}  // namespace

bool init_project(QString const &folder, QString &fault)
{
    QString const where = QDir::cleanPath(QDir::current().absoluteFilePath(folder));
    TREE_ROOTS const roots = usual_roots(where);
    for (QString const &root : {roots.raw, roots.working})
        if (!QDir().mkpath(root)) {
            fault = QStringLiteral("%1: cannot be made; is the folder writable?").arg(root);
            return false;
        }
    QString const rules = roots.raw + QStringLiteral("/rules.toml");
    return write_new(where + QStringLiteral("/mox.toml"), project_text, fault) &&
           (QFile::exists(rules) || write_new(rules, rules_text, fault));
}
