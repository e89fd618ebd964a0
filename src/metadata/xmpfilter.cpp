#include "metadata/xmpfilter.h"

#include <QList>
#include <QRegularExpression>
#include <QString>
#include <QXmlStreamReader>

#include <algorithm>
#include <optional>

namespace quillet {

namespace {

const QString Rdf = QStringLiteral("http://www.w3.org/1999/02/22-rdf-syntax-ns#");
const QString Exif = QStringLiteral("http://ns.adobe.com/exif/1.0/");
const QString ExifEx = QStringLiteral("http://cipa.jp/exif/1.0/");
const QString Aux = QStringLiteral("http://ns.adobe.com/exif/1.0/aux/");
const QString Tiff = QStringLiteral("http://ns.adobe.com/tiff/1.0/");
const QString Photoshop = QStringLiteral("http://ns.adobe.com/photoshop/1.0/");
const QString IptcCore = QStringLiteral("http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/");
const QString IptcExt = QStringLiteral("http://iptc.org/std/Iptc4xmpExt/2008-02-29/");
const QString Dc = QStringLiteral("http://purl.org/dc/elements/1.1/");
const QString Rights = QStringLiteral("http://ns.adobe.com/xap/1.0/rights/");
const QString Note = QStringLiteral("http://ns.adobe.com/xmp/note/");

enum class Verdict { Keep, Location, Identifying, Other };

Verdict judge(QStringView ns, QStringView name, MetadataPolicy policy) {
    if (ns == Exif && name.startsWith(u"GPS"))
        return Verdict::Location;
    if ((ns == Photoshop && (name == u"City" || name == u"State" || name == u"Country")) ||
        (ns == IptcCore && (name == u"Location" || name == u"CountryCode")) ||
        (ns == IptcExt && (name == u"LocationCreated" || name == u"LocationShown")))
        return Verdict::Location;
    if ((ns == Aux && (name == u"SerialNumber" || name == u"LensSerialNumber" || name == u"OwnerName")) ||
        (ns == ExifEx &&
         (name == u"BodySerialNumber" || name == u"LensSerialNumber" || name == u"CameraOwnerName")) ||
        (ns == Exif && name == u"ImageUniqueID"))
        return Verdict::Identifying;
    if (ns == Note && name == u"HasExtendedXMP")
        return Verdict::Other;
    if (policy != MetadataPolicy::Minimal)
        return Verdict::Keep;
    const bool kept = (ns == Tiff && (name == u"Orientation" || name == u"Artist" || name == u"Copyright")) ||
                      (ns == Exif && name == u"DateTimeOriginal") ||
                      (ns == Photoshop && name == u"DateCreated") ||
                      (ns == Dc && (name == u"rights" || name == u"creator")) || ns == Rights;
    return kept ? Verdict::Keep : Verdict::Other;
}

// Nothing stays under None, but what goes is counted by what it gives away.
Verdict judged(QStringView ns, QStringView name, MetadataPolicy policy) {
    if (policy != MetadataPolicy::None)
        return judge(ns, name, policy);
    const Verdict verdict = judge(ns, name, MetadataPolicy::NoLocation);
    return verdict == Verdict::Keep ? Verdict::Other : verdict;
}

void count(MetadataRemoval& removed, Verdict verdict) {
    if (verdict == Verdict::Location)
        ++removed.location;
    else if (verdict == Verdict::Identifying)
        ++removed.identifying;
    else if (verdict == Verdict::Other)
        ++removed.other;
}

struct Cut {
    qint64 from = 0;
    qint64 to = 0;
};

struct Element {
    QString ns;
    QString name;
};

bool isTopDescription(const QList<Element>& open) {
    const qsizetype n = open.size();
    return n >= 2 && open[n - 1].ns == Rdf && open[n - 1].name == u"Description" && open[n - 2].ns == Rdf &&
           open[n - 2].name == u"RDF";
}

// Where the attribute written as `qualifiedName` lies in a start tag's text.
std::optional<Cut> attributeIn(const QString& text, Cut tag, QStringView qualifiedName) {
    const QRegularExpression attribute(QStringLiteral("\\s+%1\\s*=\\s*(\"[^\"]*\"|'[^']*')")
                                           .arg(QRegularExpression::escape(qualifiedName.toString())));
    const QRegularExpressionMatch match = attribute.match(text.mid(tag.from, tag.to - tag.from));
    if (!match.hasMatch())
        return std::nullopt;
    return Cut{tag.from + match.capturedStart(), tag.from + match.capturedEnd()};
}

// Takes the indentation before a cut element with it.
qint64 lineStart(const QString& text, qint64 from) {
    qint64 at = from;
    while (at > 0 && (text[at - 1] == u' ' || text[at - 1] == u'\t'))
        --at;
    if (at > 0 && text[at - 1] == u'\n')
        return at - 1;
    return from;
}

} // namespace

XmpFilter::Result XmpFilter::filter(const QByteArray& packet, MetadataPolicy policy) {
    if (policy == MetadataPolicy::Keep || packet.isEmpty())
        return {packet, {}};
    Result out;
    // The reader's offsets count the characters of the text it was given.
    const QString text = QString::fromUtf8(packet);
    QXmlStreamReader reader(text);
    QList<Element> open;
    QList<Cut> cuts;
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::EndElement) {
            if (!open.isEmpty())
                open.removeLast();
            continue;
        }
        if (reader.tokenType() != QXmlStreamReader::StartElement)
            continue;
        // The reader has gone past the tag's '>'; its '<' is the last before,
        // as no attribute value may hold one.
        const qint64 end = reader.characterOffset();
        const qint64 start = text.lastIndexOf(u'<', end - 1);
        const QString ns = reader.namespaceUri().toString();
        const QString name = reader.name().toString();
        if (isTopDescription(open)) {
            const Verdict verdict = judged(ns, name, policy);
            if (verdict != Verdict::Keep) {
                count(out.removed, verdict);
                reader.skipCurrentElement();
                cuts.append({lineStart(text, start), reader.characterOffset()});
                continue;
            }
        }
        open.append({ns, name});
        if (!isTopDescription(open))
            continue;
        for (const QXmlStreamAttribute& attribute : reader.attributes()) {
            const QStringView uri = attribute.namespaceUri();
            if (uri.isEmpty() || uri == Rdf || uri == u"http://www.w3.org/XML/1998/namespace")
                continue;
            const Verdict verdict = judged(uri, attribute.name(), policy);
            if (verdict == Verdict::Keep)
                continue;
            count(out.removed, verdict);
            if (const std::optional<Cut> cut = attributeIn(text, {start, end}, attribute.qualifiedName()))
                cuts.append(*cut);
            else
                reader.raiseError(QStringLiteral("attribute not found")); // cannot be cut: drop all
        }
    }
    if (reader.hasError()) {
        out.removed = {};
        out.removed.other = 1;
        return out;
    }
    if (policy == MetadataPolicy::None)
        return out;
    QString filtered = text;
    std::sort(cuts.begin(), cuts.end(), [](const Cut& a, const Cut& b) { return a.from > b.from; });
    for (const Cut& cut : cuts)
        filtered.remove(cut.from, cut.to - cut.from);
    out.packet = filtered.toUtf8();
    return out;
}

} // namespace quillet
