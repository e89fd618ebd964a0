#include "settings/processingrequest.h"

namespace quillet {

namespace {

namespace K = ParamKey;

Sizing decodeSizing(const ProcessingParams& p) {
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

} // namespace

ProcessingRequest ProcessingRequest::decode(const ProcessingParams& p) {
    ProcessingRequest r;
    r.rotation = p.intValue(K::Rotation);
    r.sizing = decodeSizing(p);
    r.background = p.canvasBackground();
    r.format = p.intValue(K::FileFormat);
    r.resolution = p.resolution();
    r.jpegQuality = p.intValue(K::JpegQuality);
    r.sizeLimitBytes = p.sizeLimitBytes();
    r.preserveHeader = r.format == FileFormat::Jpeg && p.boolValue(K::PreserveHeader);
    r.convertToSrgb = p.boolValue(K::ConvertToSRGB);

    // The master switch governs both watermarks.
    const bool watermarks = p.boolValue(K::WatermarkEnabled);
    r.imageWatermark.enabled = watermarks && p.boolValue(K::ImageWatermarkEnabled);
    r.imageWatermark.path = p.stringValue(K::WatermarkPath);
    r.imageWatermark.location = p.intValue(K::WatermarkLocation);
    r.imageWatermark.opacity = p.intValue(K::WatermarkOpacity);
    r.textWatermark.fields = p.intList(K::DynWatermarkFields);
    r.textWatermark.enabled =
        watermarks && p.boolValue(K::DynWatermarkEnabled) && !r.textWatermark.fields.isEmpty();
    r.textWatermark.size = p.intValue(K::DynWatermarkSize);
    r.textWatermark.style = p.intValue(K::DynWatermarkStyle);
    r.textWatermark.background = p.textBackgroundColor();
    return r;
}

} // namespace quillet
