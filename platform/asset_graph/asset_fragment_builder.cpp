#include "Plugins/Vx2/host/asset_fragment_builder.h"

namespace QTSHARED {

void ASSET_FRAGMENT_BUILDER::add_fragment(QString const &id, QString const &asset, QString const &note)
{
    ASSET_FRAGMENT &fragment = by_id[id];
    fragment.asset = asset;
    fragment.note = note;
}

void ASSET_FRAGMENT_BUILDER::add_dependency(QString const &id, QString const &dependency, QString const &kind,
                                            QString const &note)
{
    ASSET_DEPENDENCY const added{dependency, kind, note};
    ASSET_FRAGMENT &fragment = by_id[id];
    if (!fragment.dependencies.contains(added))
        fragment.dependencies.append(added);
}

}  // namespace QTSHARED
