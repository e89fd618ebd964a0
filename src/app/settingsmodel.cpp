#include "app/settingsmodel.h"

#include <QFileInfo>

#include <vips/vips8>

#include <algorithm>

namespace quillet {

namespace K = ParamKey;

namespace {

// A field enabled while holding less than 2 gets this value.
constexpr int SizeFill = 480;
constexpr int PercentFill = 100;
constexpr int DefaultDpi = 72;

int dpiOrDefault(int dpi) {
    return dpi < 1 ? DefaultDpi : dpi;
}

} // namespace

SettingsModel::SettingsModel(QObject* parent) : QObject(parent) {
    reset();
}

bool SettingsModel::loadsAsImage(const QString& path) {
    if (path.isEmpty() || !QFileInfo(path).isFile())
        return false;
    VipsImage* image = vips_image_new_from_file(QFile::encodeName(path).constData(), nullptr);
    if (!image) {
        vips_error_clear();
        return false;
    }
    g_object_unref(image);
    return true;
}

void SettingsModel::enableField(Field& field, bool on, int fill) {
    if (!on)
        field.value = 0;
    else if (field.value < 2)
        field.value = fill;
    field.enabled = on;
}

void SettingsModel::applyScaleType(int code) {
    if (code < ScaleType::None || code > ScaleType::Fill)
        return;
    m_scaleType = code;
    const bool sizes = code != ScaleType::None && code != ScaleType::Percent;
    const bool width = sizes && code != ScaleType::ToHeight;
    const bool height = sizes && code != ScaleType::ToWidth;
    if (code != ScaleType::Percent) {
        enableField(m_width, width, SizeFill);
        enableField(m_height, height, SizeFill);
        enableField(m_crop, code == ScaleType::Crop, PercentFill);
        m_flipEnabled = width && height;
    }
    if (code == ScaleType::Percent && m_percent < 2)
        m_percent = PercentFill;
    m_sizePage = code == ScaleType::None      ? SizePage::None
                 : code == ScaleType::Percent ? SizePage::Percent
                                              : SizePage::Sizes;
}

void SettingsModel::reset() {
    m_selectedPreset.reset();
    m_rotation = Rotation::None;
    applyScaleType(ScaleType::None);
    m_scaleQuality = ScaleQuality::High;
    m_downOnly = false;
    m_format = FileFormat::Jpeg;
    m_rememberedResolution = DefaultDpi;
    m_resolution = {DefaultDpi, false};
    m_quality = 80;
    m_sizeLimit = {100, false};
    setHasSizeLimit(false);
    m_preserveHeader = true;
    m_convertToSrgb = false;
    m_background = RgbaColor::white();
    m_imageWatermarkOn = false;
    applyWatermark(false, QString(), FirstLocation, m_opacity);
    m_textOn = false;
    m_textSize = 2;
    // Text shadows are always drawn here, so the shadowed style and a clear
    // band are the reset state.
    m_textStyle = TextStyle::WhiteShadow;
    m_textBackground = RgbaColor::white(0.0);
    m_fields.clear();
}

void SettingsModel::applyWatermark(bool masterOn, const QString& path, int location, int opacity) {
    m_watermarkOn = masterOn;
    if (!path.isEmpty() && loadsAsImage(path)) {
        m_watermarkPath = path;
        m_location = location;
        m_opacity = opacity;
    } else {
        m_watermarkPath.clear();
        m_location = FirstLocation;
    }
}

void SettingsModel::loadPreset(const std::optional<ProcessingParams>& preset) {
    if (!preset) {
        reset();
        Q_EMIT changed();
        return;
    }
    applyRecord(*preset);
    m_selectedPreset = preset;
    Q_EMIT changed();
}

void SettingsModel::loadRecord(const ProcessingParams& record) {
    applyRecord(record);
    m_selectedPreset.reset();
    Q_EMIT changed();
}

void SettingsModel::applyRecord(const ProcessingParams& p) {
    m_textOn = p.boolValue(K::DynWatermarkEnabled);
    m_textBackground = p.textBackgroundColor();
    m_textSize = p.intValue(K::DynWatermarkSize);
    m_textStyle = p.intValue(K::DynWatermarkStyle);
    m_fields.clear();
    for (int code : p.intList(K::DynWatermarkFields))
        m_fields.insert(code);

    m_width.value = p.intValue(K::Width);
    m_height.value = p.intValue(K::Height);
    m_percent = p.intValue(K::ScalePercent);
    m_crop.value = p.intValue(K::CropAreaPercentage);

    m_rotation = p.intValue(K::Rotation);
    applyScaleType(p.intValue(K::ScaleType));

    m_downOnly = p.boolValue(K::ScaleDownOnly);
    m_scaleQuality = p.intValue(K::ScaleQuality);
    m_flip = p.boolValue(K::FlipRatio);
    m_quality = p.intValue(K::JpegQuality);

    const int dpi = dpiOrDefault(p.intValue(K::Resolution));
    m_preserveHeader = p.boolValue(K::PreserveHeader);
    m_convertToSrgb = p.boolValue(K::ConvertToSRGB);
    m_resolution = m_preserveHeader ? Field{DefaultDpi, false} : Field{dpi, true};
    m_rememberedResolution = dpi;

    m_sizeLimit.value = p.sizeLimitField();
    setHasSizeLimit(p.boolValue(K::HasFizeLimit));

    m_preserveTransparency = p.boolValue(K::PreserveTransparency);
    if (const auto color = p.colorValue(K::BackgroundColor))
        m_background = *color;

    m_imageWatermarkOn = p.boolValue(K::ImageWatermarkEnabled);
    applyWatermark(p.boolValue(K::WatermarkEnabled), p.stringValue(K::WatermarkPath),
                   p.intValue(K::WatermarkLocation), p.intValue(K::WatermarkOpacity));

    selectFormat(p.intValue(K::FileFormat));
}

ProcessingParams SettingsModel::currentSetting() {
    if (m_resolution.value < 1) {
        m_resolution.value = DefaultDpi;
        Q_EMIT changed();
    }
    ProcessingParams p;
    p.setString(K::Name, m_presetName);
    p.setInt(K::Rotation, m_rotation);
    p.setInt(K::ScaleType, m_scaleType);
    p.setInt(K::Width, m_width.value);
    p.setInt(K::Height, m_height.value);
    p.setInt(K::ScalePercent, m_percent);
    p.setInt(K::CropAreaPercentage, m_crop.value);
    p.setBool(K::FlipRatio, m_flip);
    p.setBool(K::ScaleDownOnly, m_downOnly);
    p.setInt(K::ScaleQuality, m_scaleQuality);
    p.setInt(K::Resolution, m_resolution.value);
    p.setInt(K::FileFormat, m_format);
    p.setInt(K::JpegQuality, m_quality);
    p.setBool(K::HasFizeLimit, m_sizeLimitOn);
    p.setInt(K::SizeLimit, m_sizeLimit.value);
    p.setBool(K::PreserveHeader, m_preserveHeader);
    p.setBool(K::ConvertToSRGB, m_convertToSrgb);
    p.setBool(K::PreserveTransparency, m_preserveTransparency);
    p.setColor(K::BackgroundColor, m_background);
    p.setBool(K::WatermarkEnabled, m_watermarkOn);
    p.setBool(K::ImageWatermarkEnabled, m_imageWatermarkOn);
    if (!m_watermarkPath.isEmpty())
        p.setString(K::WatermarkPath, m_watermarkPath);
    p.setInt(K::WatermarkOpacity, m_opacity);
    p.setInt(K::WatermarkLocation, m_location);
    p.setBool(K::DynWatermarkEnabled, m_textOn);
    p.setColor(K::DynWatermarkBackgroundColor, m_textBackground);
    p.setInt(K::DynWatermarkSize, m_textSize);
    p.setInt(K::DynWatermarkStyle, m_textStyle);
    // The ticked cells in cell order, not in the order they were ticked.
    QList<int> fields = m_fields.values();
    std::sort(fields.begin(), fields.end());
    p.setIntList(K::DynWatermarkFields, fields);
    return p;
}

void SettingsModel::setConvertToSrgb(bool on) {
    m_convertToSrgb = on;
    Q_EMIT changed();
}

void SettingsModel::selectRotation(int code) {
    m_rotation = code;
    Q_EMIT changed();
}

void SettingsModel::selectScaleType(int code) {
    applyScaleType(code);
    Q_EMIT changed();
}

void SettingsModel::setWidth(int value) {
    if (m_width.enabled)
        m_width.value = value;
    Q_EMIT changed();
}

void SettingsModel::setHeight(int value) {
    if (m_height.enabled)
        m_height.value = value;
    Q_EMIT changed();
}

void SettingsModel::setCropArea(int value) {
    if (m_crop.enabled)
        m_crop.value = value;
    Q_EMIT changed();
}

void SettingsModel::setScalePercent(int value) {
    m_percent = value;
    Q_EMIT changed();
}

void SettingsModel::setFlipRatio(bool on) {
    m_flip = on;
    Q_EMIT changed();
}

void SettingsModel::setScaleDownOnly(bool on) {
    m_downOnly = on;
    Q_EMIT changed();
}

void SettingsModel::selectScaleQuality(int code) {
    m_scaleQuality = code;
    Q_EMIT changed();
}

void SettingsModel::selectFormat(int code) {
    m_format = code;
    if (code == FileFormat::Jpeg && m_preserveHeader)
        m_resolution = {DefaultDpi, false};
    Q_EMIT changed();
}

void SettingsModel::setResolution(int dpi) {
    if (m_resolution.enabled)
        m_resolution.value = dpi;
    Q_EMIT changed();
}

void SettingsModel::setJpegQuality(int quality) {
    m_quality = quality;
    Q_EMIT changed();
}

void SettingsModel::setHasSizeLimit(bool on) {
    m_sizeLimitOn = on;
    enableField(m_sizeLimit, on, 100);
    Q_EMIT changed();
}

void SettingsModel::setSizeLimit(int kilobytes) {
    if (m_sizeLimit.enabled)
        m_sizeLimit.value = kilobytes;
    Q_EMIT changed();
}

void SettingsModel::setPreserveHeader(bool on) {
    if (on && !m_preserveHeader)
        m_rememberedResolution = m_resolution.value;
    if (on)
        m_resolution = {DefaultDpi, false};
    else
        m_resolution = {m_rememberedResolution, true};
    m_preserveHeader = on;
    Q_EMIT changed();
}

void SettingsModel::setPreserveTransparency(bool on) {
    m_preserveTransparency = on;
    Q_EMIT changed();
}

bool SettingsModel::backgroundEnabled() const {
    return m_format == FileFormat::Jpeg || !m_preserveTransparency;
}

void SettingsModel::setBackgroundColor(const RgbaColor& color) {
    m_background = color;
    Q_EMIT changed();
}

void SettingsModel::setWatermarkEnabled(bool on) {
    m_watermarkOn = on;
    Q_EMIT changed();
}

void SettingsModel::setImageWatermarkEnabled(bool on) {
    m_imageWatermarkOn = on;
    Q_EMIT changed();
}

void SettingsModel::setWatermarkOpacity(int percent) {
    m_opacity = percent;
    Q_EMIT changed();
}

void SettingsModel::selectWatermarkLocation(int code) {
    m_location = code;
    Q_EMIT changed();
}

void SettingsModel::setWatermarkImage(const QString& path) {
    m_watermarkPath = path;
    if (m_opacity == 0)
        m_opacity = 100;
    m_watermarkOn = true;
    m_imageWatermarkOn = true;
    Q_EMIT changed();
}

void SettingsModel::removeWatermark() {
    m_imageWatermarkOn = false;
    applyWatermark(false, QString(), FirstLocation, m_opacity);
    Q_EMIT changed();
}

void SettingsModel::setTextWatermarkEnabled(bool on) {
    m_textOn = on;
    Q_EMIT changed();
}

void SettingsModel::setTextBackgroundColor(const RgbaColor& color) {
    m_textBackground = color;
    Q_EMIT changed();
}

void SettingsModel::selectTextSize(int code) {
    m_textSize = code;
    Q_EMIT changed();
}

void SettingsModel::selectTextStyle(int code) {
    m_textStyle = code;
    Q_EMIT changed();
}

void SettingsModel::setTextFieldTicked(int code, bool on) {
    if (on)
        m_fields.insert(code);
    else
        m_fields.remove(code);
    Q_EMIT changed();
}

} // namespace quillet
