// AGF files: the fragments of one finished asset, as XML beside it.
//   <asset_fragments>
//     <fragment id="props/hut" asset="props/hut.rigid_model_v2" note="">
//       <dependency id="props/hut.meta" kind="all" note=""/>
#pragma once

#include "Plugins/Vx2/host/asset_fragment_builder.h"

#include <QtCore/QByteArray>

namespace QTSHARED {

inline constexpr int largest_agf = 16 << 20;  // bytes

// In the order of the ids; the same fragments give the same bytes.
ASSET_GRAPH_API QByteArray agf_bytes(QMap<QString, ASSET_FRAGMENT> const &fragments);

// False, with line and reason in `error`, for bytes that are no such file; at most `largest_agf` and a nesting of 256
// are read.
ASSET_GRAPH_API bool read_agf(QByteArray const &bytes, QMap<QString, ASSET_FRAGMENT> &fragments, QString &error);

// The same in a form that is quick to take apart: texts one after another, which XML cannot hold a NUL in. False for
// bytes that are not so.
QByteArray remembered_agf(QMap<QString, ASSET_FRAGMENT> const &fragments);
bool recall_agf(QByteArray const &bytes, QMap<QString, ASSET_FRAGMENT> &fragments);

}  // namespace QTSHARED
