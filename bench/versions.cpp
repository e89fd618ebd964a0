// Wall time of a batch that writes three versions of every picture (a 2560
// JPEG, a 1280 WebP and a 320 JPEG) against the batch of the largest version
// alone, on 24 MP photos, through the batch engine as both front ends run it:
// once with the WebP at its encoder's usual effort, once with fast encoding.
//
//   quillet-versions-bench [FOLDER] [RUNS]
//
// FOLDER holds the JPEGs (bench/corpus/big does); without it (or given as
// ""), eight synthetic 6000 x 4000 photos are made once in
// bench/work/versions-corpus.

#include "engine/batch/batchenvironment.h"
#include "engine/batch/imageprocessor.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTextStream>

#include <algorithm>
#include <vips/vips8>

using namespace quillet;
using vips::VImage;

namespace {

class SilentShell : public BatchShell {
  public:
    void beginProgressSheet(int) override {}
    void setProgressTotal(int) override {}
    void endProgressSheet() override {}
    void setStatus(const QString&, const std::optional<vips::VImage>&) override {}
    int confirmReplace(const QString&) override { return ReplaceAll; }
    void beginOverwriteWarningSheet() override {}
    void reportError(const BatchError&) override { failed = true; }
    void didProcess(int done, int) override { processed = done; }
    void writeActivity(const QString&) override {}
    void writeWarningActivity(const QString&) override {}
    bool wantsThumbnails() const override { return false; }
    bool failed = false;
    int processed = 0;
};

// Detail at several scales and grain, so the JPEGs decode and encode like
// camera pictures rather than flat colour.
void makePhoto(const QString& path, int seed) {
    const int width = 6000, height = 4000;
    VImage sum = VImage::black(width, height, VImage::option()->set("bands", 3)) + 110.0;
    for (const int scale : {400, 60, 8}) {
        VImage noise = VImage::gaussnoise(
            width / scale + 3, height / scale + 3,
            VImage::option()->set("sigma", 40.0)->set("mean", 0.0)->set("seed", seed * 7 + scale));
        noise =
            noise.resize(scale, VImage::option()->set("kernel", VIPS_KERNEL_CUBIC)).crop(0, 0, width, height);
        sum = sum + VImage::bandjoin({noise, noise * 0.8, noise * 0.6});
    }
    sum = sum + VImage::gaussnoise(width, height,
                                   VImage::option()->set("sigma", 3.0)->set("mean", 0.0)->set("seed", seed));
    sum = (sum < 0.0).ifthenelse(0.0, sum);
    sum = (sum > 255.0).ifthenelse(255.0, sum);
    sum.cast(VIPS_FORMAT_UCHAR).jpegsave(QFile::encodeName(path).constData(), VImage::option()->set("Q", 92));
}

ProcessingRequest fit(int side, int format) {
    ProcessingRequest request;
    request.sizing.scaleType = ScaleType::Fit;
    request.sizing.width = side;
    request.sizing.height = side;
    request.output.format = format;
    return request;
}

double runBatch(const QString& folder, const QString& dest, const std::vector<OutputVersion>& versions,
                const BatchOptions& options) {
    QDir(dest).removeRecursively();
    SilentShell shell;
    Renamer renamer;
    ImageProcessor job(shell, renamer);
    QElapsedTimer clock;
    clock.start();
    job.processFiles({folder}, versions, dest, 0, options);
    job.waitForFinished();
    const double seconds = double(clock.nsecsElapsed()) / 1e9;
    if (shell.failed)
        qFatal("the batch failed");
    return seconds;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (VIPS_INIT(argv[0]))
        return 1;
    const QString work = QStringLiteral(QUILLET_BENCH_DIR "/work");
    const bool given = argc > 1 && argv[1][0] != '\0';
    const QString folder =
        given ? QString::fromLocal8Bit(argv[1]) : work + QStringLiteral("/versions-corpus");
    const int runs = argc > 2 ? std::max(1, atoi(argv[2])) : 3;
    QTextStream out(stdout);
    if (!given && !QDir(folder).exists()) {
        QDir().mkpath(folder);
        for (int i = 0; i < 8; ++i) {
            out << "making photo " << i + 1 << " of 8\n" << Qt::flush;
            makePhoto(folder + QStringLiteral("/photo_%1.jpg").arg(i), i + 1);
        }
    }
    const BatchOptions options;
    BatchEnvironment::prepare(options);

    ProcessingRequest large = fit(2560, FileFormat::Jpeg);
    ProcessingRequest web = fit(1280, FileFormat::WebP);
    ProcessingRequest thumb = fit(320, FileFormat::Jpeg);
    ProcessingRequest fastWeb = web;
    fastWeb.output.fastEncoding = true;
    const std::vector<OutputVersion> alone = {{large, QStringLiteral("large"), {}}};
    const std::vector<OutputVersion> three = {{large, QStringLiteral("large"), {}},
                                              {web, QStringLiteral("web"), {}},
                                              {thumb, QStringLiteral("thumb"), {}}};
    const std::vector<OutputVersion> threeFast = {three[0], {fastWeb, QStringLiteral("web"), {}}, three[2]};
    const int pictures = int(QDir(folder).entryList({QStringLiteral("*.jpg")}, QDir::Files).size());
    std::vector<double> one, all, webAlone, thumbAlone, separate, allFast, fastWebAlone;
    const QString dest = work + QStringLiteral("/versions-out");
    // Interleaved, so that a change in the machine's load falls on every kind.
    for (int run = 0; run < runs; ++run) {
        one.push_back(runBatch(folder, dest, alone, options));
        all.push_back(runBatch(folder, dest, three, options));
        webAlone.push_back(runBatch(folder, dest, {three[1]}, options));
        thumbAlone.push_back(runBatch(folder, dest, {three[2]}, options));
        separate.push_back(one.back() + webAlone.back() + thumbAlone.back());
        allFast.push_back(runBatch(folder, dest, threeFast, options));
        fastWebAlone.push_back(runBatch(folder, dest, {threeFast[1]}, options));
    }
    out << "| batch | pictures | wall s (median of " << runs << ") | runs |\n|---|---:|---:|---|\n";
    const auto row = [&](const char* name, const std::vector<double>& times) {
        QStringList each;
        for (double t : times)
            each.append(QString::number(t, 'f', 2));
        out << "| " << name << " | " << pictures << " | " << QString::number(median(times), 'f', 2) << " | "
            << each.join(QStringLiteral(", ")) << " |\n";
    };
    row("2560 JPEG alone", one);
    row("1280 WebP alone", webAlone);
    row("320 JPEG alone", thumbAlone);
    row("the three alone, one batch after the other", separate);
    row("2560 JPEG + 1280 WebP + 320 JPEG as versions", all);
    row("1280 WebP alone, fast encoding", fastWebAlone);
    row("2560 JPEG + 1280 WebP (fast encoding) + 320 JPEG as versions", allFast);
    // Each run's versions batch against the largest version's batch of the
    // same run, moments apart: a change in the machine's load falls on both.
    const auto ratio = [&](const std::vector<double>& times) {
        std::vector<double> ratios;
        for (size_t i = 0; i < times.size(); ++i)
            ratios.push_back(times[i] / one[i]);
        const auto [low, high] = std::minmax_element(ratios.cbegin(), ratios.cend());
        return QStringLiteral("%1 (runs %2 to %3)")
            .arg(QString::number(median(ratios), 'f', 2), QString::number(*low, 'f', 2),
                 QString::number(*high, 'f', 2));
    };
    out << "\nversions / largest alone, the median of the runs' ratios: " << ratio(all)
        << " at the usual WebP effort, " << ratio(allFast)
        << " with fast encoding (target at most 1.60); versions / three batches: "
        << QString::number(median(all) / median(separate), 'f', 2) << "\n";
    return 0;
}
