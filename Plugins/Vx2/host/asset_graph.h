// QTSHARED::ASSET_GRAPH: which finished asset needs which other, over all AGF files of a tree, held in memory. Ids are
// matched without regard to case. Calls may be made from any thread.
#pragma once

#include "Plugins/Vx2/host/asset_fragment_builder.h"

#include <QtCore/QHash>
#include <QtCore/QReadWriteLock>
#include <QtCore/QStringList>
#include <mutex>

namespace QTSHARED {

// Where a graph keeps what it has read, from one process to the next. Calls come from any thread, one at a time.
class AGF_MEMORY {
public:
    struct ENTRY {
        QString agf;  // the graph's own name of the file
        qint64 size, time;
        QByteArray fragments;  // empty: to be forgotten
    };
    virtual QVector<ENTRY> recall() = 0;
    virtual void remember(ENTRY const &entry) = 0;

protected:
    ~AGF_MEMORY() = default;
};

class ASSET_GRAPH_API ASSET_GRAPH {
public:
    // The first call of any other operation looks at all AGF files below the folders, and reads those that the memory,
    // which may be null, does not have with their size and time. One that cannot be read is a warning and counts as
    // absent. Paths below either root are kept without it; of a path that both have, the current one counts.
    explicit ASSET_GRAPH(QString const &working_root, QString const &old_working_root = {},
                         AGF_MEMORY *memory = nullptr)
        : root(working_root), old_root(old_working_root), remembered(memory)
    {}

    // The id of the fragment whose asset is `asset`, a path below the working root; empty if there is none.
    QString fragment_id_from_asset_filename(QString const &asset) const;
    // A copy of all fragments, by id in lower case.
    QMap<QString, ASSET_FRAGMENT> asset_fragments() const;

    // Writes the builder's AGF file and puts its fragments in the place of those that the file held. False, with the
    // cause, if the file could not be written; the graph is then as it was.
    bool replace_and_save(ASSET_FRAGMENT_BUILDER const &builder, QString &error);

private:
    struct INDEX {
        QMap<QString, ASSET_FRAGMENT> by_id;  // key: id in lower case
        QHash<QString, QStringList> ids_of;   // by AGF path in lower case: keys of by_id
        QHash<QString, QString> id_by_asset;  // by asset path in lower case: id
    };

    QString below_root(QString const &path) const;
    QString name_of(QString const &file) const;
    INDEX &index() const;
    void read_all() const;
    void enter(QString const &agf, QMap<QString, ASSET_FRAGMENT> const &fragments, INDEX &to) const;

    QString root, old_root;  // the second may be empty
    AGF_MEMORY *remembered;
    mutable std::once_flag was_read;
    mutable QReadWriteLock lock;  // of `known`
    mutable INDEX known;
};

}  // namespace QTSHARED
