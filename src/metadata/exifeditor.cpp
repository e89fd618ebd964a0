#include "metadata/exifeditor.h"

#include <map>

namespace quillet {

namespace {

constexpr quint16 FormatShort = 3, FormatLong = 4, FormatRational = 5, FormatSRational = 10;

} // namespace

ExifEditor::ExifEditor(QByteArray tiff) : m_tiff(std::move(tiff)) {
    if (m_tiff.size() < 8)
        return;
    if (m_tiff.startsWith("II*\0"))
        m_motorola = false;
    else if (m_tiff.startsWith(QByteArray("MM\0*", 4)))
        m_motorola = true;
    else
        return;
    const quint32 ifd0 = get32(4);
    if (ifd0 < 8 || qsizetype(ifd0) + 2 > m_tiff.size())
        return;
    const qsizetype count = get16(ifd0);
    if (qsizetype(ifd0) + 2 + count * 12 > m_tiff.size())
        return;
    m_ifd0 = ifd0;
}

QByteArray ExifEditor::packed32(quint32 value) const {
    QByteArray bytes(4, '\0');
    for (int i = 0; i < 4; ++i)
        bytes[m_motorola ? 3 - i : i] = char(value >> (8 * i) & 0xFF);
    return bytes;
}

quint16 ExifEditor::get16(qsizetype at) const {
    const auto b = [this, at](int i) { return quint16(quint8(m_tiff[at + i])); };
    return m_motorola ? quint16(b(0) << 8 | b(1)) : quint16(b(1) << 8 | b(0));
}

quint32 ExifEditor::get32(qsizetype at) const {
    const quint32 a = get16(at), b = get16(at + 2);
    return m_motorola ? a << 16 | b : b << 16 | a;
}

void ExifEditor::put16(qsizetype at, quint32 value) {
    m_tiff[at + (m_motorola ? 0 : 1)] = char(value >> 8);
    m_tiff[at + (m_motorola ? 1 : 0)] = char(value & 0xFF);
}

void ExifEditor::put32(qsizetype at, quint32 value) {
    put16(at + (m_motorola ? 0 : 2), value >> 16);
    put16(at + (m_motorola ? 2 : 0), value & 0xFFFF);
}

qsizetype ExifEditor::entry(quint16 tag) const {
    if (!isValid())
        return -1;
    const qsizetype count = get16(m_ifd0);
    for (qsizetype i = 0; i < count; ++i) {
        const qsizetype at = m_ifd0 + 2 + i * 12;
        if (get16(at) == tag)
            return at;
    }
    return -1;
}

quint32 ExifEditor::shortValue(quint16 tag) const {
    const qsizetype at = entry(tag);
    if (at < 0 || get32(at + 4) != 1)
        return 0;
    const quint16 format = get16(at + 2);
    return format == FormatShort ? get16(at + 8) : format == FormatLong ? get32(at + 8) : 0;
}

bool ExifEditor::setShort(quint16 tag, quint16 value) {
    const qsizetype at = entry(tag);
    if (at >= 0 && (get16(at + 2) == FormatShort || get16(at + 2) == FormatLong)) {
        put16(at + 2, FormatShort);
        put32(at + 4, 1);
        put32(at + 8, 0);
        put16(at + 8, value);
        return true;
    }
    // A SHORT sits in the first half of the value field.
    const QByteArray field = m_motorola ? packed32(quint32(value) << 16) : packed32(value);
    return relocate(tag, FormatShort, field, {});
}

bool ExifEditor::setRational(quint16 tag, quint32 numerator, quint32 denominator) {
    const qsizetype at = entry(tag);
    if (at >= 0 && get32(at + 4) == 1 &&
        (get16(at + 2) == FormatRational || get16(at + 2) == FormatSRational)) {
        const quint32 offset = get32(at + 8);
        if (offset >= 8 && qsizetype(offset) + 8 <= m_tiff.size()) {
            put16(at + 2, FormatRational);
            put32(offset, numerator);
            put32(offset + 4, denominator);
            return true;
        }
    }
    return relocate(tag, FormatRational, QByteArray(4, '\0'), packed32(numerator) + packed32(denominator));
}

bool ExifEditor::relocate(quint16 tag, quint16 format, const QByteArray& valueField,
                          const QByteArray& extra) {
    if (!isValid())
        return false;
    const qsizetype count = get16(m_ifd0);
    const qsizetype end = m_ifd0 + 2 + count * 12;
    std::map<quint16, QByteArray> entries; // TIFF wants them in tag order
    for (qsizetype i = 0; i < count; ++i) {
        const qsizetype at = m_ifd0 + 2 + i * 12;
        entries[get16(at)] = m_tiff.mid(at, 12);
    }
    const quint32 link = end + 4 <= m_tiff.size() ? get32(end) : 0;

    if (m_tiff.size() % 2)
        m_tiff += '\0'; // directories start on a word boundary
    const qsizetype start = m_tiff.size();
    const qsizetype newCount = qsizetype(entries.count(tag) ? entries.size() : entries.size() + 1);
    const qsizetype extraAt = start + 2 + newCount * 12 + 4;

    const quint32 head = m_motorola ? quint32(tag) << 16 | format : quint32(format) << 16 | tag;
    entries[tag] = packed32(head) + packed32(1) + (extra.isEmpty() ? valueField : packed32(quint32(extraAt)));

    m_tiff.resize(extraAt, '\0');
    put16(start, quint16(newCount));
    qsizetype at = start + 2;
    for (const auto& [number, bytes] : entries) {
        m_tiff.replace(at, 12, bytes);
        at += 12;
    }
    put32(at, link);
    m_tiff += extra;
    put32(4, quint32(start));
    m_ifd0 = start;
    return true;
}

} // namespace quillet
