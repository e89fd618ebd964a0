// Runs one folder tree through the window and through `quillet process` with
// the same settings store, and prints both wall times and their ratio.
//
// The window's run is a drop on the real main window: AppController with its
// MainWindow shown (offscreen unless QT_QPA_PLATFORM says otherwise), the
// progress sheet, status line, thumbnail and activity log all live. The tool
// is started as a user would start it, one process per run. The two take
// turns, the one that goes first alternating from run to run, and each writes
// into a fresh folder; the trees they write are compared at the end.
//
//   build/release/quillet-window-bench --tree DIR [options]
//
//   --tree DIR       the folder to process (required)
//   --quillet PATH   the command-line tool (default: `quillet` beside this program)
//   --settings FILE  start from a copy of this store (default: a scratch one
//                    holding fit 1600 x 1600, JPEG quality 80, EXIF kept)
//   --runs N         runs of each (default 3)
//   --work DIR       scratch folder (default: a temporary one, removed after)
//   --log-window     keep the activity log window open during the window's runs
//   --only WHICH     time only `window` or `tool`

#include "app/models/appcontroller.h"
#include "app/models/appmodels.h"
#include "app/models/desktopservices.h"
#include "app/widgets/log/activitylogwindow.h"
#include "app/widgets/main/mainwindow.h"
#include "app/widgets/sheets/sheets.h"
#include "engine/batch/batchenvironment.h"
#include "support/settingsstore.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>

#include <vips/vips8>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <map>
#include <memory>
#include <sys/resource.h>
#include <vector>

using namespace quillet;

namespace {

struct NoDesktop final : DesktopServices {
    void revealFolder(const QString&) override {}
    void openFile(const QString&) override {}
    void copyToClipboard(const QString&) override {}
};

struct Options {
    QString tree;
    QString quillet;
    QString settings;
    QString work;
    int runs = 3;
    bool logWindow = false;
    QString only;
};

struct Timing {
    double wall = 0; // seconds
    double cpu = 0;  // seconds, every thread of the process
    double main = 0; // seconds of the window's main thread
};

double seconds(const timeval& t) {
    return double(t.tv_sec) + double(t.tv_usec) / 1e6;
}

double cpuSeconds(int who) {
    rusage usage{};
    getrusage(who, &usage);
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double threadCpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) / 1e9;
}

double median(std::vector<double> values) {
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

// Relative path -> checksum of every file under `root`.
std::map<QString, QByteArray> checksums(const QString& root) {
    std::map<QString, QByteArray> sums;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        sums[QDir(root).relativeFilePath(path)] =
            QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha1);
    }
    return sums;
}

// The job both front ends run, unless a store of the user's own is given.
void writeDefaultJob(QSettings& store) {
    store.setValue(QStringLiteral("ScaleType"), 4); // fit in the box
    store.setValue(QStringLiteral("Width"), 1600);
    store.setValue(QStringLiteral("Height"), 1600);
    store.setValue(QStringLiteral("JpegQuality"), 80);
    store.setValue(QStringLiteral("PreserveHeader"), true);
}

bool parse(const QStringList& args, Options& o) {
    for (int i = 1; i < args.size(); ++i) {
        const QString& arg = args[i];
        const bool hasValue = i + 1 < args.size();
        if (arg == QLatin1String("--tree") && hasValue)
            o.tree = args[++i];
        else if (arg == QLatin1String("--quillet") && hasValue)
            o.quillet = args[++i];
        else if (arg == QLatin1String("--settings") && hasValue)
            o.settings = args[++i];
        else if (arg == QLatin1String("--work") && hasValue)
            o.work = args[++i];
        else if (arg == QLatin1String("--runs") && hasValue)
            o.runs = std::max(1, args[++i].toInt());
        else if (arg == QLatin1String("--only") && hasValue)
            o.only = args[++i];
        else if (arg == QLatin1String("--log-window"))
            o.logWindow = true;
        else {
            std::fprintf(stderr, "quillet-window-bench: unknown or incomplete option '%s'\n",
                         qPrintable(arg));
            return false;
        }
    }
    if (o.tree.isEmpty() || !QFileInfo(o.tree).isDir()) {
        std::fprintf(stderr, "quillet-window-bench: --tree DIR must name a folder\n");
        return false;
    }
    return true;
}

