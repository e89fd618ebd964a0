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

#include <algorithm>
#include <exception>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

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

// How a request turns a picture: the rotation, and the orientation an
// automatic rotation goes by.
struct Turn {
    int rotation = Rotation::None;
    int orientation = 1;
};

// The orientation a viewer goes by: the first directory's, in the EXIF of a
// JPEG, or what another format's decoder read.
int shownOrientation(const SourceMetadata& source) {
    const int orientation = source.isJpeg
                                ? int(ExifEditor(source.exif).shortValue(ExifEditor::TagOrientation))
                                : source.orientation;
    return orientation >= 1 && orientation <= 8 && !source.decodedUpright ? orientation : 1;
}

// An output without metadata has no orientation to be shown by: its pixels
// are turned upright instead, unless a turn was asked for. They are turned
// as viewers show them, by the main picture's orientation. `tagged` gives
// the orientation the automatic rotation reads.
template <typename Tagged>
Turn turnFor(const ProcessingRequest& request, const SourceMetadata& source, const Tagged& tagged) {
    if (request.output.metadata == MetadataPolicy::None && request.rotation == Rotation::None)
        return {Rotation::Automatic, shownOrientation(source)};
    if (request.rotation == Rotation::Automatic)
        return {Rotation::Automatic, tagged()};
    return {request.rotation, 1};
}

// The JPEG shrink on load and the block average after it for the drawn size.
std::pair<int, int> decodeShrink(const PictureLoader::Header& header, const ProcessingRequest& request,
                                 const Turn& turn) {
    const int orientation = turn.orientation;
    const bool swap = isQuarterTurn(turn.rotation, orientation);
    const int width = swap ? header.height : header.width;
    const int height = swap ? header.width : header.height;
    const int shrink = header.isJpeg ? pipelineShrinkFactor(request.sizing, width, height) : 1;
    return {shrink, pipelineBoxShrink(request.sizing, width, height, shrink)};
}

void finish(RenderedFile& out, const RenderSettings& settings, const Picture& loaded, const Turn& turn,
            std::optional<Geometry::Processed>& processed);

void corrupted(RenderedFile& out) {
    // The line below says it all; the decoder's complaints would only repeat it.
    out.status = RenderedFile::Corrupted;
    out.pictureLog.writeWarningActivity(
        QStringLiteral("Unable to open '%1' - file may be corrupted\n").arg(QFileInfo(out.path).fileName()));
}

