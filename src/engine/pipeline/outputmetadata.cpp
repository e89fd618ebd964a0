#include "engine/pipeline/outputmetadata.h"

#include "metadata/exifeditor.h"
#include "metadata/jpegsegmentlist.h"
#include "metadata/kvimageinfo.h"
#include "metadata/xmporientation.h"
#include "metadata/xmpsegments.h"

#include <QFile>

#include <algorithm>

namespace quillet {

namespace OutputMetadata {

namespace {

constexpr quint8 App0 = 0xE0, App1 = 0xE1, Com = 0xFE;

// JFIF: "JFIF\0", version (2 bytes), units, X and Y density (2 bytes each).
bool setJfifDensity(JpegSegmentList::Segment& segment, int dpi) {
    if (segment.marker != App0 || !segment.payload.startsWith(QByteArray("JFIF\0", 5)) ||
        segment.payload.size() < 12)
        return false;
    const QByteArray density{"\x01", 1};
    QByteArray fields = density + char(dpi >> 8) + char(dpi & 0xFF) + char(dpi >> 8) + char(dpi & 0xFF);
    if (segment.payload.mid(7, 5) == fields)
        return false;
    segment.payload.replace(7, 5, fields);
    return true;
}

bool editExif(JpegSegmentList::Segment& segment, int dpi, bool resetOrientation) {
    ExifEditor exif(segment.payload.mid(JpegSegmentList::ExifSignature.size()));
    if (!exif.isValid())
        return false;
    if (resetOrientation && exif.shortValue(ExifEditor::TagOrientation) > 1)
        exif.setShort(ExifEditor::TagOrientation, 1);
    exif.setRational(ExifEditor::TagXResolution, quint32(dpi), 1);
    exif.setRational(ExifEditor::TagYResolution, quint32(dpi), 1);
    exif.setShort(ExifEditor::TagResolutionUnit, 2); // inches
    const QByteArray payload = JpegSegmentList::ExifSignature + exif.tiff();
    if (payload == segment.payload || payload.size() > JpegSegmentList::MaxPayload)
        return false;
    segment.payload = payload;
    return true;
}

// The XMP segments an output takes. libvips hands over the main packet alone,
// so a JPEG input's come from its own segments, with the Extended XMP that
// belongs to the packet.
QList<JpegSegmentList::Segment> xmpSegments(const QString& source, const SourceMetadata& metadata,
                                            bool fromSource) {
    if (fromSource) {
        if (const std::optional<JpegSegmentList> list = JpegSegmentList::readHeader(source))
            return XmpSegments::of(*list);
    }
    const QByteArray payload = JpegSegmentList::XmpSignature + metadata.xmp;
    if (metadata.xmp.isEmpty() || payload.size() > JpegSegmentList::MaxPayload)
        return {};
    return {{App1, payload}};
}

} // namespace

QByteArray withResolution(const QByteArray& jpeg, int resolution, bool resetOrientation) {
    std::optional<JpegSegmentList> list = JpegSegmentList::parse(jpeg);
    if (!list)
        return jpeg;
    const int dpi = std::clamp(resolution >= 1 ? resolution : 72, 1, 65535);
    bool changed = false;
    for (JpegSegmentList::Segment& segment : list->segments()) {
        changed = setJfifDensity(segment, dpi) || changed;
        if (segment.marker == App1 && segment.payload.startsWith(JpegSegmentList::ExifSignature))
            changed = editExif(segment, dpi, resetOrientation) || changed;
        // Viewers that read XMP would turn the picture again by its own copy.
        if (resetOrientation && XmpSegments::isMain(segment))
            changed = XmpOrientation::resetToUpright(segment.payload) || changed;
    }
    return changed ? list->toBytes() : jpeg;
}

int preserve(const QString& source, const SourceMetadata& metadata, const QString& output, int resolution,
             bool uprightPixels, FileSystem& fileSystem, MetadataNotes* notes, MetadataPolicy policy) {
    // Under a policy the input's sections are never written out whole, not
    // even for a moment: the output gets only the filtered copies.
    const bool transfer = metadata.isJpeg && policy == MetadataPolicy::Keep;
    int copied = transfer ? KVImageInfo::copyInfoFromPath(source, output, fileSystem, notes) : 0;

    QFile file(output);
    if (!file.open(QIODevice::ReadOnly))
        return copied;
    const QByteArray before = file.readAll();
    file.close();
    std::optional<JpegSegmentList> list = JpegSegmentList::parse(before);
    if (!list)
        return copied;

    // EXIF first among the metadata segments, then XMP, as cameras write them.
    if (!transfer && !metadata.exif.isEmpty() && list->find(App1, JpegSegmentList::ExifSignature) < 0) {
        const QByteArray payload = JpegSegmentList::ExifSignature + metadata.exif;
        if (payload.size() <= JpegSegmentList::MaxPayload) {
            list->segments().insert(list->metadataInsertPoint(), {App1, payload});
            copied = 1;
        }
    }
    if (list->find(App1, JpegSegmentList::XmpSignature) < 0) {
        qsizetype at = list->metadataInsertPoint();
        for (const JpegSegmentList::Segment& segment : xmpSegments(source, metadata, transfer))
            list->segments().insert(at++, segment);
    }
    if (metadata.isJpeg && policy == MetadataPolicy::NoLocation && list->find(Com, {}) < 0) {
        if (const std::optional<JpegSegmentList> input = JpegSegmentList::readHeader(source)) {
            if (const qsizetype comment = input->find(Com, {}); comment >= 0)
                list->segments().insert(list->metadataInsertPoint(), input->segments()[comment]);
        }
    }
    const QByteArray after =
        withResolution(list->toBytes(), resolution, uprightPixels || metadata.decodedUpright);
    if (after != before && !fileSystem.writeAtomically(output, after))
        return transfer ? copied : 0;
    return copied;
}

int carry(const RenderedFile& rendered, int resolution, MetadataPolicy policy, const QString& output,
          FileSystem& fileSystem, MetadataNotes* notes) {
    // Nothing is left to copy under None; the encoder wrote the resolution.
    if (policy == MetadataPolicy::None)
        return 0;
    if (policy != MetadataPolicy::Keep) {
        preserve(rendered.path, rendered.source, output, resolution, rendered.autoRotated, fileSystem, notes,
                 policy);
        return 0;
    }
    const int copied =
        preserve(rendered.path, rendered.source, output, resolution, rendered.autoRotated, fileSystem, notes);
    // The pixels are upright now; a copied orientation would turn them again.
    if (rendered.autoRotated)
        KVImageInfo::setOrientation(1, output, fileSystem);
    return copied;
}

} // namespace OutputMetadata

} // namespace quillet
