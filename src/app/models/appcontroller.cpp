#include "app/models/appcontroller.h"

#include "app/models/appmodels.h"
#include "app/models/desktopservices.h"
#include "app/models/questions.h"
#include "engine/batch/batchoptions.h"

#include <QDir>
#include <QFileInfo>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QTimer>

#include <utility>

namespace quillet {

namespace {

bool samePath(const QString& a, const QString& b) {
    return QDir::cleanPath(QFileInfo(a).absoluteFilePath()) ==
           QDir::cleanPath(QFileInfo(b).absoluteFilePath());
}

} // namespace

AppController::AppController(AppModels& models, Questions& questions, DesktopServices& desktop,
                             QObject* parent)
    : QObject(parent), m_models(models), m_questions(questions), m_desktop(desktop),
      m_shell(models.log(), questions), m_pauseTitle(tr("Pause")) {
    m_job = std::make_unique<ImageProcessor>(m_shell, models.renaming().renamer());
    connect(&m_shell, &GuiShell::progressBegan, this, [this](int total) {
        m_progressMaximum = total;
        setProgress(0);
        Q_EMIT progressSheetShown(true);
    });
    connect(&m_shell, &GuiShell::progressTotalKnown, this, [this](int total) {
        m_progressMaximum = total;
        setProgress(m_progress);
    });
    connect(&m_shell, &GuiShell::progressEnded, this, [this] { Q_EMIT progressSheetShown(false); });
    connect(&m_shell, &GuiShell::statusChanged, this,
            [this](const QString& text, const QImage& thumbnail, int advance) {
                m_currentFile = text;
                Q_EMIT currentFileChanged(text);
                // The file in hand when the pause was asked for finishes
                // after it; its status keeps the pause in sight.
                setStatus(m_job->isPaused() ? tr("%1 - PAUSED").arg(text) : text);
                if (!thumbnail.isNull())
                    setThumbnail(thumbnail);
                setProgress(m_progress + advance);
            });
    connect(&m_shell, &GuiShell::batchFinished, this, &AppController::didProcess);
    // The engine's last status goes; the completion line stays on show.
    connect(&m_shell, &GuiShell::statusCleared, this, [this] {
        m_currentFile.clear();
        Q_EMIT currentFileChanged(m_currentFile);
        setThumbnail({});
    });
}

AppController::~AppController() {
    // A worker waiting for an answer must get one before the job waits for it.
    m_questions.dismissAll(BatchShell::Skip);
    m_job->cancel();
    m_job.reset();
}

QString AppController::desktopFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
}

void AppController::chooseCreator() {
    CreatorMenu& creators = m_models.creators();
    const int previous = creators.selectedIndex();
    const auto path = m_questions.chooseApplication(QStringLiteral("/usr/share/applications"));
    if (path) {
        if (const auto creator = CreatorMenu::creatorWithPath(*path)) {
            creators.add(*creator);
            Q_EMIT creatorsChanged();
            return;
        }
        m_questions.runMessageSheet(tr("No Creator Code"),
                                    tr("The application '%1' does not have a creator code.")
                                        .arg(CreatorMenu::applicationName(*path)));
    }
    creators.select(previous);
    Q_EMIT creatorsChanged();
}

void AppController::showAutoRotateHint() {
    m_questions.runHintSheet(
        tr("Auto-Rotate Hint"),
        tr("In order for automatic rotation to work, images must be JPEGs taken with a camera "
           "that supports the EXIF orientation tag."),
        m_models.defaults(), QStringLiteral("ShowAutoRotateHint"));
}

void AppController::openFile(const QString& path) {
    const bool first = m_queue.isEmpty();
    m_queue.append(path);
    if (first)
        QTimer::singleShot(0, this, &AppController::startProcessing);
}

void AppController::startProcessing() {
    const QStringList paths = std::exchange(m_queue, {});
    if (!paths.isEmpty())
        processFiles(paths);
}

void AppController::processFiles(const QStringList& paths) {
    // The questions below keep the event loop running, so a second request
    // could arrive while they are up.
    if (m_starting || m_quitting || m_job->isRunning() || paths.isEmpty())
        return;
    m_starting = true;
    const auto done = qScopeGuard([this] { m_starting = false; });
    Q_EMIT queueOpened(paths);

    UserDefaults& defaults = m_models.defaults();
    m_models.log().clear();
    const int singleFile = defaults.intValue(QStringLiteral("SingleFile"));
    if (singleFile != 0 && paths.size() == 1 && QFileInfo(paths.first()).isFile()) {
        processSingleFile(paths.first(), singleFile);
        return;
    }

    std::optional<std::vector<OutputVersion>> versions = resolvedVersions();
    if (!versions)
        return;

    const QString destination = m_models.destinations().selected();
    QString output = destination;
    if (defaults.boolValue(QStringLiteral("OnTheFlyFolder"))) {
        const auto chosen = m_questions.askFolderName(destination);
        if (!chosen)
            return;
        output = *chosen;
    }
    const bool onDesktop = samePath(output, desktopFolder());
    if (paths.size() > 3 && onDesktop) {
        const int answer = m_questions.runPromptSheet(
            tr("Clutter warning"),
            tr("This operation will create %1 files on your Desktop. Would you like to proceed anyway?")
                .arg(paths.size()),
            tr("Proceed"), tr("Cancel"), {});
        if (answer != 1)
            return;
    }
    if (m_quitting)
        return;

    setProcessing(true);
    const ProcessingRequest request = m_models.settings().request();
    if (request.output.hasSizeLimit && defaults.boolValue(QStringLiteral("CustomIcon")))
        m_questions.runHintSheet(
            tr("Thumbnail Icons Note"),
            tr("File size limits do not take into account space taken up by thumbnail icons. "
               "To ensure files not exceed the specified limit, turn off Thumbnail Icons."),
            defaults, QStringLiteral("ShowCustomIconHint"));
    if (onDesktop)
        QDir().mkpath(output);
    setOutputFolder(output);
    setStatus({});
    m_models.renaming().reload();
    m_job->processFiles(paths, std::move(*versions), output, m_models.creators().currentCode(),
                        BatchOptions::fromDefaults(defaults));
}

