#include "app/widgets/sheets/sheets.h"

#include "app/widgets/sheets/confirmreplacesheet.h"
#include "app/widgets/sheets/filechooser.h"
#include "app/widgets/sheets/foldernamesheet.h"

#include "app/widgets/sheets/promptdialogs.h"
#include "settings/userdefaults.h"

#include <QAction>
#include <QDialog>
#include <QEventLoop>
#include <QScreen>
#include <QThread>
#include <QTimer>

#include <algorithm>

namespace quillet {

struct Sheets::Pending {
    SheetRequest request;
    SheetAnswer answer;
    bool done = false;
};

Sheets::Sheets(QObject* parent) : QObject(parent) {}

Sheets::~Sheets() {
    // A worker still waiting must not wait on a service that is gone.
    dismissAll(0);
}

void Sheets::runMessageSheet(const QString& title, const QString& message) {
    runPromptSheet(title, message, tr("Okay"), {}, {});
}

void Sheets::runMessageSheet(const QString& title, const QString& message, double seconds) {
    SheetRequest request;
    request.title = title;
    request.message = message;
    request.timeout = seconds;
    request.makeDialog = [title, message](QWidget* window) {
        return PromptDialogs::makeTimedMessage(window, title, message);
    };
    run(std::move(request));
}

namespace {

SheetRequest promptRequest(const QString& title, const QString& message, const QString& defaultButton,
                           const QString& alternateButton, const QString& otherButton) {
    SheetRequest request;
    request.title = title;
    request.message = message;
    request.readAnswer = PromptDialogs::readPromptAnswer;
    request.makeDialog = [=](QWidget* window) {
        return PromptDialogs::makePrompt(window, title, message, defaultButton, alternateButton, otherButton);
    };
    return request;
}

} // namespace

void Sheets::runMessageSheet(QWidget* window, const QString& title, const QString& message) {
    SheetRequest request = promptRequest(title, message, tr("Okay"), {}, {});
    request.window = window;
    run(std::move(request));
}

int Sheets::runPromptSheet(const QString& title, const QString& message, const QString& defaultButton,
                           const QString& alternateButton, const QString& otherButton) {
    return run(promptRequest(title, message, defaultButton, alternateButton, otherButton)).code;
}

void Sheets::runHintSheet(const QString& title, const QString& message, UserDefaults& defaults,
                          const QString& key) {
    if (!defaults.boolValue(key))
        return;
    // The button (or Escape, which presses it) silences the hint; closing the
    // hint from its title bar only puts it away.
    const SheetAnswer answer =
        run(promptRequest(title, message, tr("Okay"), tr("Don't show this again"), {}));
    if (answer.code == 0 && !answer.closed)
        defaults.setBool(key, false);
}

SheetAnswer Sheets::run(SheetRequest request) {
    auto pending = std::make_shared<Pending>();
    pending->request = std::move(request);
    {
        std::lock_guard lock(m_mutex);
        if (m_dismissCode)
            return SheetAnswer{*m_dismissCode, {}};
        m_waiting.push_back(pending);
    }
    // Always through the event loop, so a question asked from inside another
    // dialog's handler still waits its turn.
    m_calls.post([this] { showNext(); });
    if (QThread::currentThread() == thread()) {
        QEventLoop loop;
        connect(this, &Sheets::answered, &loop, [&loop, pending] {
            if (pending->done)
                loop.quit();
        });
        if (!pending->done)
            loop.exec();
        return pending->answer;
    }
    std::unique_lock lock(m_mutex);
    m_answeredCondition.wait(lock, [&pending] { return pending->done; });
    return pending->answer;
}

void Sheets::showNext() {
    for (;;) {
        std::shared_ptr<Pending> next;
        {
            std::lock_guard lock(m_mutex);
            if (m_current || m_waiting.empty())
                return;
            next = m_waiting.front();
            m_waiting.pop_front();
            m_current = next;
        }
        const SheetRequest& request = next->request;
        Q_EMIT sheetShown(request.title, request.message);
        if (const auto answer = testAnswer(request)) {
            finish(next, *answer);
            continue;
        }
        QWidget* window = request.window ? request.window.data() : m_window.data();
        QDialog* dialog = request.makeDialog(window);
        dialog->setWindowModality(window ? Qt::WindowModal : Qt::ApplicationModal);
        connect(dialog, &QDialog::finished, this, [this, next, dialog](int result) {
            const SheetAnswer answer =
                next->request.readAnswer ? next->request.readAnswer(dialog, result) : SheetAnswer{result, {}};
            dialog->disconnect(this);
            if (!next->request.keepDialog)
                dialog->deleteLater();
            finish(next, answer);
        });
        if (request.timeout > 0)
            QTimer::singleShot(int(request.timeout * 1000), dialog, [dialog] { dialog->done(0); });
        if (m_quit)
            dialog->addAction(m_quit);
        place(dialog);
        m_dialog = dialog;
        dialog->open();
        return;
    }
}

void Sheets::finish(const std::shared_ptr<Pending>& pending, const SheetAnswer& answer) {
    {
        std::lock_guard lock(m_mutex);
        if (pending->done)
            return;
        pending->answer = answer;
        pending->done = true;
        if (m_current == pending) {
            m_current.reset();
            m_dialog = nullptr;
        }
    }
    m_answeredCondition.notify_all();
    Q_EMIT answered();
    m_calls.post([this] { showNext(); });
}

void Sheets::beginSheet(QDialog* sheet) {
    m_sheet = sheet;
    sheet->setWindowModality(Qt::NonModal);
    if (m_quit)
        sheet->addAction(m_quit);
    if (m_window) {
        sheet->adjustSize();
        const QRect frame = m_window->geometry();
        sheet->move(frame.center().x() - sheet->width() / 2, frame.top());
    }
    sheet->show();
}

void Sheets::place(QDialog* dialog) const {
    if (!m_window || !m_sheet || !m_sheet->isVisible())
        return;
    dialog->adjustSize();
    const QSize size = dialog->size().expandedTo(dialog->minimumSizeHint());
    const QRect below = m_sheet->frameGeometry();
    QPoint at(m_window->geometry().center().x() - size.width() / 2, below.bottom() + 12);
    // Kept on the screen; it covers the sheet only when the screen is too low for both.
    if (const QScreen* screen = m_window->screen()) {
        const QRect room = screen->availableGeometry();
        at.setY(std::min(at.y(), room.bottom() - size.height()));
        at.setX(std::clamp(at.x(), room.left(), std::max(room.left(), room.right() - size.width())));
    }
    dialog->move(at);
}

void Sheets::endSheet() {
    if (m_sheet)
        m_sheet->hide();
    m_sheet = nullptr;
}

void Sheets::dismissAll(int code) {
    std::vector<std::shared_ptr<Pending>> open;
    QPointer<QDialog> dialog;
    bool keepDialog = false;
    {
        std::lock_guard lock(m_mutex);
        m_dismissCode = code;
        if (m_current) {
            open.push_back(m_current);
            keepDialog = m_current->request.keepDialog;
        }
        open.insert(open.end(), m_waiting.begin(), m_waiting.end());
        m_waiting.clear();
        dialog = m_dialog;
    }
    if (dialog) {
        dialog->disconnect(this);
        dialog->hide();
        if (!keepDialog)
            dialog->deleteLater();
    }
    for (const auto& pending : open)
        finish(pending, SheetAnswer{code, {}});
}

bool Sheets::isSheetUp() const {
    std::lock_guard lock(m_mutex);
    return m_current != nullptr;
}

int Sheets::waitingCount() const {
    std::lock_guard lock(m_mutex);
    return int(m_waiting.size());
}

void Sheets::setNextAnswer(int code, const QString& text) {
    std::lock_guard lock(m_mutex);
    m_nextAnswers.push_back(SheetAnswer{code, text});
}

void Sheets::setAnswerHook(std::function<std::optional<SheetAnswer>(const SheetRequest&)> hook) {
    std::lock_guard lock(m_mutex);
    m_hook = std::move(hook);
}

std::optional<SheetAnswer> Sheets::testAnswer(const SheetRequest& request) {
    std::function<std::optional<SheetAnswer>(const SheetRequest&)> hook;
    {
        std::lock_guard lock(m_mutex);
        if (!m_nextAnswers.empty()) {
            const SheetAnswer answer = m_nextAnswers.front();
            m_nextAnswers.pop_front();
            return answer;
        }
        hook = m_hook;
    }
    return hook ? hook(request) : std::nullopt;
}

int Sheets::confirmReplace(const QString& path) {
    return ConfirmReplaceSheet::ask(*this, path);
}

std::optional<QString> Sheets::askFolderName(const QString& destination) {
    return FolderNameSheet::ask(*this, destination);
}

std::optional<QString> Sheets::chooseApplication(const QString& startFolder) {
    return FileChooser::chooseApplication(*this, startFolder);
}

} // namespace quillet
