#pragma once

#include "engine/picture.h"
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

// JPEG without alpha (the canvas already holds the background); quality
// 0..100 maps onto the encoder's 1..100.
QByteArray jpegDataForImage(const Picture& picture, int resolution, int quality,
                            const QByteArray& iccProfile = {});
// PNG and TIFF keep an alpha band only when some pixel is not fully opaque.
QByteArray pngDataForImage(const Picture& picture, int resolution, const QByteArray& iccProfile = {});
QByteArray tiffDataForImage(const Picture& picture, int resolution, const QByteArray& iccProfile = {});

// The next quality the size search tries after an encoding of `size` bytes
// against `limit` bytes at quality `factor`; `factor` itself when no limit.
int nextFactorWithSize(qint64 size, qint64 limit, int factor);

// The size search over any encoder (encode gives the bytes at a quality):
// returns the last bytes encoded, whether or not they fit, and their quality
// in `keptQuality` when given.
QByteArray searchJpegQuality(const std::function<QByteArray(int)>& encode, int quality, qint64 byteLimit,
                             ActivityLog& log, int* keptQuality = nullptr);

} // namespace OutputEncoder

} // namespace quillet