std::optional<std::vector<OutputVersion>> AppController::resolvedVersions() {
    // A version that cannot run stops the batch before anything is asked or written.
    VersionList::Resolved versions = m_models.versions().resolve(m_models.settings().request());
    if (!versions.error.isEmpty()) {
        m_questions.runMessageSheet(tr("Versions"),
                                    tr("The batch cannot start: %1. Remove it from the versions, or add "
                                       "the preset again.")
                                        .arg(versions.error));
        return std::nullopt;
    }
    return std::move(versions.versions);
}

void AppController::processSingleFile(const QString& path, int option) {
    const ProcessingRequest request = m_models.settings().request();
    const BatchOptions options = BatchOptions::fromDefaults(m_models.defaults());
    if (option == 1) {
        // A batch of one file onto the desktop, every version of it; the
        // clipboard and the image viewer below take one picture, the current
        // settings'.
        std::optional<std::vector<OutputVersion>> versions = resolvedVersions();
        if (!versions)
            return;
        const QString desktop = desktopFolder();
        QDir().mkpath(desktop);
        setOutputFolder(desktop);
        setProcessing(true);
        m_job->processFiles({path}, std::move(*versions), desktop, m_models.creators().currentCode(),
                            options);
        return;
    }
    if (option != 2 && option != 3)
        return;
    setProcessing(true);
    const bool toClipboard = option == 2;
    const bool started = m_job->processSingleFile(path, request, toClipboard, options,
                                                  [this, toClipboard](const std::optional<QString>& output) {
                                                      // Behind the run's own status line.
                                                      m_shell.postAfterStatus([this, toClipboard, output] {
                                                          didProcessSingleFile(output, toClipboard);
                                                      });
                                                  });
    if (!started)
        setProcessing(false);
}

void AppController::didProcessSingleFile(const std::optional<QString>& output, bool toClipboard) {
    setProcessing(false);
    setProgress(0);
    if (m_quitting) {
        Q_EMIT readyToQuit();
        return;
    }
    if (!output)
        return;
    if (toClipboard) {
        m_desktop.copyToClipboard(*output);
        setStatus(tr("Copied to Clipboard"));
    } else {
        m_desktop.openFile(*output);
    }
}

void AppController::didProcess(int processed, int total) {
    setProcessing(false);
    setPauseTitle(tr("Pause"));
    if (total == BatchShell::UnknownTotal)
        setStatus(tr("Cancelled while listing the files"));
    else
        setStatus(processed == total ? tr("Processing Completed (%1 files processed)").arg(processed)
                                     : tr("Cancelled (processed %1 of %2)").arg(processed).arg(total));
    setProgress(0);
    setThumbnail({});
    if (m_quitting) {
        Q_EMIT readyToQuit();
        return;
    }
    Q_EMIT batchEnded(processed, total, m_outputFolder);
    if (m_models.defaults().boolValue(QStringLiteral("RevealFolder")) &&
        !samePath(m_outputFolder, desktopFolder()))
        m_desktop.revealFolder(m_outputFolder);
}

void AppController::pause() {
    if (!m_job->isRunning())
        return;
    if (m_job->pause()) {
        setStatus(tr("%1 - PAUSED").arg(m_status));
        setPauseTitle(tr("Resume"));
    } else {
        setPauseTitle(tr("Pause"));
    }
}

void AppController::cancel() {
    setPauseTitle(tr("Pause"));
    m_job->cancel();
}

bool AppController::requestQuit() {
    m_quitting = true;
    m_job->cancel();
    // Unblocks a worker waiting for an answer, and a question of our own.
    m_questions.dismissAll(BatchShell::Skip);
    return !m_job->isRunning();
}

void AppController::setStatus(const QString& status) {
    m_status = status;
    Q_EMIT statusChanged(status);
}

void AppController::setThumbnail(const QImage& thumbnail) {
    m_thumbnail = thumbnail;
    Q_EMIT thumbnailChanged(thumbnail);
}

void AppController::setProgress(int value) {
    m_progress = value;
    Q_EMIT progressChanged(m_progress, m_progressMaximum);
}

void AppController::setPauseTitle(const QString& title) {
    m_pauseTitle = title;
    Q_EMIT pauseTitleChanged(title);
}

void AppController::setProcessing(bool processing) {
    m_processing = processing;
    Q_EMIT processingChanged(processing);
}

void AppController::setOutputFolder(const QString& folder) {
    m_outputFolder = folder;
    Q_EMIT outputFolderChanged(folder);
}

} // namespace quillet
