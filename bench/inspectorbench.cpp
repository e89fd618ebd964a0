// Drops 10,000 pictures on the inspector, as a user who selected a whole
// folder in the file manager would, and measures how the window copes while
// their records and thumbnails are made: when the first rows show, when the
// last is in, how late a 5 ms timer on the main thread gets (the longest the
// window stops answering), and the process's memory. While the list fills,
// the view follows its end, so thumbnails are made all along; once it is
// full, the view pages through the whole list.
//
//   build/release/quillet-inspector-bench [--files N] [--picture FILE] [--keep DIR]
//
// The pictures are hard links to one 6-megapixel JPEG without an EXIF
// thumbnail (so every thumbnail is decoded from the picture, shrunk on load),
// or to FILE; made in a temporary folder, or in DIR with --keep and reused
// there.

#include "app/models/appmodels.h"
#include "app/models/inspectormodel.h"
#include "app/widgets/inspector/inspectorwindow.h"
#include "engine/batch/batchenvironment.h"
#include "support/settingsstore.h"

#include <QApplication>
#include <QDir>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QFile>
#include <QMimeData>
#include <QScrollBar>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <optional>
#include <unistd.h>
#include <vector>

using namespace quillet;

namespace {

double threadCpuMs() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

// "VmRSS" or "VmHWM" of this process, in megabytes.
double memoryMb(const char* field) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(int(qstrlen(field)) + 1).trimmed().split(' ').first().toDouble() / 1024;
    return -1;
}

// A camera-sized picture with some detail and the usual EXIF fields, but no
// EXIF thumbnail.
bool makePicture(const QString& path) {
    try {
        vips::VImage noise = vips::VImage::gaussnoise(3000, 2000, vips::VImage::option()->set("sigma", 20));
        vips::VImage image =
            (vips::VImage::xyz(3000, 2000)[0] * 0.05 + noise)
                .bandjoin({noise * 0.5 + 100, noise + 60})
                .cast(VIPS_FORMAT_UCHAR)
                .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
        image.set("exif-ifd0-Make", "Bench");
        image.set("exif-ifd0-Model", "Inspector 10k");
        image.jpegsave(QFile::encodeName(path).constData(), vips::VImage::option()->set("Q", 85));
        return true;
    } catch (const vips::VError& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return false;
    }
}

std::optional<QStringList> makeFiles(const QString& root, int files, const QString& picture) {
    const QString folder = QDir(root).filePath(QStringLiteral("pictures"));
    const QString marker = QDir(root).filePath(QStringLiteral("made-%1").arg(files));
    QStringList paths;
    for (int i = 0; i < files; ++i)
        paths.append(QStringLiteral("%1/IMG_%2.jpg").arg(folder).arg(i, 5, 10, QLatin1Char('0')));
    if (QFileInfo::exists(marker))
        return paths;
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    const QString source = picture.isEmpty() ? QDir(root).filePath(QStringLiteral("source.jpg")) : picture;
    if (picture.isEmpty() && !makePicture(source))
        return std::nullopt;
    for (const QString& path : paths)
        if (::link(QFile::encodeName(source).constData(), QFile::encodeName(path).constData()) != 0 &&
            !QFile::copy(source, path))
            return std::nullopt;
    QFile(marker).open(QIODevice::WriteOnly);
    return paths;
}

