#include "app/widgets/main/mainwindow.h"

#include "app/models/appcontroller.h"
#include "app/models/appmodels.h"
#include "app/models/desktopservices.h"
#include "app/models/helpbook.h"
#include "app/models/updatecontroller.h"
#include "app/models/windowtitle.h"
#include "app/widgets/about/aboutbox.h"
#include "app/widgets/inplace/inplacewindow.h"
#include "app/widgets/inspector/inspectorwindow.h"
#include "app/widgets/log/activitylogwindow.h"
#include "app/widgets/main/brushedmetal.h"
#include "app/widgets/main/droparea.h"
#include "app/widgets/prefs/preferencessheet.h"
#include "app/widgets/presets/presetbar.h"
#include "app/widgets/preview/previewpane.h"
#include "app/widgets/settings/settingspanel.h"
#include "app/widgets/sheets/filechooser.h"
#include "app/widgets/sheets/progresssheet.h"
#include "app/widgets/sheets/sheets.h"
#include "app/widgets/views/commandcombobox.h"
#include "app/widgets/views/wheelguard.h"
#include "settings/settingsschema.h"

#include <QAction>
#include <QCloseEvent>
#include <QDir>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QTimer>
#include <QUrl>

namespace quillet {

namespace {

constexpr char FrameKey[] = "KVmainWindowAutosave";
constexpr char PreviewKey[] = "PreviewVisible";

QString displayPath(const QString& path) {
    const QString home = QDir::homePath();
    if (path == home || path.startsWith(home + QLatin1Char('/')))
        return QLatin1Char('~') + path.mid(home.size());
    return path;
}

} // namespace

MainWindow::MainWindow(AppController& controller, AppModels& models, Sheets& sheets, QWidget* parent)
    : QMainWindow(parent), m_controller(controller), m_models(models), m_sheets(sheets),
      m_dropArea(new DropArea(this)), m_destinations(new CommandComboBox(this)),
      m_presets(new PresetBar(models.presets(), controller, sheets, this)),
      m_settings(new SettingsPanel(controller, models, sheets, this)),
      m_preview(new PreviewPane(models.preview(), this)), m_progress(new ProgressSheet(controller, this)),
      m_log(new ActivityLogWindow(models.log(), models.defaults(), this)),
      m_updates(new UpdateController(models.defaults(), sheets, controller.desktop(), this)),
      m_inspector(new InspectorWindow(models.inspector(), models.defaults(), this)),
      m_inplace(new InplaceWindow(models.inplace(), sheets, models.defaults(), this)) {
    setObjectName(QStringLiteral("mainWindow"));
    setTitle(tr("Quillet"));
    sheets.setWindow(this);
    m_destinations->setObjectName(QStringLiteral("destinationMenu"));
    m_destinations->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_destinations->setMinimumContentsLength(28);
    // Nothing to scroll here: the wheel only acts once the menu has the focus.
    (new WheelGuard(nullptr, this))->guard(m_destinations);

    auto* destinationLabel = new QLabel(tr("Output to:"), this);
    destinationLabel->setBuddy(m_destinations);
    auto* destinationRow = new QHBoxLayout;
    destinationRow->addWidget(destinationLabel);
    destinationRow->addWidget(m_destinations, 1);

    auto* central = new QWidget(this);
    auto* grid = m_grid = new QGridLayout(central);
    grid->setContentsMargins(16, 12, 16, 12);
    grid->setHorizontalSpacing(16);
    grid->addLayout(destinationRow, 0, 0);
    grid->addWidget(m_dropArea, 1, 0);
    grid->addWidget(m_presets, 0, 1);
    grid->addWidget(m_settings, 1, 1);
    grid->addWidget(m_preview, 0, 2, 2, 1);
    grid->addWidget(buildStatusRow(), 2, 0, 1, 2);
    grid->setColumnStretch(0, 1);
    grid->setRowStretch(1, 1);
    setCentralWidget(central);
    buildMenus();
    rebuildDestinationMenu();

    // The least width is what the drop hint and the settings column need,
    // which the layout knows; the height never goes below 450.
    central->setMinimumHeight(450 - menuBar()->sizeHint().height());
    resize(models.defaults().boolValue(QLatin1String(PreviewKey)) ? 1440 : 980, 780);
    const QByteArray frame = models.defaults().value(QLatin1String(FrameKey)).toByteArray();
    if (!frame.isEmpty())
        restoreGeometry(frame);

    showPreview(models.defaults().boolValue(QLatin1String(PreviewKey)));
    m_previewAction->setChecked(m_preview->isVisibleTo(this));
    connect(&controller, &AppController::queueOpened, &models.preview(), &PreviewModel::setQueue);
    connect(m_dropArea, &DropArea::pathsDropped, &controller, &AppController::processFiles);
    connect(m_destinations, &QComboBox::activated, this, &MainWindow::destinationChosen);
    connect(&controller, &AppController::progressSheetShown, this, [this](bool shown) {
        // The sheet is not modal (closing the window must reach it), so the
        // window's inputs rest while it is up.
        for (QWidget* input : {static_cast<QWidget*>(m_dropArea), static_cast<QWidget*>(m_destinations),
                               static_cast<QWidget*>(m_settings)})
            input->setEnabled(!shown);
        if (shown)
            m_sheets.beginSheet(m_progress);
        else
            m_sheets.endSheet();
    });
    connect(&controller, &AppController::processingChanged, this, [this](bool processing) {
        for (QAction* action : std::as_const(m_idleActions))
            action->setEnabled(!processing);
        if (processing)
            m_settings->refresh();
    });
    connect(&controller, &AppController::readyToQuit, this, &QWidget::close);
    connect(m_inspector, &InspectorWindow::processRequested, &controller, &AppController::processFiles);
    connect(m_inspector, &InspectorWindow::pictureSelected, &models.preview(), &PreviewModel::showPicture);
    applyPreferences();
    // Read only here: a change takes effect at the next start.
    if (models.defaults().boolValue(QLatin1String(StoreKey::BrushMetal)))
        applyBrushedMetal(this);
    // Once the window is up; the answer comes while it is in use.
    QTimer::singleShot(0, m_updates, &UpdateController::checkAtStart);
    // Reopened once this window is up, so that it comes up above it.
    if (models.defaults().boolValue(QStringLiteral("ActivityLogVisible")))
        QTimer::singleShot(0, m_log, [this] { m_log->setOpen(true); });
    if (models.defaults().boolValue(QStringLiteral("InspectorVisible")))
        QTimer::singleShot(0, m_inspector, [this] { m_inspector->setOpen(true); });
    if (models.inplace().wasOpen())
        QTimer::singleShot(0, m_inplace, [this] { m_inplace->showTab(InplaceWindow::RotationTab); });
}

MainWindow::~MainWindow() {
    m_sheets.setWindow(nullptr);
    m_sheets.setQuitAction(nullptr);
}

void MainWindow::buildMenus() {
    QMenu* file = menuBar()->addMenu(tr("&File"));
    m_openAction = file->addAction(tr("&Open Pictures..."), this, &MainWindow::openPictures);
    m_openAction->setObjectName(QStringLiteral("actionOpen"));
    m_openAction->setShortcut(QKeySequence::Open);
    m_openFolderAction = file->addAction(tr("Open &Folder..."), this, &MainWindow::openFolder);
    m_openFolderAction->setObjectName(QStringLiteral("actionOpenFolder"));
    m_openFolderAction->setShortcut(QKeySequence(tr("Ctrl+Shift+O")));
    file->addSeparator();
    QAction* quit = file->addAction(tr("&Quit"), this, &QWidget::close);
    quit->setObjectName(QStringLiteral("actionQuit"));
    // Platforms whose key scheme has no Quit binding still get Ctrl+Q.
    const QList<QKeySequence> quitKeys = QKeySequence::keyBindings(QKeySequence::Quit);
    quit->setShortcuts(quitKeys.isEmpty() ? QList<QKeySequence>{QKeySequence(tr("Ctrl+Q"))} : quitKeys);
    m_sheets.setQuitAction(quit);

    QMenu* settings = menuBar()->addMenu(tr("&Settings"));
    QAction* watermarks =
        settings->addAction(tr("&Watermarks..."), m_settings, &SettingsPanel::showWatermarks);
    watermarks->setObjectName(QStringLiteral("actionWatermarks"));
    watermarks->setShortcut(QKeySequence(tr("Ctrl+Shift+W")));
    QAction* rename = settings->addAction(tr("&Rename..."), m_settings, &SettingsPanel::showRename);
    rename->setObjectName(QStringLiteral("actionRename"));
    rename->setShortcut(QKeySequence(tr("Ctrl+R")));
    m_idleActions = {m_openAction, m_openFolderAction, watermarks, rename};
    menuBar()->addMenu(tr("&Presets"))->addActions(m_presets->commands());

    QMenu* view = menuBar()->addMenu(tr("&View"));
    m_previewAction = view->addAction(tr("&Preview"));
    m_previewAction->setObjectName(QStringLiteral("actionPreview"));
    m_previewAction->setCheckable(true);
    m_previewAction->setShortcut(QKeySequence(tr("Ctrl+P")));
    connect(m_previewAction, &QAction::toggled, this, [this](bool shown) {
        showPreview(shown);
        // The pane takes room of its own instead of squeezing the drop area.
        if (shown && !isMaximized() && !isFullScreen() && width() < 1440)
            resize(1440, height());
        m_models.defaults().setValue(QLatin1String(PreviewKey), shown);
    });

    buildInplaceMenu();
    QMenu* window = menuBar()->addMenu(tr("&Window"));
    m_logAction = window->addAction(tr("&Activity Log"));
    m_logAction->setObjectName(QStringLiteral("actionActivityLog"));
    m_logAction->setCheckable(true);
    m_logAction->setShortcut(QKeySequence(tr("Ctrl+L")));
    connect(m_logAction, &QAction::triggered, m_log, &ActivityLogWindow::setOpen);
    connect(m_log, &ActivityLogWindow::openChanged, m_logAction, &QAction::setChecked);
    m_inspectorAction = window->addAction(tr("&Inspector"));
    m_inspectorAction->setObjectName(QStringLiteral("actionInspector"));
    m_inspectorAction->setCheckable(true);
    m_inspectorAction->setShortcut(QKeySequence(tr("Ctrl+I")));
    connect(m_inspectorAction, &QAction::triggered, m_inspector, &InspectorWindow::setOpen);
    connect(m_inspector, &InspectorWindow::openChanged, m_inspectorAction, &QAction::setChecked);
    buildHelpMenu(settings);
}

void MainWindow::buildHelpMenu(QMenu* settings) {
    settings->addSeparator();
    QAction* preferences = settings->addAction(tr("&Preferences..."), this, &MainWindow::showPreferences);
    preferences->setObjectName(QStringLiteral("actionPreferences"));
    preferences->setShortcut(QKeySequence(tr("Ctrl+,")));
    preferences->setMenuRole(QAction::PreferencesRole);

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    const QList<HelpBook::Topic> topics = HelpBook::topics();
    QAction* book =
        help->addAction(topics.first().title, this, [this, page = topics.first().page] { showHelp(page); });
    book->setObjectName(QStringLiteral("actionHelp"));
    book->setShortcut(QKeySequence::HelpContents);
    QMenu* topicMenu = help->addMenu(tr("Help &Topics"));
    for (const HelpBook::Topic& topic : topics.mid(1))
        topicMenu->addAction(topic.title, this, [this, page = topic.page] { showHelp(page); });
    help->addSeparator();
    QAction* updates = help->addAction(tr("Check for &Updates..."), m_updates, &UpdateController::checkNow);
    updates->setObjectName(QStringLiteral("actionCheckForUpdates"));
    QAction* about = help->addAction(tr("&About Quillet"), this, &MainWindow::showAbout);
    about->setObjectName(QStringLiteral("actionAbout"));
    about->setMenuRole(QAction::AboutRole);
    m_idleActions.append(preferences);
}

void MainWindow::showPreferences() {
    if (PreferencesSheet::edit(m_sheets, m_models.defaults()))
        applyPreferences();
}

void MainWindow::showAbout() {
    if (!m_about)
        m_about = new AboutBox(m_models.defaults(), m_controller.desktop(), this);
    m_about->showCentred();
}

void MainWindow::showHelp(const QString& page) {
    const QUrl url = HelpBook::url(page);
    if (url.isEmpty()) {
        m_sheets.runMessageSheet(tr("Help Not Found"),
                                 tr("The help pages are not installed. They belong in %1.")
                                     .arg(QStringLiteral("share/quillet/help")));
        return;
    }
    m_controller.desktop().openUrl(url);
}

void MainWindow::buildInplaceMenu() {
    QMenu* tools = menuBar()->addMenu(tr("&Tools"));
    const struct {
        const char* title;
        const char* name;
        int tab;
    } commands[] = {
        {QT_TR_NOOP("Lossless &Rotation..."), "actionInplaceRotation", InplaceWindow::RotationTab},
        {QT_TR_NOOP("Reset File &Dates..."), "actionInplaceDates", InplaceWindow::DatesTab},
        {QT_TR_NOOP("Custom &Icons..."), "actionInplaceIcons", InplaceWindow::IconsTab}};
    for (const auto& command : commands) {
        QAction* action = tools->addAction(tr(command.title));
        action->setObjectName(QLatin1String(command.name));
        connect(action, &QAction::triggered, m_inplace,
                [this, tab = command.tab] { m_inplace->showTab(tab); });
    }
}

void MainWindow::showPreview(bool shown) {
    m_preview->setVisible(shown);
    // A hidden pane's column would still take its share of the width.
    m_grid->setColumnStretch(2, shown ? 2 : 0);
}

QWidget* MainWindow::buildStatusRow() {
    auto* row = new QWidget(this);
    m_thumbnail = new QLabel(row);
    m_thumbnail->setObjectName(QStringLiteral("statusThumbnail"));
    m_thumbnail->setFixedSize(68, 68);
    m_thumbnail->setAlignment(Qt::AlignCenter);
    m_thumbnail->setFrameShape(QFrame::StyledPanel);
    m_status = new QLabel(tr("Ready"), row);
    m_status->setObjectName(QStringLiteral("statusLine"));
    QFont bold = m_status->font();
    bold.setBold(true);
    m_status->setFont(bold);
    m_outputFolder = new QLabel(row);
    m_outputFolder->setObjectName(QStringLiteral("outputFolderLabel"));
    m_outputFolder->setForegroundRole(QPalette::PlaceholderText);
    m_outputFolder->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* texts = new QVBoxLayout;
    texts->addStretch();
    texts->addWidget(m_status);
    texts->addWidget(m_outputFolder);
    texts->addStretch();
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 4, 0, 0);
    layout->addWidget(m_thumbnail);
    layout->addLayout(texts, 1);