// finish, with a failure reported for this file (or version) alone; the
// batch goes on with the next.
void finishOrFail(RenderedFile& out, const RenderSettings& settings, const Picture& loaded, const Turn& turn,
                  std::optional<Geometry::Processed>& processed) {
    try {
        finish(out, settings, loaded, turn, processed);
    } catch (const std::exception& e) {
        vips_error_clear();
        out.status = RenderedFile::Failed;
        out.bytes.clear();
        out.pictureLog.writeWarningActivity(
            QStringLiteral("\tUnable to process '%1': %2\n")
                .arg(QFileInfo(out.path).fileName(), QString::fromLocal8Bit(e.what()).trimmed()));
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

    MetadataNotes notes;
    const DecoderWarnings warnings(notes);
    out.source = SourceMetadata::read(out.path);
    const Turn turn = turnFor(request, out.source,
                              [&] { return PipelineSteps::orientationOf(out.path, out.source, &notes); });
    if (request.output.keepsHeader())
        out.metadataRemoved = MetadataStrip::apply(out.source, request.output.metadata);
    // The decoder halves a JPEG; whatever reduction is left beyond twice the
    // drawn size, and any reduction of the other formats, is averaged away
    // while the rows stream in, so a picture of any size is held only at
    // about the size it is drawn.
    const auto [shrink, boxShrink] = decodeShrink(*header, request, turn);

    std::optional<Geometry::Processed> processed;
    if (!turns(turn.rotation, turn.orientation))
        processed = drawStreamed(out.path, *header, shrink, boxShrink, request);
    // Decoded into memory: turned pictures, copies, and whatever did not draw
    // straight from the decoder.
    PictureLoader::Result loaded;
    if (!processed) {
        loaded = PictureLoader::load(out.path, *header, shrink, boxShrink);
        if (loaded.status == PictureLoader::Status::NotAPicture)
            return;
        if (loaded.status == PictureLoader::Status::Corrupted) {
            corrupted(out);
            return;
        }
    }
    out.status = RenderedFile::Rendered;
    out.pictureLog.writeActivity(QStringLiteral("Processing '%1'\n").arg(file.fileName()));
    if (settings.needsInfo)
        out.info = KVImageInfo::fromFile(out.path, true, false, &notes);
    notes.writeDamage(out.pictureLog, file.fileName());
    finishOrFail(out, settings, loaded.picture, turn, processed);
}

// Geometry, colours, watermarks and encoding of a loaded picture, or of one
// already drawn from the decoder.
void finish(RenderedFile& out, const RenderSettings& settings, const Picture& loaded, const Turn& turn,
            std::optional<Geometry::Processed>& processed) {
    const ProcessingRequest& request = settings.request;
    if (!processed)
        processed = Geometry::processImage(
            loaded, [orientation = turn.orientation] { return orientation; }, turn.rotation, request.sizing,
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

// Every version of one file. The picture is decoded into memory, as a
// turned picture always is (streamed, it could feed one version only), once
// for all versions the decoder shrinks alike: with every version at most
// half the picture's size, once in all. Each version averages its blocks
// from that decode as its batch alone would while streaming, so its bytes
// are that batch's.
void renderEach(std::vector<RenderedFile>& outs, const std::vector<RenderSettings>& versions) {
    const QString& path = outs.front().path;
    const QFileInfo file(path);
    if (!file.isFile())
        return;
    const auto header = PictureLoader::readHeader(path);
    if (!header)
        return;

    MetadataNotes notes;
    const DecoderWarnings warnings(notes);
    const SourceMetadata source = SourceMetadata::read(path);
    const bool anyAutomatic = std::any_of(versions.cbegin(), versions.cend(), [](const RenderSettings& s) {
        return s.request.rotation == Rotation::Automatic;
    });
    const int tagged = anyAutomatic ? PipelineSteps::orientationOf(path, source, &notes) : 1;
    const auto turnOf = [&](const RenderSettings& s) {
        return turnFor(s.request, source, [tagged] { return tagged; });
    };
    // One decode per shrink on load, each version averaging its own blocks
    // from it: a version drawn from a decode shrunk otherwise than its own
    // batch would shrink it would not be that batch's file.
    std::map<int, PictureLoader::Decode> decoded;
    for (const RenderSettings& settings : versions) {
        const int factor = decodeShrink(*header, settings.request, turnOf(settings)).first;
        if (!decoded.contains(factor))
            decoded.emplace(std::piecewise_construct, std::forward_as_tuple(factor),
                            std::forward_as_tuple(path, *header, factor));
    }
    const bool needsInfo =
        std::any_of(versions.cbegin(), versions.cend(), [](const RenderSettings& s) { return s.needsInfo; });
    const std::optional<KVImageInfo> info =
        needsInfo ? KVImageInfo::fromFile(path, true, false, &notes) : std::nullopt;

    for (size_t v = 0; v < versions.size(); ++v) {
        RenderedFile& out = outs[v];
        const RenderSettings& settings = versions[v];
        const Turn turn = turnOf(settings);
        const auto [factor, box] = decodeShrink(*header, settings.request, turn);
        const PictureLoader::Result loaded = decoded.at(factor).picture(box);
        if (loaded.status == PictureLoader::Status::Corrupted) {
            corrupted(out);
            continue;
        }
        out.source = source;
        if (settings.request.output.keepsHeader())
            out.metadataRemoved = MetadataStrip::apply(out.source, settings.request.output.metadata);
        out.status = RenderedFile::Rendered;
        out.pictureLog.writeActivity(QStringLiteral("Processing '%1'\n").arg(file.fileName()));
        if (settings.needsInfo)
            out.info = info;
        notes.writeDamage(out.pictureLog, file.fileName());
        std::optional<Geometry::Processed> processed;
        finishOrFail(out, settings, loaded.picture, turn, processed);
    }
}

} // namespace

std::vector<RenderedFile> renderVersions(const QString& path, const std::vector<RenderSettings>& versions) {
    if (versions.size() == 1)
        return {renderFile(path, versions.front())};
    std::vector<RenderedFile> outs(versions.size());
    for (RenderedFile& out : outs)
        out.path = path;
    if (outs.empty())
        return outs;
    try {
        renderEach(outs, versions);
    } catch (const std::exception&) {
        vips_error_clear();
        for (RenderedFile& out : outs) {
            out.bytes.clear();
            out.thumbnail.reset();
        }
    }
    return outs;
}

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
