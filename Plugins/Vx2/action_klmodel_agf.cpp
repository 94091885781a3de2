#include "Plugins/Vx2/action_klmodel_agf.h"

#include "Plugins/Vx2/xml_asset.h"

ACTION_KLMODEL_AGF::ACTION_KLMODEL_AGF(PHYSICAL_PATH const &physical, PROCESSOR_INTERFACE *processor)
    : ACTION_INTERFACE(processor), logical(PATHS::logical_path(physical)), agf_path(physical + ".agf")
{}

QString ACTION_KLMODEL_AGF::get_name(bool with_source) const
{
    return fragment_action_name(QStringLiteral("KLModel AGF"), logical, with_source);
}

void ACTION_KLMODEL_AGF::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &,
                                            FILE_TABLE const &, RULE_CACHE const &) const
{
    append_fragment_files(logical, agf_path, sources, targets);
}

ACTION_INTERFACE::STATUS ACTION_KLMODEL_AGF::run(FILE_TABLE const &files, RULE_CACHE const &rules)
{
    return make_xml_fragment(*this, logical, agf_path, -2, files, rules, [&](QDomNode const &top) {
        QStringList needed;
        for (QDomElement const &model : children(top, {"model"})) {
            for (QDomElement const &geometry : children(model, {"geometry"}))
                needed += asset_fragment_id(LOGICAL_PATH("<working>/" + path_in(geometry)), rules);
            // Without a look-up: a material file of that path has this id, there or not.
            for (QDomElement const &material : children(model, {"materials", "material"})) {
                QString const path = path_in(material);
                if (!path.contains(':'))
                    needed += path.section('.', 0, -3);
            }
        }
        return needed;
    });
}
