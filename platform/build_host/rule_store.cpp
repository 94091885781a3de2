#include "platform/build_host/rule_store.h"

#include "platform/build_host/mix.h"
#include "platform/build_host/rule_file.h"
#include "platform/build_host/run_watch.h"

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

namespace {

// The store whose planning this thread does.
thread_local RULE_STORE const *planning = nullptr;

struct TEXT_HASH {
    using is_transparent = void;
    std::size_t operator()(QStringView text) const { return std::size_t(qHash(text)); }
};
struct TEXT_EQUAL {
    using is_transparent = void;
    bool operator()(QStringView a, QStringView b) const { return a == b; }
};
template <class VALUE>
using BY_TEXT = std::unordered_map<QString, VALUE, TEXT_HASH, TEXT_EQUAL>;

// The rules of one kind that may cover files of a scope, the weakest first, and what they come to.
struct KIND_RULES {
    struct OUTCOME {
        std::uint64_t matching;           // the rules that match, as a hash of their places
        std::unique_ptr<RULE_DATA> data;  // null: none matches
    };

    QString kind;
    std::vector<RULE_ENTRY const *> chain;
    bool all_match = true;
    std::vector<OUTCOME> outcomes;
    bool asked_while_planning = false;
};

// A folder with rules of its own, and those below it that have none.
struct SCOPE {
    SCOPE const *outer = nullptr;
    std::vector<RULE_ENTRY const *> rules;
    std::vector<std::unique_ptr<KIND_RULES>> kinds;  // those that were asked for

    KIND_RULES *find(QString const &kind) const
    {
        for (auto const &known : kinds)
            if (known->kind == kind)
                return known.get();
        return nullptr;
    }
};

QStringView view(QString const &text) { return text; }

QStringView folder_of(QStringView path)
{
    return path.left(std::max<qsizetype>(0, path.lastIndexOf(QLatin1Char('/'))));
}

// The values of the given rules, each on top of those before it.
std::unique_ptr<RULE_DATA> combine(QString const &kind, std::vector<RULE_ENTRY const *> const &rules)
{
    auto data = std::make_unique<RULE_DATA>();
    data->kind = kind;
    auto const drop = [&](QString const &name) {
        std::erase_if(data->properties, [&](RULE_PROPERTY const &property) { return property.name == name; });
    };
    for (RULE_ENTRY const *const rule : rules) {
        if (!rule->inherit) {
            data->properties.clear();
            data->rules.clear();
        }
        data->rules.push_back(&rule->origin);
        for (QString const &name : rule->unset)
            drop(name);
        for (RULE_PROPERTY const &property : rule->properties) {
            drop(property.name);
            data->properties.push_back(property);
        }
    }
    std::sort(data->properties.begin(), data->properties.end(),
              [](RULE_PROPERTY const &a, RULE_PROPERTY const &b) { return a.name < b.name; });
    return data;
}

// What planning got from a rule. Many files share one, so the last result is kept.
std::uint64_t answers(RULE_DATA const *data)
{
    if (!data)
        return 0;
    if (data->answered != data->read.size() || data->read.empty()) {
        std::sort(data->read.begin(), data->read.end());
        data->answers = mix_text(1, data->kind);
        for (QString const &name : data->read)
            data->answers = mix(mix_text(data->answers, name), rule_answer(RULE(data), name));
        data->answered = data->read.size();
    }
    return data->answers;
}

}  // namespace

struct RULE_STORE::CONTENTS {
    std::vector<std::unique_ptr<RULE_ENTRY>> rules;  // in the order of their files
    BY_TEXT<std::unique_ptr<SCOPE>> scopes;          // by the folder that holds the rules

    mutable std::shared_mutex lock;  // of everything below, and of what scopes know by kind
    BY_TEXT<SCOPE *> scope_of_folder;
    BY_TEXT<std::unique_ptr<RULE_DATA>> globals;
    QStringList globals_asked;  // while planning

    SCOPE *find_scope(QStringView folder);
    KIND_RULES &gather(SCOPE &scope, QString const &kind);
    // The place of the outcome for `path`, from what is known; null if it has to be worked out.
    KIND_RULES::OUTCOME const *known_outcome(KIND_RULES const &of_kind, LOGICAL_PATH const &path,
                                             std::uint64_t &matching) const;
    RULE_DATA const *work_out(KIND_RULES &of_kind, LOGICAL_PATH const &path, std::uint64_t matching);
};

RULE_PROPERTY const *RULE_DATA::find(QString const &name) const
{
    for (RULE_PROPERTY const &property : properties)
        if (property.name == name)
            return &property;
    return nullptr;
}

