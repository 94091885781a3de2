#include "Plugins/Vx2/action_tree.h"

#include "Plugins/Vx2/host/vfs.h"
#include "Plugins/Vx2/load_time_objects.h"

#include <QtCore/QFile>

#include <algorithm>
#include <cmath>

namespace {

constexpr int views = 4;                                                  // from as many sides, side by side
constexpr int longest_strip = 2048, highest_tile = 512, least_size = 16;  // pixels

// Shows the textures of a season where there are any.
struct SEASON_MAPPER final : KESTREL::TEXTURE_NAME_MAPPER {
    explicit SEASON_MAPPER(QString const &of_season) : suffix(of_season) {}

    KN::String map(int kind, KN::String const &name) override
    {
        QString const mark = QStringLiteral("_diffuse");
        QString const text = QString::fromUtf8(name.data(), int(name.size()));
        if (kind != DIFFUSE || !text.contains(mark, Qt::CaseInsensitive))
            return name;
        QString seasonal = text;
        seasonal.replace(mark, suffix + mark, Qt::CaseInsensitive);
        KN::String const wanted(seasonal.toStdString());
        return UTILITYDLL::vfs().exists(wanted) ? wanted : name;
    }

    QString suffix;
};

int snap_to_power_of_two(float value)
{
    float const exponent = std::round(std::log2(value > 1 ? value : 1));
    return 1 << int(std::min(exponent, 30.0f));
}

bool has_size(float length) { return length > 0 && std::isfinite(length); }

}  // namespace

int tile_pixels(float length, int total_limit, int divisor)
{
    int const limit = total_limit / divisor;
    float density = float(TREEBILLBOARD_PIXELSPERMETER.value);
    int size = snap_to_power_of_two(density * length);
    // A side that never grows large enough, because it or the density is nothing, ends here too.
    for (int doubled = 0; size / divisor < least_size && doubled < 32; ++doubled) {
        density *= 2;
        size = snap_to_power_of_two(density * length);
    }
    return std::min(std::max(size, least_size * divisor), limit);
}

ACTION_TREE::ACTION_TREE(PHYSICAL_PATH const &model_file, PROCESSOR_INTERFACE *processor, ACTION_INIT_KESTREL *engine,
                         FILE_TABLE const &files)
    : ACTION_CONVERT(model_file, processor), folder(model_file.left(model_file.lastIndexOf('/'))),
      stem(model_file.section('.', -2, -2).section('/', -1)), init(engine)
{
    set_target_temporary(true);
    for (int i = 0; i < SLOT_COUNT; ++i) {
        KN::String const season = i < 4 ? KESTREL::get_season_shortname(i) : KN::String();
        if (!season.empty())
            slots[i].suffix = '_' + QString::fromLatin1(season.data(), int(season.size()));
    }
    slots[4].suffix = QStringLiteral("_br");
    find_seasons(files);
}

// By the textures that lie beside the model and below; earlier billboards are none.
void ACTION_TREE::find_seasons(FILE_TABLE const &files)
{
    for (int i = 0; i < SLOT_COUNT; ++i)
        slots[i].used = i == WHOLE_YEAR;
    LOGICAL_PATH const prefix(PATHS::logical_path(folder) + '/');
    for (auto entry = files.lowerBound(prefix); entry != files.end() && entry.key().startsWith(prefix); ++entry) {
        QString const &texture = entry.value()->physical;
        if (!texture.endsWith(QLatin1String(".tga"), Qt::CaseInsensitive) ||
            texture.contains(QLatin1String("billboard"), Qt::CaseInsensitive))
            continue;
        for (int i = 0; i < WHOLE_YEAR; ++i)
            if (texture.contains(slots[i].suffix, Qt::CaseInsensitive))
                slots[i].used = true;
    }
}

QString ACTION_TREE::image_base(int slot) const
{
    return folder + '/' + stem + QStringLiteral("_billboard") + slots[slot].suffix;
}

void ACTION_TREE::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                                     FILE_TABLE const &files, RULE_CACHE const &rules) const
{
    ACTION_CONVERT::get_affected_files(sources, targets, time, files, rules);
    auto const add = [&targets](QString const &file) {
        PHYSICAL_PATH const physical(file);
        targets.append(TARGET_FILE(physical, PATHS::logical_path(physical), true));
    };
    for (int i = 0; i < SLOT_COUNT; ++i)
        if (slots[i].used)
            add(image_base(i) + QStringLiteral("_diffuse.tga"));
    add(image_base(WHOLE_YEAR) + QStringLiteral("_normal.tga"));
    add(image_base(WHOLE_YEAR) + QStringLiteral("_displacement.tga"));
}

