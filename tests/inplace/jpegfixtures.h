#pragma once

// Small JPEGs made in the tests, whose content shows which way is up, with an
// EXIF block of the test's choosing in front.

#include "testsupport.h"

#include <QDataStream>
#include <QProcess>

namespace quillet {

namespace jpegfixtures {

using namespace Qt::StringLiterals;

// APP1 "Exif", Intel order: IFD0 holding Orientation, or nothing when 0.
inline QByteArray exifSegment(int orientation) {
    QByteArray tiff;
    QDataStream s(&tiff, QIODevice::WriteOnly);
    s.setByteOrder(QDataStream::LittleEndian);
    s << quint16(0x4949) << quint16(42) << quint32(8) << quint16(orientation ? 1 : 0);
    if (orientation)
        s << quint16(0x0112) << quint16(3) << quint32(1) << quint32(orientation);
    s << quint32(0);
    const int length = 8 + int(tiff.size());
    return QByteArray("\xFF\xE1", 2) + char(length >> 8) + char(length) + QByteArray("Exif\0\0", 6) + tiff;
}

// One marker segment: marker, length, payload.
inline QByteArray segment(quint8 marker, const QByteArray& payload) {
    const int length = int(payload.size()) + 2;
    return QByteArray(1, '\xFF') + char(marker) + char(length >> 8) + char(length) + payload;
}

// An XMP packet whose one rdf:Description holds `properties` (attributes
// first, then elements, as in "a=\"1\">\n<b>2</b>").
inline QByteArray xmpPacket(const QByteArray& properties) {
    return "<?xpacket begin='\xEF\xBB\xBF' id='W5M0MpCehiHzreSzNTczkc9d'?>\n"
           "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
           "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n"
           "<rdf:Description rdf:about='' xmlns:tiff='http://ns.adobe.com/tiff/1.0/'\n"
           " xmlns:xmpNote='http://ns.adobe.com/xmp/note/'\n " +
           properties + "\n</rdf:Description></rdf:RDF></x:xmpmeta>\n" + QByteArray(200, ' ') +
           "\n<?xpacket end='w'?>";
}

// The APP1 segment of a main XMP packet.
inline QByteArray xmpSegment(const QByteArray& packet) {
    return segment(0xE1, QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) + packet);
}

// One APP1 piece of an Extended XMP: GUID, full length, offset, the piece.
inline QByteArray xmpExtension(const QByteArray& guid, quint32 fullLength, quint32 offset,
                               const QByteArray& piece) {
    QByteArray lengths;
    QDataStream(&lengths, QIODevice::WriteOnly) << fullLength << offset; // big-endian
    return segment(0xE1, QByteArray("http://ns.adobe.com/xmp/extension/\0", 35) + guid + lengths + piece);
}

// 64 x 48, blue with a red 16 x 16 corner top left: every quarter turn moves
// the corner, and whole blocks let jpegtran turn every pixel. orientation -1
// gives no EXIF at all; jfifFirst puts a JFIF segment in front of the EXIF;
// `more` (whole segments) follows the EXIF.
inline QByteArray markedJpeg(int orientation, bool jfifFirst = false, const QByteArray& more = {}) {
    const auto rgb = [](int w, int h, int r, int b) {
        return testsupport::solidImage(w, h, r, 0, b).extract_band(0, vips::VImage::option()->set("n", 3));
    };
    // Stripped, the encoder writes SOI and then its tables, no APP0.
    void* data = nullptr;
    size_t size = 0;
    rgb(64, 48, 0, 255).insert(rgb(16, 16, 255, 0), 0, 0).write_to_buffer(".jpg[strip]", &data, &size);
    const QByteArray encoded(static_cast<const char*>(data), qsizetype(size));
    g_free(data);
    const QByteArray jfif("\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 18);
    const QByteArray exif = orientation < 0 ? QByteArray() : exifSegment(orientation);
    return encoded.left(2) + (jfifFirst ? jfif + exif : exif) + more + encoded.mid(2);
}

// Decoded from memory: libvips caches loads by file name, and these files
// change under one name.
inline vips::VImage decode(const QString& path) {
    const QByteArray bytes = testsupport::readFile(path);
    return vips::VImage::new_from_buffer(bytes.constData(), size_t(bytes.size()), "").copy_memory();
}

// The largest difference of any sample between the picture in a file and another.
inline double maxDifference(const QString& path, const vips::VImage& other) {
    return (decode(path).cast(VIPS_FORMAT_INT) - other.cast(VIPS_FORMAT_INT)).abs().max();
}

// What a plain run of the tool makes of the file, partial edge blocks trimmed.
inline vips::VImage plainRotation(const QString& path, int degrees) {
    const QString out = path + u".plain"_s;
    QProcess::execute(u"jpegtran"_s,
                      {u"-trim"_s, u"-rotate"_s, QString::number(degrees), u"-outfile"_s, out, path});
    const vips::VImage image = decode(out);
    QFile::remove(out);
    return image;
}

} // namespace jpegfixtures

} // namespace quillet
