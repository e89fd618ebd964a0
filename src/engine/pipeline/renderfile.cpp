#include "engine/pipeline/renderfile.h"

#include "engine/geometry/geometry.h"
#include "engine/pipeline/colourprofile.h"
#include "engine/pipeline/decoderwarnings.h"
#include "engine/pipeline/pictureloader.h"
#include "engine/pipeline/pipelineshrink.h"
#include "engine/pipeline/pipelinesteps.h"

#include "metadata/metadatanotes.h"

#include <QFileInfo>

#include <exception>

namespace quillet {

namespace {

bool isQuarterTurn(int rotation, int orientation) {
    if (rotation == Rotation::Clockwise || rotation == Rotation::CounterClockwise)
        return true;
    return rotation == Rotation::Automatic && orientation >= 5 && orientation <= 8;
}

void finish(RenderedFile& out, const RenderSettings& settings, const Picture& loaded, int orientation);

void render(RenderedFile& out, const RenderSettings& settings) {
    const ProcessingRequest& request = settings.request;
    const QFileInfo file(out.path);
    // A pipe or device would block or never end; only regular files are read.
    if (!file.isFile())
        return;
    const auto header = PictureLoader::readHeader(out.path);
    if (!header)
        return;

    MetadataNotes notes;
    const DecoderWarnings warnings(notes);
    out.source = SourceMetadata::read(out.path);
    const int rotation = request.rotation;
    const int orientation =
        rotation == Rotation::Automatic ? PipelineSteps::orientationOf(out.path, out.source, &notes) : 1;
    int shrink = 1;
    if (header->isJpeg) {
        const bool swap = isQuarterTurn(rotation, orientation);
        shrink = pipelineShrinkFactor(request.sizing, swap ? header->height : header->width,
                                      swap ? header->width : header->height);
    }
    PictureLoader::Result loaded = PictureLoader::load(out.path, *header, shrink);
    if (loaded.status == PictureLoader::Status::NotAPicture)
        return;
    if (loaded.status == PictureLoader::Status::Corrupted) {
        // The line below says it all; the decoder's complaints would only repeat it.
        out.status = RenderedFile::Corrupted;
        out.pictureLog.writeWarningActivity(
            QStringLiteral("Unable to open '%1' - file may be corrupted\n").arg(file.fileName()));
        return;
    }
    out.status = RenderedFile::Rendered;
    out.pictureLog.writeActivity(QStringLiteral("Processing '%1'\n").arg(file.fileName()));
    if (settings.needsInfo)
        out.info = KVImageInfo::fromFile(out.path, true, false, &notes);
    notes.writeDamage(out.pictureLog, file.fileName());
    try {
        finish(out, settings, loaded.picture, orientation);
    } catch (const std::exception& e) {
        // Reported for this file alone; the batch goes on with the next.
        vips_error_clear();
        out.status = RenderedFile::Failed;
        out.bytes.clear();
        out.pictureLog.writeWarningActivity(
            QStringLiteral("\tUnable to process '%1': %2\n")
                .arg(file.fileName(), QString::fromLocal8Bit(e.what()).trimmed()));
    }
}

// Geometry, colours, watermarks and encoding of a loaded picture.
void finish(RenderedFile& out, const RenderSettings& settings, const Picture& loaded, int orientation) {
    const ProcessingRequest& request = settings.request;
    const int rotation = request.rotation;

    Geometry::Processed processed = Geometry::processImage(
        loaded, [orientation] { return orientation; }, rotation, request.sizing, request.background);
    Picture& picture = processed.picture;
    out.autoRotated = processed.autoRotated;
    out.pictureLog.writeActivity(
        QString::asprintf("\tDimension: %.0f x %.0f\n", picture.width, picture.height));
    const QByteArray profile = request.convertToSrgb
                                   ? ColourProfile::convertToSrgb(picture, out.source.iccProfile)
                                   : out.source.iccProfile;
    PipelineSteps::drawWatermarks(picture, request, settings.watermark, out.info ? &*out.info : nullptr,
                                  out.pictureLog);
    out.bytes = PipelineSteps::encode(picture, request, out.encoderLog, profile);
    if (settings.wantsThumbnail) {
        // The thumbnail is only shown; the file is written without it.
        try {
            out.thumbnail = PipelineSteps::thumbnail(loaded).copy_memory();
        } catch (const std::exception&) {
            vips_error_clear();
        }
    }
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
