#pragma once

#include "settings/rgbacolor.h"

#include <QList>
#include <QString>
#include <QVariantMap>

namespace quillet {

// Record keys. "HasFizeLimit" is spelled so on purpose: stored presets use it.
namespace ParamKey {
inline constexpr char Name[] = "Name";
inline constexpr char Rotation[] = "Rotation";
inline constexpr char ScaleType[] = "ScaleType";
inline constexpr char Width[] = "Width";
inline constexpr char Height[] = "Height";
inline constexpr char ScalePercent[] = "ScalePercent";
inline constexpr char CropAreaPercentage[] = "CropAreaPercentage";
inline constexpr char FlipRatio[] = "FlipRatio";
inline constexpr char ScaleDownOnly[] = "ScaleDownOnly";
inline constexpr char ScaleQuality[] = "ScaleQuality";
inline constexpr char Resolution[] = "Resolution";
inline constexpr char FileFormat[] = "FileFormat";
inline constexpr char JpegQuality[] = "JpegQuality";
inline constexpr char HasFizeLimit[] = "HasFizeLimit";
inline constexpr char SizeLimit[] = "SizeLimit";
inline constexpr char PreserveHeader[] = "PreserveHeader";
inline constexpr char PreserveTransparency[] = "PreserveTransparency";
inline constexpr char ConvertToSRGB[] = "ConvertToSRGB";
inline constexpr char MetadataPolicy[] = "MetadataPolicy";
inline constexpr char LosslessOutput[] = "LosslessOutput";
inline constexpr char ShrinkToFit[] = "ShrinkToFit";
inline constexpr char KeepSmallerOriginal[] = "KeepSmallerOriginal";
inline constexpr char FastEncoding[] = "FastEncoding";
inline constexpr char BackgroundColor[] = "BackgroundColor";
inline constexpr char WatermarkEnabled[] = "WatermarkEnabled";
inline constexpr char ImageWatermarkEnabled[] = "ImageWatermarkEnabled";
inline constexpr char WatermarkPath[] = "WatermarkPath";
inline constexpr char WatermarkOpacity[] = "WatermarkOpacity";
inline constexpr char WatermarkLocation[] = "WatermarkLocation";
inline constexpr char DynWatermarkEnabled[] = "DynWatermarkEnabled";
inline constexpr char DynWatermarkBackgroundColor[] = "DynWatermarkBackgroundColor";
inline constexpr char DynWatermarkBackgroundOpacity[] = "DynWatermarkBackgroundOpacity"; // read only
inline constexpr char DynWatermarkSize[] = "DynWatermarkSize";
inline constexpr char DynWatermarkStyle[] = "DynWatermarkStyle";
inline constexpr char DynWatermarkFields[] = "DynWatermarkFields";
inline constexpr char Id[] = "Id"; // presets only
} // namespace ParamKey

namespace Rotation {
enum : int { None = 0, Clockwise = 1, CounterClockwise = 2, HalfTurn = 3, Automatic = 4 };
}

namespace ScaleType {
enum : int { None = 1, ToWidth = 2, ToHeight = 3, Fit = 4, Crop = 5, Stretch = 6, Percent = 7, Fill = 8 };
}

namespace FileFormat {
enum : int { Jpeg = 101, Png = 102, Tiff = 103, WebP = 104, Avif = 105, JpegXl = 106 };
// "jpg", "png", "tiff", "webp", "avif", "jxl", or empty for an unknown code.
QString extension(int format);
// "JPEG", "WebP", "JPEG XL"...: the name log lines give a format.
QString displayName(int format);
// Formats written at a quality, which the size limit searches over.
bool isLossy(int format);
// WebP, AVIF and JPEG XL: a quality, an alpha band, and the input's EXIF,
// XMP and profile written by the encoder itself.
bool isModern(int format);
// The formats that may be written without loss: WebP and JPEG XL.
bool hasLossless(int format);
} // namespace FileFormat

namespace ScaleQuality {
enum : int { Default = 0, None = 1, Low = 2, High = 3 };
}

namespace TextStyle {
enum : int { WhiteShadow = 1, Black = 2, BlackGlow = 3 };
}

// Field codes of the text watermark.
namespace TextField {
enum : int {
    FileName = 0,
    Dimensions = 1,
    FileSize = 2,
    CameraModel = 3,
    CreationDate = 4,
    Iso = 5,
    Flash = 6,
    FocalLength = 7,
    FocalLength35 = 8,
    ExposureTime = 9,
    Aperture = 10,
    Distance = 11,
    ExposureBias = 12,
    Caption = 13,
    Comment = 14,
};
}

// The stored form of a batch's settings: a flat record of property-list
// values, kept in the settings store and in preset files as it is. A missing
// or mistyped key reads as 0, false, empty or no colour. Everything else works
// on its typed form, ProcessingRequest.
class ProcessingParams {
  public:
    ProcessingParams() = default;
    explicit ProcessingParams(QVariantMap values) : m_values(std::move(values)) {}

    // The record a freshly reset window produces: every record key with a
    // default in the settings schema ("Name" empty, no "WatermarkPath").
    static ProcessingParams defaults();

    const QVariantMap& values() const { return m_values; }
    QVariantMap& values() { return m_values; }

    bool contains(const QString& key) const { return m_values.contains(key); }
    int intValue(const QString& key) const;
    bool boolValue(const QString& key) const;
    QString stringValue(const QString& key) const;
    QList<int> intList(const QString& key) const;
    std::optional<RgbaColor> colorValue(const QString& key) const;

    void setInt(const QString& key, int value) { m_values.insert(key, value); }
    void setBool(const QString& key, bool value) { m_values.insert(key, value); }
    void setString(const QString& key, const QString& value) { m_values.insert(key, value); }
    void setIntList(const QString& key, const QList<int>& value);
    void setColor(const QString& key, const RgbaColor& value) { m_values.insert(key, value.toVariant()); }
    void remove(const QString& key) { m_values.remove(key); }

    friend bool operator==(const ProcessingParams&, const ProcessingParams&) = default;

  private:
    QVariantMap m_values;
};

} // namespace quillet
