#include "app/guitest.h"
#include "app/models/activitylogmodel.h"
#include "app/models/guishell.h"
#include "app/widgets/sheets/sheets.h"

#include <thread>

using namespace quillet;
using namespace quillet::guitest;

namespace {

struct Shown {
    QString kind;
    QString text;
    int advance = 0;
    bool thumbnail = false;
};

class GuiShellTest : public ::testing::Test {
  protected:
    void SetUp() override {
        QObject::connect(&shell, &GuiShell::statusChanged,
                         [this](const QString& text, const QImage& thumbnail, int advance) {
                             shown.push_back({"status", text, advance, !thumbnail.isNull()});
                         });
        QObject::connect(&shell, &GuiShell::progressEnded, [this] {
            shown.push_back({"ended", {}, 0, false});
        });
        QObject::connect(&shell, &GuiShell::batchFinished, [this](int processed, int total) {
            shown.push_back({"finished", QString("%1/%2").arg(processed).arg(total), 0, false});
        });
    }
    int advanced() const {
        int sum = 0;
        for (const Shown& s : shown)
            sum += s.advance;
        return sum;
    }

    ActivityLogModel log;
    Sheets sheets;
    GuiShell shell{log, sheets};
    std::vector<Shown> shown;
    const vips::VImage picture = testsupport::solidImage(8, 8, 10, 20, 30);
};

// A batch of fast files: the window hears of them a frame at a time, yet the
// progress adds up to every file, the last file's name and the last thumbnail
// are what stays on show, and the end of the batch comes after them.
TEST_F(GuiShellTest, FastStatusUpdatesAreMergedAndNeverOvertakenByTheEnd) {
    constexpr int files = 200;
    std::thread batch([this] {
        for (int i = 0; i < files; ++i)
            shell.setStatus(QString("Processing 'f%1.jpg'").arg(i),
                            i == files - 2 ? std::optional(picture) : std::nullopt);
        shell.endProgressSheet();
        shell.didProcess(files, files);
    });
    ASSERT_TRUE(waitFor([this] { return !shown.empty() && shown.back().kind == "finished"; }));
    batch.join();

    ASSERT_GE(shown.size(), 3u);
    EXPECT_LT(shown.size(), size_t(files) / 4) << "updates were not merged";
    EXPECT_EQ(advanced(), files);
    const Shown& last = shown[shown.size() - 3];
    EXPECT_EQ(last.kind, "status");
    EXPECT_EQ(last.text.toStdString(), "Processing 'f199.jpg'");
    bool thumbnailShown = false;
    for (const Shown& s : shown)
        thumbnailShown = thumbnailShown || s.thumbnail;
    EXPECT_TRUE(thumbnailShown);
    EXPECT_EQ(shown[shown.size() - 2].kind, "ended");
    EXPECT_EQ(shown.back().text.toStdString(), "200/200");
}

// A status held back because the one before it was just shown still comes
// up once the frame is over, with nothing after it to carry it.
TEST_F(GuiShellTest, AHeldStatusShowsWithinAFrame) {
    std::thread first([this] { shell.setStatus("Processing 'a.jpg'", std::nullopt); });
    first.join();
    ASSERT_TRUE(waitFor([this] { return shown.size() == 1; }, 1000));
    std::thread second([this] { shell.setStatus("Processing 'b.jpg'", std::nullopt); });
    second.join();
    QElapsedTimer timer;
    timer.start();
    ASSERT_TRUE(waitFor([this] { return shown.size() == 2; }, 1000));
    EXPECT_LT(timer.elapsed(), 500);
    EXPECT_EQ(shown.back().text.toStdString(), "Processing 'b.jpg'");
}

} // namespace
