#pragma once

#include "metadata/metadatapolicy.h"
#include "settings/processingparams.h"
#include "settings/rgbacolor.h"

#include <QList>
#include <QString>

#include <optional>

namespace quillet {

// The sizing step of a batch: the mode and the keys that mode uses.
struct Sizing {
    // A known mode; 0 and codes above 8 are read as ScaleType::None, as the
    // engine has always treated them.
    int scaleType = ScaleType::None;
    int width = 0;
    int height = 0;
    int percent = 100;
    int cropAreaPercentage = 0;
    bool downOnly = false;
    bool flipForPortrait = false;
    // "ScaleQuality": 0 default, 1 none, 2 low, 3 high.
    int interpolation = ScaleQuality::High;

    friend bool operator==(const Sizing&, const Sizing&) = default;
};

// The output file: format and its options.
struct OutputSettings {
    int format = FileFormat::Jpeg;
    int resolution = 72; // dpi as the record holds it; see dpi()
    int jpegQuality = 80;
    bool hasSizeLimit = false;
    int sizeLimit = 0; // kilobytes as the record holds them; see sizeLimitBytes()
    // Keep the source's metadata (EXIF) in a JPEG output.
    bool preserveHeader = true;
    bool preserveTransparency = false;
    // Convert the pixels to sRGB instead of keeping the input's colour profile.
    bool convertToSrgb = false;
    // What of the input's metadata the output keeps.
    MetadataPolicy metadata = MetadataPolicy::Keep;
    // WebP and JPEG XL written without loss (the quality then goes unused).
    bool lossless = false;
    // When the quality search ends above the size limit, the picture is made
    // smaller until it fits at the lowest quality.
    bool shrinkToFit = false;
    // An output in its input's format that comes out larger than the input
    // is replaced by the input's bytes.
    bool keepSmallerOriginal = false;
    // WebP, AVIF and JPEG XL encoded with less effort: several times faster,
    // for a file up to a tenth larger at the same quality setting.
    bool fastEncoding = false;
    RgbaColor background = RgbaColor::white();

    // Values below 1 read as 72.
    int dpi() const { return resolution < 1 ? 72 : resolution; }
    // Bytes; 0 (no limit) while the limit is off, whatever the field holds.
    qint64 sizeLimitBytes() const;
    // A stored 0 reads as 100, as the limit field shows it.
    int sizeLimitField() const { return sizeLimit == 0 ? 100 : sizeLimit; }
    // Whether the source's metadata goes into the output: JPEG, WebP, AVIF
    // and JPEG XL.
    bool keepsHeader() const {
        return (format == FileFormat::Jpeg || FileFormat::isModern(format)) && preserveHeader;
    }
    // Whether the encoder writes without loss.
    bool writesLossless() const { return lossless && FileFormat::hasLossless(format); }
    // The canvas fill: none when transparency is kept for a format that has it.
    std::optional<RgbaColor> canvasBackground() const;

    friend bool operator==(const OutputSettings&, const OutputSettings&) = default;
};

struct ImageWatermarkSettings {
    bool enabled = false; // its own switch; the master switch governs it too
    QString path;         // empty: no picture set
    int location = 1;
    int opacity = 100;

    friend bool operator==(const ImageWatermarkSettings&, const ImageWatermarkSettings&) = default;
};

struct TextWatermarkSettings {
    bool enabled = false; // its own switch; the master switch governs it too
    // Field codes in the order of the field boxes, only the ticked ones.
    QList<int> fields;
    int size = 2;
    int style = TextStyle::WhiteShadow;
    RgbaColor background = RgbaColor::white(0.0);

    friend bool operator==(const TextWatermarkSettings&, const TextWatermarkSettings&) = default;
};

struct WatermarkSettings {
    bool enabled = false; // the master switch of both watermarks
    ImageWatermarkSettings image;
    TextWatermarkSettings text;

    // The picture is asked for: both switches on (it may still be missing).
    bool drawsImage() const { return enabled && image.enabled; }
    // The text is drawn: both switches on and at least one field ticked.
    bool drawsText() const { return enabled && text.enabled && !text.fields.isEmpty(); }

    friend bool operator==(const WatermarkSettings&, const WatermarkSettings&) = default;
};

// The processing settings of a batch as one typed value: what the window
// edits, what a preset applies, what the engine takes. The string-keyed
// ProcessingParams is only its stored form (the store and the preset files),
// made and read by toRecord() and fromRecord().
struct ProcessingRequest {
    QString name; // a preset's name, "" for the window's own settings
    int rotation = Rotation::None;
    Sizing sizing;
    OutputSettings output;
    WatermarkSettings watermarks;

    // Reads a record as the engine and the window do: a missing or mistyped
    // key reads as 0, false or empty; a missing "BackgroundColor" as white;
    // a missing "DynWatermarkBackgroundColor" as white at
    // "DynWatermarkBackgroundOpacity" percent; an unknown scale type as none.
    static ProcessingRequest fromRecord(const ProcessingParams& record);
    // Every record key, "WatermarkPath" only when a picture is set, the text
    // fields in code order.
    ProcessingParams toRecord() const;

    friend bool operator==(const ProcessingRequest&, const ProcessingRequest&) = default;
};

} // namespace quillet
