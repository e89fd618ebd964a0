#include "inplace/inplacesession.h"
#include "inplace/jpegtranrunner.h"
#include "jpegfixtures.h"
#include "metadata/kvimageinfo.h"
#include "settings/userdefaults.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>

using namespace quillet;
using namespace jpegfixtures;

namespace {

// The panel and the log: records every call, from whichever thread makes it.
class RecordingPanel : public InplaceView, public ActivityLog {
  public:
    void beginProgress(int maximum) override { add(u"begin %1"_s.arg(maximum)); }
    void showProgress(const QString& status, int value) override { add(u"%1 %2"_s.arg(value).arg(status)); }
    void endProgress() override { add(u"end"_s); }
    void showAlert(InplaceAlert alert, const QStringList& files) override {
        EXPECT_EQ(alert, InplaceAlert::NonJpegFiles);
        add(u"alert "_s + files.join(u','));
    }
    void writeActivity(const QString&) override {}
    void writeWarningActivity(const QString&) override {}

    QStringList calls() const {
        std::lock_guard lock(m_mutex);
        return m_calls;
    }

  private:
    void add(const QString& call) {
        std::lock_guard lock(m_mutex);
        m_calls.append(call);
    }
    mutable std::mutex m_mutex;
    QStringList m_calls;
};

// The real tool, held back at its first run until the test lets it go.
class HeldRunner : public JpegtranRunner {
  public:
    int run(const QStringList& arguments) override {
        {
            std::unique_lock lock(m_mutex);
            m_started = true;
            m_changed.notify_all();
            m_changed.wait(lock, [this] { return m_released; });
        }
        return JpegtranRunner::run(arguments);
    }
    void waitUntilStarted() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_started; });
    }
    void release() {
        std::lock_guard lock(m_mutex);
        m_released = true;
        m_changed.notify_all();
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_started = false;
    bool m_released = false;
};

class InplaceSessionTest : public testing::Test {
  protected:
    InplaceSessionTest() : store(dir.filePath(u"s.ini"_s), QSettings::IniFormat), defaults(store) {}

    QString put(const QString& name, const QByteArray& bytes) {
        EXPECT_TRUE(testsupport::writeFile(dir.filePath(name), bytes));
        return dir.filePath(name);
    }

    QTemporaryDir dir;
    QSettings store;
    UserDefaults defaults;
    RecordingPanel panel;
};

// A drop runs on a thread of its own: the progress counts every file, and
// one alert at the end names the files that could not be turned.
TEST_F(InplaceSessionTest, RunOnItsOwnThreadEndsWithOneAlertForTheFilesNotTurned) {
    const QStringList files{put(u"a.jpg"_s, markedJpeg(1)), put(u"b.png"_s, "\x89PNG\r\n\x1a\n"),
                            put(u"c.jpg"_s, markedJpeg(1))};
    InplaceSession session(panel, panel, defaults);
    ASSERT_TRUE(session.start(InplaceAction::RotateClockwise, files));
    session.wait();
    EXPECT_EQ(panel.calls(), (QStringList{u"begin 3"_s, u"1 Rotating a.jpg"_s, u"2 Rotating b.png"_s,
                                          u"3 Rotating c.jpg"_s, u"end"_s, u"alert "_s + files[1]}));
    EXPECT_EQ(session.badFiles(), QStringList{files[1]});

    // A run whose every file is skipped (already upright) raises no alert.
    RecordingPanel quiet;
    InplaceSession automatic(quiet, quiet, defaults);
    ASSERT_TRUE(automatic.start(InplaceAction::RotateAuto, {files[0]}));
    automatic.wait();
    EXPECT_EQ(quiet.calls(), (QStringList{u"begin 1"_s, u"1 Rotating a.jpg"_s, u"end"_s}));
}

// The window's cancel comes from the main thread while the run's thread is
// inside the tool: the file in hand is finished, the next is not started, and
// a second drop is refused until the run has completed.
TEST_F(InplaceSessionTest, CancelDuringAFileFinishesItAndStopsBeforeTheNext) {
    const QStringList files{put(u"a.jpg"_s, markedJpeg(6)), put(u"b.jpg"_s, markedJpeg(6))};
    auto runner = std::make_unique<HeldRunner>();
    HeldRunner& held = *runner;
    InplaceSession session(panel, panel, defaults, std::move(runner));
    ASSERT_TRUE(session.start(InplaceAction::RotateAuto, files));
    held.waitUntilStarted();
    EXPECT_FALSE(session.start(InplaceAction::RotateAuto, files));
    session.cancel();
    held.release();
    session.wait();
    EXPECT_EQ(panel.calls(),
              (QStringList{u"begin 2"_s, u"1 Rotating a.jpg"_s, u"1 Cancelling ..."_s, u"end"_s}));
    EXPECT_EQ(KVImageInfo::orientationForPath(files[0]), 1);
    EXPECT_EQ(KVImageInfo::orientationForPath(files[1]), 6);
}

} // namespace
