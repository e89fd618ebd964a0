#pragma once

// Small TIFF files built byte by byte, with the metadata a camera's TIFF
// carries: camera tags in the first directory, an Exif directory with its
// Interoperability directory, and a GPS directory.

#include "exifblocks.h"

#include <QByteArray>

#include <functional>

namespace quillet {

namespace tifffiles {

using exifblocks::Bytes;
using exifblocks::TiffBuilder;

inline const char* const CaptureDate = "2019:06:01 12:34:56";

// Three unsigned rationals (degrees, minutes, seconds) in the builder's order.
inline Bytes rationals(const TiffBuilder& t, std::initializer_list<uint32_t> parts) {
    Bytes out;
    for (uint32_t part : parts) {
        const Bytes num = t.u32(part), den = t.u32(1);
        out.insert(out.end(), num.begin(), num.end());
        out.insert(out.end(), den.begin(), den.end());
    }
    return out;
}

// A grey picture `width` x `height` in one uncompressed strip, with
// orientation `orientation`. `extra` may add entries to the directories
// (their indexes: 0 first, 1 Exif, 2 Interoperability, 3 GPS) before they
// are built; entries must come in tag order within a directory.
inline QByteArray cameraTiff(bool motorola, int width = 16, int height = 8, uint16_t orientation = 6,
                             const std::function<void(TiffBuilder&)>& extra = {}) {
    const auto build = [&](uint32_t stripOffset, uint32_t* trailerOffset) {
        TiffBuilder t(motorola);
        const int ifd0 = t.addIfd(), exif = t.addIfd(), interop = t.addIfd(), gps = t.addIfd();
        t.addShort(ifd0, 0x0100, uint16_t(width));
        t.addShort(ifd0, 0x0101, uint16_t(height));
        t.addShort(ifd0, 0x0102, 8);
        t.addShort(ifd0, 0x0103, 1);
        t.addShort(ifd0, 0x0106, 1);
        t.addAscii(ifd0, 0x010F, "Quill Optics");
        t.addAscii(ifd0, 0x0110, "QX-100 Mark II");
        t.addLong(ifd0, 0x0111, stripOffset);
        t.addShort(ifd0, 0x0112, orientation);
        t.addShort(ifd0, 0x0115, 1);
        t.addShort(ifd0, 0x0116, uint16_t(height));
        t.addLong(ifd0, 0x0117, uint32_t(width * height));
        t.addRational(ifd0, 0x011A, 72, 1);
        t.addRational(ifd0, 0x011B, 72, 1);
        t.addShort(ifd0, 0x0128, 2);
        t.addAscii(ifd0, 0x013B, "A. Photographer");
        t.addSubIfd(ifd0, 0x8769, exif);
        t.addSubIfd(ifd0, 0x8825, gps);
        t.addRational(exif, 0x829A, 1, 250);
        t.addRational(exif, 0x829D, 28, 10);
        t.addShort(exif, 0x8827, 400);
        t.addAscii(exif, 0x9003, CaptureDate);
        t.add(exif, {0x927C, 7, 40, Bytes(40, 0x5A)});
        t.addSubIfd(exif, 0xA005, interop);
        t.addAscii(interop, 0x0001, "R98");
        t.add(gps, {0x0000, 1, 4, Bytes{2, 3, 0, 0}});
        t.addAscii(gps, 0x0001, "N");
        t.add(gps, {0x0002, 5, 3, rationals(t, {48, 51, 30})});
        if (extra)
            extra(t);
        for (int row = 0; row < height; row++)
            for (int x = 0; x < width; x++)
                t.trailer.push_back(uint8_t(x * 255 / std::max(width - 1, 1)));
        Bytes bytes = t.build();
        if (trailerOffset)
            *trailerOffset = t.trailerOffset;
        return exifblocks::toQ(bytes);
    };
    uint32_t stripOffset = 0;
    build(0, &stripOffset);
    return build(stripOffset, nullptr);
}

} // namespace tifffiles

} // namespace quillet
