#include "engine/pipelinesteps.h"

#include "engine/geometry.h"
#include "engine/imagewatermark.h"
#include "engine/textwatermark.h"
#include "engine/watermarkfields.h"

#include <QFile>

namespace PipelineSteps {

int orientationOf(const QString& path) {
    const auto info = KVImageInfo::fromFile(path, false);
    const int orientation = info ? info->orientation() : 1;
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

Picture processImage(const Picture& picture, const ProcessingParams& params, int orientation, bool& autoRotated) {
    return Geometry::processImage(
        picture, [orientation] { return orientation; }, params.intValue(ParamKey::Rotation), autoRotated,
        params.intValue(ParamKey::ScaleType), params.intValue(ParamKey::Width), params.intValue(ParamKey::Height),
        params.intValue(ParamKey::ScalePercent), params.boolValue(ParamKey::ScaleDownOnly),
        params.intValue(ParamKey::ScaleQuality), params.boolValue(ParamKey::FlipRatio),
        params.intValue(ParamKey::CropAreaPercentage), params.canvasBackground());
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
    try {
        const int format = params.intValue(ParamKey::FileFormat);
        void* buf = nullptr;
        size_t size = 0;
        if (format == FileFormat::Jpeg) {
            log.writeActivity(QStringLiteral("\tJPEG quality: %1\n").arg(params.intValue(ParamKey::JpegQuality)));
            picture.image.flatten().write_to_buffer(".jpg", &buf, &size, vips::VImage::option()->set("Q", std::max(1, params.intValue(ParamKey::JpegQuality)))->set("strip", true));
        } else {
            picture.image.write_to_buffer(format == FileFormat::Png ? ".png" : ".tif", &buf, &size);
        }
        QByteArray bytes(static_cast<const char*>(buf), qsizetype(size));
        g_free(buf);
        return bytes;
    } catch (const vips::VError&) {
        return {};
    }
}

vips::VImage thumbnail(const Picture& picture) { return Geometry::thumbnail(picture, 64, 64).image; }

std::optional<Picture> loadWatermark(const QString& path) { return initWatermark(path); }

} // namespace PipelineSteps
