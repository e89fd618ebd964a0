#include "app/guitest.h"
#include "app/models/activitylogmodel.h"
#include "app/widgets/log/activitylogwindow.h"
#include "settings/userdefaults.h"

#include <QPlainTextEdit>
#include <QSettings>
#include <QTextBlock>

#include <thread>

using namespace quillet;
using namespace quillet::guitest;

namespace {

class ActivityLogWindowTest : public ::testing::Test {
  protected:
    QTemporaryDir dir;
    QSettings store{dir.filePath("s.ini"), QSettings::IniFormat};
    UserDefaults defaults{store};
    ActivityLogModel model;
};

TEST_F(ActivityLogWindowTest, LinesFromTwoThreadsArriveWholeAndInOrderWithWarningsInRed) {
    ActivityLogWindow window(model, defaults);
    auto writer = [this](const QString& who, bool warning) {
        for (int i = 0; i < 3000; ++i) {
            const QString line = QStringLiteral("%1 line %2\n").arg(who).arg(i);
            warning ? model.writeWarningActivity(line) : model.writeActivity(line);
        }
    };
    std::thread a(writer, "alpha", false);
    std::thread b(writer, "beta", true);
    a.join();
    b.join();
    ASSERT_TRUE(waitFor([&] { return window.shownCount() == 6000; }));

    const QString text = window.view()->toPlainText();
    EXPECT_EQ(text, model.text());
    const QStringList lines = text.split('\n');
    int nextAlpha = 0, nextBeta = 0;
    for (const QString& line : lines) {
        if (line.startsWith("alpha line "))
            EXPECT_EQ(line.mid(11).toInt(), nextAlpha++);
        else if (line.startsWith("beta line "))
            EXPECT_EQ(line.mid(10).toInt(), nextBeta++);
        else
            ASSERT_TRUE(line.isEmpty()) << "mangled line: " << line.toStdString();
    }
    EXPECT_EQ(nextAlpha, 3000);
    EXPECT_EQ(nextBeta, 3000);
    for (QTextBlock block = window.view()->document()->begin(); block.isValid(); block = block.next()) {
        if (block.text().isEmpty())
            continue;
        const QColor colour = block.begin().fragment().charFormat().foreground().color();
        EXPECT_EQ(colour == Qt::red, block.text().startsWith("beta")) << block.text().toStdString();
    }
}

TEST_F(ActivityLogWindowTest, BacklogIsAddedAFrameShareAtATimeAndClearingEmptiesTheView) {
    ActivityLogWindow window(model, defaults);
    const int lines = ActivityLogWindow::MaxLinesPerFrame + 10;
    for (int i = 0; i < lines; ++i)
        model.writeActivity(QStringLiteral("line %1\n").arg(i));
    EXPECT_TRUE(window.flush());
    EXPECT_EQ(window.shownCount(), ActivityLogWindow::MaxLinesPerFrame);
    EXPECT_FALSE(window.flush());
    EXPECT_EQ(window.shownCount(), lines);

    model.clear();
    EXPECT_TRUE(window.view()->toPlainText().isEmpty());
    model.writeActivity("after\n");
    ASSERT_TRUE(waitFor([&] { return window.shownCount() == 1; }));
    EXPECT_EQ(window.view()->toPlainText(), "after\n");
}

TEST_F(ActivityLogWindowTest, ClosingHidesAndTheStateAndFrameAreRemembered) {
    {
        ActivityLogWindow window(model, defaults);
        window.setOpen(true);
        window.setGeometry(40, 50, 500, 300);
        waitFor([] { return false; }, 50);
        EXPECT_TRUE(defaults.boolValue("ActivityLogVisible"));
        window.close();
        EXPECT_FALSE(window.isVisible());
        EXPECT_FALSE(defaults.boolValue("ActivityLogVisible"));
    }
    ActivityLogWindow again(model, defaults);
    EXPECT_EQ(again.size(), QSize(500, 300));
}

} // namespace
