#include "engine/pipeline/pipelinesteps.h"

#include "engine/geometry/geometry.h"
#include "engine/pipeline/outputencoder.h"
#include "engine/watermark/imagewatermark.h"
#include "engine/watermark/textwatermark.h"
#include "engine/watermark/watermarkfields.h"

#include <algorithm>

namespace quillet {

namespace PipelineSteps {

int orientationOf(const QString& path, const SourceMetadata& source, MetadataNotes* notes) {
    int orientation = source.orientation;
    if (source.isJpeg || !source.hasHeader) {
        const auto info = KVImageInfo::fromFile(path, false, false, notes);
        orientation = info ? info->orientation() : 1;
    }
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

bool drawWatermarks(Picture& picture, const ProcessingRequest& request,
                    const std::optional<Picture>& watermark, const KVImageInfo* info, ActivityLog& log) {
    const WatermarkSettings& watermarks = request.watermarks;
    const ImageWatermarkSettings& image = watermarks.image;
    if (watermarks.drawsImage() && watermark)
        drawWatermark(*watermark, picture, image.location, image.opacity, log);
    const TextWatermarkSettings& text = watermarks.text;
    if (watermarks.drawsText() && info) {
        const QStringList texts = watermarkTexts(*info, text.fields);
        // Every field may come out empty; there is then nothing to draw.
        if (!texts.isEmpty())
            return drawStrings(texts, picture, text.size, text.style, text.background).sizeCapped;
    }
    return false;
}

QByteArray encode(const Picture& picture, const ProcessingRequest& request, ActivityLog& log,
                  const QByteArray& iccProfile, const SourceMetadata& source, bool upright,
                  int* keptQuality) {
    const OutputSettings& output = request.output;
    OutputEncoder::Encoding encoding;
    encoding.format = output.format;
    encoding.resolution = output.dpi();
    encoding.quality = output.jpegQuality;
    encoding.byteLimit = output.sizeLimitBytes();
    encoding.lossless = output.writesLossless();
    encoding.effort = output.fastEncoding ? ModernEncoder::Effort::Fast : ModernEncoder::Effort::Thorough;
    encoding.shrinkToFit = output.shrinkToFit;
    encoding.metadata.iccProfile = iccProfile;
    // A JPEG gets its EXIF and XMP once written: room is left for them when
    // the picture is made smaller to fit.
    if (output.format == FileFormat::Jpeg && output.keepsHeader() && output.shrinkToFit)
        encoding.addedLater = source.exif.size() + source.xmp.size() + 64;
    if (FileFormat::isModern(output.format) && output.keepsHeader())
        encoding.metadata = ModernEncoder::outputMetadata(iccProfile, source.exif, source.xmp, output.dpi(),
                                                          upright || source.decodedUpright);
    encoding.metadata.bare = output.metadata == MetadataPolicy::None;
    return OutputEncoder::dataForImage(picture, encoding, log, keptQuality);
}

vips::VImage thumbnail(const Picture& picture) {
    constexpr int side = 64;
    // The thumbnail is drawn nearest-neighbour, so every pixel of it is one
    // pixel of the picture. Picking every n-th pixel first gives the same kind
    // of picture from a source a few times its size instead of the whole
    // picture, which cost a batch of large pictures a tenth more CPU. The
    // logical size stays, so the layout is that of the whole picture.
    Picture source = picture;
    const vips::VImage& image = picture.image;
    const int step = std::min(image.width(), image.height()) / (2 * side);
    if (step >= 2)
        source.image = image.subsample(step, step);
    return Geometry::thumbnail(source, side, side).image;
}

std::optional<Picture> loadWatermark(const QString& path) {
    return initWatermark(path);
}

} // namespace PipelineSteps

} // namespace quillet
