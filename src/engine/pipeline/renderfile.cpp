#include "engine/pipeline/renderfile.h"
#include "engine/pipeline/smalleroriginal.h"

#include "engine/geometry/geometry.h"
#include "engine/pipeline/colourprofile.h"
#include "engine/pipeline/decoderwarnings.h"
#include "engine/pipeline/metadatastrip.h"
#include "engine/pipeline/pictureloader.h"
#include "engine/pipeline/pipelineshrink.h"
#include "engine/pipeline/pipelinesteps.h"

#include "metadata/exifeditor.h"
#include "metadata/metadatanotes.h"

#include <QFileInfo>

#include <exception>
#include <optional>

namespace quillet {

namespace {

bool isQuarterTurn(int rotation, int orientation) {
    if (rotation == Rotation::Clockwise || rotation == Rotation::CounterClockwise)
        return true;
    return rotation == Rotation::Automatic && orientation >= 5 && orientation <= 8;
}

// Whether the picture is turned or mirrored before it is sized.
bool turns(int rotation, int orientation) {
    if (rotation == Rotation::Clockwise || rotation == Rotation::CounterClockwise ||
        rotation == Rotation::HalfTurn)
        return true;
    return rotation == Rotation::Automatic && orientation >= 2 && orientation <= 8;
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
        Geometry::Processed processed = Geometry::processImage(
            opened.picture, {}, Rotation::None, request.sizing, request.output.canvasBackground());
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

void finish(RenderedFile& out, const RenderSettings& settings, const Picture& loaded, int rotation,
            int orientation, std::optional<Geometry::Processed>& processed);

// The orientation a viewer goes by: the first directory's, in the EXIF of a
// JPEG, or what another format's decoder read.
int shownOrientation(const SourceMetadata& source) {
    const int orientation = source.isJpeg
                                ? int(ExifEditor(source.exif).shortValue(ExifEditor::TagOrientation))
                                : source.orientation;
    return orientation >= 1 && orientation <= 8 && !source.decodedUpright ? orientation : 1;
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

    MetadataNotes notes;
    const DecoderWarnings warnings(notes);
    out.source = SourceMetadata::read(out.path);
    const MetadataPolicy policy = request.output.metadata;
    // An output without metadata has no orientation to be shown by: its
    // pixels are turned upright instead, unless a turn was asked for. They
    // are turned as viewers show them, by the main picture's orientation.
    const bool upright = policy == MetadataPolicy::None && request.rotation == Rotation::None;
    const int shown = upright ? shownOrientation(out.source) : 1;
    if (request.output.keepsHeader())
        out.metadataRemoved = MetadataStrip::apply(out.source, policy);
    const int rotation = upright ? int(Rotation::Automatic) : request.rotation;
    const int orientation = upright ? shown
                            : rotation == Rotation::Automatic
                                ? PipelineSteps::orientationOf(out.path, out.source, &notes)
                                : 1;
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
            // The line below says it all; the decoder's complaints would only repeat it.
            out.status = RenderedFile::Corrupted;
            out.pictureLog.writeWarningActivity(
                QStringLiteral("Unable to open '%1' - file may be corrupted\n").arg(file.fileName()));
            return;
        }
    }
    out.status = RenderedFile::Rendered;
    out.pictureLog.writeActivity(QStringLiteral("Processing '%1'\n").arg(file.fileName()));
    if (settings.needsInfo)
        out.info = KVImageInfo::fromFile(out.path, true, false, &notes);
    notes.writeDamage(out.pictureLog, file.fileName());
    try {
        finish(out, settings, loaded.picture, rotation, orientation, processed);
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

// Geometry, colours, watermarks and encoding of a loaded picture, or of one
// already drawn from the decoder.
void finish(RenderedFile& out, const RenderSettings& settings, const Picture& loaded, int rotation,
            int orientation, std::optional<Geometry::Processed>& processed) {
    const ProcessingRequest& request = settings.request;
    if (!processed)
        processed = Geometry::processImage(
            loaded, [orientation] { return orientation; }, rotation, request.sizing,
            request.output.canvasBackground());
    Picture& picture = processed->picture;
    out.autoRotated = processed->autoRotated;
    out.pictureLog.writeActivity(
        QString::asprintf("\tDimension: %.0f x %.0f\n", picture.width, picture.height));
    if (settings.thumbnails && settings.thumbnails->take()) {
        // The thumbnail is only shown; the file is written without it. A
        // picture drawn straight from the decoder is shown as drawn.
        try {
            out.thumbnail =
                PipelineSteps::thumbnail(loaded.image.get_image() ? loaded : picture).copy_memory();
        } catch (const std::exception&) {
            vips_error_clear();
        }
    }
    // Without a profile a picture is shown as sRGB, so one that goes is
    // converted first and its colours stay as they were.
    const bool dropsProfile = request.output.metadata == MetadataPolicy::None;
    QByteArray profile = request.output.convertToSrgb || dropsProfile
                             ? ColourProfile::convertToSrgb(picture, out.source.iccProfile)
                             : out.source.iccProfile;
    if (dropsProfile && !profile.isEmpty()) {
        profile.clear();
        out.metadataRemoved.profile = true;
    }
    out.textSizeCapped = PipelineSteps::drawWatermarks(picture, request, settings.watermark,
                                                       out.info ? &*out.info : nullptr, out.pictureLog);
    out.width = picture.image.width();
    out.height = picture.image.height();
    out.bytes = PipelineSteps::encode(picture, request, out.encoderLog, profile, out.source,
                                      processed->autoRotated, &out.jpegQuality);
    // The input's bytes carry all its metadata, whatever the policy.
    if (request.output.keepSmallerOriginal && request.output.metadata == MetadataPolicy::Keep &&
        !out.bytes.isEmpty()) {
        if (std::optional<QByteArray> original =
                SmallerOriginal::ifSmaller(out.path, request.output.format, out.bytes.size())) {
            out.encoderLog.writeActivity(QStringLiteral("\tKept the original (%1 bytes): the output would be "
                                                        "larger (%2 bytes)\n")
                                             .arg(original->size())
                                             .arg(out.bytes.size()));
            out.bytes = *std::move(original);
            out.keptOriginal = true;
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
