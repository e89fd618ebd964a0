#include "engine/pipeline/pipelinesteps.h"

#include "engine/geometry/geometry.h"
#include "engine/pipeline/outputencoder.h"
#include "engine/watermark/imagewatermark.h"
#include "engine/watermark/textwatermark.h"
#include "engine/watermark/watermarkfields.h"

namespace quillet {

namespace PipelineSteps {

int orientationOf(const QString& path) {
    const auto info = KVImageInfo::fromFile(path, false, false);
    const int orientation = info ? info->orientation() : 1;
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

Picture processImage(const Picture& picture, const ProcessingParams& params, int orientation,
                     bool& autoRotated) {
    return Geometry::processImage(
        picture, [orientation] { return orientation; }, params.intValue(ParamKey::Rotation), autoRotated,
        params.intValue(ParamKey::ScaleType), params.intValue(ParamKey::Width),
        params.intValue(ParamKey::Height), params.intValue(ParamKey::ScalePercent),
        params.boolValue(ParamKey::ScaleDownOnly), params.intValue(ParamKey::ScaleQuality),
        params.boolValue(ParamKey::FlipRatio), params.intValue(ParamKey::CropAreaPercentage),
        params.canvasBackground());
}

void drawWatermarks(Picture& picture, const ProcessingParams& params, const std::optional<Picture>& watermark,
                    const KVImageInfo* info, ActivityLog& log) {
    if (params.boolValue(ParamKey::ImageWatermarkEnabled) && watermark)
        drawWatermark(*watermark, picture, params.intValue(ParamKey::WatermarkLocation),
                      params.intValue(ParamKey::WatermarkOpacity), log);
    const QList<int> fields = params.intList(ParamKey::DynWatermarkFields);
    if (params.boolValue(ParamKey::DynWatermarkEnabled) && !fields.isEmpty() && info) {
        const QStringList texts = watermarkTexts(*info, fields);
        // Every field may come out empty; there is then nothing to draw.
        if (!texts.isEmpty())
            drawStrings(texts, picture, params.intValue(ParamKey::DynWatermarkSize),
                        params.intValue(ParamKey::DynWatermarkStyle), params.textBackgroundColor());
    }
}

QByteArray encode(const Picture& picture, const ProcessingParams& params, ActivityLog& log) {
    return OutputEncoder::dataForImage(picture, params.intValue(ParamKey::FileFormat), params.resolution(),
                                       params.intValue(ParamKey::JpegQuality), params.sizeLimitBytes(), log);
}

vips::VImage thumbnail(const Picture& picture) {
    return Geometry::thumbnail(picture, 64, 64).image;
}

std::optional<Picture> loadWatermark(const QString& path) {
    return initWatermark(path);
}

} // namespace PipelineSteps

} // namespace quillet
