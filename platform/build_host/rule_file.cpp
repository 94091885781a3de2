#include "platform/build_host/rule_file.h"

#include "platform/build_host/schemas.h"
#include "platform/build_host/toml_node.h"

FILE_PATTERN::FILE_PATTERN(QString const &pattern)
    : text(pattern), is_all(pattern == QLatin1String("*") || pattern == QLatin1String("**")),
      is_name(!pattern.contains(QLatin1Char('/')))
{}

// Greedy, with one place to come back to for each kind of star: linear in practice, quadratic at worst.
bool FILE_PATTERN::matches(QStringView below) const
{
    if (is_all)
        return true;
    if (is_name)
        below = below.mid(below.lastIndexOf(QLatin1Char('/')) + 1);

    qsizetype p = 0, f = 0;
    struct RETRY {
        qsizetype pattern = -1, file = 0;
    } one, any;  // behind the last "*" and the last "**"
    while (f < below.size() || p < text.size()) {
        if (p < text.size() && text[int(p)] == QLatin1Char('*')) {
            bool const is_any = p + 1 < text.size() && text[int(p) + 1] == QLatin1Char('*');
            p += is_any ? 2 : 1;
            (is_any ? any : one) = {p, f};
            if (is_any)
                one = {};
            continue;
        }
        if (p < text.size() && f < below.size() &&
            (text[int(p)] == below[f] || (text[int(p)] == QLatin1Char('?') && below[f] != QLatin1Char('/')))) {
            ++p;
            ++f;
            continue;
        }
        if (one.pattern >= 0 && one.file < below.size() && below[one.file] != QLatin1Char('/')) {
            p = one.pattern;
            f = ++one.file;
            continue;
        }
        if (any.pattern >= 0 && any.file < below.size()) {
            p = any.pattern;
            f = ++any.file;
            one = {};
            continue;
        }
        return false;
    }
    return true;
}

namespace {

class READER {
public:
    READER(QString const &shown_name, LOGICAL_PATH const &rule_folder,
           std::vector<std::unique_ptr<RULE_ENTRY>> &read_rules, QStringList &found_faults)
        : shown(shown_name), folder(rule_folder), rules(read_rules), faults(found_faults)
    {}

    void read(TOML_NODE const &root, bool is_project)
    {
        static QStringList const settings = {QStringLiteral("paths"), QStringLiteral("database"),
                                             QStringLiteral("depot"), QStringLiteral("plug_ins")};
        for (TOML_NODE const &item : root.items) {
            if (item.key == QLatin1String("global")) {
                if (!is_project)
                    fail(item, QStringLiteral("global rules stand in mox.toml"));
                else if (item.kind != TOML_NODE::TABLE)
                    fail(item, QStringLiteral("global is no table; write [global.KIND]"));
                else
                    for (TOML_NODE const &kind : item.items)
                        read_rule(kind, kind.key, true);
            } else if (is_project && settings.contains(item.key)) {
                continue;
            } else if (item.kind == TOML_NODE::ARRAY) {
                for (TOML_NODE const &rule : item.items)
                    read_rule(rule, item.key, false);
            } else {
                read_rule(item, item.key, false);
            }
        }
    }

private:
    void fail(TOML_NODE const &at, QString const &what)
    {
        faults.append(QStringLiteral("%1:%2: %3").arg(shown, QString::number(at.line), what));
    }

    void read_rule(TOML_NODE const &node, QString const &kind, bool is_global)
    {
        if (node.kind != TOML_NODE::TABLE) {
            fail(node, QStringLiteral("'%1' is no rule; a rule is written [KIND] or [[KIND]]").arg(kind));
            return;
        }
        QString const wrong_kind = check_rule_kind(kind);
        if (!wrong_kind.isEmpty()) {
            fail(node, wrong_kind);
            return;
        }
        auto rule = std::make_unique<RULE_ENTRY>();
        rule->kind = kind;
        rule->is_global = is_global;
        rule->origin = {shown, node.line, folder};
        for (TOML_NODE const &item : node.items) {
            if (item.key == QLatin1String("files") && !is_global) {
                if (item.is_text() && !item.value.toString().isEmpty())
                    rule->files = FILE_PATTERN(item.value.toString());
                else
                    fail(item, QStringLiteral("files is a pattern such as \"*.vx2\""));
            } else if (item.key == QLatin1String("inherit")) {
                if (item.is_flag())
                    rule->inherit = item.value.toBool();
                else
                    fail(item, QStringLiteral("inherit is true or false"));
            } else if (item.key == QLatin1String("unset")) {
                if (!item.read_texts(rule->unset))
                    fail(item, QStringLiteral("unset is a list of property names"));
                for (QString const &name : rule->unset)
                    check_property(item, kind, name);
            } else {
                read_property(item, *rule);
            }
        }
        rules.push_back(std::move(rule));
    }

    bool check_property(TOML_NODE const &at, QString const &kind, QString const &name)
    {
        QString const wrong = check_rule_property(kind, name);
        if (!wrong.isEmpty())
            fail(at, wrong);
        return wrong.isEmpty();
    }

    void read_property(TOML_NODE const &item, RULE_ENTRY &rule)
    {
        if (!check_property(item, rule.kind, item.key))
            return;
        QVariant value = item.value;
        if (item.kind == TOML_NODE::TABLE) {
            TOML_NODE const *const null = item.find(QStringLiteral("null"));
            if (item.items.size() != 1 || !null || !null->is_flag() || !null->value.toBool()) {
                fail(item, QStringLiteral("a table as a value can only be { null = true }"));
                return;
            }
            value = QVariant(QString());
        } else if (item.kind != TOML_NODE::VALUE) {
            fail(item, QStringLiteral("'%1' is neither text nor number nor true or false").arg(item.key));
            return;
        }
        rule.origins.push_back(std::make_unique<RULE_ORIGIN>(RULE_ORIGIN{shown, item.line, folder}));
        rule.properties.push_back({item.key, value, rule.origins.back().get()});
    }

    QString shown;
    LOGICAL_PATH folder;
    std::vector<std::unique_ptr<RULE_ENTRY>> &rules;
    QStringList &faults;
};

}  // namespace

bool read_rule_file(QByteArray const &text, QString const &shown, LOGICAL_PATH const &folder, bool is_project,
                    std::vector<std::unique_ptr<RULE_ENTRY>> &rules, QStringList &faults)
{
    TOML_NODE root;
    QString fault;
    if (!read_toml(text, shown, root, fault)) {
        faults.append(fault);
        return false;
    }
    int const before = faults.size();
    READER(shown, folder, rules, faults).read(root, is_project);
    return faults.size() == before;
}
