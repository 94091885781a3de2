// Why an action has to run: what the record says of its last run against what stands now.
#include "platform/build_host/build_state.h"

#include "platform/build_host/mix.h"
#include "platform/build_host/product_path.h"

namespace {

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

std::uint64_t BUILD_STATE::whole_signature(PLANNED_ACTION const &action, QVector<TARGET_FILE> const &targets)
{
    std::uint64_t all = action.signature;
    for (TARGET_FILE const &target : targets)
        all = mix_text(all, target.logical);
    return all;
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

QString BUILD_STATE::late_reason(PLANNED_ACTION const &action)
{
    for (MISSED const &file : missed)
        if (file.action == action.index && appeared.count(file.path) != 0)
            return QStringLiteral("a file that it looked for has come");
    return {};
}
