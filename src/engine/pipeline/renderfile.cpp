#include "engine/pipeline/renderfile.h"

#include "engine/geometry/geometry.h"
#include "engine/pipeline/pictureloader.h"
#include "engine/pipeline/pipelineshrink.h"
#include "engine/pipeline/pipelinesteps.h"

#include <QFileInfo>

#include <exception>
#include <optional>

namespace quillet {

namespace {

bool isQuarterTurn(int rotation, int orientation) {
    if (rotation == Rotation::Clockwise || rotation == Rotation::CounterClockwise)
        return true;
    return rotation == Rotation::Automatic && (orientation == 6 || orientation == 8);
}

bool turns(int rotation, int orientation) {
    return isQuarterTurn(rotation, orientation) || rotation == Rotation::HalfTurn ||
           (rotation == Rotation::Automatic && orientation == 3);
}

// The picture drawn straight from the decoder, row strip by row strip, so it
// is never held whole; none when that does not work out, and the caller then
// decodes it into memory, which also tells a damaged file from the rest.
// Only an upright picture that is scaled can be drawn so (the caller checks
// that it is upright): a turn, or a copy, reads the pixels in another order
// than the decoder makes them.
std::optional<Geometry::Processed> drawStreamed(const QString& path, const PictureLoader::Header& header,
                                                int shrink, int boxShrink, const ProcessingRequest& request) {
    if (request.sizing.scaleType == ScaleType::None || request.sizing.interpolation == ScaleQuality::None)
        return std::nullopt;
    const PictureLoader::Result opened = PictureLoader::open(path, header, shrink, boxShrink);
    if (opened.status != PictureLoader::Status::Loaded)
        return std::nullopt;
    try {
        Geometry::Processed processed =
            Geometry::processImage(opened.picture, {}, Rotation::None, request.sizing, request.background);
        // Pixels that still come from the file (libvips marks what descends
        // from a sequential read) are computed now, in the one pass the file
        // allows, and not again by each encoding; what our resampler drew is
        // in memory already.
        if (vips_image_get_typeof(processed.picture.image.get_image(), VIPS_META_SEQUENTIAL))
            processed.picture.image = processed.picture.image.copy_memory();
        return processed;
    } catch (const std::exception&) {
        vips_error_clear();
        return std::nullopt;
    }
}

void render(RenderedFile& out, const RenderSettings& settings) {
    const ProcessingRequest& request = settings.request;
    const QFileInfo file(out.path);
    // A pipe or device would block or never end; only regular files are read.
    if (!file.isFile())
        return;
    const auto header = PictureLoader::readHeader(out.path);
    if (!header)
        return;

    const int rotation = request.rotation;
    const int orientation = rotation == Rotation::Automatic ? PipelineSteps::orientationOf(out.path) : 1;
    // The decoder shrinks JPEG by up to 8; whatever reduction is left beyond
    // twice the drawn size, and any reduction of the other formats, is
    // averaged away while the rows stream in, so a picture of any size is
    // held only at about the size it is drawn.
    const bool swap = isQuarterTurn(rotation, orientation);
    const int width = swap ? header->height : header->width;
    const int height = swap ? header->width : header->height;
    const int shrink = header->isJpeg ? pipelineShrinkFactor(request.sizing, width, height) : 1;
    const int boxShrink = pipelineBoxShrink(request.sizing, width, height, shrink);

    std::optional<Geometry::Processed> processed;
    if (!turns(rotation, orientation))
        processed = drawStreamed(out.path, *header, shrink, boxShrink, request);
    // Decoded into memory: turned pictures, copies, and whatever did not draw
    // straight from the decoder.
    PictureLoader::Result loaded;
    if (!processed) {
        loaded = PictureLoader::load(out.path, *header, shrink, boxShrink);
        if (loaded.status == PictureLoader::Status::NotAPicture)
            return;
        if (loaded.status == PictureLoader::Status::Corrupted) {
            out.status = RenderedFile::Corrupted;
            out.pictureLog.writeWarningActivity(
                QStringLiteral("Unable to open '%1' - file may be corrupted\n").arg(file.fileName()));
            return;
        }
    }
    out.status = RenderedFile::Rendered;
    out.pictureLog.writeActivity(QStringLiteral("Processing '%1'\n").arg(file.fileName()));
    if (settings.needsInfo)
        out.info = KVImageInfo::fromFile(out.path, true, false);

    if (!processed)
        processed = Geometry::processImage(
            loaded.picture, [orientation] { return orientation; }, rotation, request.sizing,
            request.background);
    Picture& picture = processed->picture;
    out.autoRotated = processed->autoRotated;
    out.pictureLog.writeActivity(
        QString::asprintf("\tDimension: %.0f x %.0f\n", picture.width, picture.height));
    if (settings.wantsThumbnail) {
        // The thumbnail is only shown; the file is written without it. A
        // picture drawn straight from the decoder is shown as drawn.
        try {
            out.thumbnail =
                PipelineSteps::thumbnail(loaded.picture.image.get_image() ? loaded.picture : picture)
                    .copy_memory();
        } catch (const std::exception&) {
            vips_error_clear();
        }
    }
    PipelineSteps::drawWatermarks(picture, request, settings.watermark, out.info ? &*out.info : nullptr,
                                  out.pictureLog);
    out.bytes = PipelineSteps::encode(picture, request, out.encoderLog);
}

} // namespace

RenderedFile renderFile(const QString& path, const RenderSettings& settings) {
    RenderedFile out;
    out.path = path;
    try {
        render(out, settings);
    } catch (const vips::VError&) {
        vips_error_clear();
        // Pixels that fail past the decoder leave no bytes: committing the
        // file then reports a write error, as an encoder failure does.
        out.bytes.clear();
        out.thumbnail.reset();
    } catch (const std::exception&) {
        out.bytes.clear();
        out.thumbnail.reset();
    }
    return out;
}

} // namespace quillet
