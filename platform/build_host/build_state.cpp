#include "platform/build_host/build_state.h"

#include "platform/build_host/action_rows.h"
#include "platform/build_host/disk_name.h"
#include "platform/build_host/mix.h"
#include "platform/build_host/product_path.h"

#include "foundation/finished_file.h"

#include <QtCore/QDir>

#include <algorithm>
#include <unordered_set>

namespace {

constexpr std::int64_t flush_interval = 500'000'000;  // ns; what a kill costs at most in finished actions

// Class, first source and main target tell an action apart; one without files is known by its name.
std::uint64_t action_key(PLANNED_ACTION const &action)
{
    std::uint64_t state = mix_text(0, action.class_name);
    TARGET_FILE const *const target = action.main_target();
    if (!action.sources.isEmpty())
        state = mix_text(state, action.sources.first());
    if (target != nullptr)
        state = mix_text(state, product_name(target->physical, target->logical));
    if (action.sources.isEmpty() && target == nullptr)
        state = mix_text(state, action.action->get_name(true));
    return state;
}

TEXT_KIND name_kind(QString const &product)
{
    return product.startsWith(QLatin1Char('<')) ? TEXT_KIND::PATH : TEXT_KIND::OUTSIDE_PATH;
}

}  // namespace

// What an action has while it runs.
struct BUILD_STATE::RUNNING {
    RUNNING(PLANNED_ACTION const &action, FILE_TABLE const &files, QString const &side_folder)
        : guard(action, side_folder, action.action->revert_target_files_if_failed()), account(action, files)
    {}
    TARGET_GUARD guard;
    ACTION_ACCOUNT account;
};

BUILD_STATE::BUILD_STATE(BUILD_RECORD &build_record, PLAN const &actions, FILE_TREE const &tree, RULE_STORE &store,
                         DEPOT &tree_depot, ASSET_DATABASE &asset_database, QString side)
    : record(build_record), plan(actions), files(tree.table), rule_store(store), rules(store), depot(tree_depot),
      database(asset_database), side_folder(std::move(side)), index(tree.table)
{
    // Actions that nothing tells apart are so by their order.
    planned_keys.reserve(plan.actions.size());
    keys.reserve(plan.actions.size());
    for (PLANNED_ACTION const &action : plan.actions) {
        std::uint64_t key = action_key(action);
        while (!planned_keys.insert(key).second)
            key = mix(key, 1);
        keys.push_back(key);
    }
    for (auto const &[id, text] : record.questions())
        questions.emplace(id, RULE_QUESTION::from_text(text));
    running.resize(plan.actions.size());
}

BUILD_STATE::~BUILD_STATE() = default;

RECORD_TEXTS BUILD_STATE::texts_of(PLANNED_ACTION const &action) const
{
    RECORD_TEXTS texts;
    texts.action_class = action.class_name;
    if (!action.sources.isEmpty())
        texts.source = action.sources.first();
    if (TARGET_FILE const *const target = action.main_target())
        texts.target = target->logical;
    for (ACTION_LINE const &line : action.action->lines())
        for (QString const &part : line.text.split(QLatin1Char('\n')))
            texts.output += QStringLiteral("%1 %2\n").arg(QString::number(line.level), part);
    return texts;
}

