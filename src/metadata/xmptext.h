#pragma once

#include <QByteArray>
#include <QList>

namespace quillet {

// Finds property values in the text of an XMP packet without an XML parser:
// enough for the few simple properties read or rewritten here, and it leaves
// every other byte of the packet alone.
class XmpText {
  public:
    // A value's place in the packet, white space around it left out.
    struct Value {
        qsizetype start = 0;
        qsizetype length = 0;
    };

    // Where the packet gives `name` a simple value under one of `prefixes`
    // (any prefix when the list is empty), as an attribute (prefix:name="v")
    // or as an element (<prefix:name>v</prefix:name>), in packet order.
    static QList<Value> values(const QByteArray& packet, const QList<QByteArray>& prefixes,
                               const QByteArray& name);

    // The prefixes the packet binds to `namespaceUri` with xmlns.
    static QList<QByteArray> prefixesOf(const QByteArray& packet, const QByteArray& namespaceUri);
};

} // namespace quillet