class Bench {
  public:
    Bench(const Options& options, const QString& work) : m_options(options), m_work(work) {}

    bool setUp() {
        m_store = QDir(m_work).filePath(QStringLiteral("settings.ini"));
        QFile::remove(m_store);
        if (!m_options.settings.isEmpty() && !QFile::copy(m_options.settings, m_store)) {
            std::fprintf(stderr, "quillet-window-bench: cannot copy '%s'\n", qPrintable(m_options.settings));
            return false;
        }
        m_windowOut = QDir(m_work).filePath(QStringLiteral("window"));
        m_toolOut = QDir(m_work).filePath(QStringLiteral("tool"));
        {
            QSettings store(m_store, QSettings::IniFormat);
            if (m_options.settings.isEmpty())
                writeDefaultJob(store);
            // Straight into the destination, with nothing to ask or open.
            store.setValue(QStringLiteral("Destinations"), QStringList{m_windowOut});
            store.setValue(QStringLiteral("SelectedDestination"), 0);
            store.setValue(QStringLiteral("OnTheFlyFolder"), false);
            store.setValue(QStringLiteral("RevealFolder"), false);
            store.setValue(QStringLiteral("SingleFile"), 0);
            store.setValue(QStringLiteral("ActivityLogVisible"), m_options.logWindow);
        }
        SettingsStore::overridePath(m_store);
        m_models = std::make_unique<AppModels>();
        m_controller = std::make_unique<AppController>(*m_models, m_sheets, m_desktop);
        // As the application's main() does before its first batch.
        BatchEnvironment::prepare(BatchOptions::fromDefaults(m_models->defaults()));
        m_sheets.setAnswerHook([this](const SheetRequest& request) {
            m_questions.append(request.title);
            return SheetAnswer{0, {}};
        });
        m_window = std::make_unique<MainWindow>(*m_controller, *m_models, m_sheets);
        m_window->show();
        if (m_options.logWindow)
            m_window->activityLog()->setOpen(true);
        QCoreApplication::processEvents();
        m_models->defaults().store().sync();
        return true;
    }

    void tearDown() {
        m_window.reset();
        m_controller.reset();
        SettingsStore::overridePath({});
    }

    Timing runWindow() {
        QDir(m_windowOut).removeRecursively();
        QDir().mkpath(m_windowOut);
        QEventLoop loop;
        const auto done =
            QObject::connect(m_controller.get(), &AppController::processingChanged, [&loop](bool processing) {
                if (!processing)
                    loop.quit();
            });
        const double cpu0 = cpuSeconds(RUSAGE_SELF);
        const double main0 = threadCpuSeconds();
        QElapsedTimer clock;
        clock.start();
        m_controller->openFile(QFileInfo(m_options.tree).absoluteFilePath());
        loop.exec();
        Timing t;
        t.wall = double(clock.nsecsElapsed()) / 1e9;
        t.cpu = cpuSeconds(RUSAGE_SELF) - cpu0;
        t.main = threadCpuSeconds() - main0;
        QObject::disconnect(done);
        // Whatever the last status posted still gets shown before the next run.
        QCoreApplication::processEvents();
        return t;
    }

    Timing runTool() {
        QDir(m_toolOut).removeRecursively();
        const double cpu0 = cpuSeconds(RUSAGE_CHILDREN);
        QElapsedTimer clock;
        clock.start();
        QProcess process;
        process.setStandardInputFile(QProcess::nullDevice());
        process.setStandardOutputFile(QDir(m_work).filePath(QStringLiteral("tool.log")));
        process.setStandardErrorFile(QProcess::nullDevice());
        process.start(m_options.quillet,
                      {QStringLiteral("--settings"), m_store, QStringLiteral("process"),
                       QStringLiteral("--dest"), m_toolOut, QFileInfo(m_options.tree).absoluteFilePath()});
        process.waitForFinished(-1);
        Timing t;
        t.wall = double(clock.nsecsElapsed()) / 1e9;
        t.cpu = cpuSeconds(RUSAGE_CHILDREN) - cpu0;
        if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
            std::fprintf(stderr, "quillet-window-bench: the tool ended with status %d\n", process.exitCode());
        return t;
    }