bool ACTION_TREE::convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &, FILE_TABLE const &)
{
    for (int i = 0; i < SLOT_COUNT; ++i) {
        if (is_aborted()) {
            output_line(QStringLiteral("interrupted"), 2);
            return true;
        }
        if (slots[i].used && init->engine())
            render_slot(from, i);
    }
    QFile::remove(to);
    QFile::copy(from, to);
    return true;
}

void ACTION_TREE::render_slot(PHYSICAL_PATH const &from, int slot)
{
    KESTREL::ENGINE &engine = *init->engine();
    engine.recreate_scene();
    if (engine.view()) {
        SEASON_MAPPER mapper(slots[slot].suffix);
        model = engine.load_model(KN::String(from.toStdString()), KESTREL::ENGINE::BILLBOARD_MATERIALS, &mapper);
    }
    VIEW_SIZE const size = set_up_view();
    if (engine.view()) {
        if (slot == WHOLE_YEAR && !size.is_sound && model != KESTREL::ENGINE::INVALID_MODEL)  // said once
            output_line(QStringLiteral("%1: the tree has no width or no height above the ground, or the density of "
                                       "billboards is not above 0; its billboard is empty")
                            .arg(source()),
                        1);
        engine.view()->set_camera(&camera);
        place_instances(size);
        engine.begin_frame();
        engine.end_frame();
    }
    QString const base = image_base(slot);
    capture(base + QStringLiteral("_diffuse.tga"), KESTREL::CAPTURE_REQUEST::COLOUR, size);
    if (slot == WHOLE_YEAR) {
        capture(base + QStringLiteral("_normal.tga"), KESTREL::CAPTURE_REQUEST::NORMAL, size);
        capture(base + QStringLiteral("_displacement.tga"), KESTREL::CAPTURE_REQUEST::HEIGHT, size);
    }
}

// The tile begins at the ground: what is below is outside the view.
ACTION_TREE::VIEW_SIZE ACTION_TREE::view_size()
{
    float box[6];
    init->engine()->bounding_box(model, box);
    float const half = std::max({std::abs(box[0]), std::abs(box[3]), std::abs(box[2]), std::abs(box[5])});
    VIEW_SIZE size;
    size.width = 2 * half;
    size.height = box[4];
    size.is_sound = has_size(size.width) && has_size(size.height) && TREEBILLBOARD_PIXELSPERMETER.value > 0;
    if (!size.is_sound)
        size.width = size.height = 0;
    size.tile_width = tile_pixels(size.width, longest_strip, views);
    size.tile_height = tile_pixels(size.height, highest_tile, 1);
    return size;
}

ACTION_TREE::VIEW_SIZE ACTION_TREE::set_up_view()
{
    KESTREL::ENGINE &engine = *init->engine();
    engine.set_mode(KESTREL::ENGINE::CAPTURE);
    if (engine.view())
        engine.view()->set_clear({0x808080, 0, 0x80808080});
    VIEW_SIZE const size = view_size();
    if (engine.view())
        engine.view()->set_viewport(0, 0, views * size.tile_width, size.tile_height);
    if (!size.is_sound)
        return size;
    camera.set_aspect(size.width * views / size.height);
    camera.set_view_height(size.height);
    camera.set_eye({0, size.height / 2, size.width});
    camera.set_target({0, size.height / 2, -size.width});
    return size;
}

void ACTION_TREE::place_instances(VIEW_SIZE const &size)
{
    if (model == KESTREL::ENGINE::INVALID_MODEL || !size.is_sound)
        return;
    for (int k = 0; k < views; ++k) {
        float const angle = float(k + 1) * 1.5707964f, s = std::sin(angle), c = std::cos(angle);
        float const x = size.width * (float(k) - 1.5f);
        float const matrix[12] = {c, 0, s, x, 0, 1, 0, 0, -s, 0, c, 0};
        init->engine()->add_instance(model, matrix);
    }
}

void ACTION_TREE::capture(QString const &file, int kind, VIEW_SIZE const &size)
{
    KESTREL::VIEW *const view = init->engine()->view();
    if (!view)
        return;
    KESTREL::CAPTURE_REQUEST request;
    request.width = unsigned(views * size.tile_width);
    request.height = unsigned(size.tile_height);
    request.file_name = KN::String(file.toLatin1().toStdString());
    request.kind = kind;
    view->save_image(request);
}
