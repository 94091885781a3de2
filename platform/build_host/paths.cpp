#include "Plugins/Vx2/host/paths.h"

#include "Plugins/Vx2/host/rules.h"
#include "platform/build_host/project.h"
#include "platform/build_host/rule_store.h"

#include <algorithm>
#include <array>

namespace {

struct ROOT {
    QString folder;
    QString word;
};

struct CURRENT {
    TREE_ROOTS roots;
    std::array<ROOT, 4> by_length;  // the longest first, so that a root is not taken for a beginning of another's name
};

CURRENT make_current(TREE_ROOTS const &roots)
{
    QString const raw = QStringLiteral("<raw>"), working = QStringLiteral("<working>");
    CURRENT made{roots,
                 {{{roots.raw, raw}, {roots.old_raw, raw}, {roots.working, working}, {roots.old_working, working}}}};
    std::stable_sort(made.by_length.begin(), made.by_length.end(),
                     [](ROOT const &a, ROOT const &b) { return a.folder.size() > b.folder.size(); });
    return made;
}

CURRENT &current()
{
    static CURRENT now = make_current(usual_roots(QStringLiteral("/no project")));
    return now;
}

bool lies_below(QString const &path, QString const &folder)
{
    return path.startsWith(folder) && (path.size() == folder.size() || path[folder.size()] == QLatin1Char('/'));
}

// Backslashes turned, repeated slashes made one, sections "." left out. Most paths are so already, and are shared then.
QString tidy(QString const &path)
{
    bool is_tidy = true;
    ushort before = 0, further = 0;
    for (QChar const unit : path) {
        is_tidy &= unit != QLatin1Char('\\') &&
                   !(unit == QLatin1Char('/') && (before == '/' || (before == '.' && further == '/')));
        further = before;
        before = unit.unicode();
    }
    if (is_tidy)
        return path;
    QString turned;
    turned.reserve(path.size());
    for (QChar unit : path) {
        if (unit == QLatin1Char('\\'))
            unit = QLatin1Char('/');
        if (unit == QLatin1Char('/') && turned.endsWith(QLatin1String("/.")))
            turned.chop(1);
        else if (unit != QLatin1Char('/') || !turned.endsWith(QLatin1Char('/')))
            turned += unit;
    }
    return turned;
}

// Without slashes at both ends.
QString inner_path(QString const &text)
{
    int first = 0, last = text.size();
    while (first < last && text[first] == QLatin1Char('/'))
        ++first;
    while (last > first && text[last - 1] == QLatin1Char('/'))
        --last;
    return text.mid(first, last - first);
}

}  // namespace

void set_current_roots(TREE_ROOTS const &roots) { current() = make_current(roots); }

QString PATHS::working_data() { return current().roots.working; }

QString PATHS::raw_data() { return current().roots.raw; }

QString PATHS::old_raw_data() { return current().roots.old_raw; }

QString PATHS::target_working_data(PHYSICAL_PATH const &source)
{
    TREE_ROOTS const &roots = current().roots;
    return lies_below(source, roots.old_raw) ? roots.old_working : roots.working;
}

LOGICAL_PATH PATHS::logical_path(PHYSICAL_PATH const &physical)
{
    QString const path = tidy(physical);
    for (ROOT const &root : current().by_length) {
        if (!lies_below(path, root.folder))
            continue;
        int const below = path.size() - root.folder.size();
        QString logical;
        logical.reserve(root.word.size() + below);
        logical += root.word;
        logical += path.rightRef(below == 1 ? 0 : below);  // the root itself may come with a slash
        return LOGICAL_PATH(std::move(logical));
    }
    return LOGICAL_PATH(path);
}

QString PATHS::relative_target_path_from_rule_path(RULE const &rule, QString const &property,
                                                   LOGICAL_PATH const &logical, PHYSICAL_PATH const &)
{
    RULE_PROPERTY const *const given = rule.exists ? rule.data()->find(property) : nullptr;
    QVariant const value = rule.value(property);
    if (!given || value.isNull())
        return {};

    QString text = value.toString();
    text.replace(QLatin1Char('\\'), QLatin1Char('/'));
    QString const working = QStringLiteral("<working>");
    if (lies_below(text, working))
        return inner_path(text.mid(working.size()));
    if (text.startsWith(QLatin1Char('/')))
        return inner_path(text);

    QString const folder = logical.left(logical.lastIndexOf(QLatin1Char('/')));
    LOGICAL_PATH const &rule_folder = given->origin->folder;
    QString const below = lies_below(folder, rule_folder) ? inner_path(folder.mid(rule_folder.size())) : QString();
    QString const stem = inner_path(text);
    return stem.isEmpty() || below.isEmpty() ? stem + below : stem + QLatin1Char('/') + below;
}
