#include "Plugins/Vx2/action_material_agf.h"

#include "Plugins/Vx2/host/asset_fragment_builder.h"
#include "Plugins/Vx2/xml_asset.h"

ACTION_MATERIAL_AGF::ACTION_MATERIAL_AGF(PHYSICAL_PATH const &physical, PROCESSOR_INTERFACE *processor)
    : ACTION_INTERFACE(processor), logical(PATHS::logical_path(physical)), agf_path(physical + ".agf")
{}

QString ACTION_MATERIAL_AGF::get_name(bool with_source) const
{
    return fragment_action_name(QStringLiteral("Material AGF"), logical, with_source);
}

void ACTION_MATERIAL_AGF::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &,
                                             FILE_TABLE const &, RULE_CACHE const &) const
{
    append_fragment_files(logical, agf_path, sources, targets);
}

ACTION_INTERFACE::STATUS ACTION_MATERIAL_AGF::run(FILE_TABLE const &files, RULE_CACHE const &rules)
{
    QTSHARED::ASSET_FRAGMENT_BUILDER builder(agf_path);
    QString const asset = logical.section('/', 1);
    QString const id = asset.section('.', 0, -3);
    builder.add_fragment(id, asset, QString());
    auto const needs = [&](QString const &fragment) {
        if (!fragment.isEmpty())
            builder.add_dependency(id, fragment, QStringLiteral("all"), QString());
    };

    XML_ASSET xml;
    if (!xml.read(*this, logical, files))
        return FAILED;
    for (QDomElement const &source : children(xml.top(), {"material", "textures", "texture", "source"})) {
        QString const path = path_in(source);
        if (!path.contains(':'))
            needs(asset_fragment_id(LOGICAL_PATH("<working>/" + path), rules));
    }
    return add_to_asset_graph_and_save(builder, files, rules) ? DONE : FAILED;
}
