#include "engine/batch/imageprocessorhelper.h"

#include "engine/batch/batchgate.h"
#include "engine/batch/batchrenderqueue.h"
#include "engine/pipeline/outputmetadata.h"
#include "engine/pipeline/outputnaming.h"
#include "engine/watermark/textwatermarkstyle.h"
#include "metadata/metadatanotes.h"
#include "support/customicon.h"
#include "support/fileattributes.h"

#include <QDir>
#include <QFileInfo>

namespace quillet {

namespace {

// Whether two paths name the same file: as strings without regard to case,
// or, for an existing output, through links to the source itself.
bool isSource(const QString& output, const QString& source) {
    if (OutputNaming::wouldOverwriteSource(output, source))
        return true;
    const QFileInfo existing(output);
    return existing.exists() && existing.canonicalFilePath() == QFileInfo(source).canonicalFilePath();
}

} // namespace

QString ImageProcessorHelper::stoppedLine(const QString& outputDir, const QString& path,
                                          const std::exception& e) {
    return QStringLiteral("Stopped in folder '%1' at '%2': %3\n")
        .arg(outputDir, QFileInfo(path).fileName(), QString::fromLocal8Bit(e.what()));
}

ImageProcessorHelper::ImageProcessorHelper(QStringList paths, QString outputDir)
    : m_paths(std::move(paths)), m_outputDir(std::move(outputDir)) {}

void ImageProcessorHelper::run(BatchContext& context, BatchGate& gate, BatchRenderQueue& queue,
                               int firstTask) {
    if (!context.fileSystem.makePath(m_outputDir)) {
        m_error = BatchError{BatchError::Code::FolderNotCreated, m_outputDir};
        return;
    }
    m_numFilesProcessed = 0;
    int index = 0;
    for (int i = 0; i < m_paths.size(); ++i) {
        if (!gate.pass())
            break;
        m_error.reset();
        const QString& path = m_paths[i];
        std::optional<vips::VImage> thumbnail;
        int result = NotAPicture;
        try {
            RenderedFile rendered = queue.take(firstTask + i);
            result = commitFile(rendered, index, context, m_outputDir, &thumbnail);
        } catch (const WriteException&) {
            m_error = BatchError{BatchError::Code::WriteFailed, m_failedFolder};
            return;
        } catch (const std::exception& e) {
            // Anything else ends the worker as a write error does, but with
            // no sheet: the log says which file stopped it and why.
            context.shell.writeWarningActivity(stoppedLine(m_outputDir, path, e));
            return;
        }
        const QString name = QFileInfo(path).fileName();
        QString status;
        if (result == Written) {
            status = QStringLiteral("Processing '%1'").arg(name);
            ++index;
        } else if (result == NotWritten) {
            status = QStringLiteral("Skipping '%1'").arg(name);
        } else {
            status = QStringLiteral("Skipping '%1'").arg(name);
            // A picture that did not open still carries all its metadata.
            const bool withheld = result == RenderedFile::Corrupted &&
                                  context.render.request.output.metadata != MetadataPolicy::Keep;
            if (context.options.copyNonImageFiles && withheld) {
                context.shell.writeWarningActivity(
                    QStringLiteral("\tNot copied: its metadata cannot be removed\n"));
            } else if (context.options.copyNonImageFiles) {
                // Only a file that is not there yet is copied; the copy's
                // failure is ignored.
                const QString destination = QDir(m_outputDir).filePath(name);
                if (context.fileSystem.copyFile(path, destination) && context.fileWritten)
                    context.fileWritten(destination);
                status = QStringLiteral("Copying '%1'").arg(name);
            }
            context.shell.writeActivity(status + QLatin1Char('\n'));
        }
        context.shell.setStatus(status, thumbnail);
        ++m_numFilesProcessed;
    }
}

int ImageProcessorHelper::processFile(const QString& path, int index, BatchContext& context,
                                      const QString& outputDir, std::optional<vips::VImage>* thumbnailOut) {
    RenderedFile rendered = renderFile(path, context.render);
    return commitFile(rendered, index, context, outputDir, thumbnailOut);
}

int ImageProcessorHelper::commitFile(RenderedFile& rendered, int index, BatchContext& context,
                                     const QString& outputDir, std::optional<vips::VImage>* thumbnailOut) {
    rendered.pictureLog.replay(context.shell);
    if (rendered.textSizeCapped && !context.textSizeCapSaid.exchange(true))
        context.shell.writeWarningActivity(
            QStringLiteral("The text watermark is drawn at %1 pixels at most, the largest size the text "
                           "renderer draws; larger pictures get it at that size\n")
                .arg(kLargestFontSize));
    if (rendered.status == RenderedFile::Failed)
        return NotWritten; // the log says why; nothing to copy in its place
    if (rendered.status != RenderedFile::Rendered)
        return rendered.status;
    const QString outputPath = writeImage(rendered, index, context, outputDir);
    if (outputPath.isEmpty())
        return NotWritten;

    const ProcessingRequest& request = context.render.request;
    // WebP, AVIF and JPEG XL got the metadata from their encoder; an input
    // kept as it was has its own.
    const bool keepsHeader = request.output.keepsHeader() && !rendered.keptOriginal;
    const MetadataPolicy policy = request.output.metadata;
    if (keepsHeader && FileFormat::isModern(request.output.format) && !rendered.source.exif.isEmpty())
        context.shell.writeActivity(QStringLiteral("\tEXIF copied\n"));
    if (keepsHeader && request.output.format == FileFormat::Jpeg && policy != MetadataPolicy::Keep) {
        // Nothing is left to copy under None; the encoder wrote the resolution.
        if (policy != MetadataPolicy::None) {
            MetadataNotes notes;
            OutputMetadata::preserve(rendered.path, rendered.source, outputPath, request.output.dpi(),
                                     rendered.autoRotated, context.fileSystem, &notes, policy);
            notes.writeDamage(context.shell, QFileInfo(rendered.path).fileName());
            if (!rendered.source.exif.isEmpty())
                context.shell.writeActivity(QStringLiteral("\tEXIF copied\n"));
        }
    } else if (keepsHeader && request.output.format == FileFormat::Jpeg) {
        MetadataNotes notes;
        const int copied =
            OutputMetadata::preserve(rendered.path, rendered.source, outputPath, request.output.dpi(),
                                     rendered.autoRotated, context.fileSystem, &notes);
        notes.writeDamage(context.shell, QFileInfo(rendered.path).fileName());
        // The copy returns 1 when it rewrote the output; the log reads the
        // result the other way round, which users of the original know.
        if (copied != 0)
            context.shell.writeWarningActivity(QStringLiteral("\tUnable to read and copy EXIF\n"));
        else
            context.shell.writeActivity(QStringLiteral("\tEXIF copied\n"));
        // The pixels are upright now; a copied orientation would turn them again.
        if (rendered.autoRotated)
            KVImageInfo::setOrientation(1, outputPath, context.fileSystem);
    }
    if (policy != MetadataPolicy::Keep && !rendered.keptOriginal) {
        const QString removed = rendered.metadataRemoved.summary();
        context.shell.writeActivity(QStringLiteral("\tMetadata removed: %1\n")
                                        .arg(removed.isEmpty() ? QStringLiteral("nothing") : removed));
    }
    setAttributes(rendered, outputPath, context);
    if (thumbnailOut)
        *thumbnailOut = rendered.thumbnail;
    return Written;
}

void ImageProcessorHelper::setAttributes(const RenderedFile& rendered, const QString& outputPath,
                                         BatchContext& context) const {
    const BatchOptions& options = context.options;
    const QDateTime taken = rendered.info ? rendered.info->creationDate() : QDateTime();
    // The modification date is the taking date too, not the file's own.
    const QDateTime creation = options.setCreationDate ? taken : QDateTime();
    const QDateTime modification = options.setModificationDate ? taken : QDateTime();
    FileAttributes::setAttributes(outputPath, context.creator, context.render.request.output.format,
                                  options.hideExtension, creation, modification, context.fileSystem);
    if (options.customIcon)
        CustomIcon::setForFile(outputPath);
}

QString ImageProcessorHelper::writeImage(RenderedFile& rendered, int index, BatchContext& context,
                                         const QString& outputDir) {
    BatchShell& shell = context.shell;
    const int format = context.render.request.output.format;
    const QString base = OutputNaming::baseName(rendered.path);
    // An unknown rename type names nothing; the input name is the safe choice.
    const QString name =
        context.renamer.nameFromInputName(base, rendered.info ? &*rendered.info : nullptr, index)
            .value_or(base);
    QString path = OutputNaming::outputPathForName(name, outputDir, format);
    if (context.renamer.renameType() == Renamer::Date) {
        for (int n = 1; QFileInfo::exists(path); ++n)
            path = OutputNaming::outputPathForName(name + context.renamer.conflictResolverForIndex(n),
                                                   outputDir, format);
    }

    if (isSource(path, rendered.path)) {
        if (!m_skipOverwrite) {
            m_skipOverwrite = true;
            shell.beginOverwriteWarningSheet();
        }
        shell.writeActivity(QStringLiteral("\tFilename: %1\n").arg(path));
        shell.writeActivity(QStringLiteral("\tSource cannot be over-written. Skipping.\n"));
        return {};
    }
    if (checkPathExists(path, shell)) {
        shell.writeActivity(QStringLiteral("\tFilename: %1\n").arg(path));
        shell.writeActivity(QStringLiteral("\tSkipping duplicate\n"));
        return {};
    }

    rendered.encoderLog.replay(shell);
    if (!context.fileSystem.writeAtomically(path, rendered.bytes)) {
        const QString warning = QStringLiteral("Unable to write %1\n").arg(path);
        shell.writeWarningActivity(warning);
        m_failedFolder = QFileInfo(path).path();
        throw WriteException(warning.toStdString());
    }
    shell.writeActivity(QStringLiteral("\tFilename: %1\n").arg(path));
    m_lastOutputPath = path;
    if (context.fileWritten)
        context.fileWritten(path);
    return path;
}

bool ImageProcessorHelper::checkPathExists(const QString& path, BatchShell& shell) {
    if (OutputNaming::isUnderTmp(path) || m_replaceAll)
        return false;
    if (!QFileInfo::exists(path))
        return false;
    if (m_skipAll)
        return true;
    switch (shell.confirmReplace(path)) {
    case BatchShell::Replace:
        return false;
    case BatchShell::SkipAll:
        m_skipAll = true;
        return true;
    case BatchShell::ReplaceAll:
        m_replaceAll = true;
        return false;
    default:
        return true;
    }
}

} // namespace quillet
