#pragma once

#include <QByteArray>

namespace quillet {

// A TIFF structure held in memory, read and written in its own byte order.
// Every access is checked against the end of the bytes: a value that does
// not fit reads as 0 and a write past the end does nothing.
class TiffBytes {
  public:
    TiffBytes(QByteArray& bytes, bool motorola) : m_bytes(bytes), m_motorola(motorola) {}

    bool motorola() const { return m_motorola; }
    QByteArray& bytes() { return m_bytes; }
    qint64 size() const { return m_bytes.size(); }
    bool has(qint64 at, qint64 length) const {
        return at >= 0 && length >= 0 && at <= m_bytes.size() && length <= m_bytes.size() - at;
    }

    quint16 get16(qint64 at) const;
    quint32 get32(qint64 at) const;
    void put16(qint64 at, quint16 value);
    void put32(qint64 at, quint32 value);
    // Zeros over [at, at + length) where it lies in the bytes; true when
    // any of them held something else.
    bool wipe(qint64 at, qint64 length);
    void move(qint64 from, qint64 to, qint64 length);

    // The bytes of one value of a TIFF type; 0 for an unknown type.
    static int typeSize(quint16 type);

  private:
    QByteArray& m_bytes;
    bool m_motorola;
};

// One 12-byte directory entry and where its value lies.
struct TiffEntry {
    quint16 tag = 0;
    quint16 type = 0;
    quint32 count = 0;
    qint64 at = 0;        // the entry itself
    qint64 valueSize = 0; // count values of the type; 0 for an unknown type
    qint64 valueAt = 0;   // inside the entry when it fits in four bytes

    // `base` is what the value offsets count from (the TIFF header, or a
    // maker note's own start).
    static TiffEntry read(const TiffBytes& tiff, qint64 at, qint64 base = 0);
    bool outOfLine() const { return valueSize > 4; }
};

} // namespace quillet
