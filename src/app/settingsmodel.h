#pragma once

#include "settings/processingparams.h"
#include "settings/rgbacolor.h"

#include <QObject>
#include <QSet>
#include <QString>

#include <optional>

namespace quillet {

// The processing settings as the window's controls hold them, without the
// widgets: values, which controls are enabled, which page of the sizing and
// format boxes is shown, and the rules that tie them together (a mode fills
// its fields when they are enabled, "PreserveHeader" pins the resolution at
// 72, the format decides what the background well may do). The widgets show
// this state and forward the user's edits; currentSetting() and
// loadPreset() turn it into a settings record and back.
class SettingsModel : public QObject {
    Q_OBJECT

  public:
    // A numeric text field: its value and whether it takes input. A disabled
    // field shows nothing and holds 0.
    struct Field {
        int value = 0;
        bool enabled = false;
        friend bool operator==(const Field&, const Field&) = default;
    };
    enum class SizePage { None, Sizes, Percent };
    enum class FormatPage { Jpeg, Transparency };

    explicit SettingsModel(QObject* parent = nullptr);

    // The record of the controls: every processing key, "WatermarkPath" only
    // when a watermark image is set. A resolution below 1 is set back to 72 in
    // the field as well as in the record.
    ProcessingParams currentSetting();
    // Sets the controls from a record (missing keys read as 0, false, empty),
    // or, with none, resets them. Remembers the record as the selected preset.
    void loadPreset(const std::optional<ProcessingParams>& preset);
    // Sets the controls from a record as loadPreset() does, without taking it
    // as the selected preset: for the record the window last left behind.
    void loadRecord(const ProcessingParams& record);
    // The preset last applied; none after a reset.
    const std::optional<ProcessingParams>& selectedPreset() const { return m_selectedPreset; }
    // Whether the button that stores the controls into the selected preset works.
    bool canStorePreset() const { return m_selectedPreset.has_value(); }
    void setPresetName(const QString& name) { m_presetName = name; }

    // Rotation and sizing.
    int rotation() const { return m_rotation; }
    void selectRotation(int code);
    int scaleType() const { return m_scaleType; }
    // Applies the enabling rules of the mode; codes above 8 change nothing.
    void selectScaleType(int code);
    SizePage sizePage() const { return m_sizePage; }
    Field width() const { return m_width; }
    Field height() const { return m_height; }
    Field cropArea() const { return m_crop; }
    int scalePercent() const { return m_percent; }
    bool flipRatio() const { return m_flip; }
    bool flipEnabled() const { return m_flipEnabled; }
    bool scaleDownOnly() const { return m_downOnly; }
    bool scaleDownOnlyEnabled() const { return m_scaleType != ScaleType::Percent; }
    int scaleQuality() const { return m_scaleQuality; }
    void setWidth(int value);
    void setHeight(int value);
    void setCropArea(int value);
    void setScalePercent(int value);
    void setFlipRatio(bool on);
    void setScaleDownOnly(bool on);
    void selectScaleQuality(int code);

    // Output format and its options.
    int format() const { return m_format; }
    void selectFormat(int code);
    FormatPage formatPage() const {
        return m_format == FileFormat::Jpeg ? FormatPage::Jpeg : FormatPage::Transparency;
    }
    Field resolution() const { return m_resolution; }
    void setResolution(int dpi);
    int jpegQuality() const { return m_quality; }
    void setJpegQuality(int quality);
    bool hasSizeLimit() const { return m_sizeLimitOn; }
    Field sizeLimit() const { return m_sizeLimit; }
    void setHasSizeLimit(bool on);
    void setSizeLimit(int kilobytes);
    bool preserveHeader() const { return m_preserveHeader; }
    void setPreserveHeader(bool on);
    bool convertToSrgb() const { return m_convertToSrgb; }
    void setConvertToSrgb(bool on);
    bool preserveTransparency() const { return m_preserveTransparency; }
    void setPreserveTransparency(bool on);
    RgbaColor backgroundColor() const { return m_background; }
    bool backgroundEnabled() const;
    void setBackgroundColor(const RgbaColor& color);

    // Image watermark.
    bool watermarkEnabled() const { return m_watermarkOn; }
    void setWatermarkEnabled(bool on);
    bool imageWatermarkEnabled() const { return m_imageWatermarkOn; }
    void setImageWatermarkEnabled(bool on);
    QString watermarkPath() const { return m_watermarkPath; }
    int watermarkOpacity() const { return m_opacity; }
    void setWatermarkOpacity(int percent);
    int watermarkLocation() const { return m_location; }
    void selectWatermarkLocation(int code);
    // A new watermark picture chosen or dropped: an opacity of 0 becomes 100
    // and both switches go on. The caller has checked that it loads.
    void setWatermarkImage(const QString& path);
    void removeWatermark();
    bool canClearWatermark() const { return !m_watermarkPath.isEmpty(); }

    // Text watermark.
    bool textWatermarkEnabled() const { return m_textOn; }
    void setTextWatermarkEnabled(bool on);
    RgbaColor textBackgroundColor() const { return m_textBackground; }
    void setTextBackgroundColor(const RgbaColor& color);
    int textSize() const { return m_textSize; }
    void selectTextSize(int code);
    int textStyle() const { return m_textStyle; }
    void selectTextStyle(int code);
    bool textFieldTicked(int code) const { return m_fields.contains(code); }
    void setTextFieldTicked(int code, bool on);

    // The location item a reset selects: the first of the menu.
    static constexpr int FirstLocation = 1;
    // Whether a path loads as a watermark picture; replaceable for tests.
    static bool loadsAsImage(const QString& path);

  Q_SIGNALS:
    // Any value or enabled state changed.
    void changed();

  private:
    void reset();
    void applyScaleType(int code);
    void applyRecord(const ProcessingParams& p);
    void enableField(Field& field, bool on, int fill);
    void applyWatermark(bool masterOn, const QString& path, int location, int opacity);

    QString m_presetName;
    std::optional<ProcessingParams> m_selectedPreset;
    int m_rotation = Rotation::None;
    int m_scaleType = ScaleType::None;
    SizePage m_sizePage = SizePage::None;
    Field m_width;
    Field m_height;
    Field m_crop;
    int m_percent = 100;
    bool m_flip = false;
    bool m_flipEnabled = false;
    bool m_downOnly = false;
    int m_scaleQuality = ScaleQuality::High;
    int m_format = FileFormat::Jpeg;
    Field m_resolution{72, false};
    int m_rememberedResolution = 72;
    int m_quality = 80;
    bool m_sizeLimitOn = false;
    Field m_sizeLimit{100, false};
    bool m_preserveHeader = true;
    bool m_convertToSrgb = false;
    bool m_preserveTransparency = false;
    RgbaColor m_background = RgbaColor::white();
    bool m_watermarkOn = false;
    bool m_imageWatermarkOn = false;
    QString m_watermarkPath;
    int m_opacity = 100;
    int m_location = FirstLocation;
    bool m_textOn = false;
    RgbaColor m_textBackground = RgbaColor::white(0.0);
    int m_textSize = 2;
    int m_textStyle = TextStyle::WhiteShadow;
    QSet<int> m_fields;
};

} // namespace quillet
