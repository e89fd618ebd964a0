#include "engine/pipeline/previewrender.h"

#include "engine/geometry/geometry.h"
#include "engine/pipeline/outputmetadata.h"
#include "engine/pipeline/outputnaming.h"
#include "engine/pipeline/pipelinesteps.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace quillet {

namespace PreviewRender {

namespace {

// A folder held in memory where the system has one: the user's runtime
// folder or /dev/shm, both tmpfs; the temporary folder otherwise.
QString scratchBase() {
    for (const QString& base : {qEnvironmentVariable("XDG_RUNTIME_DIR"), QStringLiteral("/dev/shm")}) {
        const QFileInfo info(base);
        if (!base.isEmpty() && info.isDir() && info.isWritable())
            return base;
    }
    return QDir::tempPath();
}

// The JPEG as the batch leaves it once the input's EXIF and XMP are copied
// in. That step works on files, so the bytes pass through a scratch file
// that goes with the render; nothing is written near the user's pictures.
QByteArray withCarriedMetadata(const RenderedFile& rendered, int resolution, MetadataPolicy policy) {
    QTemporaryDir scratch(scratchBase() + QStringLiteral("/quillet-preview-XXXXXX"));
    const QString output = scratch.path() + QStringLiteral("/preview.jpg");
    FileSystem& fileSystem = FileSystem::standard();
    if (!scratch.isValid() || !fileSystem.writeAtomically(output, rendered.bytes))
        return rendered.bytes;
    OutputMetadata::carry(rendered, resolution, policy, output, fileSystem, nullptr);
    QFile file(output);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : rendered.bytes;
}

} // namespace

RenderSettings settingsFor(const ProcessingRequest& request, const Renamer& renamer) {
    RenderSettings settings;
    settings.request = request;
    const ImageWatermarkSettings& image = request.watermarks.image;
    if (request.watermarks.drawsImage() && !image.path.isEmpty())
        settings.watermark = PipelineSteps::loadWatermark(image.path);
    settings.needsInfo = renamer.renameType() == Renamer::Date || request.watermarks.drawsText();
    return settings;
}

PreviewResult render(const QString& path, const RenderSettings& settings, const Renamer& renamer, int index) {
    PreviewResult result;
    RenderedFile rendered = renderFile(path, settings);
    const QString fileName = QFileInfo(path).fileName();
    switch (rendered.status) {
    case RenderedFile::Rendered:
        break;
    case RenderedFile::NotAPicture:
        result.message = QStringLiteral("'%1' is not a picture").arg(fileName);
        return result;
    case RenderedFile::Corrupted:
        result.message = QStringLiteral("'%1' may be corrupted").arg(fileName);
        return result;
    default:
        result.message = QStringLiteral("'%1' could not be processed").arg(fileName);
        return result;
    }
    if (rendered.bytes.isEmpty()) {
        result.message = QStringLiteral("'%1' could not be encoded").arg(fileName);
        return result;
    }
    result.rendered = true;
    const OutputSettings& output = settings.request.output;
    if (output.keepsHeader() && output.format == FileFormat::Jpeg && !rendered.keptOriginal)
        result.bytes = withCarriedMetadata(rendered, output.dpi(), output.metadata);
    else
        result.bytes = std::move(rendered.bytes);
    result.width = rendered.width;
    result.height = rendered.height;
    result.quality = rendered.jpegQuality;
    const QString base = OutputNaming::baseName(path);
    const QString name =
        renamer.nameFromInputName(base, rendered.info ? &*rendered.info : nullptr, index).value_or(base);
    result.outputName =
        QFileInfo(OutputNaming::outputPathForName(name, QStringLiteral("."), settings.request.output.format))
            .fileName();
    return result;
}

PreviewSource loadSource(const QString& path, int maxSide) {
    PreviewSource source;
    if (!QFileInfo(path).isFile())
        return source;
    const QByteArray name = QFile::encodeName(path);
    try {
        const vips::VImage header = vips::VImage::new_from_file(name.constData());
        source.fullWidth = header.width();
        source.fullHeight = header.height();
        // As stored: geometry turns it, exactly as the batch does.
        source.pixels =
            vips::VImage::thumbnail(
                name.constData(), maxSide,
                vips::VImage::option()->set("height", maxSide)->set("size", "down")->set("no_rotate", true))
                .copy_memory();
    } catch (const vips::VError&) {
        vips_error_clear();
        return {};
    }
    source.orientation = PipelineSteps::orientationOf(path);
    source.info = KVImageInfo::fromFile(path, true, false);
    return source;
}

vips::VImage original(const PreviewSource& source) {
    if (!source.loaded())
        return {};
    const Picture picture{source.pixels, double(source.pixels.width()), double(source.pixels.height())};
    const int orientation = source.orientation;
    return Geometry::processImage(
               picture, [orientation] { return orientation; }, Rotation::Automatic, Sizing{}, std::nullopt)
        .picture.image;
}

vips::VImage draft(const PreviewSource& source, const RenderSettings& settings) {
    if (!source.loaded() || source.fullWidth <= 0)
        return {};
    const ProcessingRequest& request = settings.request;
    const double scale = double(source.pixels.width()) / source.fullWidth;
    const auto scaled = [scale](int side) { return side <= 0 ? side : std::max(1, int(side * scale + 0.5)); };
    Sizing sizing = request.sizing;
    sizing.width = scaled(sizing.width);
    sizing.height = scaled(sizing.height);
    const Picture picture{source.pixels, double(source.pixels.width()), double(source.pixels.height())};
    const int orientation = source.orientation;
    Picture drawn = Geometry::processImage(
                        picture, [orientation] { return orientation; }, request.rotation, sizing,
                        request.output.canvasBackground())
                        .picture;
    // The image watermark is drawn at its own pixel size, so it shrinks
    // with the picture.
    std::optional<Picture> watermark = settings.watermark;
    if (watermark && scale < 1.0) {
        watermark->image = watermark->image.resize(scale);
        watermark->width = watermark->image.width();
        watermark->height = watermark->image.height();
    }
    BatchLog log;
    PipelineSteps::drawWatermarks(drawn, request, watermark, source.info ? &*source.info : nullptr, log);
    return drawn.image;
}

QStringList sample(const QStringList& paths, int sampleSize) {
    const int count = int(paths.size());
    if (count <= sampleSize)
        return paths;
    QStringList picked;
    if (sampleSize <= 0)
        return picked;
    if (sampleSize == 1)
        return {paths.first()};
    for (int i = 0; i < sampleSize; ++i)
        picked.append(paths[int(qint64(i) * (count - 1) / (sampleSize - 1))]);
    return picked;
}

qint64 estimate(qint64 sampledBytes, int sampled, int count) {
    if (sampled <= 0)
        return -1;
    return (sampledBytes * count + sampled / 2) / sampled;
}

} // namespace PreviewRender

} // namespace quillet
