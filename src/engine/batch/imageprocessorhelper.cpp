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

#include <algorithm>

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

void ImageProcessorHelper::run(std::vector<ImageProcessorHelper>& outputs,
                               const std::vector<BatchContext*>& contexts, BatchGate& gate,
                               BatchRenderQueue& queue, int firstTask) {
    std::vector<bool> going(outputs.size());
    for (size_t v = 0; v < outputs.size(); ++v) {
        ImageProcessorHelper& output = outputs[v];
        output.m_numFilesProcessed = 0;
        going[v] = contexts[v]->fileSystem.makePath(output.m_outputDir);
        if (!going[v])
            output.m_error = BatchError{BatchError::Code::FolderNotCreated, output.m_outputDir};
    }
    const BatchContext& context = *contexts.front();
    std::vector<int> indexes(outputs.size(), 0);
    for (int i = 0; i < m_paths.size(); ++i) {
        if (std::none_of(going.cbegin(), going.cend(), [](bool g) { return g; }) || !gate.pass())
            break;
        const QString& path = m_paths[i];
        std::vector<RenderedFile> rendered;
        try {
            rendered = queue.take(firstTask + i);
        } catch (const std::exception& e) {
            context.shell.writeWarningActivity(stoppedLine(m_outputDir, path, e));
            break;
        }
        std::optional<vips::VImage> thumbnail;
        std::vector<int> results(outputs.size(), NotWritten);
        bool handled = false;
        for (size_t v = 0; v < outputs.size(); ++v) {
            if (going[v])
                going[v] =
                    outputs[v].commitVersion(rendered[v], indexes[v], *contexts[v], thumbnail, results[v]);
            handled = handled || going[v];
        }
        // Every version ended at this file: no status line for it.
        if (!handled)
            break;

        const QString name = QFileInfo(path).fileName();
        QString status = QStringLiteral("Skipping '%1'").arg(name);
        const auto any = [&](auto test) {
            for (size_t v = 0; v < outputs.size(); ++v)
                if (going[v] && test(results[v]))
                    return true;
            return false;
        };
        if (any([](int r) { return r == Written; })) {
            status = QStringLiteral("Processing '%1'").arg(name);
        } else if (!any([](int r) { return r == NotWritten; })) {
            if (context.options.copyNonImageFiles) {
                // Only a file that is not there yet is copied; the copy's
                // failure is ignored. A picture that did not open still
                // carries all its metadata: a version that removes some
                // does not get it.
                bool copied = false, withheld = false;
                for (size_t v = 0; v < outputs.size(); ++v) {
                    if (!going[v])
                        continue;
                    if (results[v] == RenderedFile::Corrupted &&
                        contexts[v]->render.request.output.metadata != MetadataPolicy::Keep) {
                        withheld = true;
                        continue;
                    }
                    const QString destination = QDir(outputs[v].m_outputDir).filePath(name);
                    if (contexts[v]->fileSystem.copyFile(path, destination) && contexts[v]->fileWritten)
                        contexts[v]->fileWritten(destination);
                    copied = true;
                }
                if (withheld)
                    context.shell.writeWarningActivity(
                        QStringLiteral("\tNot copied: its metadata cannot be removed\n"));
                if (copied)
                    status = QStringLiteral("Copying '%1'").arg(name);
            }
            context.shell.writeActivity(status + QLatin1Char('\n'));
        }
        context.shell.setStatus(status, thumbnail);
    }
    m_numFilesProcessed = 0;
    for (const ImageProcessorHelper& output : outputs) {
        m_numFilesProcessed = std::max(m_numFilesProcessed, output.m_numFilesProcessed);
        if (output.m_error)
            m_error = output.m_error;
    }
}

bool ImageProcessorHelper::commitVersion(RenderedFile& rendered, int& index, BatchContext& context,
                                         std::optional<vips::VImage>& thumbnail, int& result) {
    m_error.reset();
    std::optional<vips::VImage> shown;
    try {
        result = commitFile(rendered, index, context, m_outputDir, &shown);
    } catch (const WriteException&) {
        m_error = BatchError{BatchError::Code::WriteFailed, m_failedFolder};
        return false;
    } catch (const std::exception& e) {
        // Anything else ends the worker as a write error does, but with
        // no sheet: the log says which file stopped it and why.
        context.shell.writeWarningActivity(stoppedLine(m_outputDir, rendered.path, e));
        return false;
    }
    if (result == Written) {
        ++index;
        if (!thumbnail)
            thumbnail = shown;
    }
    ++m_numFilesProcessed;
    return true;
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
    if (keepsHeader && request.output.format == FileFormat::Jpeg) {
        MetadataNotes notes;
        const int copied = OutputMetadata::carry(rendered, request.output.dpi(), policy, outputPath,
                                                 context.fileSystem, &notes);
        notes.writeDamage(context.shell, QFileInfo(rendered.path).fileName());
        // The copy returns 1 when it rewrote the output; the log reads the
        // result the other way round, which users of the original know.
        if (policy == MetadataPolicy::Keep && copied != 0)
            context.shell.writeWarningActivity(QStringLiteral("\tUnable to read and copy EXIF\n"));
        else if (policy == MetadataPolicy::Keep ||
                 (policy != MetadataPolicy::None && !rendered.source.exif.isEmpty()))
            context.shell.writeActivity(QStringLiteral("\tEXIF copied\n"));
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
            .value_or(base) +
        context.nameSuffix;
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