QVariant RULE::value(QString const &property) const
{
    if (!held)
        return {};
    if (RUN_WATCH *const watch = run_watch()) {
        watch->property_read(*held, property);
    } else if (planning) {
        auto &read = held->read;
        if (std::find(read.begin(), read.end(), property) == read.end())
            read.push_back(property);
    }
    RULE_PROPERTY const *const found = held->find(property);
    return found ? found->value : QVariant();
}

std::uint64_t rule_answer(RULE const &rule, QString const &property)
{
    if (property.isEmpty() || !rule.exists)
        return rule.exists;
    RULE_PROPERTY const *const found = rule.data()->find(property);
    return mix_value(2, found ? found->value : QVariant());
}

RULE RULE_CACHE::get(LOGICAL_PATH const &path, QString const &kind) const { return store->get(path, kind); }

RULE RULE_CACHE::get_global(QString const &kind) const { return store->get_global(kind); }

RULE_STORE::RULE_STORE() : contents(std::make_unique<CONTENTS>()) {}

RULE_STORE::~RULE_STORE() = default;

bool RULE_STORE::add(QByteArray const &text, QString const &shown, LOGICAL_PATH const &folder, bool is_project,
                     QStringList &faults)
{
    std::vector<std::unique_ptr<RULE_ENTRY>> read;
    bool const good = read_rule_file(text, shown, folder, is_project, read, faults);
    for (std::unique_ptr<RULE_ENTRY> &rule : read) {
        if (!rule->is_global) {
            std::unique_ptr<SCOPE> &scope = contents->scopes[folder];
            if (!scope)
                scope = std::make_unique<SCOPE>();
            scope->rules.push_back(rule.get());
        }
        contents->rules.push_back(std::move(rule));
    }
    contents->scope_of_folder.clear();
    return good;
}

// Null where no rules stand at or above the folder.
SCOPE *RULE_STORE::CONTENTS::find_scope(QStringView folder)
{
    auto const known = scope_of_folder.find(folder);
    if (known != scope_of_folder.end())
        return known->second;
    SCOPE *const outer = folder.contains(QLatin1Char('/')) ? find_scope(folder_of(folder)) : nullptr;
    auto const own = scopes.find(folder);
    if (own != scopes.end())
        own->second->outer = outer;
    SCOPE *const scope = own != scopes.end() ? own->second.get() : outer;
    scope_of_folder.emplace(folder.toString(), scope);
    return scope;
}

KIND_RULES &RULE_STORE::CONTENTS::gather(SCOPE &scope, QString const &kind)
{
    if (KIND_RULES *const known = scope.find(kind))
        return *known;
    auto gathered = std::make_unique<KIND_RULES>();
    gathered->kind = kind;
    for (SCOPE const *at = &scope; at; at = at->outer)
        for (std::size_t i = at->rules.size(); i-- > 0;)
            if (at->rules[i]->kind == kind)
                gathered->chain.push_back(at->rules[i]);
    std::reverse(gathered->chain.begin(), gathered->chain.end());
    for (RULE_ENTRY const *const rule : gathered->chain)
        gathered->all_match &= rule->files.matches_all();
    return *scope.kinds.emplace_back(std::move(gathered));
}

static bool covers(RULE_ENTRY const &rule, LOGICAL_PATH const &path)
{
    return rule.files.matches_all() || rule.files.matches(view(path).mid(rule.origin.folder.size() + 1));
}

KIND_RULES::OUTCOME const *RULE_STORE::CONTENTS::known_outcome(KIND_RULES const &of_kind, LOGICAL_PATH const &path,
                                                               std::uint64_t &matching) const
{
    matching = 0;
    if (!of_kind.all_match)
        for (std::size_t i = 0; i < of_kind.chain.size(); ++i)
            if (covers(*of_kind.chain[i], path))
                matching = mix(matching, i + 1);
    for (KIND_RULES::OUTCOME const &outcome : of_kind.outcomes)
        if (outcome.matching == matching)
            return &outcome;
    return nullptr;
}

RULE_DATA const *RULE_STORE::CONTENTS::work_out(KIND_RULES &of_kind, LOGICAL_PATH const &path, std::uint64_t matching)
{
    std::vector<RULE_ENTRY const *> covering;
    for (RULE_ENTRY const *const rule : of_kind.chain)
        if (covers(*rule, path))
            covering.push_back(rule);
    of_kind.outcomes.push_back({matching, covering.empty() ? nullptr : combine(of_kind.kind, covering)});
    return of_kind.outcomes.back().data.get();
}

