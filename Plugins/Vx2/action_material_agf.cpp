#include "Plugins/Vx2/action_material_agf.h"

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
    return make_xml_fragment(*this, logical, agf_path, -3, files, rules, [&](QDomNode const &top) {
        QStringList needed;
        for (QDomElement const &source : children(top, {"material", "textures", "texture", "source"})) {
            QString const path = path_in(source);
            if (!path.contains(':'))
                needed += asset_fragment_id(LOGICAL_PATH("<working>/" + path), rules);
        }
        return needed;
    });
}
