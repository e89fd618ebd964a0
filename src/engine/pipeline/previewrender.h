#pragma once

#include "engine/pipeline/renderfile.h"
#include "naming/renamer.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vips/vips8>

namespace quillet {

// One picture as the batch would write it, kept in memory.
struct PreviewResult {
    bool rendered = false;
    QString message;  // why nothing came out, when nothing did
    QByteArray bytes; // the file the batch writes, metadata included
    int width = 0;
    int height = 0;
    int quality = -1;   // the JPEG quality the size search kept; -1 for PNG and TIFF
    QString outputName; // the file name the renamer gives it
};

// A picture decoded once for the preview, shrunk on load, as stored (not
// turned), with what a quick render of it needs besides.
struct PreviewSource {
    vips::VImage pixels; // none when the file does not load
    int fullWidth = 0;   // of the picture in the file
    int fullHeight = 0;
    int orientation = 1;
    std::optional<KVImageInfo> info; // for the text watermark's fields

    bool loaded() const { return pixels.get_image() != nullptr; }
};

// The batch's own rendering of one file, run without a batch: nothing is
// written, no question is asked. Safe on any thread.
namespace PreviewRender {

// What a batch with this request and renamer would hand every render
// thread: the image watermark loaded, the file's metadata read when the
// name, the text watermark or the dates need it.
RenderSettings settingsFor(const ProcessingRequest& request, const Renamer& renamer);

// Renders `path` through renderFile, the `index`-th picture the batch writes.
PreviewResult render(const QString& path, const RenderSettings& settings, const Renamer& renamer, int index);

// Decodes `path` shrunk on load to fit `maxSide`.
PreviewSource loadSource(const QString& path, int maxSide);
// The source as the viewer sees the file: upright by its orientation.
vips::VImage original(const PreviewSource& source);
// The render at the source's reduced scale: the same turn, sizing (its
// pixel sizes scaled down with the picture), background and watermarks as
// `render`, not encoded. Quick enough to follow every change; the picture
// only, the figures come from `render`. Throws what geometry throws.
vips::VImage draft(const PreviewSource& source, const RenderSettings& settings);

// Up to `sampleSize` of `paths`, spread evenly from the first to the last,
// for estimating a whole batch from a few.
QStringList sample(const QStringList& paths, int sampleSize);

// The total a batch of `count` pictures comes to when the sampled ones gave
// `sampledBytes` together from `sampled` pictures; -1 with no sample.
qint64 estimate(qint64 sampledBytes, int sampled, int count);

} // namespace PreviewRender

} // namespace quillet
