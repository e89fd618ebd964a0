#pragma once

#include <QByteArray>
#include <QString>

namespace quillet {

// What an output keeps of its input besides the pixels: the colour profile,
// and for a JPEG output the EXIF and XMP data. Read once from the input's
// header, whatever its format.
struct SourceMetadata {
    QByteArray iccProfile;  // empty when the input has none we can carry over
    QByteArray exif;        // the TIFF structure of the EXIF data, without "Exif\0\0"
    QByteArray xmp;         // the XMP packet
    bool hasHeader = false; // some loader read the file
    bool isJpeg = false;    // the EXIF copy then goes through the JPEG transfer
    // The EXIF orientation a decoder other than JPEG's found; 0 when none.
    int orientation = 0;
    // The decoder has already turned the pixels as the file asks (HEIF), so
    // a copied orientation would turn them twice.
    bool decodedUpright = false;

    // The input's metadata; empty fields for anything unreadable.
    static SourceMetadata read(const QString& path);

    // Whether the profile describes RGB pixels. The loader converts grey,
    // CMYK and Lab pictures to sRGB, where their profiles no longer apply.
    static bool isRgbProfile(const QByteArray& profile);
    // Whether the profile is one of the common sRGB profiles, by its
    // description; converting to sRGB then changes nothing.
    static bool isSrgbProfile(const QByteArray& profile);
};

} // namespace quillet
