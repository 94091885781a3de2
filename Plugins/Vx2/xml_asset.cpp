#include "Plugins/Vx2/xml_asset.h"

#include "Plugins/Vx2/host/asset_fragment_builder.h"

#include <QtCore/QFile>
#include <QtCore/QXmlStreamReader>

#include <span>

namespace {

constexpr int largest_file = 16 << 20;  // bytes
constexpr int deepest = 256;            // elements within each other

// A document's memory is freed by recursion, so how deeply it nests is looked at before one is made, by the parser that
// then makes it.
bool parse(QByteArray const &bytes, QDomDocument &document, QString &message, int &line)
{
    QXmlStreamReader judge(bytes);
    judge.setNamespaceProcessing(false);
    for (int depth = 0; !judge.atEnd();) {
        QXmlStreamReader::TokenType const token = judge.readNext();
        depth += (token == QXmlStreamReader::StartElement) - (token == QXmlStreamReader::EndElement);
        if (depth > deepest) {
            message = QStringLiteral("nested too deeply");
            line = int(judge.lineNumber());
            return false;
        }
    }
    QXmlStreamReader reader(bytes);
    reader.setNamespaceProcessing(false);
    return document.setContent(&reader, false, &message, &line);
}

// XML has one element at its top. Where there are more, the file is read with one around them.
bool parse_several(QByteArray bytes, QDomDocument &document)
{
    int const byte_order_mark = bytes.startsWith("\xef\xbb\xbf") ? 3 : 0;
    bool const is_declared = bytes.indexOf("<?xml") == byte_order_mark;
    bytes.insert(is_declared ? bytes.indexOf("?>") + 2 : byte_order_mark, "<top>").append("</top>");
    QString message;
    int line = 0;
    if (!parse(bytes, document, message, line))
        return false;
    int elements = 0;
    for (QDomNode node = document.documentElement().firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (node.isText())
            return false;  // which stands nowhere at the top of a file
        elements += node.isElement();
    }
    return elements > 1;
}

// Gives what the elements at the top are children of; null, with an error line of `action`, for a faulty file.
QDomNode read_top(ACTION_INTERFACE &action, LOGICAL_PATH const &logical, FILE_TABLE const &files,
                  QDomDocument &document)
{
    FILE_ENTRY const *const entry = files.value(logical);
    QFile file(entry ? QString(entry->physical) : QString());
    if (!entry || !file.open(QIODevice::ReadOnly)) {
        action.output_line(QStringLiteral("Could not open file."), 2);
        return {};
    }
    QByteArray const bytes = file.read(largest_file + 1);
    QString message = QStringLiteral("larger than 16 MiB");
    int line = 1;
    bool const is_small = bytes.size() <= largest_file;
    if (is_small && parse(bytes, document, message, line))
        return document;
    if (is_small && parse_several(bytes, document))
        return document.documentElement();
    action.output_line("Could not parse file: \n" + message + " (line " + QString::number(line) + ")", 2);
    return {};
}

void append_elements(QDomNode const &from, std::span<char const *const> names, std::vector<QDomElement> &found)
{
    QString const name = QLatin1String(names[0]);
    for (QDomElement element = from.firstChildElement(name); !element.isNull();
         element = element.nextSiblingElement(name)) {
        if (names.size() == 1)
            found.push_back(element);
        else
            append_elements(element, names.subspan(1), found);
    }
}

}  // namespace

QString fragment_action_name(QString const &name, QString const &asset, bool with_source)
{
    return with_source ? name + " (" + asset + ")" : name;
}

void append_fragment_files(LOGICAL_PATH const &source, PHYSICAL_PATH const &agf, QVector<LOGICAL_PATH> &sources,
                           QVector<TARGET_FILE> &targets)
{
    sources.append(source);
    targets.append(TARGET_FILE(agf, PATHS::logical_path(agf), false));
}

std::vector<QDomElement> children(QDomNode const &from, std::initializer_list<char const *> names)
{
    std::vector<QDomElement> found;
    append_elements(from, std::span(names.begin(), names.size()), found);
    return found;
}

QString path_in(QDomElement const &element) { return element.text().toLower().replace('\\', '/'); }

ACTION_INTERFACE::STATUS make_xml_fragment(ACTION_INTERFACE &action, LOGICAL_PATH const &logical,
                                           PHYSICAL_PATH const &agf, int last_section, FILE_TABLE const &files,
                                           RULE_CACHE const &rules,
                                           std::function<QStringList(QDomNode const &)> const &needed_by)
{
    QTSHARED::ASSET_FRAGMENT_BUILDER builder(agf);
    QString const asset = logical.section('/', 1);
    QString const id = asset.section('.', 0, last_section);
    builder.add_fragment(id, asset, QString());

    QDomDocument document;
    QDomNode const top = read_top(action, logical, files, document);
    if (top.isNull())
        return ACTION_INTERFACE::FAILED;
    for (QString const &needed : needed_by(top))
        if (!needed.isEmpty())
            builder.add_dependency(id, needed, QStringLiteral("all"), QString());
    return action.add_to_asset_graph_and_save(builder, files, rules) ? ACTION_INTERFACE::DONE
                                                                     : ACTION_INTERFACE::FAILED;
}