    connect(&m_controller, &AppController::statusChanged, m_status,
            [this](const QString& text) { m_status->setText(text.isEmpty() ? tr("Working...") : text); });
    connect(&m_controller, &AppController::thumbnailChanged, m_thumbnail,
            [this](const QImage& image) { m_thumbnail->setPixmap(QPixmap::fromImage(image)); });
    connect(&m_controller, &AppController::outputFolderChanged, m_outputFolder,
            [this](const QString& folder) {
                m_outputFolder->setText(tr("Output folder: %1").arg(displayPath(folder)));
            });
    return row;
}

void MainWindow::rebuildDestinationMenu() {
    m_destinations->clear();
    const QStringList entries = m_models.destinations().entries();
    for (const QString& entry : entries) {
        m_destinations->addItem(displayPath(entry));
        m_destinations->setItemData(m_destinations->count() - 1, entry, Qt::ToolTipRole);
    }
    m_destinations->insertSeparator(m_destinations->count());
    m_destinations->addCommand(tr("Remove Selected Entry"));
    m_destinations->addCommand(tr("Choose a Folder ..."));
    m_destinations->setCurrentIndex(m_models.destinations().selectedIndex());
}

void MainWindow::destinationChosen(int index) {
    DestinationList& list = m_models.destinations();
    const int count = int(list.entries().size());
    if (index < count) {
        list.select(index);
    } else if (index == count + 1) {
        list.removeSelected();
    } else if (index == count + 2) {
        const auto folder =
            FileChooser::chooseFolder(m_sheets, tr("Choose a Folder"), QDir::homePath(), true);
        if (folder)
            list.add(*folder);
        else
            list.chooserCancelled();
    }
    rebuildDestinationMenu();
}

