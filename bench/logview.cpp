// Feeds the activity log window the lines of a 20,000-file batch from another
// thread, in bursts, and measures how late a 5 ms timer on the main thread
// gets (the longest the window stops answering) and how long until every line
// is on show. --naive appends line by line instead, for comparison.
//
//   build/release/quillet-logview-bench [--files N] [--rate FILES_PER_S] [--naive]

#include "app/models/activitylogmodel.h"
#include "app/widgets/log/activitylogwindow.h"
#include "settings/userdefaults.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

using namespace quillet;

namespace {

// The lines one small file writes: about five, one warning in fifty files.
void writeFile(ActivityLog& log, int n) {
    const QString name = QStringLiteral("IMG_%1.jpg").arg(n, 5, 10, QLatin1Char('0'));
    log.writeActivity(QStringLiteral("Processing '%1'\n").arg(name));
    log.writeActivity(QStringLiteral("\tDimension: 640 x 480\n"));
    log.writeActivity(QStringLiteral("\tScaling to 320 x 240\n"));
    if (n % 50 == 0)
        log.writeWarningActivity(QStringLiteral("\tNo EXIF data found in '%1'\n").arg(name));
    else
        log.writeActivity(QStringLiteral("\tJPEG quality: 80\n"));
    log.writeActivity(QStringLiteral("\tFilename: /home/user/Desktop/out/%1\n").arg(name));
}

// Appends each line with its own edit on the main thread, as a log without
// batching would.
class NaiveLog final : public ActivityLog {
  public:
    explicit NaiveLog(QPlainTextEdit* view) : m_view(view) {}
    void writeActivity(const QString& line) override { post(line); }
    void writeWarningActivity(const QString& line) override { post(line); }
    std::atomic<long> shown{0};

  private:
    void post(const QString& line) {
        QMetaObject::invokeMethod(
            m_view,
            [this, line] {
                QTextCursor cursor(m_view->document());
                cursor.movePosition(QTextCursor::End);
                cursor.insertText(line);
                m_view->ensureCursorVisible();
                ++shown;
            },
            Qt::QueuedConnection);
    }
    QPlainTextEdit* m_view;
};

} // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    int files = 20000;
    double rate = 0; // files per second; 0 = as fast as the thread can write
    bool naive = false;
    const QStringList args = app.arguments();
    for (int i = 1; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--files") && i + 1 < args.size())
            files = args[++i].toInt();
        else if (args[i] == QLatin1String("--rate") && i + 1 < args.size())
            rate = args[++i].toDouble();
        else if (args[i] == QLatin1String("--naive"))
            naive = true;
    }

    QTemporaryDir scratch;
    QSettings store(scratch.filePath(QStringLiteral("bench.ini")), QSettings::IniFormat);
    UserDefaults defaults(store);
    ActivityLogModel model;
    ActivityLogWindow window(model, defaults);
    window.show();
    NaiveLog naiveLog(window.view());
    ActivityLog& log = naive ? static_cast<ActivityLog&>(naiveLog) : model;
    const long lines = long(files) * 5;

    std::vector<double> lateness;
    QElapsedTimer clock;
    clock.start();
    qint64 lastTick = 0;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    ticker.setInterval(5);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        if (lastTick > 0)
            lateness.push_back(std::max(0.0, (now - lastTick) / 1e6 - 5.0));
        lastTick = now;
    });
    ticker.start();

    std::atomic<bool> fed{false};
    double feedSeconds = 0;
    std::thread feeder([&] {
        const auto start = std::chrono::steady_clock::now();
        for (int n = 0; n < files; ++n) {
            writeFile(log, n);
            if (rate > 0)
                std::this_thread::sleep_until(start + std::chrono::duration<double>((n + 1) / rate));
        }
        feedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        fed = true;
    });
    double doneSeconds = 0;
    QTimer watcher;
    QObject::connect(&watcher, &QTimer::timeout, [&] {
        const long shown = naive ? naiveLog.shown.load() : long(window.shownCount());
        if (fed && shown >= lines) {
            doneSeconds = clock.nsecsElapsed() / 1e9;
            app.quit();
        }
    });
    watcher.start(10);
    app.exec();
    feeder.join();

    std::sort(lateness.begin(), lateness.end());
    const double worst = lateness.empty() ? 0 : lateness.back();
    const double p99 = lateness.empty() ? 0 : lateness[size_t(double(lateness.size() - 1) * 0.99)];
    std::printf("mode: %s, files: %d, lines: %ld, feed rate: %s\n",
                naive ? "line by line" : "batched per frame", files, lines,
                rate > 0 ? qPrintable(QStringLiteral("%1 files/s").arg(rate)) : "unlimited");
    std::printf("fed in %.2f s; all lines on show after %.2f s\n", feedSeconds, doneSeconds);
    std::printf("5 ms timer lateness: worst %.1f ms, 99th percentile %.1f ms, %zu ticks\n", worst, p99,
                lateness.size());
    return 0;
}
