#include "inplace/inplacedelegate.h"
#include "inplace/jpegtranrunner.h"
#include "inplace/losslessprocessor.h"
#include "jpegfixtures.h"
#include "support/fileattributes.h"

#include <QFileInfo>
#include <QMutex>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <thread>

using namespace testsupport;
using namespace jpegfixtures;

namespace {

// Every callback in order, with the thread it came on.
class RecordingDelegate final : public InplaceDelegate {
  public:
    void showMessage(const QString& text) override {
        record(text);
        if (onMessage)
            onMessage(++messages);
    }
    void writeActivity(const QString& line) override { record(line.trimmed()); }
    void writeWarningActivity(const QString& line) override { record(QStringLiteral("! ") + line.trimmed()); }
    void didCompleteWithBadFiles(const QStringList& bad) override {
        record(QStringLiteral("bad %1").arg(bad.size()));
    }
    void didComplete() override { record(QStringLiteral("complete")); }
    void record(const QString& event) {
        QMutexLocker lock(&mutex);
        events.append(event);
        threads.push_back(std::this_thread::get_id());
    }
    QMutex mutex;
    QStringList events;
    std::vector<std::thread::id> threads;
    int messages = 0;
    std::function<void(int)> onMessage;
};

class LosslessProcessorTest : public ::testing::Test {
  protected:
    void SetUp() override { processor.setSynchronous(true); }
    QStringList files(int count, const QByteArray& bytes) {
        QStringList paths;
        for (int i = 0; i < count; ++i) {
            paths.append(dir.filePath(QStringLiteral("p%1.jpg").arg(i)));
            writeFile(paths.last(), bytes);
        }
        return paths;
    }
    QTemporaryDir dir;
    RecordingDelegate delegate;
    LosslessProcessor processor{delegate};
};

TEST_F(LosslessProcessorTest, CancelStopsBeforeTheNextFileAndStillCompletes) {
    const QStringList paths = files(10, markedJpeg(1));
    delegate.onMessage = [this](int count) {
        if (count == 3)
            processor.cancel();
    };
    ASSERT_TRUE(processor.rotateFiles(paths, 0, false));
    EXPECT_EQ(delegate.messages, 3);
    EXPECT_EQ(delegate.events.last(), QStringLiteral("bad 0"));

    // A cancel after the last file stops the next run before its first.
    processor.cancel();
    delegate.events.clear();
    ASSERT_TRUE(processor.resetDatesForFiles(paths, false));
    EXPECT_EQ(delegate.events, QStringList{QStringLiteral("complete")});

    // Empty lists: rotation and date runs end without a word, icon runs complete.
    delegate.events.clear();
    processor.rotateFiles({}, 90, false);
    processor.resetDatesForFiles({}, false);
    processor.removeCustomIconsForFiles({});
    EXPECT_EQ(delegate.events, QStringList{QStringLiteral("complete")});
}

TEST_F(LosslessProcessorTest, DetachedRunCallsBackOnItsOwnThreadOneRunAtATime) {
    processor.setSynchronous(false);
    const QStringList paths = files(3, markedJpeg(6));
    std::atomic<bool> release = false;
    delegate.onMessage = [&release](int) {
        while (!release)
            std::this_thread::yield();
    };
    ASSERT_TRUE(processor.rotateFiles(paths, 90, false));
    EXPECT_FALSE(processor.addCustomIconsForFiles(paths));
    release = true;
    processor.wait();
    EXPECT_FALSE(processor.isRunning());
    EXPECT_EQ(delegate.events.size(), 7);
    EXPECT_EQ(delegate.events.last(), QStringLiteral("bad 0"));
    for (const auto& id : delegate.threads)
        EXPECT_NE(id, std::this_thread::get_id());
}

TEST_F(LosslessProcessorTest, DatesComeFromTheCaptureDate) {
    const QStringList dated = files(2, markedJpeg(1));
    const QString undated = dir.filePath("undated.jpg");
    writeFile(undated, markedJpeg(-1));
    const QDateTime capture =
        QDateTime::fromString(QLatin1String(CaptureDate), QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    const QDateTime untouched = QFileInfo(undated).lastModified();

    ASSERT_TRUE(processor.resetDatesForFiles({dated.at(0), undated}, false));
    ASSERT_TRUE(processor.resetDatesForFiles({dated.at(1)}, true));
    EXPECT_EQ(delegate.events.first(), QStringLiteral("Setting date for p0.jpg"));
    EXPECT_EQ(FileAttributes::creationDate(dated.at(0)), capture);
    EXPECT_NE(QFileInfo(dated.at(0)).lastModified(), capture);
    EXPECT_EQ(FileAttributes::creationDate(dated.at(1)), capture);
    EXPECT_EQ(QFileInfo(dated.at(1)).lastModified(), capture);
    EXPECT_FALSE(FileAttributes::creationDate(undated).isValid());
    EXPECT_EQ(QFileInfo(undated).lastModified(), untouched);
}

} // namespace
