#include "app/widgets/inplace/inplacewindow.h"

#include "app/models/inplacemodel.h"
#include "app/widgets/inplace/inplacedroptarget.h"
#include "app/widgets/inplace/inplaceprogresssheet.h"
#include "app/widgets/sheets/filechooser.h"
#include "app/widgets/sheets/sheets.h"
#include "settings/userdefaults.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace quillet {

namespace {

constexpr char FrameKey[] = "InplaceWindowAutosave";
constexpr int GrowMilliseconds = 200;

using Glyph = InplaceDropTarget::Glyph;

QLabel* note(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

} // namespace

InplaceWindow::InplaceWindow(InplaceModel& model, Sheets& sheets, UserDefaults& defaults, QWidget* parent)
    : QWidget(parent, Qt::Window), m_model(model), m_sheets(sheets), m_defaults(defaults),
      m_tabs(new QTabWidget(this)), m_progress(new InplaceProgressSheet(model, this)) {
    setObjectName(QStringLiteral("inplaceWindow"));
    setWindowTitle(tr("In-Place Operations"));
    m_tabs->setObjectName(QStringLiteral("inplaceTabs"));
    m_tabs->addTab(buildRotationTab(), tr("Rotation"));
    m_tabs->addTab(buildDatesTab(), tr("File Dates"));
    m_tabs->addTab(buildIconsTab(), tr("Custom Icons"));

    m_helpButton = new QPushButton(tr("Help"), this);
    m_helpButton->setObjectName(QStringLiteral("inplaceHelpButton"));
    m_helpButton->setAutoDefault(false);
    m_help = new QTextBrowser(this);
    m_help->setObjectName(QStringLiteral("inplaceHelp"));
    m_help->setOpenLinks(false);
    m_help->setMinimumHeight(0);
    m_help->setHtml(tr(
        "<p><b>Everything here changes the files you drop, where they are.</b> Nothing is re-encoded, so "
        "no quality is lost.</p>"
        "<p><b>Rotation</b> turns JPEG pictures a quarter turn either way or half a turn. <i>Auto-Rotate</i> "
        "stands each picture upright as the camera's orientation tag says, then sets the tag to upright; "
        "pictures already upright are skipped. Other kinds of picture are left as they are and listed at "
        "the end. With <i>Keep originals</i> on, each original goes into a folder named \"Quillet "
        "Originals\" beside it, and <i>Undo Last Rotation</i> puts them back as they were, dates "
        "included, as long as neither they nor the turned files have changed since.</p>"
        "<p><b>File Dates</b> sets each file's creation date (and, if you choose, its modification date) "
        "to the moment the picture was taken, from its EXIF data. Files without one are left alone.</p>"
        "<p><b>Custom Icons</b> gives each file an icon made from its picture, or takes it away again.</p>"
        "<p>Drop files on a target, or click it to choose them. The activity log lists what was done.</p>"));
    m_help->hide();

    auto* bottom = new QHBoxLayout;
    bottom->addWidget(note(tr("Drop files on a target to change them in place."), this), 1);
    bottom->addWidget(m_helpButton);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs, 1);
    layout->addLayout(bottom);
    layout->addWidget(m_help, 1);

    m_grow = new QPropertyAnimation(this, "size", this);
    m_grow->setDuration(GrowMilliseconds);
    m_grow->setEasingCurve(QEasingCurve::OutCubic);

    m_restoring = true;
    resize(620, 300);
    const QByteArray frame = m_defaults.value(QLatin1String(FrameKey)).toByteArray();
    if (!frame.isEmpty())
        restoreGeometry(frame);
    m_restoring = false;

    connect(m_helpButton, &QPushButton::clicked, this, &InplaceWindow::toggleHelp);
    connect(&m_model, &InplaceModel::runningChanged, this, &InplaceWindow::runningChanged);
    connect(&m_model, &InplaceModel::undoAvailableChanged, m_undo, &QWidget::setVisible);
    connect(&m_model, &InplaceModel::alertRaised, this, [this](const QString& title, const QString& message) {
        m_sheets.runMessageSheet(this, title, message);
    });
}

InplaceDropTarget* InplaceWindow::addTarget(InplaceAction action, int glyph, const QString& title,
                                            const QString& name) {
    auto* target = new InplaceDropTarget(static_cast<Glyph>(glyph), title, this);
    target->setObjectName(name);
    connect(target, &InplaceDropTarget::pathsDropped, this,
            [this, action](const QStringList& paths) { m_model.drop(action, paths); });
    connect(target, &QAbstractButton::clicked, this, [this, action] { chooseFor(action); });
    m_targets.append({action, target});
    return target;
}

InplaceDropTarget* InplaceWindow::target(InplaceAction action) const {
    for (const auto& [own, target] : m_targets)
        if (own == action)
            return target;
    return nullptr;
}

