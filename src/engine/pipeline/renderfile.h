#pragma once

#include "engine/batch/batchlog.h"
#include "engine/picture.h"
#include "engine/pipeline/sourcemetadata.h"
#include "engine/pipeline/thumbnailpacer.h"
#include "metadata/kvimageinfo.h"
#include "settings/processingrequest.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace quillet {

// The pixel stage of one file: everything that depends only on the input file
// and the settings, and so can run ahead of the file being committed on any
// thread. Nothing here writes to disk or talks to the user.
struct RenderedFile {
    // Failed: loaded, but geometry, watermarks or colours could not be done;
    // the reason is in pictureLog and nothing is written.
    enum Status { Rendered = 0, NotAPicture = 1, Corrupted = 2, Failed = 4 };

    QString path;
    Status status = NotAPicture;
    // Log lines of loading, geometry and watermarks (before the output name is chosen).
    BatchLog pictureLog;
    // Log lines of the encoder, shown only once the file is going to be written.
    BatchLog encoderLog;
    QByteArray bytes;     // encoded output; empty when encoding failed
    int jpegQuality = -1; // the quality of `bytes` when they are a JPEG
    int width = 0;        // of the encoded picture
    int height = 0;
    bool autoRotated = false;
    // The bytes are the input's own: the output would have been larger.
    bool keptOriginal = false;
    bool textSizeCapped = false; // the text watermark is smaller than the picture asks for
    // The file's metadata record, made only when naming, watermark or dates need it.
    std::optional<KVImageInfo> info;
    std::optional<vips::VImage> thumbnail; // 64 x 64 at most, of the input picture
    // The input's profile, EXIF and XMP, cut down to what the output keeps.
    SourceMetadata source;
    MetadataRemoval metadataRemoved; // what the metadata policy took out
};

// What the pixel stage needs besides the file: shared read-only by every
// render thread of a batch.
struct RenderSettings {
    ProcessingRequest request;
    std::optional<Picture> watermark;
    bool needsInfo = false; // make RenderedFile::info
    // Which files get a RenderedFile::thumbnail; none without a pacer.
    std::shared_ptr<ThumbnailPacer> thumbnails;
};

// Loads the picture (shrunk on load when the result is at most half its size),
// rotates, sizes, draws the watermarks and encodes. Never throws.
RenderedFile renderFile(const QString& path, const RenderSettings& settings);

// The pixel stage of one file for each version of a batch, in their order.
// The header, metadata and record are read once, and the picture is decoded
// once for all versions the decoder shrinks alike (all those at most half
// the picture's size, and all those above it); each
// result is what renderFile gives for that version alone, byte for byte. A
// failure in one version leaves the others rendered. Never throws.
std::vector<RenderedFile> renderVersions(const QString& path, const std::vector<RenderSettings>& versions);

} // namespace quillet
