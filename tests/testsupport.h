#pragma once

#include "engine/picture.h"

#include <QByteArray>
#include <QMap>
#include <QSettings>
#include <QString>
#include <QTemporaryDir>

#include <memory>

#include <gtest/gtest.h>
#include <vips/vips8>

// Failure messages show a QString (and so a QStringList) as its text rather
// than as the bytes of its characters.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace quillet {

// Fixtures shared by every suite.
namespace testsupport {

// ../shared/samples/photos, or empty when that folder is absent.
QString samplesDir();
// Full path of a shared sample; skips the calling test with a clear message
// when the samples are absent. Use as: QString p; QUILLET_SAMPLE_OR_SKIP(p, "Canon_40D.jpg");
QString samplePath(const QString& name);
#define QUILLET_SAMPLE_OR_SKIP(var, name)                                                                    \
    do {                                                                                                     \
        (var) = testsupport::samplePath(QStringLiteral(name));                                               \
        if ((var).isEmpty())                                                                                 \
            GTEST_SKIP() << "sample pictures not found (../shared/samples/photos is absent)";                \
    } while (0)

// A scratch folder for output trees. Output paths under /tmp count as the
// single-file run's scratch area, where existing files are replaced without a
// question, so batch tests must never work there: this picks the current
// folder, /var/tmp or the home folder, whichever is not under /tmp.
std::unique_ptr<QTemporaryDir> scratchDir(const QString& prefix);

// The pictures shipped in the project's samples/ folder.
QString projectSamplesDir();

// Path of the built command-line tool.
QString cliPath();

QByteArray readFile(const QString& path);
bool writeFile(const QString& path, const QByteArray& bytes);
// Every file under a folder, by its path relative to the folder, with its bytes.
QMap<QString, QByteArray> fileTree(const QString& root);

// A solid 4-band picture of the given size and colour.
vips::VImage solidImage(int width, int height, int r, int g, int b, int a = 255);
Picture solidPicture(int width, int height, int r, int g, int b, int a = 255);
// An 8-bit picture with deterministic detail in every band: noise and edges,
// no flat areas. Bands are left uninterpreted (4 bands are not alpha).
vips::VImage busyPicture(int width, int height, int bands);
// The pixels as bytes, row after row.
std::vector<uint8_t> bytesOf(const vips::VImage& image);
// One pixel as {r, g, b, a}.
std::vector<double> pixelAt(const vips::VImage& image, int x, int y);

// Every reading goes through a fresh QSettings on a real INI file, the store
// that hands everything back as text.
class StoreTest : public testing::Test {
  protected:
    std::unique_ptr<QSettings> ini() const {
        return std::make_unique<QSettings>(dir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    }
    void seed(const QString& key, const QVariant& value) const { ini()->setValue(key, value); }

    QTemporaryDir dir;
};

} // namespace testsupport

} // namespace quillet