RULE RULE_STORE::get(LOGICAL_PATH const &path, QString const &kind)
{
    QStringView const folder = folder_of(view(path));
    RULE_DATA const *data = nullptr;
    bool is_known = false;
    {
        std::shared_lock const guard(contents->lock);
        auto const scope = contents->scope_of_folder.find(folder);
        if (scope != contents->scope_of_folder.end()) {
            KIND_RULES const *const rules = scope->second ? scope->second->find(kind) : nullptr;
            std::uint64_t matching;
            auto const *const outcome = rules ? contents->known_outcome(*rules, path, matching) : nullptr;
            is_known = !scope->second || (outcome && (rules->asked_while_planning || planning != this));
            data = outcome ? outcome->data.get() : nullptr;
        }
    }
    if (!is_known) {
        std::unique_lock const guard(contents->lock);
        if (SCOPE *const scope = contents->find_scope(folder)) {
            KIND_RULES &rules = contents->gather(*scope, kind);
            rules.asked_while_planning |= planning == this;
            std::uint64_t matching;
            auto const *const outcome = contents->known_outcome(rules, path, matching);
            data = outcome ? outcome->data.get() : contents->work_out(rules, path, matching);
        }
    }
    RULE const rule(data);
    if (RUN_WATCH *const watch = run_watch())
        watch->rule_asked(path, kind, rule);
    return rule;
}

RULE RULE_STORE::get_global(QString const &kind)
{
    RULE_DATA const *data = nullptr;
    {
        std::unique_lock const guard(contents->lock);
        auto known = contents->globals.find(kind);
        if (known == contents->globals.end()) {
            std::vector<RULE_ENTRY const *> rules;
            for (auto const &rule : contents->rules)
                if (rule->is_global && rule->kind == kind)
                    rules.push_back(rule.get());
            known = contents->globals.emplace(kind, rules.empty() ? nullptr : combine(kind, rules)).first;
        }
        data = known->second.get();
        if (planning == this && !contents->globals_asked.contains(kind))
            contents->globals_asked.append(kind);
    }
    RULE const rule(data);
    if (RUN_WATCH *const watch = run_watch())
        watch->rule_asked(LOGICAL_PATH(), kind, rule);
    return rule;
}

static QStringList named(std::vector<std::unique_ptr<RULE_ENTRY>> const &rules, bool global)
{
    QStringList kinds;
    for (auto const &rule : rules)
        if (rule->is_global == global)
            kinds.append(rule->kind);
    kinds.sort();
    kinds.removeDuplicates();
    return kinds;
}

QStringList RULE_STORE::kinds() const { return named(contents->rules, false); }

QStringList RULE_STORE::global_kinds() const { return named(contents->rules, true); }

void RULE_STORE::begin_planning()
{
    planning = this;
    contents->globals_asked.clear();
}

std::uint64_t RULE_STORE::end_planning()
{
    planning = nullptr;
    std::uint64_t all = 0;
    contents->globals_asked.sort();
    for (QString const &kind : contents->globals_asked) {
        auto const known = contents->globals.find(kind);
        all = mix(mix_text(all, kind), answers(known->second.get()));
    }
    return all;
}

std::uint64_t RULE_STORE::planning_signature(LOGICAL_PATH const &path)
{
    std::shared_lock const guard(contents->lock);
    auto const found = contents->scope_of_folder.find(folder_of(view(path)));
    if (found == contents->scope_of_folder.end() || !found->second)
        return 0;
    std::uint64_t all = 0;
    for (auto const &rules : found->second->kinds) {
        if (!rules->asked_while_planning)
            continue;
        std::uint64_t matching;
        auto const *const outcome = contents->known_outcome(*rules, path, matching);
        if (outcome)
            all += answers(outcome->data.get());  // a sum: in any order of asking
    }
    return all;
}

std::vector<RULE_DATA const *> RULE_STORE::planning_rules(LOGICAL_PATH const &path)
{
    std::vector<RULE_DATA const *> all;
    std::shared_lock const guard(contents->lock);
    for (auto const &[kind, data] : contents->globals)
        if (data && !data->read.empty())
            all.push_back(data.get());
    std::sort(all.begin(), all.end(), [](auto const *a, auto const *b) { return a->kind < b->kind; });
    auto const found = contents->scope_of_folder.find(folder_of(view(path)));
    if (found == contents->scope_of_folder.end() || !found->second)
        return all;
    for (auto const &rules : found->second->kinds) {
        std::uint64_t matching;
        auto const *const outcome =
            rules->asked_while_planning ? contents->known_outcome(*rules, path, matching) : nullptr;
        if (outcome && outcome->data)
            all.push_back(outcome->data.get());
    }
    return all;
}
