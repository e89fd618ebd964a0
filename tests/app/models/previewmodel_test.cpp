#include "app/guitest.h"

#include "app/models/previewmodel.h"

using namespace quillet;
using namespace quillet::guitest;

namespace {

class PreviewModelTest : public GuiTest {
  protected:
    PreviewModel& preview() { return models->preview(); }
    void setWidth(int width) {
        Sizing sizing = models->settings().sizing().value();
        sizing.width = width;
        sizing.height = width;
        models->settings().sizing().edit(sizing);
    }
    bool waitForResult() {
        return waitFor([this] { return !preview().isBusy(); }, 20000) && waitFor([] { return true; }, 30);
    }
};

TEST_F(PreviewModelTest, OnlyTheNewestOfQuickChangesIsShown) {
    const QStringList pictures = makePictures(in(), 1, 200);
    preview().setActive(true);
    preview().setQueue(pictures);
    ASSERT_TRUE(waitForResult());
    ASSERT_EQ(preview().result().width, 16);

    QList<int> shown;
    QList<QSize> drawn; // drafts and files alike
    QObject::connect(&preview(), &PreviewModel::resultChanged,
                     [&] { shown.append(preview().result().width); });
    QObject::connect(&preview(), &PreviewModel::outputChanged,
                     [&] { drawn.append(preview().output().size()); });
    // Changes faster than a render: each one makes the ones before it stale.
    for (int width : {40, 60, 80, 100, 120})
        setWidth(width);
    ASSERT_TRUE(waitForResult());
    EXPECT_EQ(shown, QList<int>{120});
    ASSERT_FALSE(drawn.isEmpty());
    for (const QSize& size : drawn)
        EXPECT_EQ(size, QSize(120, 120));
    EXPECT_EQ(preview().result().height, 120);
    EXPECT_EQ(preview().output().size(), QSize(120, 120));
    EXPECT_EQ(preview().original().size(), QSize(200, 200));
}

TEST_F(PreviewModelTest, RendersOnlyWhileActive) {
    const QStringList pictures = makePictures(in(), 1, 40);
    int results = 0;
    QObject::connect(&preview(), &PreviewModel::resultChanged, [&] { ++results; });
    preview().setQueue(pictures);
    setWidth(30);
    waitFor([] { return false; }, 300);
    EXPECT_EQ(results, 0);
    EXPECT_FALSE(preview().isBusy());
    preview().setActive(true);
    ASSERT_TRUE(waitForResult());
    EXPECT_EQ(results, 1);
    EXPECT_EQ(preview().result().width, 30);
}

TEST_F(PreviewModelTest, StepsThroughFoldersAndFilesOfTheQueue) {
    makePictures(in(QStringLiteral("folder")), 3);
    const QStringList loose = makePictures(in(QStringLiteral("loose")), 1);
    testsupport::writeFile(in(QStringLiteral("folder/notes.txt")), "not a picture");
    QDir().mkpath(in(QStringLiteral("folder/sub")));
    preview().setActive(true);
    preview().setQueue({in(QStringLiteral("folder")), loose.first()});
    // Files directly in the folder, by name; subfolders are not entered.
    ASSERT_EQ(preview().queue().size(), 5);
    EXPECT_TRUE(preview().queue().last().endsWith("loose/pic00.jpg"));
    EXPECT_TRUE(preview().currentPath().endsWith("folder/notes.txt"));
    EXPECT_FALSE(preview().canGoPrevious());
    preview().previous();
    EXPECT_EQ(preview().currentIndex(), 0);
    ASSERT_TRUE(waitForResult());
    EXPECT_FALSE(preview().result().rendered);
    EXPECT_TRUE(preview().result().message.contains("notes.txt"));

    for (int i = 0; i < 3; ++i)
        preview().next();
    preview().next();
    EXPECT_FALSE(preview().canGoNext());
    preview().next();
    EXPECT_EQ(preview().currentIndex(), 4);
    ASSERT_TRUE(waitForResult());
    EXPECT_TRUE(preview().result().rendered);
    EXPECT_EQ(preview().result().outputName, "pic00.jpg");
}

TEST_F(PreviewModelTest, BatchEstimateScalesTheSampleToTheQueue) {
    // Eight copies of one picture: every sampled file is the same size, so
    // the estimate is exactly eight of them.
    const QStringList one = makePictures(in(QStringLiteral("src")), 1, 64);
    QStringList queue;
    for (int i = 0; i < 8; ++i) {
        const QString copy = in(QStringLiteral("copy%1.jpg").arg(i));
        QFile::copy(one.first(), copy);
        queue.append(copy);
    }
    preview().setActive(true);
    preview().setQueue(queue);
    ASSERT_TRUE(waitFor([this] { return preview().batchEstimate() >= 0; }));
    ASSERT_TRUE(preview().result().rendered);
    EXPECT_EQ(preview().batchEstimate(), 8 * preview().result().bytes.size());

    // A new queue forgets the old estimate until its own is in.
    preview().setQueue(queue.mid(0, 2));
    EXPECT_EQ(preview().batchEstimate(), -1);
    ASSERT_TRUE(waitFor([this] { return preview().batchEstimate() >= 0; }));
    EXPECT_EQ(preview().batchEstimate(), 2 * preview().result().bytes.size());
}

} // namespace
