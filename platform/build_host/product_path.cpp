#include "platform/build_host/product_path.h"

namespace {

bool lies_below(QString const &path, QString const &folder)
{
    return path.size() > folder.size() && path[folder.size()] == QLatin1Char('/') && path.startsWith(folder);
}

// The old root above a file; empty if there is none.
QString old_root_of(QString const &physical)
{
    PHYSICAL_PATH const old_raw(PATHS::old_raw_data());
    for (QString const &root : {PATHS::target_working_data(old_raw), QString(old_raw)})
        if (lies_below(physical, root))
            return root;
    return {};
}

}  // namespace

bool is_of_old_tree(QString const &physical) { return !old_root_of(physical).isEmpty(); }

QString product_name(PHYSICAL_PATH const &physical, LOGICAL_PATH const &logical)
{
    QString const root = old_root_of(physical);
    return root.isEmpty() ? QString(logical) : root + logical.mid(logical.indexOf(QLatin1Char('/')));
}

PHYSICAL_PATH product_path(QString const &name)
{
    QString const working = QStringLiteral("<working>/"), raw = QStringLiteral("<raw>/");
    if (name.startsWith(working))
        return PHYSICAL_PATH(PATHS::working_data() + name.mid(working.size() - 1));
    if (name.startsWith(raw))
        return PHYSICAL_PATH(PATHS::raw_data() + name.mid(raw.size() - 1));
    return is_of_old_tree(name) ? PHYSICAL_PATH(name) : PHYSICAL_PATH();
}
