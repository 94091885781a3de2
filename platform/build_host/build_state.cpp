#include "platform/build_host/build_state.h"

#include "platform/build_host/action_rows.h"
#include "platform/build_host/disk_name.h"
#include "platform/build_host/mix.h"
#include "platform/build_host/product_path.h"

#include "foundation/finished_file.h"

#include <QtCore/QDir>

#include <bit>
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

// The signature together with what the action writes: declared when it is planned, or, where only the work shows what
// comes of it, afterwards, as the next plan will find it.
std::uint64_t whole_signature(PLANNED_ACTION const &action, QVector<TARGET_FILE> const &targets)
{
    std::uint64_t all = action.signature;
    for (TARGET_FILE const &target : targets)
        all = mix_text(all, target.logical);
    return all;
}

TEXT_KIND name_kind(QString const &product)
{
    return product.startsWith(QLatin1Char('<')) ? TEXT_KIND::PATH : TEXT_KIND::OUTSIDE_PATH;
}

// The first property whose value differs between two texts of property lines: what it was, what it is, and where that
// comes from.
QString difference(QString const &before, QString const &after)
{
    QHash<QString, QString> values;
    for (QString const &line : before.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        QString const told = line.section(QLatin1Char('\t'), 0, 0);
        values[told.section(QStringLiteral(" = "), 0, 0)] = told.section(QStringLiteral(" = "), 1);
    }
    for (QString const &line : after.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        QString const told = line.section(QLatin1Char('\t'), 0, 0);
        QString const place = line.section(QLatin1Char('\t'), 1);
        QString const name = told.section(QStringLiteral(" = "), 0, 0);
        QString const value = told.section(QStringLiteral(" = "), 1);
        QString const was = values.value(name, QStringLiteral("(absent)"));
        if (value != was)
            return QStringLiteral("%1 changed from %2 to %3%4")
                .arg(name, was, value, place.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(place));
    }
    return {};
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

BUILD_STATE::INDEX::INDEX(FILE_TABLE const &files)
    : table(files), slots_of_ids(std::bit_ceil(2 * files.size() + 1), {0, nullptr})
{
    std::size_t const mask = slots_of_ids.size() - 1;
    for (auto entry = files.begin(); entry != files.end(); ++entry) {
        std::uint64_t const id = text_id(entry.key());
        std::size_t slot = id & mask;
        while (slots_of_ids[slot].second != nullptr)
            slot = (slot + 1) & mask;
        slots_of_ids[slot] = {id, entry.value()};
    }
}

FILE_ENTRY *BUILD_STATE::INDEX::find(std::uint64_t id) const
{
    std::size_t const mask = slots_of_ids.size() - 1;
    for (std::size_t slot = id & mask; slots_of_ids[slot].second != nullptr; slot = (slot + 1) & mask)
        if (slots_of_ids[slot].first == id)
            return slots_of_ids[slot].second;
    return nullptr;
}

bool BUILD_STATE::INDEX::has_folded(std::uint64_t id) const
{
    QString const root = QStringLiteral("<working>/");
    if (folded.empty())
        for (auto entry = table.lowerBound(LOGICAL_PATH(root)); entry != table.end() && entry.key().startsWith(root);
             ++entry)
            folded.insert(text_id(entry.key().toLower()));
    return folded.count(id) != 0;
}

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

BUILD_STATE::CHANGE BUILD_STATE::change_of(RECORDED_FILE const &file)
{
    FILE_ENTRY *const entry = index.find(file.path);
    if (RECORDED_FILE::is_look_up(file.stamp)) {
        bool const is_listed =
            file.stamp.size == RECORDED_FILE::UNLISTED_FOLDED ? index.has_folded(file.path) : entry != nullptr;
        return is_listed == (file.stamp.size == RECORDED_FILE::LISTED) ? CHANGE::NONE : CHANGE::CONTENTS;
    }
    FILE_STAMP stands;
    QString physical;
    if (entry != nullptr) {
        if (entry->size == FILE_ENTRY::not_asked) {
            FILE_STAMP const asked = stamp_of(entry->physical);
            entry->size = asked.size;
            entry->time = asked.time;
        }
        stands.size = entry->size;
        stands.time = entry->time;
    } else if (auto const outside = record.outside_paths().find(file.path); outside != record.outside_paths().end()) {
        physical = outside->second;
        stands = stamp_of(physical);
    }
    if (stands.size != file.stamp.size)
        return CHANGE::CONTENTS;
    if (stands.size == FILE_STAMP::absent || stands.time == file.stamp.time)
        return CHANGE::NONE;
    if (entry != nullptr)
        physical = entry->physical;
    return hashes.of(file.path, physical, stands) == file.stamp.hash ? CHANGE::TIME : CHANGE::CONTENTS;
}

// On disk, as the tree was listed.
bool BUILD_STATE::is_there(std::uint64_t path) const
{
    if (FILE_ENTRY const *const entry = index.find(path))
        return entry->is_on_disk();
    auto const outside = record.outside_paths().find(path);
    return outside != record.outside_paths().end() && stamp_of(outside->second).size != FILE_STAMP::absent;
}

// As is_there; the old tree's file of the same logical path is another one.
bool BUILD_STATE::product_stands(std::uint64_t name) const
{
    FILE_ENTRY const *const entry = index.find(name);
    return is_there(name) && (entry == nullptr || !is_of_old_tree(entry->physical));
}

std::uint64_t BUILD_STATE::answer_of(std::uint64_t question, PLANNED_ACTION const &action)
{
    auto const found = questions.find(question);
    if (found == questions.end())
        return 0;
    RULE const rule = found->second.ask(rules, action);
    auto const [answer, is_new] = answers.try_emplace({question, rule.data()}, 0);
    if (is_new)
        answer->second = found->second.answer(rule);
    return answer->second;
}

QString BUILD_STATE::stale_reason(PLANNED_ACTION const &action)
{
    RECORD_ROW const *const row = record.find(key(action));
    if (row != nullptr && (row->flags & RECORD_ROW::OWED) != 0)
        return QStringLiteral("an earlier build did not bring it to a good end");
    if (!action.has_products)
        return {};
    if (row == nullptr)
        return QStringLiteral("the build record does not know it");
    if (row->signature != whole_signature(action, action.targets)) {
        QString const changed = difference(record.text(row->account), account_of(action));
        return !changed.isEmpty() ? changed : QStringLiteral("its files or the actions that belong to it have changed");
    }
    if (QString const reason = input_reason(action, *row); !reason.isEmpty())
        return reason;
    // An action without products reads its files for those that use what it holds in memory.
    for (PLAN_EDGE const &edge : plan.dependencies.of(action.index)) {
        PLANNED_ACTION const &other = plan.actions[std::size_t(edge.other)];
        RECORD_ROW const *const held = edge.flag && !other.has_products ? record.find(key(other)) : nullptr;
        if (QString const reason = held != nullptr ? input_reason(other, *held) : QString(); !reason.isEmpty())
            return reason;
    }
    for (RECORDED_TARGET const &target : row->targets) {
        if ((target.flags & RECORDED_TARGET::STOOD) != 0 && !product_stands(target.path))
            return QStringLiteral("%1 is missing").arg(record.text(target.path));
    }
    return {};
}

// Which of the rules and files that an action read has changed; empty if none has.
QString BUILD_STATE::input_reason(PLANNED_ACTION const &action, RECORD_ROW const &row)
{
    for (RECORDED_READING const &reading : row.readings)
        if (answer_of(reading.question, action) != reading.answer)
            return reading_reason(reading, action);
    bool is_touched = false;
    for (RECORDED_FILE const &file : row.files) {
        CHANGE const change = change_of(file);
        if (change == CHANGE::CONTENTS)
            return file_reason(file);
        is_touched |= change == CHANGE::TIME;
    }
    if (is_touched)
        touched.push_back(key(action));
    return {};
}

QString BUILD_STATE::file_reason(RECORDED_FILE const &file) const
{
    bool const was_there = file.stamp.size >= 0 || file.stamp.size == RECORDED_FILE::LISTED;
    return QStringLiteral("%1 %2").arg(record.text(file.path), !was_there            ? QStringLiteral("has appeared")
                                                               : is_there(file.path) ? QStringLiteral("has changed")
                                                                                     : QStringLiteral("is gone"));
}

QString BUILD_STATE::reading_reason(RECORDED_READING const &reading, PLANNED_ACTION const &action) const
{
    auto const found = questions.find(reading.question);
    if (found == questions.end())
        return QStringLiteral("a rule that it read is not known any more");
    RULE const rule = found->second.ask(rules, action);
    QString const changed = difference(record.text(reading.answer), found->second.answer_text(rule));
    return !changed.isEmpty()
               ? changed
               : QStringLiteral("a rule %1 has %2").arg(found->second.kind, rule.exists ? "come" : "gone");
}

// What the signature of an action stands for, as far as it has names.
QString BUILD_STATE::account_of(PLANNED_ACTION const &action) const
{
    QString text;
    if (!action.sources.isEmpty())
        for (RULE_DATA const *const rule : rule_store.planning_rules(action.sources.first()))
            for (QString const &property : rule->read)
                text += property_line(rule->kind, property, rule);
    PROCESSOR_INTERFACE const *const processor = action.action->processor();
    if (processor != nullptr)
        text += QStringLiteral("converter = %1 %2\n")
                    .arg(processor->converter_name(), QString::number(processor->converter_version()));
    if (!action.action->error().isEmpty())
        text += QStringLiteral("error = '%1'\n").arg(action.action->error());
    return text;
}

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

QString BUILD_STATE::late_reason(PLANNED_ACTION const &action)
{
    for (MISSED const &file : missed)
        if (file.action == action.index && appeared.count(file.path) != 0)
            return QStringLiteral("a file that it looked for has come");
    return {};
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

bool BUILD_STATE::is_planned(std::uint64_t key) const { return planned_keys.count(key) != 0; }

QStringList BUILD_STATE::products_of_nobody() const
{
    QStringList products;
    if (std::all_of(keys.begin(), keys.end(), [&](std::uint64_t key) { return record.find(key) != nullptr; }) &&
        keys.size() == record.size())
        return products;
    std::unordered_set<std::uint64_t> claimed;
    for (PLANNED_ACTION const &action : plan.actions)
        for (TARGET_FILE const &target : action.targets)
            claimed.insert(text_id(product_name(target.physical, target.logical)));
    // What they wrote besides, and what they read, whoever wrote it: a picture that two models share.
    std::unordered_set<std::uint64_t> read;
    record.for_each([&](std::uint64_t key, RECORD_ROW const &row) {
        if (!is_planned(key))
            return;
        for (RECORDED_TARGET const &target : row.targets)
            claimed.insert(target.path);
        for (RECORDED_FILE const &file : row.files)
            read.insert(file.path);
    });
    auto const is_read = [&](PHYSICAL_PATH const &file) {
        LOGICAL_PATH const logical = PATHS::logical_path(file);
        FILE_ENTRY const *const entry = files.peek(logical);
        return entry != nullptr && entry->physical == file && read.count(text_id(logical)) != 0;
    };
    record.for_each([&](std::uint64_t key, RECORD_ROW const &row) {
        for (RECORDED_TARGET const &target : row.targets) {
            if (is_planned(key) || (target.flags & RECORDED_TARGET::WRITTEN) == 0 || claimed.count(target.path) != 0)
                continue;
            QString const name = record.text(target.path);
            PHYSICAL_PATH const file = product_path(name);
            if (stamp_of(file).size != FILE_STAMP::absent && !is_read(file))
                products += name;
        }
    });
    products.removeDuplicates();
    products.sort();
    return products;
}
