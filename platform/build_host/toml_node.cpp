#include "platform/build_host/toml_node.h"

#include "foundation/string.h"

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

// How many sections the longest dotted key has. The parser bounds how deep values stand in each other, but makes a
// table for each section of a key, and goes through these by recursion.
int longest_key(std::string_view text)
{
    int sections = 1, longest = 1;
    for (std::size_t at = 0; at < text.size(); ++at) {
        char const unit = text[at];
        if (unit == '#') {
            at = std::min(text.find('\n', at), text.size());
            sections = 1;
        } else if (unit == '"' || unit == '\'') {
            std::string_view const start = text.substr(at);
            std::size_t const quotes = std::min(start.find_first_not_of(unit), start.size());
            bool const has_lines = quotes >= 3;
            if (!has_lines && quotes == 2) {
                ++at;  // an empty text
                continue;
            }
            std::string_view const end = start.substr(0, has_lines ? 3 : 1);
            at += has_lines ? 3 : 1;
            while (at < text.size() && text.substr(at, end.size()) != end && (has_lines || text[at] != '\n'))
                at += unit == '"' && text[at] == '\\' ? 2 : 1;
            at += end.size() - 1;
            while (has_lines && at + 1 < text.size() && text[at + 1] == unit)
                ++at;  // quotes that end the text itself
        } else if (unit == '.') {
            longest = std::max(longest, ++sections);
        } else if (unit == '\n' || unit == ',' || unit == '=') {
            sections = 1;
        }
    }
    return longest;
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
    if (text.size() > largest_toml) {
        fault = QStringLiteral("%1: more than the %2 bytes that such a file may have")
                    .arg(shown, QString::number(largest_toml));
        return false;
    }
    constexpr int most_sections = 16;
    std::string_view const bytes(text.constData(), std::size_t(text.size()));
    if (longest_key(bytes) > most_sections) {
        fault = QStringLiteral("%1: a key has more than %2 sections").arg(shown, QString::number(most_sections));
        return false;
    }
    try {
        root = convert(toml::parse(bytes));
        return true;
    } catch (toml::parse_error const &error) {
        fault = QStringLiteral("%1:%2: %3")
                    .arg(shown, QString::number(error.source().begin.line),
                         ::from_utf8(KN::printable(error.description())));
        return false;
    }
}