QWidget* InplaceWindow::buildRotationTab() {
    auto* tab = new QWidget(this);
    auto* targets = new QHBoxLayout;
    targets->addWidget(addTarget(InplaceAction::RotateCounterClockwise, int(Glyph::RotateLeft),
                                 tr("Rotate Left"), QStringLiteral("rotateLeftTarget")));
    targets->addWidget(addTarget(InplaceAction::RotateClockwise, int(Glyph::RotateRight), tr("Rotate Right"),
                                 QStringLiteral("rotateRightTarget")));
    targets->addWidget(addTarget(InplaceAction::Rotate180, int(Glyph::Rotate180), tr("Rotate 180°"),
                                 QStringLiteral("rotate180Target")));
    targets->addWidget(addTarget(InplaceAction::RotateAuto, int(Glyph::AutoRotate), tr("Auto-Rotate"),
                                 QStringLiteral("autoRotateTarget")));

    m_keepBackup = new QCheckBox(tr("Keep originals in a \"Quillet Originals\" folder beside them"), tab);
    m_keepBackup->setObjectName(QStringLiteral("keepBackupBox"));
    m_keepBackup->setChecked(m_model.keepBackup());
    connect(m_keepBackup, &QCheckBox::toggled, &m_model, &InplaceModel::setKeepBackup);
    m_undo = new QPushButton(tr("Undo Last Rotation"), tab);
    m_undo->setObjectName(QStringLiteral("undoRotationButton"));
    m_undo->setToolTip(tr("Puts back the originals that the last rotation kept, as they were."));
    m_undo->setAutoDefault(false);
    m_undo->setVisible(m_model.canUndo());
    connect(m_undo, &QPushButton::clicked, &m_model, &InplaceModel::undo);

    auto* options = new QHBoxLayout;
    options->addWidget(m_keepBackup, 1);
    options->addWidget(m_undo);
    auto* layout = new QVBoxLayout(tab);
    layout->addLayout(targets, 1);
    layout->addLayout(options);
    return tab;
}

QWidget* InplaceWindow::buildDatesTab() {
    auto* tab = new QWidget(this);
    m_creationOnly = new QRadioButton(tr("Set the creation date"), tab);
    m_creationOnly->setObjectName(QStringLiteral("creationDateOnlyButton"));
    m_bothDates = new QRadioButton(tr("Set the creation and modification dates"), tab);
    m_bothDates->setObjectName(QStringLiteral("bothDatesButton"));
    auto* group = new QButtonGroup(tab);
    group->addButton(m_creationOnly, 0);
    group->addButton(m_bothDates, 1);
    (m_model.setsModificationDate() ? m_bothDates : m_creationOnly)->setChecked(true);
    connect(m_bothDates, &QRadioButton::toggled, &m_model, &InplaceModel::setSetsModificationDate);

    auto* choice = new QVBoxLayout;
    choice->addStretch();
    choice->addWidget(note(tr("Sets each file's dates to the moment the picture was taken, from its EXIF "
                              "data."),
                           tab));
    choice->addWidget(m_creationOnly);
    choice->addWidget(m_bothDates);
    choice->addStretch();
    auto* layout = new QHBoxLayout(tab);
    layout->addWidget(addTarget(InplaceAction::ResetDates, int(Glyph::Dates), tr("Reset File Dates"),
                                QStringLiteral("resetDatesTarget")),
                      1);
    layout->addLayout(choice, 2);
    return tab;
}

QWidget* InplaceWindow::buildIconsTab() {
    auto* tab = new QWidget(this);
    auto* layout = new QHBoxLayout(tab);
    layout->addWidget(addTarget(InplaceAction::AddIcons, int(Glyph::AddIcon), tr("Add Icons"),
                                QStringLiteral("addIconsTarget")));
    layout->addWidget(addTarget(InplaceAction::RemoveIcons, int(Glyph::RemoveIcon), tr("Remove Icons"),
                                QStringLiteral("removeIconsTarget")));
    return tab;
}

void InplaceWindow::chooseFor(InplaceAction action) {
    if (const auto paths = FileChooser::choosePictures(m_sheets, QDir::homePath(), this))
        m_model.drop(action, *paths);
}

void InplaceWindow::showTab(int tab) {
    m_tabs->setCurrentIndex(tab);
    show();
    raise();
    activateWindow();
    m_model.setOpen(true);
}

bool InplaceWindow::isHelpShown() const {
    return m_help->isVisibleTo(this);
}

void InplaceWindow::toggleHelp() {
    // Help only ever grows the window: pressed again, it leaves it as it is.
    if (isHelpShown())
        return;
    m_help->show();
    // Downwards: the window keeps its origin.
    const int target = std::max(HelpHeight, height() + 180);
    m_grow->stop();
    m_grow->setStartValue(size());
    m_grow->setEndValue(QSize(width(), std::max(target, minimumSizeHint().height())));
    m_grow->start();
}

void InplaceWindow::runningChanged(bool running) {
    if (running) {
        m_progress->adjustSize();
        m_progress->open();
        return;
    }
    m_progress->hide();
}

void InplaceWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    // The backups may have gone (or the files changed) while the user was away.
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        m_model.refreshUndo();
}

void InplaceWindow::closeEvent(QCloseEvent* event) {
    // The application quitting closes every window: the panel then reopens
    // at the next start. Only the user's close is remembered.
    if (!parentWidget() || parentWidget()->isVisible())
        m_model.setOpen(false);
    event->accept();
}

void InplaceWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    saveFrame();
}

void InplaceWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    saveFrame();
}

void InplaceWindow::saveFrame() {
    // The frame is kept without the help, which comes up again only when asked for.
    if (!m_restoring && isVisible() && !isHelpShown() && m_grow->state() != QAbstractAnimation::Running)
        m_defaults.setValue(QLatin1String(FrameKey), saveGeometry());
}

} // namespace quillet
