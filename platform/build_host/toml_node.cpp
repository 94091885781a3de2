#include "platform/build_host/toml_node.h"

#include <toml++/toml.h>

#include <algorithm>

namespace {

QString from_utf8(std::string_view text) { return QString::fromUtf8(text.data(), int(text.size())); }

TOML_NODE convert(toml::node const &node)
{
    TOML_NODE made;
    made.line = int(node.source().begin.line);
    if (toml::table const *const table = node.as_table()) {
        made.kind = TOML_NODE::TABLE;
        for (auto const &[key, item] : *table) {
            made.items.push_back(convert(item));
            made.items.back().key = from_utf8(key.str());
            made.items.back().line = int(key.source().begin.line);
        }
        // The parser keeps tables sorted by key.
        std::stable_sort(made.items.begin(), made.items.end(),
                         [](TOML_NODE const &a, TOML_NODE const &b) { return a.line < b.line; });
    } else if (toml::array const *const array = node.as_array()) {
        made.kind = TOML_NODE::ARRAY;
        for (toml::node const &item : *array)
            made.items.push_back(convert(item));
    } else {
        made.kind = TOML_NODE::VALUE;
        if (auto const *const text = node.as_string())
            made.value = from_utf8(text->get());
        else if (auto const *const flag = node.as_boolean())
            made.value = flag->get();
        else if (auto const *const whole = node.as_integer())
            made.value = qlonglong(whole->get());
        else if (auto const *const real = node.as_floating_point())
            made.value = real->get();
        else
            made.kind = TOML_NODE::OTHER;
    }
    return made;
}

}  // namespace

TOML_NODE const *TOML_NODE::find(QString const &name) const
{
    for (TOML_NODE const &item : items)
        if (item.key == name)
            return &item;
    return nullptr;
}

bool TOML_NODE::read_texts(QStringList &texts) const
{
    if (kind != ARRAY || !std::all_of(items.begin(), items.end(), [](TOML_NODE const &item) { return item.is_text(); }))
        return false;
    for (TOML_NODE const &item : items)
        texts.append(item.value.toString());
    return true;
}

bool read_toml(QByteArray const &text, QString const &shown, TOML_NODE &root, QString &fault)
{
    constexpr int largest = 1 << 20;  // bytes
    if (text.size() > largest) {
        fault = QStringLiteral("%1: %2 bytes, more than the %3 that such a file may have")
                    .arg(shown)
                    .arg(text.size())
                    .arg(largest);
        return false;
    }
    try {
        root = convert(toml::parse(std::string_view(text.constData(), std::size_t(text.size()))));
        return true;
    } catch (toml::parse_error const &error) {
        fault =
            QStringLiteral("%1:%2: %3").arg(shown).arg(error.source().begin.line).arg(from_utf8(error.description()));
        return false;
    }
}