// Marks all of them as owed in one go: whatever ends this process, they will be run again, and so will what they pull.
bool BUILD_STATE::run_begins(QVector<PLANNED_ACTION const *> const &scheduled)
{
    QDir(side_folder).removeRecursively();  // of a build that was killed; its actions are owed
    if (!QDir().mkpath(side_folder)) {
        fault_lines += QStringLiteral("%1: cannot be made; is the folder writable?").arg(side_folder);
        return false;
    }
    for (PLANNED_ACTION const *action : scheduled) {
        owed.insert(key(*action));
        if (auto const *const rows = dynamic_cast<ACTION_UPDATE_DB const *>(action->action))
            database.announce(rows->table_rows());
        RECORD_ROW row;
        RECORD_ROW const *const before = record.find(key(*action));
        if (before != nullptr)
            row = *before;
        std::vector<RECORDED_TARGET> targets(row.targets.begin(), row.targets.end());
        for (TARGET_FILE const &target : action->targets) {
            if (action->reads(target.logical) || KN::exists(disk_name(target.physical)))
                continue;
            QString const name = product_name(target.physical, target.logical);
            std::uint64_t const id = text_id(name);
            auto const known =
                std::find_if(targets.begin(), targets.end(), [&](auto const &old) { return old.path == id; });
            if (known != targets.end()) {
                known->flags |= RECORDED_TARGET::AWAITED;
            } else {
                targets.push_back({id, RECORDED_TARGET::AWAITED});
                record.put_text(id, name, name_kind(name));
            }
        }
        row.flags |= RECORD_ROW::OWED;
        row.targets = targets;
        record.put(key(*action), row, texts_of(*action));
    }
    QString fault;
    next_flush = now() + flush_interval;
    if (record.flush(fault))
        return true;
    fault_lines += fault;
    return false;
}

bool BUILD_STATE::action_begins(PLANNED_ACTION const &action)
{
    auto &begun = running[std::size_t(action.index)];
    begun = std::make_unique<RUNNING>(action, files, side_folder);
    if (begun->guard.fault().isEmpty())
        return true;
    action.action->output_line(begun->guard.fault(), 2);
    return false;
}

int BUILD_STATE::action_ends(PLANNED_ACTION const &action, int status)
{
    std::unique_ptr<RUNNING> const ended = std::move(running[std::size_t(action.index)]);
    ACTION_ACCOUNT &account = ended->account;
    account.stop();

    if (status == ACTION_INTERFACE::DONE) {
        TARGET_FILE const *const target = action.main_target();
        if (target != nullptr && !KN::exists(disk_name(target->physical))) {
            action.action->output_line(
                QStringLiteral("%1: the action has not written its target").arg(target->physical), 2);
            status = ACTION_INTERFACE::FAILED;
        }
    }
    if (status == ACTION_INTERFACE::DONE) {
        keep_books(action, account);
        flush_if_due();
        return status;
    }

    for (ACTION_ACCOUNT::BOOKING const &booking : account.booked())
        ended->guard.add(booking.file, booking.stood);
    QString fault;
    if (action.action->revert_target_files_if_failed() && !ended->guard.restore(fault))
        action.action->output_line(fault, 2);
    RECORD_ROW row;
    if (RECORD_ROW const *const before = record.find(key(action)))
        row = *before;
    row.flags |= RECORD_ROW::OWED;
    record.put(key(action), row, texts_of(action));
    flush_if_due();
    return status;
}