// The drag of a file manager, ending over the list's top row.
void dropOn(QWidget* viewport, const QStringList& paths) {
    QMimeData data;
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    data.setUrls(urls);
    const QPoint at(20, 10);
    QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(viewport, &enter);
    QDragMoveEvent move(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(viewport, &move);
    QDropEvent dropped(QPointF(at), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(viewport, &dropped);
}

struct Stalls {
    std::vector<double> lateness;
    double worstCpu = 0;
    void report(const char* phase) {
        std::sort(lateness.begin(), lateness.end());
        const double worst = lateness.empty() ? 0 : lateness.back();
        const double p99 = lateness.empty() ? 0 : lateness[size_t(double(lateness.size() - 1) * 0.99)];
        std::printf("%s: 5 ms timer late by at most %.1f ms (99th percentile %.1f ms, %zu ticks); "
                    "main thread CPU at most %.1f ms between two ticks\n",
                    phase, worst, p99, lateness.size(), worstCpu);
    }
    double worst() const {
        return lateness.empty() ? 0 : *std::max_element(lateness.begin(), lateness.end());
    }
};

} // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (VIPS_INIT(argv[0]) != 0) {
        std::fprintf(stderr, "cannot start libvips: %s\n", vips_error_buffer());
        return 1;
    }
    int files = 10000;
    QString picture, keep;
    const QStringList args = app.arguments();
    for (int i = 1; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--files") && i + 1 < args.size())
            files = std::max(1, args[++i].toInt());
        else if (args[i] == QLatin1String("--picture") && i + 1 < args.size())
            picture = QFileInfo(args[++i]).absoluteFilePath();
        else if (args[i] == QLatin1String("--keep") && i + 1 < args.size())
            keep = args[++i];
    }
    QTemporaryDir scratch;
    const QString root = keep.isEmpty() ? scratch.path() : keep;
    QDir().mkpath(root);
    const auto paths = makeFiles(root, files, picture);
    if (!paths) {
        std::fprintf(stderr, "cannot make the pictures under %s\n", qPrintable(root));
        return 1;
    }
    std::printf("%d pictures (links to one %s) under %s\n", files,
                qPrintable(picture.isEmpty() ? QStringLiteral("3000 x 2000 JPEG") : picture),
                qPrintable(root));

    QTemporaryDir settings;
    SettingsStore::overridePath(settings.filePath(QStringLiteral("settings.ini")));
    AppModels models;
    BatchEnvironment::prepare(BatchOptions::fromDefaults(models.defaults()));
    InspectorModel& model = models.inspector();
    InspectorWindow window(model, models.defaults());
    window.resize(1100, 700);
    window.show();
    QTableView* table = window.table();
    const double rssBefore = memoryMb("VmRSS:");

    QElapsedTimer clock;
    clock.start();
    Stalls filling, paging;
    Stalls* phase = nullptr;
    qint64 lastTick = 0;
    double lastCpu = 0;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    ticker.setInterval(5);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        const double cpu = threadCpuMs();
        if (phase && lastTick > 0) {
            phase->lateness.push_back(std::max(0.0, (now - lastTick) / 1e6 - 5.0));
            phase->worstCpu = std::max(phase->worstCpu, cpu - lastCpu);
        }
        lastTick = now;
        lastCpu = cpu;
    });
    ticker.start();

    qint64 dropAt = 0, firstRowAt = -1, allAt = -1, pagedAt = -1;
    double peakDuringFill = 0, cpuAtDrop = 0, cpuAtAll = 0;
    QObject::connect(&model, &InspectorModel::countChanged, [&](int count) {
        if (count > 0 && firstRowAt < 0)
            firstRowAt = clock.nsecsElapsed();
    });
    // The user watches the end of the list while it fills.
    QTimer follow;
    follow.setInterval(100);
    QObject::connect(&follow, &QTimer::timeout, [&] {
        table->verticalScrollBar()->setValue(table->verticalScrollBar()->maximum());
        peakDuringFill = std::max(peakDuringFill, memoryMb("VmRSS:"));
    });
    // Then pages through all of it, a page every 20 ms.
    QTimer page;
    page.setInterval(20);
    QObject::connect(&page, &QTimer::timeout, [&] {
        QScrollBar* bar = table->verticalScrollBar();
        if (bar->value() >= bar->maximum()) {
            page.stop();
            pagedAt = clock.nsecsElapsed();
            phase = nullptr;
            QTimer::singleShot(0, &app, &QCoreApplication::quit);
            return;
        }
        bar->setValue(bar->value() + bar->pageStep());
    });
    QObject::connect(&model, &InspectorModel::addingChanged, [&](bool adding) {
        if (adding || allAt >= 0)
            return;
        allAt = clock.nsecsElapsed();
        cpuAtAll = threadCpuMs();
        follow.stop();
        phase = &paging;
        table->verticalScrollBar()->setValue(0);
        page.start();
    });
    QTimer::singleShot(300, [&] {
        phase = &filling;
        dropAt = clock.nsecsElapsed();
        cpuAtDrop = threadCpuMs();
        follow.start();
        dropOn(table->viewport(), *paths);
    });
    app.exec();

    const auto since = [&](qint64 at) { return at < 0 ? -1.0 : (at - dropAt) / 1e6; };
    std::printf("rows: first shown %.0f ms after the drop, all %d in after %.1f s\n", since(firstRowAt),
                model.rowCount(), since(allAt) / 1e3);
    filling.report("while filling");
    std::printf("main thread CPU from the drop to the last row: %.0f ms\n", cpuAtAll - cpuAtDrop);
    std::printf("paging through the full list: %.1f s\n", (pagedAt - allAt) / 1e9);
    paging.report("while paging");
    std::printf("thumbnails made %lld, kept %d\n", static_cast<long long>(model.thumbnails().madeCount()),
                model.thumbnails().cachedCount());
    std::printf("memory: %.0f MB before the drop, %.0f MB at most while filling, %.0f MB at the end, "
                "peak %.0f MB\n",
                rssBefore, peakDuringFill, memoryMb("VmRSS:"), memoryMb("VmHWM:"));
    const bool pass = firstRowAt >= 0 && since(firstRowAt) < 1000 && filling.worst() < 100 &&
                      paging.worst() < 100 && model.rowCount() == files;
    std::printf("goal: first rows within 1 s, no stall of 100 ms or more: %s\n", pass ? "pass" : "FAIL");
    return pass ? 0 : 1;
}
