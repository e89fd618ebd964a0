#include "app/widgets/log/activitylogwindow.h"

#include "app/models/activitylogmodel.h"
#include "settings/userdefaults.h"

#include <QCloseEvent>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QScreen>
#include <QScrollBar>
#include <QTextBlock>
#include <QVBoxLayout>

namespace quillet {

namespace {

constexpr char FrameKey[] = "ActivityLogWindowAutosave";
constexpr char VisibleKey[] = "ActivityLogVisible";
constexpr int FrameMilliseconds = 16;

} // namespace

ActivityLogWindow::ActivityLogWindow(ActivityLogModel& model, UserDefaults& defaults, QWidget* parent)
    : QWidget(parent, Qt::Window), m_model(model), m_defaults(defaults), m_view(new QPlainTextEdit(this)) {
    setObjectName(QStringLiteral("activityLogWindow"));
    setWindowTitle(tr("Activity Log"));
    m_view->setObjectName(QStringLiteral("activityLogView"));
    m_view->setReadOnly(true);
    m_view->setUndoRedoEnabled(false);
    m_view->setLineWrapMode(QPlainTextEdit::NoWrap);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSize(10);
    m_view->setFont(font);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);

    m_restoring = true;
    resize(760, 460);
    const QByteArray frame = m_defaults.value(QLatin1String(FrameKey)).toByteArray();
    if (!frame.isEmpty())
        m_placed = restoreGeometry(frame);
    m_restoring = false;

    m_frameTimer.setSingleShot(true);
    m_frameTimer.setInterval(FrameMilliseconds);
    connect(&m_frameTimer, &QTimer::timeout, this, [this] {
        if (flush())
            m_frameTimer.start();
    });
    connect(&m_model, &ActivityLogModel::linesAdded, this, &ActivityLogWindow::linesAdded);
    connect(&m_model, &ActivityLogModel::cleared, this, &ActivityLogWindow::modelCleared);
}

void ActivityLogWindow::setOpen(bool open) {
    if (open && !m_placed) {
        m_placed = true;
        placeBesideParent();
    }
    setVisible(open);
    m_defaults.setBool(QLatin1String(VisibleKey), open);
    Q_EMIT openChanged(open);
}

void ActivityLogWindow::placeBesideParent() {
    const QWidget* owner = parentWidget();
    const QScreen* display = owner ? owner->screen() : screen();
    if (!owner || !display)
        return;
    // To the right of the main window when the screen has room, else below it.
    const QRect room = display->availableGeometry();
    const QRect main = owner->frameGeometry();
    if (main.right() + 16 + width() <= room.right())
        move(main.right() + 16, main.top());
    else if (main.bottom() + 16 + height() <= room.bottom())
        move(main.left(), main.bottom() + 16);
}

void ActivityLogWindow::linesAdded() {
    if (!m_frameTimer.isActive())
        m_frameTimer.start();
}

void ActivityLogWindow::modelCleared() {
    m_frameTimer.stop();
    m_view->clear();
    m_shown = 0;
}

bool ActivityLogWindow::flush() {
    const QList<ActivityLogModel::Entry> entries = m_model.entries(m_shown, MaxLinesPerFrame);
    if (entries.isEmpty())
        return false;
    QTextCharFormat normal;
    normal.setForeground(palette().color(QPalette::Text));
    QTextCharFormat warning;
    warning.setForeground(Qt::red);

    QTextCursor cursor(m_view->document());
    cursor.movePosition(QTextCursor::End);
    cursor.beginEditBlock();
    // One insertion per run of lines of the same kind.
    QString run;
    bool runIsWarning = entries.first().warning;
    for (const ActivityLogModel::Entry& entry : entries) {
        if (entry.warning != runIsWarning) {
            cursor.insertText(run, runIsWarning ? warning : normal);
            run.clear();
            runIsWarning = entry.warning;
        }
        run += entry.text;
    }
    cursor.insertText(run, runIsWarning ? warning : normal);
    cursor.endEditBlock();
    m_shown += entries.size();

    QScrollBar* bar = m_view->verticalScrollBar();
    bar->setValue(bar->maximum());
    return m_shown < m_model.count();
}

void ActivityLogWindow::closeEvent(QCloseEvent* event) {
    // Once the main window has closed, the application is quitting and closes
    // every window: the log goes with it and reopens at the next start.
    if (parentWidget() && !parentWidget()->isVisible()) {
        event->accept();
        return;
    }
    // Closing only hides the window, as its menu item does.
    event->ignore();
    setOpen(false);
}

void ActivityLogWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    saveFrame();
}

void ActivityLogWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    saveFrame();
}

void ActivityLogWindow::saveFrame() {
    if (!m_restoring && isVisible())
        m_defaults.setValue(QLatin1String(FrameKey), saveGeometry());
}

} // namespace quillet