    // The two trees hold the same files with the same bytes.
    bool sameTrees(QString& why) const {
        const auto window = checksums(m_windowOut);
        const auto tool = checksums(m_toolOut);
        if (window.size() != tool.size()) {
            why = QStringLiteral("%1 files from the window, %2 from the tool")
                      .arg(window.size())
                      .arg(tool.size());
            return false;
        }
        for (const auto& [path, sum] : window) {
            const auto other = tool.find(path);
            if (other == tool.end() || other->second != sum) {
                why = QStringLiteral("'%1' differs").arg(path);
                return false;
            }
        }
        why = QStringLiteral("%1 files, the same bytes").arg(window.size());
        return true;
    }

    int fileCount() const {
        int count = 0;
        QDirIterator it(m_options.tree, QDir::Files | QDir::Hidden | QDir::System,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            it.next();
            ++count;
        }
        return count;
    }

    QStringList questions() const { return m_questions; }

  private:
    const Options& m_options;
    QString m_work;
    QString m_store;
    QString m_windowOut;
    QString m_toolOut;
    Sheets m_sheets;
    NoDesktop m_desktop;
    std::unique_ptr<AppModels> m_models;
    std::unique_ptr<AppController> m_controller;
    std::unique_ptr<MainWindow> m_window;
    QStringList m_questions;
};

} // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Korvane"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillet"));
    Options options;
    if (!parse(app.arguments(), options))
        return 2;
    if (options.quillet.isEmpty())
        options.quillet = QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("quillet"));
    if (options.only != QLatin1String("window") && !QFileInfo(options.quillet).isExecutable()) {
        std::fprintf(stderr, "quillet-window-bench: no tool at '%s' (--quillet PATH)\n",
                     qPrintable(options.quillet));
        return 2;
    }
    if (VIPS_INIT(argv[0]) != 0) {
        std::fprintf(stderr, "quillet-window-bench: cannot start libvips: %s\n", vips_error_buffer());
        return 1;
    }

    QTemporaryDir scratch;
    const QString work = options.work.isEmpty() ? scratch.path() : options.work;
    QDir().mkpath(work);
    Bench bench(options, work);
    if (!bench.setUp())
        return 1;
    const bool window = options.only != QLatin1String("tool");
    const bool tool = options.only != QLatin1String("window");

    std::vector<double> windowWall, toolWall, windowCpu, toolCpu;
    std::printf("tree: %s (%d files), %d run(s), %s platform\n", qPrintable(options.tree), bench.fileCount(),
                options.runs, qPrintable(QGuiApplication::platformName()));
    for (int run = 0; run < options.runs; ++run) {
        // Alternate which goes first, so a machine warming up or getting
        // busier does not favour one of them.
        const bool windowFirst = run % 2 == 0;
        Timing w, t;
        if (window && windowFirst)
            w = bench.runWindow();
        if (tool)
            t = bench.runTool();
        if (window && !windowFirst)
            w = bench.runWindow();
        if (window) {
            windowWall.push_back(w.wall);
            windowCpu.push_back(w.cpu);
            std::printf("run %d: window %.2f s wall, %.2f s CPU (%.2f s on its main thread)", run + 1, w.wall,
                        w.cpu, w.main);
        }
        if (tool) {
            toolWall.push_back(t.wall);
            toolCpu.push_back(t.cpu);
            std::printf("%s tool %.2f s wall, %.2f s CPU", window ? ";" : "run", t.wall, t.cpu);
        }
        std::printf("\n");
        std::fflush(stdout);
    }
    if (window && tool) {
        const double w = median(windowWall), t = median(toolWall);
        std::printf("median: window %.2f s, tool %.2f s, window / tool %.3f\n", w, t, t > 0 ? w / t : 0);
        // On a loaded machine the wall times follow the other work; the CPU
        // the batch took is the steadier figure.
        const double wc = median(windowCpu), tc = median(toolCpu);
        std::printf("median CPU: window %.2f s, tool %.2f s, window / tool %.3f\n", wc, tc,
                    tc > 0 ? wc / tc : 0);
        QString why;
        const bool same = bench.sameTrees(why);
        std::printf("output trees: %s\n", qPrintable(why));
        if (!same) {
            bench.tearDown();
            return 1;
        }
    }
    if (!bench.questions().isEmpty())
        std::printf("questions answered with 0: %s\n",
                    qPrintable(bench.questions().join(QStringLiteral(", "))));
    bench.tearDown();
    vips_shutdown();
    return 0;
}
