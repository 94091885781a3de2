#include "Plugins/Vx2/host/action_texture.h"

#include "foundation/finished_file.h"
#include "platform/build_host/disk_name.h"
#include "platform/texture/dds.h"

#include <QtCore/QXmlStreamWriter>

namespace {

constexpr int views = 4;  // side by side in a strip

QString named(char const *what, bool with_source, QString const &source)
{
    QString const name = QString::fromLatin1(what);
    return with_source ? name + QStringLiteral(" (") + source + QLatin1Char(')') : name;
}

KESTREL::CONTENT content_of(QString const &picture)
{
    QString const stem = picture.section('/', -1).section('.', 0, -2);
    return stem.endsWith(QLatin1String("_normal"), Qt::CaseInsensitive)         ? KESTREL::CONTENT::NORMAL
           : stem.endsWith(QLatin1String("_displacement"), Qt::CaseInsensitive) ? KESTREL::CONTENT::VALUES
                                                                                : KESTREL::CONTENT::COLOUR;
}

bool convert_picture(QString const &from, QString const &to, KESTREL::PICTURE &picture, KN::String &error)
{
    if (!KESTREL::read_picture(disk_name(from), picture, error))
        return false;
    KESTREL::CONTENT const content = content_of(from);
    if (KESTREL::write_dds(picture, content, disk_name(to), error))
        return true;
    if (error.empty())
        error = "interrupted";
    return false;
}

}  // namespace

ACTION_DDS_N::ACTION_DDS_N(PHYSICAL_PATH const &picture, PROCESSOR_INTERFACE *planned_by)
    : ACTION_CONVERT(picture, planned_by)
{
    set_target_extension(QStringLiteral(".dds"));
}

QString ACTION_DDS_N::get_name(bool with_source) const
{
    return named("Convert picture", with_source, PATHS::logical_path(source()));
}

bool ACTION_DDS_N::convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &, FILE_TABLE const &)
{
    KESTREL::PICTURE picture;
    KN::String error;
    if (convert_picture(from, to, picture, error))
        return true;
    output_line(QString::fromStdString(error), 2);
    return false;
}

ACTION_BILLBOARD::ACTION_BILLBOARD(PHYSICAL_PATH const &base_name, PROCESSOR_INTERFACE *planned_by)
    : ACTION_CONVERT(base_name, planned_by)
{
    set_target_extension(QStringLiteral(".billboard.xml"));
}

QString ACTION_BILLBOARD::get_name(bool with_source) const
{
    return named("Make billboard", with_source, PATHS::logical_path(source()));
}

static constexpr char const *billboard_pictures[] = {"normal", "displacement"};

void ACTION_BILLBOARD::get_source_files(QVector<LOGICAL_PATH> &sources, FILE_TABLE const &) const
{
    for (char const *kind : billboard_pictures)
        sources.append(PATHS::logical_path(PHYSICAL_PATH(source() + '_' + kind + ".tga")));
}

void ACTION_BILLBOARD::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                                          FILE_TABLE const &files, RULE_CACHE const &rules) const
{
    ACTION_CONVERT::get_affected_files(sources, targets, time, files, rules);
    for (char const *kind : billboard_pictures) {
        PHYSICAL_PATH const texture(target_path() + '/' + target_stem() + '_' + kind + ".dds");
        targets.append(TARGET_FILE(texture, PATHS::logical_path(texture), true));
    }
}

bool ACTION_BILLBOARD::convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &,
                               FILE_TABLE const &files)
{
    KESTREL::PICTURE picture;
    KN::String error;
    for (char const *kind : billboard_pictures) {
        PHYSICAL_PATH const texture(target_path() + '/' + target_stem() + '_' + kind + ".dds");
        if (!convert_picture(from + '_' + kind + ".tga", texture, picture, error)) {
            output_line(QString::fromStdString(error), 2);
            return false;
        }
        add_to_perforce(texture, files, true, QString());
    }

    QByteArray text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.writeStartElement(QStringLiteral("billboard"));
    auto const write_number = [&xml](char const *name, unsigned value) {
        xml.writeAttribute(QString::fromLatin1(name), QString::number(value));
    };
    write_number("width", picture.width);
    write_number("height", picture.height);
    write_number("tile_width", picture.width / views);
    write_number("tile_height", picture.height);
    write_number("views", views);
    for (char const *kind : {"diffuse", "normal", "displacement"}) {
        xml.writeEmptyElement(QStringLiteral("texture"));
        xml.writeAttribute(QStringLiteral("kind"), QString::fromLatin1(kind));
        xml.writeAttribute(QStringLiteral("file"), target_stem() + '_' + kind + ".dds");
    }
    xml.writeEndElement();
    if (KN::write_finished_file(disk_name(to), std::string_view(text.constData(), std::size_t(text.size())), error))
        return true;
    output_line(QString::fromStdString(error), 2);
    return false;
}
