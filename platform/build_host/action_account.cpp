#include "platform/build_host/action_account.h"

#include "platform/build_host/disk_name.h"
#include "platform/build_host/mix.h"
#include "platform/build_host/rule_store.h"

#include <QtCore/QDir>

namespace {
QString const own_source = QStringLiteral(".");
}

QString RULE_QUESTION::text() const { return (QStringList{path, kind} + properties).join(QLatin1Char('\t')); }

RULE_QUESTION RULE_QUESTION::from_text(QString const &text)
{
    QStringList const parts = text.split(QLatin1Char('\t'));
    return {parts.value(0), parts.value(1), parts.mid(2)};
}

RULE RULE_QUESTION::ask(RULE_CACHE const &rules, PLANNED_ACTION const &action) const
{
    if (path.isEmpty())
        return rules.get_global(kind);
    if (path != own_source)
        return rules.get(LOGICAL_PATH(path), kind);
    return action.sources.isEmpty() ? RULE() : rules.get(action.sources.first(), kind);
}

std::uint64_t RULE_QUESTION::answer(RULE const &rule) const
{
    std::uint64_t state = rule_answer(rule, QString());
    for (QString const &property : properties)
        state = mix(state, rule_answer(rule, property));
    return state;
}

QString property_line(QString const &kind, QString const &property, RULE_DATA const *rule)
{
    RULE_PROPERTY const *const found = rule != nullptr ? rule->find(property) : nullptr;
    QString value = QStringLiteral("(absent)");
    if (found != nullptr)
        value = found->value.isNull() ? QStringLiteral("(null)")
                                      : QLatin1Char('\'') + found->value.toString() + QLatin1Char('\'');
    RULE_ORIGIN const *origin = found != nullptr ? found->origin : nullptr;
    if (origin == nullptr && rule != nullptr && !rule->rules.empty())
        origin = rule->rules.back();
    QString const place =
        origin != nullptr ? QStringLiteral("%1:%2").arg(origin->file, QString::number(origin->line)) : QString();
    return QStringLiteral("%1.%2 = %3\t%4\n").arg(kind, property, value, place);
}

QString RULE_QUESTION::answer_text(RULE const &rule) const
{
    QString text;
    for (QString const &property : properties)
        text += property_line(kind, property, rule.data());
    return text;
}

ACTION_ACCOUNT::ACTION_ACCOUNT(PLANNED_ACTION const &planned, FILE_TABLE const &files)
    : action(planned), table(files), start(now())
{
    for (LOGICAL_PATH const &source : action.sources) {
        FILE_ENTRY const *const entry = table.peek(source);
        see(source, entry != nullptr ? QString(entry->physical) : QString(), true);
    }
    run_watch_before = set_run_watch(this);
    file_watch_before = KN::set_thread_file_watch(this);
}

ACTION_ACCOUNT::~ACTION_ACCOUNT() { stop(); }

void ACTION_ACCOUNT::stop()
{
    if (!is_watching)
        return;
    is_watching = false;
    set_run_watch(run_watch_before);
    KN::set_thread_file_watch(file_watch_before);
}

// What stands there now: a file that changes later, while the action runs, is then out of date at once.
void ACTION_ACCOUNT::see(LOGICAL_PATH const &path, QString const &physical, bool is_declared)
{
    auto const [place, is_new] = seen.try_emplace(text_id(path));
    if (is_new || RECORDED_FILE::is_look_up(place->second.second.stamp))
        place->second = {path, {physical, physical.isEmpty() ? FILE_STAMP() : stamp_of(physical), is_declared}};
}

void ACTION_ACCOUNT::file_looked_up(LOGICAL_PATH const &path, LOOK_UP answer)
{
    FILE_STAMP stamp;
    stamp.size = answer == LOOK_UP::FOUND    ? RECORDED_FILE::LISTED
                 : answer == LOOK_UP::ABSENT ? RECORDED_FILE::UNLISTED
                                             : RECORDED_FILE::UNLISTED_FOLDED;
    seen.try_emplace(text_id(path), path, FILE{{}, stamp, false});
}

static PHYSICAL_PATH whole_path(KN::String const &disk_name)
{
    QString const name = QString::fromUtf8(disk_name.data(), int(disk_name.size()));
    return PHYSICAL_PATH(QDir::cleanPath(QDir::current().absoluteFilePath(name)));
}

void ACTION_ACCOUNT::looked_for(KN::String const &disk_name, bool)
{
    PHYSICAL_PATH const physical = whole_path(disk_name);
    see(PATHS::logical_path(physical), physical, false);
}

void ACTION_ACCOUNT::written(KN::String const &disk_name)
{
    PHYSICAL_PATH const physical = whole_path(disk_name);
    LOGICAL_PATH const path = PATHS::logical_path(physical);
    FILE_ENTRY const *const entry = table.peek(path);
    bookings.push_back({physical, entry != nullptr && entry->is_on_disk(), false});
    if (entry != nullptr || !path.startsWith(QLatin1String("<working>/")))
        return;
    // Actions that come later may look it up.
    FILE_ENTRY *const fresh = new FILE_ENTRY;
    fresh->physical = physical;
    fresh->state = FILE_ENTRY::PLANNED;
    if (table.insert(path, fresh) != fresh)
        delete fresh;
}

void ACTION_ACCOUNT::rule_asked(LOGICAL_PATH const &path, QString const &kind, RULE const &rule)
{
    bool const is_own = !action.sources.isEmpty() && path == action.sources.first();
    QString const shown = is_own ? own_source : QString(path);
    for (ASKED const &earlier : asked)
        if (earlier.kind == kind && earlier.path == shown)
            return;
    asked.push_back({shown, kind, rule.data(), {}});
}

void ACTION_ACCOUNT::property_read(RULE_DATA const &rule, QString const &property)
{
    bool is_asked = false;
    for (ASKED &question : asked)
        if (question.data == &rule) {
            question.properties.insert(property);
            is_asked = true;
        }
    if (!is_asked)  // a rule that the action has kept since planning
        asked.push_back({own_source, rule.kind, &rule, {property}});
}

void ACTION_ACCOUNT::file_booked(PHYSICAL_PATH const &path, bool present)
{
    bookings.push_back({whole_path(disk_name(path)), present, true});
}

void ACTION_ACCOUNT::file_removed(PHYSICAL_PATH const &path) { removals.push_back(whole_path(disk_name(path))); }

std::vector<RULE_QUESTION> ACTION_ACCOUNT::questions() const
{
    std::vector<RULE_QUESTION> all;
    for (ASKED const &question : asked) {
        QStringList properties;
        for (QString const &property : question.properties)
            properties += property;
        all.push_back({question.path, question.kind, properties});
    }
    return all;
}
