#include "platform/conversion/lighting_materials.h"

#include "foundation/file.h"
#include "foundation/messages.h"

#include <QtCore/QXmlStreamReader>

namespace TOOLDATABUILDER {

constexpr unsigned largest_file = 16u << 20;  // bytes
constexpr int deepest = 256;                  // elements within each other

std::map<std::string, std::string> read_lighting_materials(KN::String const &path)
{
    std::map<std::string, std::string> types;
    KN::FileIn file;
    if (!file.open(path, true))
        return types;
    KN::String fault;
    QByteArray bytes;
    if (file.size() > largest_file) {
        fault = "is larger than 16 MiB";
    } else {
        bytes.resize(int(file.size()));
        file.read(bytes.data(), file.size());
    }
    QXmlStreamReader xml(bytes);
    for (int depth = 0; fault.empty() && !xml.atEnd();) {
        QXmlStreamReader::TokenType const token = xml.readNext();
        depth += token == QXmlStreamReader::StartElement ? 1 : token == QXmlStreamReader::EndElement ? -1 : 0;
        if (depth > deepest)
            fault = "nests too deeply";
        if (token != QXmlStreamReader::StartElement || xml.name() != QLatin1String("material"))
            continue;
        QXmlStreamAttributes const attributes = xml.attributes();
        QString const name = attributes.value(QLatin1String("name")).toString().toLower();
        types[name.toStdString()] = attributes.value(QLatin1String("type")).toString().toStdString();
    }
    if (fault.empty() && xml.hasError())
        fault = "line " + std::to_string(xml.lineNumber()) + ": " + xml.errorString().toStdString();
    if (!fault.empty())
        KN::message(KN::MESSAGE_WARNING, path + ": " + fault + "; materials behind it have no lighting type");
    return types;
}

}  // namespace TOOLDATABUILDER
