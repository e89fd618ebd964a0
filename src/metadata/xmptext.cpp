#include "metadata/xmptext.h"

#include <cctype>
#include <optional>

namespace quillet {

namespace {

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool isNameChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == '.' ||
           static_cast<unsigned char>(c) >= 0x80;
}

qsizetype skipSpace(const QByteArray& text, qsizetype at) {
    while (at < text.size() && isSpace(text[at]))
        ++at;
    return at;
}

// A quoted text starting at `at` (after any white space), quotes left out.
std::optional<XmpText::Value> quoted(const QByteArray& text, qsizetype at) {
    at = skipSpace(text, at);
    if (at >= text.size() || (text[at] != '"' && text[at] != '\''))
        return std::nullopt;
    const qsizetype end = text.indexOf(text[at], at + 1);
    if (end < 0)
        return std::nullopt;
    return XmpText::Value{at + 1, end - at - 1};
}

// After the name: ="value".
std::optional<XmpText::Value> attributeValue(const QByteArray& text, qsizetype at) {
    at = skipSpace(text, at);
    if (at >= text.size() || text[at] != '=')
        return std::nullopt;
    return quoted(text, at + 1);
}

// After the name: any attributes, then >value<. An empty element has none.
std::optional<XmpText::Value> elementValue(const QByteArray& text, qsizetype at) {
    const qsizetype close = text.indexOf('>', at);
    if (close < 0 || text[close - 1] == '/')
        return std::nullopt;
    const qsizetype next = text.indexOf('<', close + 1);
    if (next < 0)
        return std::nullopt;
    return XmpText::Value{close + 1, next - close - 1};
}

XmpText::Value trimmed(const QByteArray& text, XmpText::Value value) {
    while (value.length > 0 && isSpace(text[value.start])) {
        ++value.start;
        --value.length;
    }
    while (value.length > 0 && isSpace(text[value.start + value.length - 1]))
        --value.length;
    return value;
}

} // namespace

QList<XmpText::Value> XmpText::values(const QByteArray& packet, const QList<QByteArray>& prefixes,
                                      const QByteArray& name) {
    QList<Value> out;
    const QByteArray key = ':' + name;
    for (qsizetype at = packet.indexOf(key); at >= 0; at = packet.indexOf(key, at + 1)) {
        const qsizetype after = at + key.size();
        if (after < packet.size() && isNameChar(packet[after]))
            continue; // a longer name that starts alike
        qsizetype begin = at;
        while (begin > 0 && isNameChar(packet[begin - 1]))
            --begin;
        if (begin == at || (!prefixes.isEmpty() && !prefixes.contains(packet.mid(begin, at - begin))))
            continue;
        // A closing tag is preceded by neither.
        const char before = begin > 0 ? packet[begin - 1] : '\0';
        std::optional<Value> value;
        if (before == '<')
            value = elementValue(packet, after);
        else if (isSpace(before) && packet.lastIndexOf('<', begin) > packet.lastIndexOf('>', begin))
            value = attributeValue(packet, after); // within a start tag, not in some text
        if (value)
            out.append(trimmed(packet, *value));
    }
    return out;
}

QList<QByteArray> XmpText::prefixesOf(const QByteArray& packet, const QByteArray& namespaceUri) {
    QList<QByteArray> out;
    const QByteArray key("xmlns:");
    for (qsizetype at = packet.indexOf(key); at >= 0; at = packet.indexOf(key, at + 1)) {
        qsizetype end = at + key.size();
        while (end < packet.size() && isNameChar(packet[end]))
            ++end;
        const std::optional<Value> uri = attributeValue(packet, end);
        const QByteArray prefix = packet.mid(at + key.size(), end - at - key.size());
        if (uri && packet.mid(uri->start, uri->length) == namespaceUri && !out.contains(prefix))
            out.append(prefix);
    }
    return out;
}

} // namespace quillet
