#pragma once

#include <QByteArray>

namespace quillet {

// Edits tags of IFD0 in an EXIF block (the TIFF structure that follows
// "Exif\0\0"). A tag whose entry can take the new value is rewritten where it
// stands; otherwise IFD0 is copied to the end of the block with the tag added
// and the header pointed at the copy, so no other offset in the block (maker
// notes included) moves.
class ExifEditor {
  public:
    static constexpr quint16 TagOrientation = 0x0112;
    static constexpr quint16 TagXResolution = 0x011A;
    static constexpr quint16 TagYResolution = 0x011B;
    static constexpr quint16 TagResolutionUnit = 0x0128;

    explicit ExifEditor(QByteArray tiff);

    // False when the block has no readable TIFF header and IFD0.
    bool isValid() const { return m_ifd0 > 0; }
    const QByteArray& tiff() const { return m_tiff; }

    // The SHORT or LONG value of an IFD0 tag; 0 when absent or of another kind.
    quint32 shortValue(quint16 tag) const;
    // Sets an IFD0 tag to one SHORT. False when the block cannot be edited.
    bool setShort(quint16 tag, quint16 value);
    // Sets an IFD0 tag to one unsigned RATIONAL.
    bool setRational(quint16 tag, quint32 numerator, quint32 denominator);

  private:
    quint16 get16(qsizetype at) const;
    quint32 get32(qsizetype at) const;
    void put16(qsizetype at, quint32 value);
    void put32(qsizetype at, quint32 value);
    // Four bytes holding `value` in the block's byte order.
    QByteArray packed32(quint32 value) const;
    // Offset of the tag's 12-byte entry in IFD0, or -1.
    qsizetype entry(quint16 tag) const;
    // Copies IFD0 to the end with `tag` set to (format, count, value field);
    // `extra` is appended after the directory and its offset patched into the
    // value field when not empty.
    bool relocate(quint16 tag, quint16 format, const QByteArray& valueField, const QByteArray& extra);

    QByteArray m_tiff;
    bool m_motorola = false;
    qsizetype m_ifd0 = 0;
};

} // namespace quillet
