#include "engine/pipeline/previewrender.h"

#include "engine/pipeline/outputnaming.h"
#include "engine/pipeline/pipelinesteps.h"

#include <QFile>
#include <QFileInfo>

namespace quillet {

namespace PreviewRender {

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

vips::VImage original(const QString& path, int maxSide) {
    if (!QFileInfo(path).isFile())
        return {};
    try {
        return vips::VImage::thumbnail(QFile::encodeName(path).constData(), maxSide,
                                       vips::VImage::option()->set("height", maxSide)->set("size", "down"))
            .copy_memory();
    } catch (const vips::VError&) {
        vips_error_clear();
        return {};
    }
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
