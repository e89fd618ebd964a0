// Rounds and time of the size budget on 24-megapixel photos: for each limit,
// the quality search and then, when it ran out above the limit, the steps of
// size, each counted as the encodes it makes. It calls the two steps the
// encoder's shrink-to-fit path calls (OutputEncoder::searchJpegQuality and
// SizeBudget::shrinkToFit) with an encoder that counts.
//
//   quillet-sizebudget-bench [FOLDER]   (default: the first four of
//                                        bench/corpus/big, enlarged 1.41 times to 24-32 MP)

#include "engine/pipeline/outputencoder.h"
#include "engine/pipeline/sizebudget.h"
#include "support/activitylog.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTextStream>

#include <vips/vips8>

using namespace quillet;

namespace {

struct Outcome {
    int qualityRounds = 0;
    int sizeRounds = 0;
    int quality = 0;
    qint64 bytes = 0;
    int width = 0;
    int height = 0;
    double seconds = 0;
};

Outcome fit(const Picture& picture, qint64 limit) {
    Outcome outcome;
    QElapsedTimer timer;
    timer.start();
    NullActivityLog log;
    int floor = 80;
    const QByteArray searched = OutputEncoder::searchJpegQuality(
        [&](int q) {
            ++outcome.qualityRounds;
            return OutputEncoder::jpegDataForImage(picture, 72, q);
        },
        80, limit, log, QStringLiteral("JPEG"), &floor);
    outcome.quality = floor;
    outcome.bytes = searched.size();
    outcome.width = picture.image.width();
    outcome.height = picture.image.height();
    if (searched.size() > limit) {
        const auto fitted = SizeBudget::shrinkToFit(
            picture,
            [&](const Picture& p) {
                ++outcome.sizeRounds;
                return OutputEncoder::jpegDataForImage(p, 72, floor);
            },
            searched.size(), limit);
        if (fitted) {
            outcome.bytes = fitted->bytes.size();
            outcome.width = fitted->width;
            outcome.height = fitted->height;
        }
    }
    outcome.seconds = double(timer.nsecsElapsed()) / 1e9;
    return outcome;
}

} // namespace

int main(int argc, char** argv) {
    if (VIPS_INIT(argv[0]))
        return 1;
    const QString folder = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("bench/corpus/big");
    const double enlarge = argc > 1 ? 1.0 : 1.41;
    QTextStream out(stdout);
    out << "| limit | picture | MP | quality rounds | kept quality | size rounds | out pixels | bytes | "
           "seconds |\n|---|---|---:|---:|---:|---:|---|---:|---:|\n";
    const QStringList names = QDir(folder).entryList({"*.jpg"}, QDir::Files, QDir::Name).mid(0, 4);
    std::vector<std::pair<QString, Picture>> pictures;
    for (const QString& name : names) {
        vips::VImage image =
            vips::VImage::new_from_file(QDir(folder).filePath(name).toLocal8Bit().constData());
        if (enlarge != 1.0)
            image = image.resize(enlarge);
        image = image.copy_memory();
        pictures.emplace_back(name, Picture{image, double(image.width()), double(image.height()), true});
    }
    for (const qint64 kb : {50, 200, 1024}) {
        int most = 0;
        double slowest = 0;
        for (const auto& [name, picture] : pictures) {
            const Outcome o = fit(picture, kb * 1024);
            most = std::max(most, o.qualityRounds + o.sizeRounds);
            slowest = std::max(slowest, o.seconds);
            out << "| " << kb << " KB | " << name << " | "
                << QString::number(picture.image.width() * double(picture.image.height()) / 1e6, 'f', 1)
                << " | " << o.qualityRounds << " | " << o.quality << " | " << o.sizeRounds << " | " << o.width
                << " x " << o.height << " | " << o.bytes << " | " << QString::number(o.seconds, 'f', 2)
                << " |\n";
        }
        out << "| " << kb << " KB | most encodes " << most << ", slowest " << QString::number(slowest, 'f', 2)
            << " s | | | | | | | |\n";
        out.flush();
    }
    return 0;
}
