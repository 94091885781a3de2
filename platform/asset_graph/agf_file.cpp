#include "platform/asset_graph/agf_file.h"

#include <QtCore/QXmlStreamReader>
#include <QtCore/QXmlStreamWriter>

namespace QTSHARED {

static constexpr int deepest = 256;  // elements within each other

QByteArray agf_bytes(QMap<QString, ASSET_FRAGMENT> const &fragments)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("asset_fragments"));
    for (auto fragment = fragments.begin(); fragment != fragments.end(); ++fragment) {
        xml.writeStartElement(QStringLiteral("fragment"));
        xml.writeAttribute(QStringLiteral("id"), fragment.key());
        xml.writeAttribute(QStringLiteral("asset"), fragment->asset);
        xml.writeAttribute(QStringLiteral("note"), fragment->note);
        for (ASSET_DEPENDENCY const &dependency : fragment->dependencies) {
            xml.writeEmptyElement(QStringLiteral("dependency"));
            xml.writeAttribute(QStringLiteral("id"), dependency.id);
            xml.writeAttribute(QStringLiteral("kind"), dependency.kind);
            xml.writeAttribute(QStringLiteral("note"), dependency.note);
        }
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    return bytes;
}

bool read_agf(QByteArray const &bytes, QMap<QString, ASSET_FRAGMENT> &fragments, QString &error)
{
    fragments.clear();
    if (bytes.size() > largest_agf) {
        error = QStringLiteral("is larger than 16 MiB");
        return false;
    }
    QXmlStreamReader xml(bytes);
    ASSET_FRAGMENT *current = nullptr;
    for (int depth = 0; !xml.atEnd();) {
        QXmlStreamReader::TokenType const token = xml.readNext();
        if (token == QXmlStreamReader::EndElement)
            --depth;
        if (token != QXmlStreamReader::StartElement)
            continue;
        QXmlStreamAttributes const attributes = xml.attributes();
        auto const text = [&](char const *name) { return attributes.value(QLatin1String(name)).toString(); };
        ++depth;
        if (depth > deepest) {
            xml.raiseError(QStringLiteral("nests too deeply"));
        } else if (depth == 1) {
            if (xml.name() != QLatin1String("asset_fragments"))
                xml.raiseError(QStringLiteral("is no list of asset fragments"));
        } else if (depth == 2 && xml.name() == QLatin1String("fragment")) {
            current = &fragments[text("id")];
            current->asset = text("asset");
            current->note = text("note");
        } else if (depth == 3 && xml.name() == QLatin1String("dependency") && current != nullptr) {
            current->dependencies.append({text("id"), text("kind"), text("note")});
        }
    }
    if (!xml.hasError())
        return true;
    error = QStringLiteral("line %1: %2").arg(xml.lineNumber()).arg(xml.errorString());
    fragments.clear();
    return false;
}

// For each fragment: id, asset, note, number of dependencies, and id, kind, note of each; a NUL behind every text.
QByteArray remembered_agf(QMap<QString, ASSET_FRAGMENT> const &fragments)
{
    QByteArray bytes;
    auto const append = [&](QString const &text) { bytes.append(text.toUtf8()).append('\0'); };
    for (auto fragment = fragments.begin(); fragment != fragments.end(); ++fragment) {
        append(fragment.key());
        append(fragment->asset);
        append(fragment->note);
        append(QString::number(fragment->dependencies.size()));
        for (ASSET_DEPENDENCY const &dependency : fragment->dependencies) {
            append(dependency.id);
            append(dependency.kind);
            append(dependency.note);
        }
    }
    append(QStringLiteral("end"));
    return bytes;
}

bool recall_agf(QByteArray const &bytes, QMap<QString, ASSET_FRAGMENT> &fragments)
{
    fragments.clear();
    int place = 0;
    auto const next = [&](QString &text) {
        int const end = bytes.indexOf('\0', place);
        if (end < 0)
            return false;
        text = QString::fromUtf8(bytes.constData() + place, end - place);
        place = end + 1;
        return true;
    };
    QString id, count;
    while (next(id)) {
        if (place == bytes.size())
            return id == QLatin1String("end");
        ASSET_FRAGMENT &fragment = fragments[id];
        if (!next(fragment.asset) || !next(fragment.note) || !next(count))
            return false;
        for (int left = count.toInt(); left > 0; --left) {
            ASSET_DEPENDENCY dependency;
            if (!next(dependency.id) || !next(dependency.kind) || !next(dependency.note))
                return false;
            fragment.dependencies.append(dependency);
        }
    }
    return false;
}

}  // namespace QTSHARED
