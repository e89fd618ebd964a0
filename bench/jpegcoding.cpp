// Bytes and CPU time of JPEG outputs with optimised against standard Huffman
// tables: every JPEG of a folder fit in 1600 x 1600 and encoded at quality 80
// as the batch encodes it.
//
//   quillet-jpegcoding-bench [FOLDER] [RUNS]

#include "engine/pipeline/outputencoder.h"

#include <QDir>
#include <QTextStream>

#include <ctime>
#include <vips/vips8>

using namespace quillet;

namespace {

double cpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) / 1e9;
}

struct Totals {
    qint64 bytes = 0;
    double cpu = 0;
};

} // namespace

int main(int argc, char** argv) {
    if (VIPS_INIT(argv[0]))
        return 1;
    vips_concurrency_set(1);
    const QString folder =
        argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/work/shared/samples/photos");
    const int runs = argc > 2 ? std::max(1, atoi(argv[2])) : 5;
    QTextStream out(stdout);
    out << "| picture | pixels | standard bytes | optimised bytes | saved | standard CPU ms | optimised CPU "
           "ms |\n"
        << "|---|---:|---:|---:|---:|---:|---:|\n";
    Totals standard, optimised;
    for (const QString& name :
         QDir(folder).entryList({"*.jpg", "*.jpeg", "*.JPG"}, QDir::Files, QDir::Name)) {
        const QByteArray path = QDir(folder).filePath(name).toLocal8Bit();
        Picture picture;
        try {
            const vips::VImage image =
                vips::VImage::thumbnail(path.constData(), 1600, vips::VImage::option()->set("height", 1600))
                    .copy_memory();
            picture = Picture{image, double(image.width()), double(image.height())};
        } catch (const vips::VError&) {
            continue; // the damaged samples
        }
        Totals file[2];
        for (int run = 0; run < runs; ++run)
            for (const auto tables :
                 {OutputEncoder::HuffmanTables::Standard, OutputEncoder::HuffmanTables::Optimised}) {
                const double start = cpuSeconds();
                const QByteArray bytes = OutputEncoder::jpegDataForImage(picture, 72, 80, {}, tables);
                Totals& t = file[tables == OutputEncoder::HuffmanTables::Optimised];
                t.cpu += cpuSeconds() - start;
                t.bytes = bytes.size();
            }
        out << "| " << name << " | " << picture.image.width() << " x " << picture.image.height() << " | "
            << file[0].bytes << " | " << file[1].bytes << " | "
            << QString::number(100.0 * double(file[0].bytes - file[1].bytes) / double(file[0].bytes), 'f', 1)
            << " % | " << QString::number(1000 * file[0].cpu / runs, 'f', 1) << " | "
            << QString::number(1000 * file[1].cpu / runs, 'f', 1) << " |\n";
        standard.bytes += file[0].bytes;
        standard.cpu += file[0].cpu / runs;
        optimised.bytes += file[1].bytes;
        optimised.cpu += file[1].cpu / runs;
    }
    out << "| all | | " << standard.bytes << " | " << optimised.bytes << " | "
        << QString::number(100.0 * double(standard.bytes - optimised.bytes) /
                               double(std::max<qint64>(1, standard.bytes)),
                           'f', 1)
        << " % | " << QString::number(1000 * standard.cpu, 'f', 1) << " | "
        << QString::number(1000 * optimised.cpu, 'f', 1) << " |\n";
    return 0;
}