// What the action leaves behind, once it has succeeded.
void BUILD_STATE::keep_books(PLANNED_ACTION const &action, ACTION_ACCOUNT const &account)
{
    RECORD_ROW const *const before = record.find(key(action));
    RECORD_ROW row;
    QString const told = account_of(action);
    row.account = text_id(told);
    record.put_text(row.account, told, TEXT_KIND::TOLD);

    // What it declares now counts: some know only after the work what came of it.
    QVector<LOGICAL_PATH> declared_sources;
    QVector<TARGET_FILE> declared;
    qint64 time = 0;
    action.action->get_affected_files(declared_sources, declared, time, files, rules);
    row.signature = whole_signature(action, declared);
    std::unordered_set<std::uint64_t> declared_ids;
    for (TARGET_FILE const &target : declared)
        declared_ids.insert(text_id(target.logical));
    for (ACTION_ACCOUNT::BOOKING const &booking : account.booked())
        if (stamp_of(booking.file).size != FILE_STAMP::absent)  // else a scratch file
            declared.append({booking.file, PATHS::logical_path(booking.file), false});

    std::vector<RECORDED_TARGET> targets;
    std::unordered_set<std::uint64_t> own;
    for (TARGET_FILE const &target : declared) {
        if (action.reads(target.logical) || !own.insert(text_id(target.logical)).second)
            continue;
        QString const name = product_name(target.physical, target.logical);
        std::uint64_t const id = text_id(name);
        std::uint64_t flags = 0;
        if (KN::exists(disk_name(target.physical)))
            flags |= RECORDED_TARGET::STOOD;
        if (flags != 0 && was_written_since(target.physical, account.started()))
            flags |= RECORDED_TARGET::WRITTEN | written_state(target.physical);
        targets.push_back({id, flags});
        record.put_text(id, name, name_kind(name));
    }
    // What earlier runs wrote stays known as the build's own.
    for (RECORDED_TARGET const &earlier : before != nullptr ? before->targets : std::span<RECORDED_TARGET const>()) {
        if ((earlier.flags & (RECORDED_TARGET::WRITTEN | RECORDED_TARGET::AWAITED)) == 0)
            continue;
        auto const still = std::find_if(targets.begin(), targets.end(),
                                        [&](auto const &target) { return target.path == earlier.path; });
        std::uint64_t const state = earlier.flags & ~RECORDED_TARGET::all_flags;
        if (still == targets.end())
            targets.push_back({earlier.path, RECORDED_TARGET::WRITTEN | state});
        else if ((still->flags & RECORDED_TARGET::WRITTEN) == 0)
            still->flags |= RECORDED_TARGET::WRITTEN | state;
    }
    row.targets = targets;

    for (TARGET_FILE const &target : action.targets)
        own.insert(text_id(target.logical));
    std::vector<RECORDED_FILE> const looked_at = files_of(action, account, own);
    row.files = looked_at;

    keep_late(action, account, looked_at);

    std::vector<RECORDED_READING> readings;
    for (RULE_QUESTION const &question : account.questions()) {
        RULE const rule = question.ask(rules, action);
        RECORDED_READING const reading{text_id(question.text()), question.answer(rule)};
        readings.push_back(reading);
        record.put_text(reading.question, question.text(), TEXT_KIND::QUESTION);
        record.put_text(reading.answer, question.answer_text(rule), TEXT_KIND::TOLD);
    }
    row.readings = readings;
    // Before the record says that the action is done: what it knows is not booked again. The action books its declared
    // targets itself, if they are to be booked; what a library wrote beside them, it does not know of.
    auto const is_awaited = [&](std::uint64_t id) {  // it came with a run that was broken off
        auto const targets_before = before != nullptr ? before->targets : std::span<RECORDED_TARGET const>();
        return std::any_of(targets_before.begin(), targets_before.end(), [&](RECORDED_TARGET const &earlier) {
            return earlier.path == id && (earlier.flags & RECORDED_TARGET::AWAITED) != 0;
        });
    };
    for (ACTION_ACCOUNT::BOOKING const &booking : account.booked()) {
        LOGICAL_PATH const path = PATHS::logical_path(booking.file);
        bool const is_product =
            booking.is_told || (path.startsWith(QLatin1String("<working>/")) && declared_ids.count(text_id(path)) == 0);
        if (is_product && was_written_since(booking.file, account.started()))
            depot.added(booking.file, booking.stood && !is_awaited(text_id(product_name(booking.file, path))));
    }
    for (PHYSICAL_PATH const &file : account.removed())
        depot.removed(file);

    record.put(key(action), row, texts_of(action));
}

// What a later action makes of these: late_reason.
void BUILD_STATE::keep_late(PLANNED_ACTION const &action, ACTION_ACCOUNT const &account,
                            std::vector<RECORDED_FILE> const &looked_at)
{
    std::lock_guard const guard(late_lock);
    std::erase_if(missed, [&](MISSED const &earlier) { return earlier.action == action.index; });
    for (RECORDED_FILE const &file : looked_at)
        if (file.stamp.size == RECORDED_FILE::UNLISTED || file.stamp.size == RECORDED_FILE::UNLISTED_FOLDED)
            missed.push_back({file.path, action.index});
    for (ACTION_ACCOUNT::BOOKING const &booking : account.booked()) {
        LOGICAL_PATH const path = PATHS::logical_path(booking.file);
        if (index.find(text_id(path)) == nullptr) {
            appeared.insert(text_id(path));
            appeared.insert(text_id(path.toLower()));
        }
    }
}

