#include "Plugins/Vx2/action_rigid_agf.h"

#include "Plugins/Vx2/host/action_engine.h"
#include "Plugins/Vx2/host/asset_graph.h"
#include "Plugins/Vx2/host/engine.h"
#include "Plugins/Vx2/xml_asset.h"

using KESTREL::RIGID_MODEL_SERVICE;

static LOGICAL_PATH in_working_data(QString const &path) { return LOGICAL_PATH("<working>/" + path); }

static QString latin_1(KN::String const &text) { return QString::fromLatin1(text.data(), int(text.size())); }

ACTION_RIGID_AGF::ACTION_RIGID_AGF(LOGICAL_PATH const &logical, ACTION_INIT_KESTREL *engine_start,
                                   PROCESSOR_INTERFACE *processor)
    : ACTION_INTERFACE(processor), rigid_name(QString(logical).remove(QStringLiteral("<working>/"))),
      agf_name(rigid_name + ".agf"), init(engine_start)
{}

QString ACTION_RIGID_AGF::get_name(bool with_source) const
{
    return fragment_action_name(QStringLiteral("Rigid AGF"), rigid_name, with_source);
}

PHYSICAL_PATH ACTION_RIGID_AGF::agf_path() const { return PHYSICAL_PATH(PATHS::working_data() + "/" + agf_name); }

void ACTION_RIGID_AGF::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &,
                                          FILE_TABLE const &, RULE_CACHE const &) const
{
    append_fragment_files(in_working_data(rigid_name), agf_path(), sources, targets);
}

ACTION_INTERFACE::STATUS ACTION_RIGID_AGF::run(FILE_TABLE const &files, RULE_CACHE const &rules)
{
    QTSHARED::ASSET_FRAGMENT_BUILDER builder(agf_path());
    KESTREL::ENGINE *const engine = init->engine();
    RIGID_MODEL_SERVICE *const service = engine ? engine->rigid_model_service() : nullptr;
    if (!service)
        return FAILED;
    unsigned const model =
        service->open(RIGID_MODEL_SERVICE::WITH_ASSETS, rigid_name.toLatin1().constData(), nullptr, false);
    unsigned const levels = service->level_count(model);

    // A model with a .klmodel twin leaves the bare name to it.
    QString id = rigid_name.section('.', 0, 0);
    if (files.contains(in_working_data(id + ".klmodel")))
        id += QLatin1String(".rigid_model_v2");
    builder.add_fragment(id, rigid_name, QString());

    auto const needs = [&](QString const &dependency) {
        builder.add_dependency(id, dependency, QStringLiteral("all"), QString());
    };
    if (files.contains(in_working_data(id + ".meta")))
        needs(id + ".meta");
    if (files.contains(in_working_data(id + ".anim"))) {
        QString const animation = s_asset_graph->fragment_id_from_asset_filename(id + ".anim");
        if (!animation.isEmpty() && s_asset_graph->asset_fragments().contains(animation.toLower()))
            needs(animation);
    }
    if (model != RIGID_MODEL_SERVICE::INVALID)
        needs("animations/skeletons/" + latin_1(service->skeleton_name(model)));
    for (unsigned level = 0; level < levels; ++level)
        for (KESTREL::LEVEL_ASSET const &record : service->level_assets(model, level))
            for (KN::String const &path : record.paths) {
                QString const asset = latin_1(path).replace('\\', '/');
                QString const fragment = asset_fragment_id(in_working_data(asset), rules);
                if (!fragment.isEmpty())
                    needs(fragment);
            }
    service->close(model);
    return add_to_asset_graph_and_save(builder, files, rules) ? DONE : FAILED;
}
