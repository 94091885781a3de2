#include "Plugins/Vx2/host/asset_graph.h"

#include "foundation/finished_file.h"
#include "foundation/messages.h"
#include "platform/asset_graph/agf_file.h"
#include "platform/build_host/file_stamp.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFile>

namespace QTSHARED {

static KN::String disk_name(QString const &path)
{
    QByteArray const bytes = QFile::encodeName(path);
    return KN::String(bytes.constData(), std::size_t(bytes.size()));
}

ASSET_GRAPH::INDEX &ASSET_GRAPH::index() const
{
    std::call_once(was_read, [this] { read_all(); });
    return known;
}

// Of the current tree, as below the root; of the old one, marked so.
QString ASSET_GRAPH::name_of(QString const &file) const
{
    bool const is_old = !old_root.isEmpty() && file.startsWith(old_root + QLatin1Char('/'));
    return (is_old ? QStringLiteral("<old>/") : QString()) + below_root(file);
}

void ASSET_GRAPH::read_all() const
{
    QHash<QString, AGF_MEMORY::ENTRY> entries;
    if (remembered)
        for (AGF_MEMORY::ENTRY const &entry : remembered->recall())
            entries.insert(entry.agf, entry);
    for (QString const &folder : {old_root, root}) {
        if (folder.isEmpty())
            continue;
        QDirIterator files(folder, {QStringLiteral("*.agf")}, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QString const path = files.next();
            QString const name = name_of(path);
            FILE_STAMP const stamp = stamp_of(path);
            AGF_MEMORY::ENTRY const entry = entries.take(name);
            QMap<QString, ASSET_FRAGMENT> fragments;
            if (entry.size == stamp.size && entry.time == stamp.time && recall_agf(entry.fragments, fragments)) {
                enter(below_root(path), fragments, known);
                continue;
            }
            QFile file(path);
            QString error = QStringLiteral("cannot be read");
            if (file.open(QIODevice::ReadOnly) && read_agf(file.read(largest_agf + 1), fragments, error)) {
                enter(below_root(path), fragments, known);
                if (remembered)
                    remembered->remember({name, stamp.size, stamp.time, remembered_agf(fragments)});
            } else {
                KN::message(KN::MESSAGE_WARNING,
                            KN::printable(disk_name(path)) + ": " + error.toStdString() + "; build its asset again");
            }
        }
    }
    for (AGF_MEMORY::ENTRY const &gone : qAsConst(entries))
        remembered->remember({gone.agf, 0, 0, {}});
}

QString ASSET_GRAPH::below_root(QString const &path) const
{
    QString turned = path;
    turned.replace(QLatin1Char('\\'), QLatin1Char('/'));
    for (QString const &folder : {root, old_root})
        if (!folder.isEmpty() && turned.startsWith(folder + QLatin1Char('/')))
            return turned.mid(folder.size() + 1);
    return turned;
}

QString ASSET_GRAPH::fragment_id_from_asset_filename(QString const &asset) const
{
    INDEX const &read = index();
    QReadLocker const reading(&lock);
    return read.id_by_asset.value(below_root(asset).toLower());
}

QMap<QString, ASSET_FRAGMENT> ASSET_GRAPH::asset_fragments() const
{
    INDEX const &read = index();
    QReadLocker const reading(&lock);
    return read.by_id;
}

bool ASSET_GRAPH::replace_and_save(ASSET_FRAGMENT_BUILDER const &builder, QString &error)
{
    QMap<QString, ASSET_FRAGMENT> fragments = builder.fragments();
    for (ASSET_FRAGMENT &fragment : fragments)
        fragment.asset = below_root(fragment.asset);
    QByteArray const bytes = agf_bytes(fragments);
    KN::String fault;
    INDEX &changed = index();
    QWriteLocker const writing(&lock);
    if (!KN::write_finished_file(disk_name(builder.agf_path()),
                                 std::string_view(bytes.constData(), std::size_t(bytes.size())), fault)) {
        error = QString::fromUtf8(fault.c_str());
        return false;
    }
    enter(below_root(builder.agf_path()), fragments, changed);
    if (remembered) {
        FILE_STAMP const stamp = stamp_of(builder.agf_path());
        remembered->remember({name_of(builder.agf_path()), stamp.size, stamp.time, remembered_agf(fragments)});
    }
    return true;
}

void ASSET_GRAPH::enter(QString const &agf, QMap<QString, ASSET_FRAGMENT> const &fragments, INDEX &to) const
{
    QStringList &keys = to.ids_of[agf.toLower()];
    for (QString const &key : keys) {
        auto const old = to.by_id.find(key);
        if (old == to.by_id.end() || old->agf.compare(agf, Qt::CaseInsensitive) != 0)
            continue;  // another file has taken the id over
        to.id_by_asset.remove(old->asset.toLower());
        to.by_id.erase(old);
    }
    keys.clear();
    for (auto fragment = fragments.begin(); fragment != fragments.end(); ++fragment) {
        QString const key = fragment.key().toLower();
        ASSET_FRAGMENT &entry = to.by_id[key] = *fragment;
        entry.agf = agf;
        to.id_by_asset[entry.asset.toLower()] = fragment.key();
        keys.append(key);
    }
}

}  // namespace QTSHARED
