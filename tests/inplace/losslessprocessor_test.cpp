#include "inplace/inplacedelegate.h"
#include "inplace/jpegtranrunner.h"
#include "inplace/losslessprocessor.h"
#include "jpegfixtures.h"
#include "support/fileattributes.h"
#include "testsupport.h"

#include <QDateTime>
#include <QFileInfo>
#include <QMutex>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <thread>

using namespace testsupport;
using namespace jpegfixtures;

namespace {

// Records every callback in order, with the thread it came on.
class RecordingDelegate final : public InplaceDelegate {
  public:
    void showMessage(const QString& text) override {
        record(QStringLiteral("message ") + text);
        ++messages;
        if (onMessage)
            onMessage(messages);
    }
    void writeActivity(const QString& line) override { record(QStringLiteral("line ") + line.trimmed()); }
    void writeWarningActivity(const QString& line) override {
        record(QStringLiteral("warning ") + line.trimmed());
    }
    void didCompleteWithBadFiles(const QStringList& bad) override {
        record(QStringLiteral("complete bad=") + QString::number(bad.size()));
        badFiles = bad;
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
    QStringList badFiles;
    int messages = 0;
    std::function<void(int)> onMessage;
};

class LosslessProcessorTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        // Icons are thumbnails in the cache; keep them out of the user's own.
        qputenv("XDG_CACHE_HOME", dir.filePath("cache").toLocal8Bit());
        processor.setSynchronous(true);
    }
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

TEST_F(LosslessProcessorTest, RotationRunReportsEachFileAndTheBadOnes) {
    QStringList paths = files(2, markedJpeg(6));
    paths.insert(1, dir.filePath("notes.jpg"));
    writeFile(paths.at(1), "plain text");
    ASSERT_TRUE(processor.rotateFiles(paths, 0, false));
    EXPECT_EQ(
        delegate.events,
        (QStringList{QStringLiteral("message Rotating p0.jpg"), QStringLiteral("line Rotated 'p0.jpg'"),
                     QStringLiteral("message Rotating notes.jpg"),
                     QStringLiteral("line Skipping 'notes.jpg'"), QStringLiteral("message Rotating p1.jpg"),
                     QStringLiteral("line Rotated 'p1.jpg'"), QStringLiteral("complete bad=0")}));

    delegate.events.clear();
    ASSERT_TRUE(processor.rotateFiles(paths, 90, false));
    EXPECT_EQ(delegate.events.at(3), QStringLiteral("warning 'notes.jpg' is not a JPEG"));
    EXPECT_EQ(delegate.badFiles, QStringList{paths.at(1)});
}

TEST_F(LosslessProcessorTest, EmptyListsEndQuietlyExceptIconRuns) {
    EXPECT_TRUE(processor.rotateFiles({}, 90, false));
    EXPECT_TRUE(processor.resetDatesForFiles({}, true));
    EXPECT_TRUE(delegate.events.isEmpty());
    EXPECT_TRUE(processor.addCustomIconsForFiles({}));
    EXPECT_TRUE(processor.removeCustomIconsForFiles({}));
    EXPECT_EQ(delegate.events, (QStringList{QStringLiteral("complete"), QStringLiteral("complete")}));
}

TEST_F(LosslessProcessorTest, CancelStopsBeforeTheNextFileAndStillCompletes) {
    const QStringList paths = files(10, markedJpeg(1));
    delegate.onMessage = [this](int count) {
        if (count == 3)
            processor.cancel();
    };
    ASSERT_TRUE(processor.rotateFiles(paths, 0, false));
    EXPECT_EQ(delegate.messages, 3);
    EXPECT_EQ(delegate.events.last(), QStringLiteral("complete bad=0"));

    // The flag was used up by that run: the next one goes through.
    delegate.onMessage = nullptr;
    delegate.messages = 0;
    ASSERT_TRUE(processor.resetDatesForFiles(paths, false));
    EXPECT_EQ(delegate.messages, 10);

    // A cancel after the last file stops the next run before its first.
    processor.cancel();
    delegate.events.clear();
    ASSERT_TRUE(processor.addCustomIconsForFiles(paths));
    EXPECT_EQ(delegate.events, QStringList{QStringLiteral("complete")});
}

TEST_F(LosslessProcessorTest, DetachedRunCallsBackOnItsOwnThread) {
    processor.setSynchronous(false);
    const QStringList paths = files(3, markedJpeg(1));
    std::atomic<bool> release = false;
    delegate.onMessage = [&release](int) {
        while (!release)
            std::this_thread::yield();
    };
    ASSERT_TRUE(processor.rotateFiles(paths, 0, false));
    EXPECT_TRUE(processor.isRunning());
    EXPECT_FALSE(processor.resetDatesForFiles(paths, false)); // one run at a time
    release = true;
    processor.wait();
    EXPECT_FALSE(processor.isRunning());
    ASSERT_FALSE(delegate.threads.empty());
    for (const auto& id : delegate.threads)
        EXPECT_NE(id, std::this_thread::get_id());
    EXPECT_EQ(delegate.events.last(), QStringLiteral("complete bad=0"));
}

TEST_F(LosslessProcessorTest, MissingJpegtranIsAnErrorBeforeAnyFileIsTouched) {
    LosslessProcessor lonely(delegate, std::make_unique<JpegtranRunner>(QString()));
    lonely.setSynchronous(true);
    const QStringList paths = files(1, markedJpeg(6));
    EXPECT_THROW(lonely.rotateFiles(paths, 90, false), JpegtranMissing);
    EXPECT_TRUE(delegate.events.isEmpty());
    EXPECT_EQ(readFile(paths.first()), markedJpeg(6));

    qputenv(JpegtranRunner::EnvironmentVariable, dir.filePath("no-such-tool").toLocal8Bit());
    EXPECT_TRUE(JpegtranRunner().program().isEmpty());
    try {
        JpegtranRunner().requireProgram();
        ADD_FAILURE() << "no error";
    } catch (const JpegtranMissing& error) {
        EXPECT_NE(std::string(error.what()).find("no-such-tool"), std::string::npos);
    }
    qunsetenv(JpegtranRunner::EnvironmentVariable);
}

TEST_F(LosslessProcessorTest, DatesComeFromTheCaptureDate) {
    const QStringList withDate = files(2, markedJpeg(1));
    const QString withoutDate = dir.filePath("nodate.jpg");
    writeFile(withoutDate, markedJpeg(-1));
    const QDateTime capture =
        QDateTime::fromString(QLatin1String(CaptureDate), QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    const QDateTime before = QFileInfo(withoutDate).lastModified();

    ASSERT_TRUE(processor.resetDatesForFiles({withDate.at(0), withoutDate}, false));
    EXPECT_EQ(delegate.events, (QStringList{QStringLiteral("message Setting date for p0.jpg"),
                                            QStringLiteral("message Setting date for nodate.jpg"),
                                            QStringLiteral("complete")}));
    EXPECT_EQ(FileAttributes::creationDate(withDate.at(0)), capture);
    EXPECT_NE(QFileInfo(withDate.at(0)).lastModified(), capture);
    EXPECT_FALSE(FileAttributes::creationDate(withoutDate).isValid());
    EXPECT_EQ(QFileInfo(withoutDate).lastModified(), before);

    ASSERT_TRUE(processor.resetDatesForFiles({withDate.at(1)}, true));
    EXPECT_EQ(FileAttributes::creationDate(withDate.at(1)), capture);
    EXPECT_EQ(QFileInfo(withDate.at(1)).lastModified(), capture);
}

TEST_F(LosslessProcessorTest, IconRunsReportProgressOnly) {
    const QStringList paths = files(2, markedJpeg(1));
    ASSERT_TRUE(processor.addCustomIconsForFiles(paths));
    ASSERT_TRUE(processor.removeCustomIconsForFiles(paths));
    EXPECT_EQ(delegate.events,
              (QStringList{QStringLiteral("message Setting icon for p0.jpg"),
                           QStringLiteral("message Setting icon for p1.jpg"), QStringLiteral("complete"),
                           QStringLiteral("message Clearing icon for p0.jpg"),
                           QStringLiteral("message Clearing icon for p1.jpg"), QStringLiteral("complete")}));
    EXPECT_EQ(readFile(paths.first()), markedJpeg(1));
}

} // namespace
