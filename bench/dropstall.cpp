// Drops a folder tree of 100,000 tiny pictures on the main window, as a user
// would, and measures how late a 5 ms timer on the main thread gets between
// the drop and the first file done: the longest the window stops answering
// while the batch lists and counts its input. The batch is cancelled after its
// first file.
//
//   build/release/quillet-dropstall-bench [--files N] [--per-folder M] [--keep DIR]
//
// The tree is made in a temporary folder (or in DIR with --keep, and reused
// there when it is already whole).

#include "app/models/appcontroller.h"
#include "app/models/appmodels.h"
#include "app/models/desktopservices.h"
#include "app/widgets/main/mainwindow.h"
#include "app/widgets/sheets/sheets.h"
#include "engine/batch/batchenvironment.h"
#include "support/settingsstore.h"

#include <QApplication>
#include <QDir>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <optional>
#include <unistd.h>
#include <vector>

using namespace quillet;

namespace {

// Keeps the benchmark from opening the file manager at the end.
struct QuietDesktop final : DesktopServices {
    void revealFolder(const QString&) override {}
    void openFile(const QString&) override {}
    void copyToClipboard(const QString&) override {}
};

// CPU time of the calling thread, in milliseconds. On a loaded machine a
// timer is also late when the main thread merely waits for a core; the CPU it
// used between two ticks is what the window itself spent.
double threadCpuMs() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

bool writeBytes(const QString& path, const QByteArray& bytes) {
    const int fd =
        ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    const bool written = ::write(fd, bytes.constData(), size_t(bytes.size())) == bytes.size();
    return ::close(fd) == 0 && written;
}

// `files` copies of one 8 x 8 JPEG, `perFolder` to a folder, under root/drop.
// Returns the dropped folder, or none when the disk refused.
std::optional<QString> makeTree(const QString& root, int files, int perFolder) {
    const QString drop = QDir(root).filePath(QStringLiteral("drop"));
    const QString marker = QDir(root).filePath(QStringLiteral("tree-%1-%2").arg(files).arg(perFolder));
    if (QFileInfo::exists(marker))
        return drop;
    QDir(drop).removeRecursively();
    void* buffer = nullptr;
    size_t length = 0;
    vips::VImage::black(8, 8, vips::VImage::option()->set("bands", 3))
        .new_from_image({200.0, 120.0, 40.0})
        .cast(VIPS_FORMAT_UCHAR)
        .write_to_buffer(".jpg", &buffer, &length);
    const QByteArray jpeg(static_cast<const char*>(buffer), qsizetype(length));
    g_free(buffer);
    for (int i = 0; i < files; ++i) {
        const QString folder = QStringLiteral("%1/f%2").arg(drop).arg(i / perFolder, 4, 10, QLatin1Char('0'));
        if (i % perFolder == 0 && !QDir().mkpath(folder))
            return std::nullopt;
        if (!writeBytes(QStringLiteral("%1/IMG_%2.jpg").arg(folder).arg(i, 6, 10, QLatin1Char('0')), jpeg))
            return std::nullopt;
    }
    writeBytes(marker, {});
    return drop;
}

void dropOn(QWidget* area, const QString& path) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path)});
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(area, &enter);
    QDropEvent dropped(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(area, &dropped);
}

} // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (VIPS_INIT(argv[0]) != 0) {
        std::fprintf(stderr, "cannot start libvips: %s\n", vips_error_buffer());
        return 1;
    }
    int files = 100000;
    int perFolder = 1000;
    QString keep;
    const QStringList args = app.arguments();
    for (int i = 1; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--files") && i + 1 < args.size())
            files = std::max(1, args[++i].toInt());
        else if (args[i] == QLatin1String("--per-folder") && i + 1 < args.size())
            perFolder = std::max(1, args[++i].toInt());
        else if (args[i] == QLatin1String("--keep") && i + 1 < args.size())
            keep = args[++i];
    }

    QTemporaryDir scratch;
    const QString root = keep.isEmpty() ? scratch.path() : keep;
    QDir().mkpath(root);
    QElapsedTimer making;
    making.start();
    const auto tree = makeTree(root, files, perFolder);
    if (!tree) {
        std::fprintf(stderr, "cannot write the tree under %s\n", qPrintable(root));
        return 1;
    }
    std::printf("tree: %d files in %d folders under %s, made in %.1f s\n", files,
                (files + perFolder - 1) / perFolder, qPrintable(*tree), making.nsecsElapsed() / 1e9);

    QTemporaryDir outputs;
    SettingsStore::overridePath(outputs.filePath(QStringLiteral("settings.ini")));
    {
        auto store = SettingsStore::open();
        store->setValue(QStringLiteral("OnTheFlyFolder"), false);
        store->setValue(QStringLiteral("RevealFolder"), false);
        store->setValue(QStringLiteral("Destinations"), QStringList{outputs.filePath(QStringLiteral("out"))});
    }
    Sheets sheets;
    QuietDesktop desktop;
    AppModels models;
    AppController controller(models, sheets, desktop);
    BatchEnvironment::prepare(BatchOptions::fromDefaults(models.defaults()));
    MainWindow window(controller, models, sheets);
    window.show();

    QElapsedTimer clock;
    clock.start();
    std::vector<double> lateness;
    std::vector<double> busy; // main-thread CPU between two ticks
    bool measuring = false;
    qint64 lastTick = 0;
    double lastCpu = 0, cpuAtDrop = 0, cpuAtFirst = 0;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    ticker.setInterval(5);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        const double cpu = threadCpuMs();
        if (measuring && lastTick > 0) {
            lateness.push_back(std::max(0.0, (now - lastTick) / 1e6 - 5.0));
            busy.push_back(cpu - lastCpu);
        }
        lastTick = now;
        lastCpu = cpu;
    });
    ticker.start();

    qint64 dropAt = 0, sheetAt = -1, totalAt = -1, firstAt = -1;
    int total = -1;
    QObject::connect(&controller, &AppController::progressSheetShown, [&](bool shown) {
        if (shown && sheetAt < 0)
            sheetAt = clock.nsecsElapsed();
    });
    QObject::connect(&controller, &AppController::progressChanged, [&](int, int maximum) {
        if (maximum >= 0 && totalAt < 0) {
            totalAt = clock.nsecsElapsed();
            total = maximum;
        }
    });
    QObject::connect(&controller, &AppController::currentFileChanged, [&](const QString& text) {
        if (text.isEmpty() || firstAt >= 0)
            return;
        firstAt = clock.nsecsElapsed();
        cpuAtFirst = threadCpuMs();
        measuring = false;
        controller.cancel();
    });
    QObject::connect(&controller, &AppController::processingChanged, [&](bool processing) {
        if (!processing)
            QTimer::singleShot(0, &app, &QCoreApplication::quit);
    });
    // Dropped from inside the event loop, so that the drop's own handling
    // shows up as lateness too.
    QTimer::singleShot(300, [&] {
        measuring = true;
        dropAt = clock.nsecsElapsed();
        cpuAtDrop = threadCpuMs();
        dropOn(window.findChild<QWidget*>(QStringLiteral("dropArea")), *tree);
    });
    app.exec();

    const auto since = [&](qint64 at) { return at < 0 ? -1.0 : (at - dropAt) / 1e6; };
    std::sort(lateness.begin(), lateness.end());
    const double worst = lateness.empty() ? 0 : lateness.back();
    const double p99 = lateness.empty() ? 0 : lateness[size_t(double(lateness.size() - 1) * 0.99)];
    std::printf("after the drop: sheet up %.1f ms, total known %.1f ms (%d files), first file done %.1f ms\n",
                since(sheetAt), since(totalAt), total, since(firstAt));
    std::printf(
        "5 ms timer lateness until the first file: worst %.1f ms, 99th percentile %.1f ms, %zu ticks\n",
        worst, p99, lateness.size());
    std::printf("main thread CPU until the first file: %.1f ms in all, at most %.1f ms between two ticks\n",
                cpuAtFirst - cpuAtDrop, busy.empty() ? 0.0 : *std::max_element(busy.begin(), busy.end()));
    std::printf("goal: worst under 100 ms: %s\n", worst < 100 ? "pass" : "FAIL");
    std::printf("batch ended: %s\n", qPrintable(controller.status()));
    return firstAt >= 0 ? 0 : 1;
}
