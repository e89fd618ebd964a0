// Times the preview on a 24-megapixel JPEG it makes itself: from a settings
// change to the rendered picture on show, and to its byte count, over a few
// kinds of change (a small output, the full size, the size-limit search).
//
//   QT_QPA_PLATFORM=offscreen build/release/quillet-preview-bench [--runs N]

#include "app/models/appmodels.h"
#include "engine/batch/batchenvironment.h"
#include "support/settingsstore.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace quillet;

namespace {

// Photograph-like content: a gradient under grain, so the encoder has
// detail to spend bytes on.
QString makePicture(const QString& folder) {
    const QString path = folder + QStringLiteral("/big.jpg");
    const int width = 6000, height = 4000;
    vips::VImage ramp = vips::VImage::xyz(width, height);
    vips::VImage x = ramp.extract_band(0) * (255.0 / width);
    vips::VImage y = ramp.extract_band(1) * (255.0 / height);
    vips::VImage noise = vips::VImage::gaussnoise(width, height, vips::VImage::option()->set("sigma", 18.0));
    vips::VImage rgb = (x + noise).bandjoin(y + noise).bandjoin((x + y) / 2 + noise);
    rgb.cast(VIPS_FORMAT_UCHAR)
        .jpegsave(path.toLocal8Bit().constData(), vips::VImage::option()->set("Q", 92));
    return path;
}

struct Change {
    const char* name;
    int scaleType;
    int side;
    bool sizeLimit;
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (VIPS_INIT(argv[0]))
        return 1;
    int runs = 5;
    for (int i = 1; i + 1 < argc; ++i)
        if (QByteArray(argv[i]) == "--runs")
            runs = std::max(1, atoi(argv[i + 1]));
    QTemporaryDir dir;
    SettingsStore::overridePath(dir.filePath(QStringLiteral("settings.ini")));
    const QString picture = makePicture(dir.path());

    AppModels models;
    // As the application's main() does.
    BatchEnvironment::prepare(BatchOptions::fromDefaults(models.defaults()));
    PreviewModel& preview = models.preview();
    qint64 shownAt = -1, countedAt = -1;
    QElapsedTimer clock;
    // The first output picture after a change is the draft; the figures
    // come with the file as written.
    QObject::connect(&preview, &PreviewModel::outputChanged, [&] {
        if (shownAt < 0)
            shownAt = clock.elapsed();
    });
    QObject::connect(&preview, &PreviewModel::resultChanged, [&] {
        if (preview.result().rendered)
            countedAt = clock.elapsed();
    });
    auto waitForResult = [&] {
        while (countedAt < 0) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            QThread::msleep(1);
        }
    };
    clock.start();
    preview.setActive(true);
    preview.setQueue({picture});
    waitForResult();
    std::printf("a new picture: %lld ms to its draft, %lld ms to its byte count\n", shownAt, countedAt);

    const Change changes[] = {{"fit into 1600 x 1600", ScaleType::Fit, 1600, false},
                              {"no scaling (6000 x 4000 out)", ScaleType::None, 0, false},
                              {"fit 3000, 500 KB size limit", ScaleType::Fit, 3000, true}};
    std::printf("%-32s %14s %14s %12s\n", "change", "to picture ms", "to bytes ms", "bytes");
    for (const Change& change : changes) {
        std::vector<double> shown, counted;
        for (int run = 0; run < runs; ++run) {
            Sizing sizing = models.settings().sizing().value();
            sizing.scaleType = change.scaleType;
            // Each run changes something, so no run reuses the last render.
            sizing.width = sizing.height = change.side + run;
            shownAt = countedAt = -1;
            OutputSettings output = models.settings().output().value();
            output.hasSizeLimit = change.sizeLimit;
            output.sizeLimit = 500;
            models.settings().output().edit(output);
            clock.restart();
            models.settings().sizing().edit(sizing);
            waitForResult();
            shown.push_back(double(shownAt));
            counted.push_back(double(countedAt));
        }
        std::printf("%-32s %14.0f %14.0f %12lld\n", change.name, median(shown), median(counted),
                    qint64(preview.result().bytes.size()));
    }
    return 0;
}
