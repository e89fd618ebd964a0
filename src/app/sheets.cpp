#include "app/sheets.h"

#include "app/promptdialogs.h"
#include "settings/userdefaults.h"

#include <QDialog>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

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
    SheetRequest request{title, message, nullptr, nullptr, seconds};
    request.makeDialog = [title, message](QWidget* window) {
        return PromptDialogs::makeTimedMessage(window, title, message);
    };
    run(std::move(request));
}

int Sheets::runPromptSheet(const QString& title, const QString& message, const QString& defaultButton,
                           const QString& alternateButton, const QString& otherButton) {
    SheetRequest request{title, message, nullptr, PromptDialogs::readPromptAnswer, 0};
    request.makeDialog = [=](QWidget* window) {
        return PromptDialogs::makePrompt(window, title, message, defaultButton, alternateButton, otherButton);
    };
    return run(std::move(request)).code;
}

void Sheets::runHintSheet(const QString& title, const QString& message, UserDefaults& defaults,
                          const QString& key) {
    if (!defaults.boolValue(key))
        return;
    if (runPromptSheet(title, message, tr("Okay"), tr("Don't show this again"), {}) == 0)
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
        QDialog* dialog = request.makeDialog(m_window);
        dialog->setWindowModality(m_window ? Qt::WindowModal : Qt::ApplicationModal);
        connect(dialog, &QDialog::finished, this, [this, next, dialog](int result) {
            const SheetAnswer answer =
                next->request.readAnswer ? next->request.readAnswer(dialog, result) : SheetAnswer{result, {}};
            dialog->deleteLater();
            finish(next, answer);
        });
        if (request.timeout > 0)
            QTimer::singleShot(int(request.timeout * 1000), dialog, [dialog] { dialog->done(0); });
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
    sheet->setWindowModality(m_window ? Qt::WindowModal : Qt::NonModal);
    sheet->show();
}

void Sheets::endSheet() {
    if (m_sheet)
        m_sheet->hide();
    m_sheet = nullptr;
}

void Sheets::dismissAll(int code) {
    std::vector<std::shared_ptr<Pending>> open;
    QPointer<QDialog> dialog;
    {
        std::lock_guard lock(m_mutex);
        m_dismissCode = code;
        if (m_current)
            open.push_back(m_current);
        open.insert(open.end(), m_waiting.begin(), m_waiting.end());
        m_waiting.clear();
        dialog = m_dialog;
    }
    if (dialog) {
        dialog->disconnect(this);
        dialog->hide();
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

} // namespace quillet
