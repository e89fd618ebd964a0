#include "app/guitest.h"
#include "app/widgets/sheets/promptdialogs.h"
#include "app/widgets/sheets/sheets.h"
#include "settings/userdefaults.h"

#include <QDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

#include <future>

using namespace quillet;
using namespace quillet::guitest;

namespace {

// Asks on a worker thread, as the batch does, so the test can drive the dialog.
template <typename F> auto askOnWorker(F ask) {
    return std::async(std::launch::async, std::move(ask));
}

QDialog* waitForDialog(Sheets& sheets) {
    waitFor([&] { return sheets.currentDialog() != nullptr; }, 5000);
    return sheets.currentDialog();
}

TEST(SheetsTest, ReturnPressesTheDefaultButtonAndEscapeTheAlternate) {
    Sheets sheets;
    const std::pair<Qt::Key, int> cases[] = {{Qt::Key_Return, 1}, {Qt::Key_Escape, 0}};
    for (const auto& [key, expected] : cases) {
        auto answer =
            askOnWorker([&] { return sheets.runPromptSheet("Title", "Message", "Yes", "No", "Other"); });
        QDialog* dialog = waitForDialog(sheets);
        ASSERT_NE(dialog, nullptr);
        QTest::keyClick(dialog, key);
        ASSERT_TRUE(
            waitFor([&] { return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        EXPECT_EQ(answer.get(), expected) << "key " << key;
    }
    auto other = askOnWorker([&] { return sheets.runPromptSheet("Title", "Message", "Yes", "No", "Other"); });
    auto* box = qobject_cast<QMessageBox*>(waitForDialog(sheets));
    ASSERT_NE(box, nullptr);
    for (QAbstractButton* button : box->buttons())
        if (button->text() == "Other")
            button->click();
    ASSERT_TRUE(
        waitFor([&] { return other.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    EXPECT_EQ(other.get(), -1);
}

TEST(SheetsTest, QuestionsAreShownOneAtATimeInTheOrderAsked) {
    Sheets sheets;
    QStringList shown;
    QObject::connect(&sheets, &Sheets::sheetShown,
                     [&](const QString& title, const QString&) { shown << title; });
    auto first = askOnWorker([&] { return sheets.runPromptSheet("First", "", "A", "B", {}); });
    waitForDialog(sheets);
    auto second = askOnWorker([&] { return sheets.runPromptSheet("Second", "", "A", "B", {}); });
    ASSERT_TRUE(waitFor([&] { return sheets.waitingCount() == 1; }));

    // The user answers whatever is on show: Escape, then Return twice.
    QList<int> waitingAtEachAnswer;
    const Qt::Key keys[] = {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Return};
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
        if (!sheets.currentDialog() || waitingAtEachAnswer.size() >= 3)
            return;
        waitingAtEachAnswer << sheets.waitingCount();
        QTest::keyClick(sheets.currentDialog(), keys[waitingAtEachAnswer.size() - 1]);
    });
    user.start(20);
    // A question from the main thread waits its turn too, with the event loop
    // running meanwhile.
    const int third = sheets.runPromptSheet("Third", "", "A", "B", {});

    EXPECT_EQ(first.get(), 0);
    EXPECT_EQ(second.get(), 1);
    EXPECT_EQ(third, 1);
    EXPECT_EQ(shown, (QStringList{"First", "Second", "Third"}));
    EXPECT_EQ(waitingAtEachAnswer, (QList<int>{2, 1, 0}));
    EXPECT_FALSE(sheets.isSheetUp());
}

TEST(SheetsTest, PanelButtonsWithTheirOwnActionDoNotEndThePanel) {
    Sheets sheets;
    int helpPressed = 0;
    SheetRequest request;
    request.title = "Panel";
    request.makeDialog = [&helpPressed](QWidget* window) {
        auto* panel = new QDialog(window);
        auto* layout = new QVBoxLayout(panel);
        auto* help = new QPushButton("Help", panel);
        help->setObjectName("help");
        QObject::connect(help, &QPushButton::clicked, [&helpPressed] { ++helpPressed; });
        auto* ok = new QPushButton("OK", panel);
        ok->setObjectName("ok");
        ok->setProperty(PromptDialogs::TagProperty, 7);
        layout->addWidget(help);
        layout->addWidget(ok);
        PromptDialogs::wirePanelButtons(panel);
        return panel;
    };
    auto answer = askOnWorker([&] { return sheets.run(request).code; });
    QDialog* panel = waitForDialog(sheets);
    ASSERT_NE(panel, nullptr);
    panel->findChild<QPushButton*>("help")->click();
    EXPECT_EQ(helpPressed, 1);
    EXPECT_FALSE(waitFor([&] { return !sheets.isSheetUp(); }, 100));
    panel->findChild<QPushButton*>("ok")->click();
    ASSERT_TRUE(
        waitFor([&] { return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    EXPECT_EQ(answer.get(), 7);
}

TEST(SheetsTest, DismissAllAnswersTheQuestionOnShowTheWaitingOnesAndLaterOnes) {
    Sheets sheets;
    auto shown = askOnWorker([&] { return sheets.runPromptSheet("Shown", "", "A", "B", {}); });
    waitForDialog(sheets);
    auto waiting = askOnWorker([&] { return sheets.runPromptSheet("Waiting", "", "A", "B", {}); });
    ASSERT_TRUE(waitFor([&] { return sheets.waitingCount() == 1; }));
    sheets.dismissAll(-1);
    EXPECT_EQ(shown.get(), -1);
    EXPECT_EQ(waiting.get(), -1);
    EXPECT_EQ(sheets.runPromptSheet("Later", "", "A", "B", {}), -1);
    EXPECT_FALSE(sheets.isSheetUp());
}

TEST(SheetsTest, TimedMessageGoesAwayByItself) {
    Sheets sheets;
    QElapsedTimer timer;
    timer.start();
    sheets.runMessageSheet("Saved", "Done", 0.2);
    EXPECT_GE(timer.elapsed(), 190);
    EXPECT_FALSE(sheets.isSheetUp());
}

TEST(SheetsTest, HintClosedFromItsTitleBarStaysOnButEscapeSilencesIt) {
    QTemporaryDir dir;
    QSettings store(dir.filePath("s.ini"), QSettings::IniFormat);
    UserDefaults defaults(store);
    Sheets sheets;
    const auto askAndThen = [&](const std::function<void(QDialog*)>& user) {
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (QDialog* dialog = sheets.currentDialog(); dialog && dialog->isVisible()) {
                timer.stop();
                user(dialog);
            }
        });
        timer.start(10);
        sheets.runHintSheet("Note", "Text", defaults, "ShowCustomIconHint");
    };
    askAndThen([](QDialog* dialog) { dialog->windowHandle()->close(); });
    EXPECT_TRUE(defaults.boolValue("ShowCustomIconHint"));
    EXPECT_FALSE(sheets.isSheetUp());
    askAndThen([](QDialog* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    EXPECT_FALSE(defaults.boolValue("ShowCustomIconHint"));
}

TEST(SheetsTest, MessagesWrapAtAnAlertsWidth) {
    Sheets sheets;
    const QString message = QStringLiteral("The application 'Unsigned' does not have a creator code.");
    for (const bool timed : {false, true}) {
        int width = 0, height = 0;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (QDialog* dialog = sheets.currentDialog(); dialog && dialog->isVisible() && width == 0) {
                width = dialog->width();
                height = dialog->height();
                if (!timed)
                    QTest::keyClick(dialog, Qt::Key_Return);
            }
        });
        timer.start(10);
        if (timed)
            sheets.runMessageSheet("No Creator Code", message, 0.3);
        else
            sheets.runMessageSheet("No Creator Code", message);
        EXPECT_GE(width, PromptDialogs::MinimumWidth) << timed;
        EXPECT_LT(height, width) << timed; // a line or two, not a column
    }
}

TEST(SheetsTest, HintNotShownAgainOnceSilenced) {
    QTemporaryDir dir;
    QSettings store(dir.filePath("s.ini"), QSettings::IniFormat);
    UserDefaults defaults(store);
    Sheets sheets;
    QStringList shown;
    QObject::connect(&sheets, &Sheets::sheetShown,
                     [&](const QString& title, const QString&) { shown << title; });
    sheets.setNextAnswer(1); // Okay
    sheets.runHintSheet("Note", "Text", defaults, "ShowCustomIconHint");
    EXPECT_TRUE(defaults.boolValue("ShowCustomIconHint"));
    sheets.setNextAnswer(0); // Don't show this again
    sheets.runHintSheet("Note", "Text", defaults, "ShowCustomIconHint");
    EXPECT_FALSE(defaults.boolValue("ShowCustomIconHint"));
    sheets.runHintSheet("Note", "Text", defaults, "ShowCustomIconHint");
    EXPECT_EQ(shown, (QStringList{"Note", "Note"}));
}

} // namespace
