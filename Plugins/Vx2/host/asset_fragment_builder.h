// QTSHARED::ASSET_FRAGMENT_BUILDER: collects the fragments of one AGF file: which assets it names and what each needs.
#pragma once

#include "Plugins/Vx2/host/library_api.h"

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace QTSHARED {

struct ASSET_DEPENDENCY {
    QString id;    // of the fragment that is needed
    QString kind;  // "all"
    QString note;
    bool operator==(ASSET_DEPENDENCY const &other) const = default;
};

struct ASSET_FRAGMENT {
    QString asset;  // path of the asset; below the working root once it is in the graph
    QString note;
    QString agf;                             // path of the file that holds the fragment, below the working root
    QVector<ASSET_DEPENDENCY> dependencies;  // each once, in the order of adding
};

class ASSET_GRAPH_API ASSET_FRAGMENT_BUILDER {
public:
    explicit ASSET_FRAGMENT_BUILDER(QString const &agf_path) : path(agf_path) {}

    // `asset`: physical, or below the working root. An id that is there already gets the new asset.
    void add_fragment(QString const &id, QString const &asset, QString const &note);
    // To the fragment `id`, which is made if it is not there. A dependency equal to an earlier one counts once.
    void add_dependency(QString const &id, QString const &dependency, QString const &kind, QString const &note);

    QString const &agf_path() const { return path; }  // physical
    QMap<QString, ASSET_FRAGMENT> const &fragments() const { return by_id; }

private:
    QString path;
    QMap<QString, ASSET_FRAGMENT> by_id;
};

}  // namespace QTSHARED
