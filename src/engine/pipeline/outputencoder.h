#pragma once

#include "engine/picture.h"
#include "engine/pipeline/modernencoder.h"
#include "settings/processingparams.h"
#include "support/activitylog.h"

#include <QByteArray>

#include <functional>

namespace quillet {

// Turns a finished picture into the bytes of a JPEG, PNG or TIFF file that
// records the chosen resolution. Nothing here throws: a picture that cannot be
// encoded gives empty bytes, which the caller reports as a failed write.
namespace OutputEncoder {

// Bytes for format 101 (JPEG), 102 (PNG) or 103 (TIFF, uncompressed) at
// `resolution` dpi. JPEG searches for a quality (0..100) whose file fits
// `byteLimit` (0 for none) and logs the quality line, and the warning when
// the search ran out of quality. Other format codes give empty bytes. A
// non-empty `iccProfile` is embedded in every format (it counts against the
// limit); the output carries no other metadata. `keptQuality`, when given,
// receives the JPEG quality of the bytes returned (-1 for the other formats).
QByteArray dataForImage(const Picture& picture, int format, int resolution, int quality, qint64 byteLimit,
                        ActivityLog& log, const QByteArray& iccProfile = {}, int* keptQuality = nullptr);

// What one output is written as.
struct Encoding {
    int format = FileFormat::Jpeg;
    int resolution = 72;
    int quality = 80;
    qint64 byteLimit = 0;                                           // bytes, 0 for none
    bool lossless = false;                                          // WebP and JPEG XL
    ModernEncoder::Effort effort = ModernEncoder::Effort::Thorough; // WebP, AVIF and JPEG XL
    // When the quality search ends above the limit, scale the picture down
    // until it fits at the last quality tried.
    bool shrinkToFit = false;
    // Bytes the file gains once written (a JPEG's EXIF and XMP), which the
    // shrinking leaves room for.
    qint64 addedLater = 0;
    // The profile for every format; EXIF and XMP for WebP, AVIF and JPEG XL
    // (a JPEG gets its EXIF and XMP once written).
    EmbeddedMetadata metadata;
};

// Any format: JPEG, PNG and TIFF as above; WebP, AVIF and JPEG XL at the
// quality, searched down like JPEG's within the limit (a lossless output is
// encoded once, whatever the limit). With shrinkToFit a search that ran out
// above the limit goes on by size; the log then names the size it ended at
// instead of the search's warning, which stays when even that fails.
// `keptQuality`, when given, receives the quality of the bytes returned (-1
// for PNG, TIFF and lossless outputs).
QByteArray dataForImage(const Picture& picture, const Encoding& encoding, ActivityLog& log,
                        int* keptQuality = nullptr);

// The image recording `resolution` dpi (72 below 1).
vips::VImage withResolution(const vips::VImage& image, int resolution);
// The pixels with alpha dropped when every pixel is opaque.
vips::VImage withAlphaIfNeeded(const Picture& picture);

// How a JPEG's Huffman tables are made: optimised for the picture (a second
// pass over the coefficients, a few per cent fewer bytes for the same pixels)
// or the standard tables.
enum class HuffmanTables { Optimised, Standard };

// JPEG without alpha (the canvas already holds the background); quality
// 0..100 maps onto the encoder's 1..100. Every JPEG the batch writes has
// optimised tables.
QByteArray jpegDataForImage(const Picture& picture, int resolution, int quality,
                            const QByteArray& iccProfile = {},
                            HuffmanTables tables = HuffmanTables::Optimised);
// PNG and TIFF keep an alpha band only when some pixel is not fully opaque.
QByteArray pngDataForImage(const Picture& picture, int resolution, const QByteArray& iccProfile = {});
QByteArray tiffDataForImage(const Picture& picture, int resolution, const QByteArray& iccProfile = {});

// The next quality the size search tries after an encoding of `size` bytes
// against `limit` bytes at quality `factor`; `factor` itself when no limit.
int nextFactorWithSize(qint64 size, qint64 limit, int factor);

// The size search over any encoder (encode gives the bytes at a quality):
// returns the last bytes encoded, whether or not they fit, and their quality
// in `lastQuality` when given. The log names the format ("JPEG quality: 80").
QByteArray searchJpegQuality(const std::function<QByteArray(int)>& encode, int quality, qint64 byteLimit,
                             ActivityLog& log, const QString& formatName = QStringLiteral("JPEG"),
                             int* lastQuality = nullptr);

} // namespace OutputEncoder

} // namespace quillet
