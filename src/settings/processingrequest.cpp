#include "settings/processingrequest.h"

#include <algorithm>

namespace quillet {

namespace {

namespace K = ParamKey;

Sizing readSizing(const ProcessingParams& p) {
    Sizing s;
    const int type = p.intValue(K::ScaleType);
    s.scaleType = type >= ScaleType::None && type <= ScaleType::Fill ? type : int(ScaleType::None);
    s.width = p.intValue(K::Width);
    s.height = p.intValue(K::Height);
    s.percent = p.intValue(K::ScalePercent);
    s.cropAreaPercentage = p.intValue(K::CropAreaPercentage);
    s.downOnly = p.boolValue(K::ScaleDownOnly);
    s.flipForPortrait = p.boolValue(K::FlipRatio);
    s.interpolation = p.intValue(K::ScaleQuality);
    return s;
}

OutputSettings readOutput(const ProcessingParams& p) {
    OutputSettings o;
    o.format = p.intValue(K::FileFormat);
    o.resolution = p.intValue(K::Resolution);
    o.jpegQuality = p.intValue(K::JpegQuality);
    o.hasSizeLimit = p.boolValue(K::HasFizeLimit);
    o.sizeLimit = p.intValue(K::SizeLimit);
    o.preserveHeader = p.boolValue(K::PreserveHeader);
    o.preserveTransparency = p.boolValue(K::PreserveTransparency);
    o.convertToSrgb = p.boolValue(K::ConvertToSRGB);
    o.metadata = metadataPolicyFromCode(p.intValue(K::MetadataPolicy));
    o.lossless = p.boolValue(K::LosslessOutput);
    o.shrinkToFit = p.boolValue(K::ShrinkToFit);
    o.keepSmallerOriginal = p.boolValue(K::KeepSmallerOriginal);
    o.fastEncoding = p.boolValue(K::FastEncoding);
    o.background = p.colorValue(K::BackgroundColor).value_or(RgbaColor::white());
    return o;
}

WatermarkSettings readWatermarks(const ProcessingParams& p) {
    WatermarkSettings w;
    w.enabled = p.boolValue(K::WatermarkEnabled);
    w.image.enabled = p.boolValue(K::ImageWatermarkEnabled);
    w.image.path = p.stringValue(K::WatermarkPath);
    w.image.location = p.intValue(K::WatermarkLocation);
    w.image.opacity = p.intValue(K::WatermarkOpacity);
    w.text.enabled = p.boolValue(K::DynWatermarkEnabled);
    w.text.fields = p.intList(K::DynWatermarkFields);
    w.text.size = p.intValue(K::DynWatermarkSize);
    w.text.style = p.intValue(K::DynWatermarkStyle);
    // The older records kept only an opacity for the band, over white.
    w.text.background = p.colorValue(K::DynWatermarkBackgroundColor)
                            .value_or(RgbaColor::white(p.intValue(K::DynWatermarkBackgroundOpacity) / 100.0));
    return w;
}

} // namespace

qint64 OutputSettings::sizeLimitBytes() const {
    return hasSizeLimit ? qint64(sizeLimitField()) * 1024 : 0;
}

std::optional<RgbaColor> OutputSettings::canvasBackground() const {
    if (format != FileFormat::Jpeg && preserveTransparency)
        return std::nullopt;
    return background;
}

ProcessingRequest ProcessingRequest::fromRecord(const ProcessingParams& p) {
    ProcessingRequest r;
    r.name = p.stringValue(K::Name);
    r.rotation = p.intValue(K::Rotation);
    r.sizing = readSizing(p);
    r.output = readOutput(p);
    r.watermarks = readWatermarks(p);
    return r;
}

ProcessingParams ProcessingRequest::toRecord() const {
    ProcessingParams p;
    p.setString(K::Name, name);
    p.setInt(K::Rotation, rotation);
    p.setInt(K::ScaleType, sizing.scaleType);
    p.setInt(K::Width, sizing.width);
    p.setInt(K::Height, sizing.height);
    p.setInt(K::ScalePercent, sizing.percent);
    p.setInt(K::CropAreaPercentage, sizing.cropAreaPercentage);
    p.setBool(K::FlipRatio, sizing.flipForPortrait);
    p.setBool(K::ScaleDownOnly, sizing.downOnly);
    p.setInt(K::ScaleQuality, sizing.interpolation);
    p.setInt(K::Resolution, output.resolution);
    p.setInt(K::FileFormat, output.format);
    p.setInt(K::JpegQuality, output.jpegQuality);
    p.setBool(K::HasFizeLimit, output.hasSizeLimit);
    p.setInt(K::SizeLimit, output.sizeLimit);
    p.setBool(K::PreserveHeader, output.preserveHeader);
    p.setBool(K::ConvertToSRGB, output.convertToSrgb);
    p.setInt(K::MetadataPolicy, int(output.metadata));
    p.setBool(K::LosslessOutput, output.lossless);
    p.setBool(K::ShrinkToFit, output.shrinkToFit);
    p.setBool(K::KeepSmallerOriginal, output.keepSmallerOriginal);
    p.setBool(K::FastEncoding, output.fastEncoding);
    p.setBool(K::PreserveTransparency, output.preserveTransparency);
    p.setColor(K::BackgroundColor, output.background);
    p.setBool(K::WatermarkEnabled, watermarks.enabled);
    p.setBool(K::ImageWatermarkEnabled, watermarks.image.enabled);
    if (!watermarks.image.path.isEmpty())
        p.setString(K::WatermarkPath, watermarks.image.path);
    p.setInt(K::WatermarkOpacity, watermarks.image.opacity);
    p.setInt(K::WatermarkLocation, watermarks.image.location);
    p.setBool(K::DynWatermarkEnabled, watermarks.text.enabled);
    p.setColor(K::DynWatermarkBackgroundColor, watermarks.text.background);
    p.setInt(K::DynWatermarkSize, watermarks.text.size);
    p.setInt(K::DynWatermarkStyle, watermarks.text.style);
    QList<int> fields = watermarks.text.fields;
    std::sort(fields.begin(), fields.end());
    p.setIntList(K::DynWatermarkFields, fields);
    return p;
}

} // namespace quillet
