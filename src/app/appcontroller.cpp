#include "app/appcontroller.h"

#include "app/desktopservices.h"
#include "app/filechooser.h"
#include "app/foldernamesheet.h"
#include "app/renamepanel.h"
#include "app/sheets.h"
#include "engine/batch/batchoptions.h"
#include "support/settingsstore.h"

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

AppController::AppController(Sheets& sheets, DesktopServices& desktop, QObject* parent)
    : QObject(parent), m_store(SettingsStore::open()), m_defaults(*m_store), m_renamer(*m_store),
      m_sheets(sheets), m_desktop(desktop), m_destinations(m_defaults), m_creators(m_defaults),
      m_shell(m_log, sheets), m_pauseTitle(tr("Pause")) {
    m_job = std::make_unique<ImageProcessor>(m_shell, m_renamer);
    // The window starts with the settings it was left with, which are also
    // what the command-line tool uses with the same store.
    m_settings.loadRecord(m_defaults.processingParams());
    connect(&m_settings, &SettingsModel::changed, this, &AppController::storeSettings);
    connect(&m_shell, &GuiShell::progressBegan, this, [this](int total) {
        m_progressMaximum = total;
        setProgress(0);
        Q_EMIT progressSheetShown(true);
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
    m_sheets.dismissAll(BatchShell::Skip);
    m_job->cancel();
    m_job.reset();
}

QString AppController::desktopFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
}

ProcessingParams AppController::currentSetting() {
    const ProcessingParams params = m_settings.currentSetting();
    m_defaults.setProcessingParams(params);
    return params;
}

void AppController::storeSettings() {
    // A resolution field emptied for typing a new value is not stored: the
    // record would be set back to 72 under the user's fingers.
    if (m_settings.resolution().value >= 1)
        m_defaults.setProcessingParams(m_settings.currentSetting());
}

void AppController::chooseCreator() {
    const int previous = m_creators.selectedIndex();
    const auto path = FileChooser::chooseApplication(m_sheets, QStringLiteral("/usr/share/applications"));
    if (path) {
        if (const auto creator = CreatorMenu::creatorWithPath(*path)) {
            m_creators.add(*creator);
            Q_EMIT creatorsChanged();
            return;
        }
        m_sheets.runMessageSheet(tr("No Creator Code"),
                                 tr("The application '%1' does not have a creator code.")
                                     .arg(CreatorMenu::applicationName(*path)));
    }
    m_creators.select(previous);
    Q_EMIT creatorsChanged();
}

void AppController::setupRename() {
    SheetRequest request;
    request.title = tr("Rename");
    request.makeDialog = [this](QWidget* window) {
        m_renamer.readFromDefaults(*m_store);
        auto* panel = new RenamePanel(m_renamer, window);
        panel->showScheme();
        return panel;
    };
    request.readAnswer = [](QDialog*, int result) {
        return SheetAnswer{result == QDialog::Accepted ? 1 : 0, {}};
    };
    const SheetAnswer answer = m_sheets.run(std::move(request));
    m_renamer.acceptChanges(answer.code > 0, *m_store);
    Q_EMIT renameSummaryChanged(renameSummary());
}

QString AppController::renameSummary() const {
    return m_renamer.examples() ? m_renamer.examplesLine() : tr("Same as input filename");
}

void AppController::showAutoRotateHint() {
    m_sheets.runHintSheet(
        tr("Auto-Rotate Hint"),
        tr("In order for automatic rotation to work, images must be JPEGs taken with a camera "
           "that supports the EXIF orientation tag."),
        m_defaults, QStringLiteral("ShowAutoRotateHint"));
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

    m_log.clear();
    const int singleFile = m_defaults.intValue(QStringLiteral("SingleFile"));
    if (singleFile != 0 && paths.size() == 1 && QFileInfo(paths.first()).isFile()) {
        processSingleFile(paths.first(), singleFile);
        return;
    }

    const QString destination = m_destinations.selected();
    QString output = destination;
    if (m_defaults.boolValue(QStringLiteral("OnTheFlyFolder"))) {
        const auto chosen = FolderNameSheet::ask(m_sheets, destination);
        if (!chosen)
            return;
        output = *chosen;
    }
    const bool onDesktop = samePath(output, desktopFolder());
    if (paths.size() > 3 && onDesktop) {
        const int answer = m_sheets.runPromptSheet(
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
    const ProcessingParams params = currentSetting();
    if (params.boolValue(QLatin1String(ParamKey::HasFizeLimit)) &&
        m_defaults.boolValue(QStringLiteral("CustomIcon")))
        m_sheets.runHintSheet(
            tr("Thumbnail Icons Note"),
            tr("File size limits do not take into account space taken up by thumbnail icons. "
               "To ensure files not exceed the specified limit, turn off Thumbnail Icons."),
            m_defaults, QStringLiteral("ShowCustomIconHint"));
    if (onDesktop)
        QDir().mkpath(output);
    setOutputFolder(output);
    setStatus({});
    m_renamer.readFromDefaults(*m_store);
    m_job->processFiles(paths, params, output, m_creators.currentCode(),
                        BatchOptions::fromDefaults(m_defaults));
}

void AppController::processSingleFile(const QString& path, int option) {
    const ProcessingParams params = currentSetting();
    const BatchOptions options = BatchOptions::fromDefaults(m_defaults);
    if (option == 1) {
        const QString desktop = desktopFolder();
        QDir().mkpath(desktop);
        setOutputFolder(desktop);
        setProcessing(true);
        m_job->processFiles({path}, params, desktop, m_creators.currentCode(), options);
        return;
    }
    if (option != 2 && option != 3)
        return;
    // Runs here on the main thread, as the single-file run is short. The flag
    // stays set until the next batch ends.
    setProcessing(true);
    const auto output = m_job->processSingleFile(path, params, option == 2, options);
    if (!output)
        return;
    if (option == 2) {
        m_desktop.copyToClipboard(*output);
        // After the engine's own status, which is still on its way.
        QMetaObject::invokeMethod(
            this, [this] { setStatus(tr("Copied to Clipboard")); }, Qt::QueuedConnection);
    } else {
        m_desktop.openFile(*output);
    }
}

void AppController::didProcess(int processed, int total) {
    setProcessing(false);
    setPauseTitle(tr("Pause"));
    setStatus(processed == total ? tr("Processing Completed (%1 files processed)").arg(processed)
                                 : tr("Cancelled (processed %1 of %2)").arg(processed).arg(total));
    setProgress(0);
    setThumbnail({});
    if (m_quitting) {
        Q_EMIT readyToQuit();
        return;
    }
    Q_EMIT batchEnded(processed, total, m_outputFolder);
    if (m_defaults.boolValue(QStringLiteral("RevealFolder")) && !samePath(m_outputFolder, desktopFolder()))
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
    m_sheets.dismissAll(BatchShell::Skip);
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
