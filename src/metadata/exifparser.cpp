#include "metadata/exifparser.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>

namespace quillet {

namespace {

const int BytesPerFormat[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
const int NumFormats = 12;

enum Format {
    FmtByte = 1,
    FmtString,
    FmtUShort,
    FmtULong,
    FmtURational,
    FmtSByte,
    FmtUndefined,
    FmtSShort,
    FmtSLong,
    FmtSRational,
    FmtSingle,
    FmtDouble
};

enum Tag {
    TagMake = 0x010F,
    TagModel = 0x0110,
    TagOrientation = 0x0112,
    TagThumbnailOffset = 0x0201,
    TagThumbnailLength = 0x0202,
    TagExposureTime = 0x829A,
    TagFNumber = 0x829D,
    TagExifOffset = 0x8769,
    TagExposureProgram = 0x8822,
    TagIsoEquivalent = 0x8827,
    TagDateTimeOriginal = 0x9003,
    TagShutterSpeed = 0x9201,
    TagAperture = 0x9202,
    TagExposureBias = 0x9204,
    TagMaxAperture = 0x9205,
    TagSubjectDistance = 0x9206,
    TagMeteringMode = 0x9207,
    TagLightSource = 0x9208,
    TagFlash = 0x9209,
    TagFocalLength = 0x920A,
    TagUserComment = 0x9286,
    TagExifImageWidth = 0xA002,
    TagExifImageLength = 0xA003,
    TagInteropOffset = 0xA005,
    TagFocalPlaneXRes = 0xA20E,
    TagFocalPlaneUnits = 0xA210,
};

// A hostile block can link one directory from many entries; legitimate files
// have a handful of directories, so the walk stops well before any fan-out.
const int MaxDirectoriesPerParse = 256;

// Values are doubles from the file; out-of-range casts are undefined, so every
// conversion to a narrower type saturates.
int toInt(double value) {
    if (std::isnan(value))
        return 0;
    if (value >= double(INT_MAX))
        return INT_MAX;
    if (value <= double(INT_MIN))
        return INT_MIN;
    return int(value);
}

float toFloat(double value) {
    if (std::isfinite(value) && std::fabs(value) > double(FLT_MAX))
        return value > 0 ? HUGE_VALF : -HUGE_VALF;
    return float(value);
}

int64_t roundToInt64(double value) {
    if (std::isnan(value))
        return 0;
    return int64_t(std::clamp(std::round(value), -9.0e15, 9.0e15));
}

// Position -> pointer, never past the readable limit (reads there give 0).
uint8_t* at(const JpegContext& ctx, uint64_t pos) {
    const uint64_t size = uint64_t(ctx.BlockLimit - ctx.BlockStart);
    return ctx.BlockStart + std::min(pos, size);
}

bool readable(const JpegContext& ctx, const uint8_t* p, size_t n) {
    return ctx.BlockStart && p >= ctx.BlockStart && p <= ctx.BlockLimit && size_t(ctx.BlockLimit - p) >= n;
}

uint8_t byteAt(const JpegContext& ctx, uint64_t pos) {
    const uint8_t* p = at(ctx, pos);
    return readable(ctx, p, 1) ? *p : 0;
}

// Copies a text value of at most `max` bytes, stopping at its NUL or its end.
void copyText(const JpegContext& ctx, char* into, size_t max, uint64_t pos, uint64_t byteCount) {
    size_t n = 0;
    for (; n < max && n < byteCount; n++) {
        const uint8_t ch = byteAt(ctx, pos + n);
        if (ch == 0)
            break;
        into[n] = char(ch);
    }
    into[n] = '\0';
}

// Blanks at the end become NULs; then the text after an "ASCII" code, or the
// whole value, goes into the comment.
void storeUserComment(JpegContext& ctx, uint64_t pos, uint64_t byteCount) {
    for (uint64_t a = byteCount; a-- > 0;) {
        uint8_t* p = at(ctx, pos + a);
        if (!readable(ctx, p, 1) || *p != ' ')
            break;
        *p = '\0';
    }
    const auto byte = [&](uint64_t i) { return i < byteCount ? byteAt(ctx, pos + i) : uint8_t(0); };
    if (byte(0) == 'A' && byte(1) == 'S' && byte(2) == 'C' && byte(3) == 'I' && byte(4) == 'I') {
        for (uint64_t a = 5; a < 10; a++) {
            const uint8_t c = byte(a);
            if (c != '\0' && c != ' ') {
                copyText(ctx, ctx.Info.Comments, 199, pos + a, byteCount - a);
                return;
            }
        }
        return;
    }
    copyText(ctx, ctx.Info.Comments, 199, pos, byteCount);
}

double millimetresPerUnit(int unit, double current) {
    switch (unit) {
    case 1:
        return 25.4; // "none" is taken as inches, as cameras mean it
    case 2:
        return 25.4;
    case 3:
        return 10;
    case 4:
        return 1;
    case 5:
        return 0.001;
    default:
        return current;
    }
}

} // namespace

int Get16u(const JpegContext& ctx, const uint8_t* p) {
    if (!readable(ctx, p, 2))
        return 0;
    return ctx.MotorolaOrder ? (p[0] << 8) | p[1] : (p[1] << 8) | p[0];
}

uint32_t Get32u(const JpegContext& ctx, const uint8_t* p) {
    if (!readable(ctx, p, 4))
        return 0;
    if (ctx.MotorolaOrder)
        return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3];
    return uint32_t(p[3]) << 24 | uint32_t(p[2]) << 16 | uint32_t(p[1]) << 8 | p[0];
}

int Get32s(const JpegContext& ctx, const uint8_t* p) {
    return int(int32_t(Get32u(ctx, p)));
}

void Put16u(const JpegContext& ctx, uint8_t* p, int value) {
    if (!readable(ctx, p, 2))
        return;
    const uint8_t high = uint8_t(value >> 8), low = uint8_t(value);
    p[0] = ctx.MotorolaOrder ? high : low;
    p[1] = ctx.MotorolaOrder ? low : high;
}

double ConvertAnyFormat(JpegContext& ctx, const uint8_t* value, int format) {
    switch (format) {
    case FmtSByte:
        return readable(ctx, value, 1) ? double(int8_t(*value)) : 0;
    case FmtByte:
        return readable(ctx, value, 1) ? double(*value) : 0;
    case FmtUShort:
        return Get16u(ctx, value);
    case FmtULong:
        return Get32u(ctx, value);
    case FmtURational:
    case FmtSRational: {
        // Both read signed, so unsigned values above 2^31 - 1 come out negative.
        const int num = Get32s(ctx, value);
        const int den = Get32s(ctx, value + (readable(ctx, value, 8) ? 4 : 0));
        return den == 0 || !readable(ctx, value, 8) ? 0 : double(num) / double(den);
    }
    case FmtSShort:
        return double(int16_t(Get16u(ctx, value)));
    case FmtSLong:
        return Get32s(ctx, value);
    case FmtSingle: {
        float f = 0;
        if (readable(ctx, value, sizeof f))
            std::memcpy(&f, value, sizeof f);
        return double(f);
    }
    case FmtDouble: {
        double d = 0;
        if (readable(ctx, value, sizeof d))
            std::memcpy(&d, value, sizeof d);
        return d;
    }
    default:
        return 0;
    }
}

void ProcessExifDir(JpegContext& ctx, uint64_t dirStart, uint64_t offsetBase, uint64_t exifLength,
                    int nestingLevel) {
    const uint64_t end = offsetBase + exifLength;
    // Every call counts against the budget, refused ones included, so a
    // hostile block costs at most a few hundred calls and lines.
    if (++ctx.DirectoriesWalked > MaxDirectoriesPerParse + 1)
        return;
    if (nestingLevel > 4 || ctx.DirectoriesWalked > MaxDirectoriesPerParse) {
        ErrNonfatal(ctx, "Maximum directory nesting exceeded (corrupt exif header)", 0, 0);
        return;
    }
    const int numEntries = Get16u(ctx, at(ctx, dirStart));
    const uint64_t dirEnd = dirStart + 2 + 12 * uint64_t(numEntries);
    // A directory reaching exactly to the end, or two bytes short of it, is
    // accepted although its link does not fit: some writers end blocks so.
    if (dirEnd + 4 > end && dirEnd != end && dirEnd + 2 != end) {
        ErrNonfatal(ctx, "Illegally sized directory", 0, 0);
        return;
    }
    ctx.LastExifRefd = std::max(ctx.LastExifRefd, uintptr_t(ctx.BlockStart) + uintptr_t(dirEnd));

    int64_t thumbnailOffset = 0;
    int64_t thumbnailSize = 0;
    for (int de = 0; de < numEntries; de++) {
        const uint64_t entry = dirStart + 2 + 12 * uint64_t(de);
        const int tag = Get16u(ctx, at(ctx, entry));
        const int format = Get16u(ctx, at(ctx, entry + 2));
        const uint64_t components = Get32u(ctx, at(ctx, entry + 4));
        if (format < 1 || format > NumFormats) {
            ErrNonfatal(ctx, "Illegal number format %d for tag %04x", format, tag);
            continue;
        }
        const uint64_t byteCount = components * uint64_t(BytesPerFormat[format]);
        uint64_t valuePos = entry + 8;
        if (byteCount > 4) {
            const uint64_t offsetVal = Get32u(ctx, at(ctx, entry + 8));
            if (offsetVal + byteCount > exifLength) {
                ErrNonfatal(ctx, "Illegal value pointer for tag %04x", tag, 0);
                continue;
            }
            valuePos = offsetBase + offsetVal;
        }
        ctx.LastExifRefd =
            std::max(ctx.LastExifRefd, uintptr_t(ctx.BlockStart) + uintptr_t(valuePos + byteCount));
        uint8_t* value = at(ctx, valuePos);
        const auto number = [&] { return ConvertAnyFormat(ctx, value, format); };

        switch (tag) {
        case TagMake:
            copyText(ctx, ctx.Info.CameraMake, 31, valuePos, byteCount);
            break;
        case TagModel:
            copyText(ctx, ctx.Info.CameraModel, 39, valuePos, byteCount);
            break;
        case TagDateTimeOriginal:
            copyText(ctx, ctx.Info.DateTime, 19, valuePos, byteCount);
            ctx.Info.DatePointer = value;
            break;
        case TagOrientation:
            ctx.Info.Orientation = toInt(number());
            ctx.OrientationPtr = value;
            ctx.OrientationNumFormat = format;
            if (ctx.Info.Orientation < 1 || ctx.Info.Orientation > 8) {
                ErrNonfatal(ctx, "Undefined rotation value %d", ctx.Info.Orientation, 0);
                ctx.Info.Orientation = 0;
            }
            break;
        case TagUserComment:
            storeUserComment(ctx, valuePos, byteCount);
            break;
        case TagFNumber:
            ctx.Info.ApertureFNumber = toFloat(number());
            break;
        case TagAperture:
        case TagMaxAperture:
            if (ctx.Info.ApertureFNumber == 0)
                ctx.Info.ApertureFNumber = toFloat(std::exp(number() * std::log(2) * 0.5));
            break;
        case TagFocalLength:
            ctx.Info.FocalLength = toFloat(number());
            break;
        case TagSubjectDistance:
            ctx.Info.Distance = toFloat(number());
            break;
        case TagExposureTime:
            ctx.Info.ExposureTime = toFloat(number());
            break;
        case TagShutterSpeed:
            if (ctx.Info.ExposureTime == 0)
                ctx.Info.ExposureTime = toFloat(1 / std::exp(number() * std::log(2)));
            break;
        case TagFlash:
            ctx.Info.FlashUsed = (toInt(number()) & 7) ? 1 : 0;
            break;
        case TagMeteringMode:
            ctx.Info.MeteringMode = toInt(number());
            break;
        case TagLightSource:
            ctx.Info.LightSource = toInt(number());
            break;
        case TagExposureProgram:
            ctx.Info.ExposureProgram = toInt(number());
            break;
        case TagExposureBias:
            ctx.Info.ExposureBias = toFloat(number());
            break;
        case TagIsoEquivalent: {
            // Some cameras store the ISO divided by 200; small values are scaled
            // back up on purpose.
            const int iso = toInt(number());
            ctx.Info.ISOequivalent = iso < 50 ? toInt(double(iso) * 200) : iso;
            break;
        }
        case TagExifImageWidth:
        case TagExifImageLength:
            ctx.ExifImageWidth = std::max(ctx.ExifImageWidth, toInt(number()));
            break;
        case TagFocalPlaneXRes:
            ctx.FocalplaneXRes = number();
            break;
        case TagFocalPlaneUnits:
            ctx.FocalplaneUnits = millimetresPerUnit(toInt(number()), ctx.FocalplaneUnits);
            break;
        case TagExifOffset:
        case TagInteropOffset: {
            const uint64_t subdir = offsetBase + Get32u(ctx, value);
            if (subdir > end)
                ErrNonfatal(ctx, "Illegal exif or interop ofset directory link", 0, 0);
            else
                ProcessExifDir(ctx, subdir, offsetBase, exifLength, nestingLevel + 1);
            break;
        }
        case TagThumbnailOffset:
            thumbnailOffset = roundToInt64(number());
            ctx.DirWithThumbnailPtrs = at(ctx, dirStart);
            ctx.DirWithThumbnailLimit = ctx.BlockLimit;
            break;
        case TagThumbnailLength:
            thumbnailSize = roundToInt64(number());
            break;
        default:
            break;
        }
    }

    if (dirEnd + 4 <= end) {
        const uint32_t link = Get32u(ctx, at(ctx, dirEnd));
        if (link != 0) {
            const uint64_t next = offsetBase + link;
            // Links up to 20 bytes past the end come from an old thumbnail
            // removal defect and are passed over quietly.
            if (next > end) {
                if (next > end + 20)
                    ErrNonfatal(ctx, "Illegal subdirectory link", 0, 0);
            } else {
                ProcessExifDir(ctx, next, offsetBase, exifLength, nestingLevel + 1);
            }
        }
    }

    // Negative values (from rational tags) are refused with the zero ones.
    if (thumbnailOffset > 0 && thumbnailSize > 0 && uint64_t(thumbnailOffset + thumbnailSize) <= exifLength) {
        ctx.Info.ThumbnailPointer = at(ctx, offsetBase + uint64_t(thumbnailOffset));
        ctx.Info.ThumbnailSize = uint32_t(thumbnailSize);
    }
}

void process_EXIF(JpegContext& ctx, uint8_t* buffer, uint32_t length, uint8_t* limit) {
    ctx.FocalplaneXRes = 0;
    ctx.FocalplaneUnits = 0;
    ctx.ExifImageWidth = 0;
    ctx.OrientationPtr = nullptr;

    ctx.BlockStart = buffer;
    ctx.BlockLimit = limit ? limit : buffer + length;

    if (length < 8 || std::memcmp(buffer + 2, "Exif\0\0", 6) != 0) {
        ErrNonfatal(ctx, "Incorrect Exif header", 0, 0);
        return;
    }
    if (byteAt(ctx, 8) == 'I' && byteAt(ctx, 9) == 'I') {
        ctx.MotorolaOrder = 0;
    } else if (byteAt(ctx, 8) == 'M' && byteAt(ctx, 9) == 'M') {
        ctx.MotorolaOrder = 1;
    } else {
        ErrNonfatal(ctx, "Invalid Exif alignment marker.", 0, 0);
        return;
    }
    if (Get16u(ctx, at(ctx, 10)) != 0x2A) {
        ErrNonfatal(ctx, "Invalid Exif start (1)", 0, 0);
        return;
    }
    const uint32_t firstOffset = Get32u(ctx, at(ctx, 12));
    if (firstOffset < 8 || firstOffset > 16)
        ErrNonfatal(ctx, "Suspicious offset of first IFD value", 0, 0);

    ctx.LastExifRefd = uintptr_t(buffer);
    ctx.DirWithThumbnailPtrs = nullptr;
    ctx.DirWithThumbnailLimit = nullptr;
    ctx.DirectoriesWalked = 0;
    ProcessExifDir(ctx, 8 + uint64_t(firstOffset), 8, length - 6, 0);

    if (ctx.FocalplaneXRes != 0)
        ctx.Info.CCDWidth = toFloat(ctx.ExifImageWidth * ctx.FocalplaneUnits / ctx.FocalplaneXRes);
}

long long RemoveThumbnail(JpegContext& ctx, uint8_t* buffer, uint32_t length) {
    // The block may sit inside a section buffer (a thumbnail does); reads may
    // then run to that buffer's padded end.
    uint8_t* limit = buffer + length;
    for (int a = 0; a < ctx.SectionsRead; a++) {
        std::vector<uint8_t>& data = ctx.Sections[size_t(a)].Data;
        if (!data.empty() && buffer >= data.data() && buffer < data.data() + data.size())
            limit = data.data() + data.size();
    }
    process_EXIF(ctx, buffer, length, limit);

    // The directory may belong to the block parsed before this call (the
    // transfer passes the thumbnail's bytes here), so work in its own buffer.
    if (uint8_t* dir = ctx.DirWithThumbnailPtrs) {
        ctx.BlockStart = dir;
        ctx.BlockLimit = ctx.DirWithThumbnailLimit;
        int numEntries = Get16u(ctx, dir);
        for (int i = 0; i < numEntries;) {
            if (!readable(ctx, dir, 2 + 12 * size_t(i) + 12))
                break;
            uint8_t* entry = dir + 2 + 12 * i;
            const int tag = Get16u(ctx, entry);
            if (tag == TagThumbnailOffset || tag == TagThumbnailLength) {
                size_t moveBytes = size_t(numEntries - i) * 12 - 8;
                const size_t available =
                    readable(ctx, entry + 12, 0) ? size_t(ctx.BlockLimit - (entry + 12)) : 0;
                moveBytes = std::min(moveBytes, available);
                if (moveBytes > 0)
                    std::memmove(entry, entry + 12, moveBytes);
                numEntries -= 1;
            } else {
                i += 1;
            }
        }
        Put16u(ctx, dir, numEntries);
    }
    return (long long)(ctx.LastExifRefd - uintptr_t(buffer));
}

} // namespace quillet
