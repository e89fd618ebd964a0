#pragma once

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

// A settings record decoded once, where a batch starts, into the values the
// pipeline works with. The record keeps travelling for what is stored and
// shown; the pixels follow this.
struct ProcessingRequest {
    struct ImageWatermark {
        bool enabled = false; // the master switch and its own
        QString path;
        int location = 0;
        int opacity = 100;
    };
    struct TextWatermark {
        bool enabled = false; // the master switch, its own, and at least one field
        QList<int> fields;
        int size = 2;
        int style = TextStyle::WhiteShadow;
        RgbaColor background = RgbaColor::white(0.0);
    };

    int rotation = Rotation::None;
    Sizing sizing;
    // The canvas fill; none when transparency is kept for PNG or TIFF.
    std::optional<RgbaColor> background;
    int format = FileFormat::Jpeg;
    int resolution = 72; // dpi, values below 1 already read as 72
    int jpegQuality = 80;
    qint64 sizeLimitBytes = 0; // 0: no limit
    // Copy the source's EXIF block into a JPEG output.
    bool preserveHeader = false;
    // Convert the pixels to sRGB instead of keeping the input's colour profile.
    bool convertToSrgb = false;
    ImageWatermark imageWatermark;
    TextWatermark textWatermark;

    static ProcessingRequest decode(const ProcessingParams& params);
};

} // namespace quillet