void MainWindow::openPictures() {
    if (const auto paths = FileChooser::choosePictures(m_sheets, QDir::homePath()))
        for (const QString& path : *paths)
            m_controller.openFile(path);
}

void MainWindow::openFolder() {
    if (const auto folder = FileChooser::chooseFolder(m_sheets, tr("Open Folder"), QDir::homePath()))
        m_controller.openFile(*folder);
}

void MainWindow::applyPreferences() {
    UserDefaults& defaults = m_models.defaults();
    const bool hideToolTips = defaults.boolValue(QStringLiteral("HideToolTips"));
    m_dropArea->setToolTip(hideToolTips ? QString() : tr("Drop files or folders here to start processing."));
    m_settings->setToolTipsHidden(hideToolTips);
    // The log steps aside while another application is in front, and comes
    // back with this one; whether it is open stays as the user left it.
    disconnect(qApp, &QGuiApplication::applicationStateChanged, this, nullptr);
    if (defaults.boolValue(QStringLiteral("HideOnDeactivate")))
        connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
            const bool open = m_models.defaults().boolValue(QStringLiteral("ActivityLogVisible"));
            m_log->setVisible(open && state == Qt::ApplicationActive);
        });
}

void MainWindow::setTitle(const std::optional<QString>& title) {
    m_title = title;
    setWindowTitle(shownWindowTitle(m_title, m_titleSuffix));
}

void MainWindow::setTitleSuffix(const std::optional<QString>& suffix) {
    m_titleSuffix = suffix;
    setWindowTitle(shownWindowTitle(m_title, m_titleSuffix));
}

void MainWindow::closeEvent(QCloseEvent* event) {
    saveFrame();
    if (!m_controller.requestQuit()) {
        // Back here through readyToQuit once the batch has stopped.
        m_status->setText(tr("Stopping after the current file..."));
        event->ignore();
        return;
    }
    // The last window closed ends the application.
    event->accept();
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && !m_controller.isProcessing())
        m_settings->refresh();
}

void MainWindow::saveFrame() {
    m_models.defaults().setValue(QLatin1String(FrameKey), saveGeometry());
}

} // namespace quillet