std::vector<RECORDED_FILE> BUILD_STATE::files_of(PLANNED_ACTION const &action, ACTION_ACCOUNT const &account,
                                                 std::unordered_set<std::uint64_t> const &own_targets)
{
    if (RECORD_ROW const *const before = record.find(key(action)))
        for (RECORDED_FILE const &earlier : before->files)
            hashes.learn(earlier.path, earlier.stamp);

    std::vector<RECORDED_FILE> list;
    for (auto const &[id, seen] : account.files()) {
        auto const &[path, file] = seen;
        if (!file.is_declared && own_targets.count(id) != 0)
            continue;
        if (RECORDED_FILE::is_look_up(file.stamp)) {
            list.push_back({id, file.stamp});
            record.put_text(id, path, TEXT_KIND::PATH);
            continue;
        }
        FILE_STAMP stamp = file.stamp;
        FILE_STAMP const stands = file.physical.isEmpty() ? FILE_STAMP() : stamp_of(file.physical);
        if (!file.is_declared && stamp.size != FILE_STAMP::absent && stands.size == FILE_STAMP::absent)
            continue;  // a scratch file of the action
        if (stamp.size != FILE_STAMP::absent && stamp.size == stands.size && stamp.time == stands.time)
            stamp.hash = hashes.of(id, file.physical, stamp);  // else it has changed meanwhile: out of date at once
        bool const is_inside = path.startsWith(QLatin1String("<raw>/")) || path.startsWith(QLatin1String("<working>/"));
        list.push_back({id, stamp});
        record.put_text(id, path, is_inside ? TEXT_KIND::PATH : TEXT_KIND::OUTSIDE_PATH);
    }
    std::sort(list.begin(), list.end(), [](auto const &a, auto const &b) { return a.path < b.path; });
    return list;
}

void BUILD_STATE::flush_if_due()
{
    std::int64_t due = next_flush.load();
    std::int64_t const moment = now();
    QString fault;
    if (moment < due || !next_flush.compare_exchange_strong(due, moment + flush_interval) || record.flush(fault))
        return;
    std::lock_guard const guard(fault_lock);
    fault_lines += fault;
}

void BUILD_STATE::action_left_out(PLANNED_ACTION const &) {}  // it is owed since the run began

bool BUILD_STATE::run_ends()
{
    // Files that were only touched: with their new times, the next build need not read them.
    for (std::uint64_t const touched_key : touched) {
        if (owed.count(touched_key) != 0)
            continue;  // it ran for another reason, and has a row of that run
        RECORD_ROW row = *record.find(touched_key);
        std::vector<RECORDED_FILE> looked_at(row.files.begin(), row.files.end());
        for (RECORDED_FILE &file : looked_at)
            if (FILE_ENTRY const *const entry = index.find(file.path))
                file.stamp.time = entry->time;
        row.files = looked_at;
        record.put_state(touched_key, row);
    }
    touched.clear();

    QString fault;
    QStringList exported;
    if (!database.finish(exported, fault))
        fault_lines += fault;
    for (QString const &file : exported)
        depot.added(file, files.peek(PATHS::logical_path(PHYSICAL_PATH(file))) != nullptr);
    if (!depot.finish(fault))
        fault_lines += fault;
    if (!record.flush(fault))
        fault_lines += fault;
    QDir(side_folder).removeRecursively();
    return fault_lines.isEmpty();
}

bool BUILD_STATE::has_read(PLANNED_ACTION const &action, LOGICAL_PATH const &file) const
{
    RECORD_ROW const *const row = record.find(key(action));
    std::uint64_t const id = text_id(file);
    return row != nullptr && std::any_of(row->files.begin(), row->files.end(),
                                         [&](RECORDED_FILE const &known) { return known.path == id; });
}

QString BUILD_STATE::last_output(PLANNED_ACTION const &action) const { return record.texts(key(action)).output; }
