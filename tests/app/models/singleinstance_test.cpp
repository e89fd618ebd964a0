#include "app/guitest.h"
#include "app/models/singleinstance.h"

#include <QProcess>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

namespace quillet::guitest {
namespace {

// The real program started a second time on the same settings store, as a
// file manager's "Open with" does.
class SecondStart {
  public:
    explicit SecondStart(const QStringList& args) {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral(QUILLET_GUI_PATH),
                        QStringList{QStringLiteral("--settings"), SettingsStore::open()->fileName()} + args);
    }
    ~SecondStart() {
        // A start that did not hand over opened a window of its own.
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }
    // Keeps this process's event loop turning, where the first instance
    // answers, until the second one exits.
    bool exitedWithin(int ms) {
        return waitFor([this] { return m_process.state() == QProcess::NotRunning; }, ms);
    }
    int exitCode() const { return m_process.exitCode(); }
    QString output() { return QString::fromLocal8Bit(m_process.readAll()); }

  private:
    QProcess m_process;
};

class SingleInstanceTest : public GuiTest {
  protected:
    QString socketPath() const { return SingleInstance::socketPathFor(SettingsStore::open()->fileName()); }
};

TEST_F(SingleInstanceTest, ASecondStartHandsItsPathsToTheRunningWindowAsOneBatch) {
    SingleInstance first(socketPath());
    ASSERT_EQ(first.start({}), SingleInstance::Start::First);
    QObject::connect(&first, &SingleInstance::pathsReceived, controller.get(),
                     [this](const QStringList& paths) {
                         for (const QString& path : paths)
                             controller->openFile(path);
                     });
    int batches = 0;
    QObject::connect(controller.get(), &AppController::batchEnded, [&batches] { ++batches; });
    const QStringList pictures = makePictures(in(), 3);

    SecondStart second(pictures);
    ASSERT_TRUE(second.exitedWithin(20000)) << "the second start opened its own window";
    EXPECT_EQ(second.exitCode(), 0) << second.output().toStdString();
    ASSERT_TRUE(waitFor([&batches] { return batches > 0; }));
    waitForIdle();
    EXPECT_EQ(batches, 1);
    for (const char* name : {"pic00.jpg", "pic01.jpg", "pic02.jpg"})
        EXPECT_TRUE(QFileInfo::exists(o(QLatin1String(name)))) << name;
}

// A window that crashed leaves its socket file behind, with nobody on it.
TEST_F(SingleInstanceTest, ACrashedWindowsSocketIsTakenOver) {
    const QString path = socketPath();
    const QByteArray native = QFile::encodeName(path);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(size_t(native.size()), sizeof address.sun_path);
    std::memcpy(address.sun_path, native.constData(), size_t(native.size()));
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ::close(fd);
    ASSERT_TRUE(QFileInfo::exists(path));

    SingleInstance first(path);
    ASSERT_EQ(first.start({}), SingleInstance::Start::First);
    QStringList received{QStringLiteral("nothing yet")};
    QObject::connect(&first, &SingleInstance::pathsReceived,
                     [&received](const QStringList& paths) { received = paths; });
    // A start without paths only asks for the window.
    SecondStart second({});
    ASSERT_TRUE(second.exitedWithin(20000));
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_TRUE(waitFor([&received] { return received.isEmpty(); }, 2000));
}

TEST_F(SingleInstanceTest, EachSettingsStoreHasAWindowOfItsOwn) {
    const QString a = SingleInstance::socketPathFor(scratch->filePath(QStringLiteral("a.ini")));
    EXPECT_NE(a, SingleInstance::socketPathFor(scratch->filePath(QStringLiteral("b.ini"))));
    // The same store named through another path is the same window.
    EXPECT_EQ(a, SingleInstance::socketPathFor(scratch->filePath(QStringLiteral("in/../a.ini"))));
}

} // namespace
} // namespace quillet::guitest
