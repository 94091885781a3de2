#include "Plugins/Vx2/actor_specs.h"

#include "Plugins/Vx2/text.h"
#include "foundation/file.h"
#include "foundation/finished_file.h"

#include <QtCore/QTextStream>

#include <set>

namespace {

// `text` with a replacement for what no XML file may hold.
QString xml_text(QString text)
{
    for (QChar &unit : text)
        if ((unit.unicode() < 0x20 && unit != '\t' && unit != '\n' && unit != '\r') || unit.unicode() >= 0xfffe)
            unit = QChar::ReplacementCharacter;
    return text;
}

QDomDocument new_document(QDomElement &root)
{
    QDomDocument document;
    document.appendChild(document.createProcessingInstruction(QStringLiteral("xml"),
                                                              QStringLiteral("version=\"1.0\" encoding=\"utf-8\"")));
    root = document.createElement(QStringLiteral("root"));
    document.appendChild(root);
    return document;
}

QDomElement add_element(QDomNode parent, char const *name)
{
    QDomElement element = parent.ownerDocument().createElement(QLatin1String(name));
    parent.appendChild(element);
    return element;
}

void add_text_element(QDomNode const &parent, char const *name, QString const &text)
{
    add_element(parent, name).appendChild(parent.ownerDocument().createTextNode(xml_text(text)));
}

void set_attributes(QDomElement element, std::initializer_list<std::pair<char const *, char const *>> attributes)
{
    for (auto const &[name, value] : attributes)
        element.setAttribute(QLatin1String(name), QLatin1String(value));
}

QString skeleton_class(QString const &skeleton)
{
    QString const name = skeleton.toLower();
    if (name.contains(QLatin1String("man")))
        return QStringLiteral("man");
    if (name.contains(QLatin1String("horse")))
        return QStringLiteral("horse");
    return name == QLatin1String("generic") ? QStringLiteral("unknown") : name;
}

QString stand_in_of(QString const &skeleton) { return "AUTO-GENERATED_" + skeleton_class(skeleton).toUpper(); }

char const *variant_file(QString const &class_name)
{
    static const struct {
        char const *name, *file;
    } known[] = {
        {"man", "Veldic_Hastati.VariantMeshDefinition"},
        {"horse", "Horse_Veldic.VariantMeshDefinition"},
        {"elephant", "Elephant_African.VariantMeshDefinition"},
        {"lion", "animal_lion.VariantMeshDefinition"},
    };
    for (auto const &entry : known)
        if (class_name == QLatin1String(entry.name))
            return entry.file;
    return "?";
}

}  // namespace

QDomDocument tool_spec(std::vector<ACTOR_SPEC> const &actors)
{
    QDomElement root;
    QDomDocument const document = new_document(root);
    QDomElement const list = add_element(root, "actors");
    for (ACTOR_SPEC const &spec : actors) {
        QDomElement actor = add_element(list, "actor");
        actor.setAttribute(QStringLiteral("id"), xml_text(spec.id));
        set_attributes(add_element(actor, "position"), {{"x", "0.00"}, {"y", "0.00"}, {"z", "0.00"}});
        set_attributes(add_element(actor, "orientation"), {{"i", "0.00"}, {"j", "1.00"}, {"k", "0.00"}, {"w", "0.00"}});
        add_text_element(actor, "animation_filename", spec.animation_file);
        add_text_element(actor, "skeleton", spec.skeleton);
    }
    return document;
}

QDomDocument user_spec(std::vector<ACTOR_SPEC> const &actors)
{
    QDomElement root;
    QDomDocument const document = new_document(root);
    QDomElement const specs = add_element(root, "display_specs");
    QDomElement const list = add_element(root, "actors");
    std::set<QString> classes;
    for (ACTOR_SPEC const &spec : actors) {
        QDomElement actor = add_element(list, "actor");
        actor.setAttribute(QStringLiteral("id"), xml_text(spec.id));
        add_text_element(actor, "display_spec", stand_in_of(spec.skeleton));
        classes.insert(skeleton_class(spec.skeleton));
    }
    for (QString const &name : classes) {
        QDomElement spec = add_element(specs, "display_spec");
        spec.setAttribute(QStringLiteral("id"), xml_text("AUTO-GENERATED_" + name.toUpper()));
        add_text_element(spec, "unit_variant_filename", QLatin1String(variant_file(name)));
        for (int index = 0; index < 6; ++index) {
            QDomElement colour = add_element(spec, "colour");
            colour.setAttribute(QStringLiteral("index"), index);
            set_attributes(colour, {{"red", "0"}, {"green", "0"}, {"blue", "0"}});
        }
    }
    return document;
}

bool save_document(QDomDocument const &document, QString const &path)
{
    QByteArray bytes;
    {
        QTextStream stream(&bytes, QIODevice::WriteOnly);
        document.save(stream, 4);
    }
    KN::String ignored;
    return KN::write_finished_file(local_8_bit(path), std::string_view(bytes.constData(), std::size_t(bytes.size())),
                                   ignored);
}
