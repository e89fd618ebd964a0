#include "support/customicon.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QFileInfo>
#include <QTemporaryDir>

#include <map>
#include <string>

using vips::VImage;

namespace {

class CustomIconTest : public ::testing::Test {
  protected:
    void SetUp() override {
        saved = qgetenv("XDG_CACHE_HOME");
        qputenv("XDG_CACHE_HOME", cache.path().toLocal8Bit());
    }
    void TearDown() override {
        saved.isNull() ? qunsetenv("XDG_CACHE_HOME") : qputenv("XDG_CACHE_HOME", saved);
    }

    QString writeJpeg(const QString& name, int w, int h) {
        const QString path = files.filePath(name);
        testsupport::solidImage(w, h, 200, 30, 30)
            .extract_band(0, VImage::option()->set("n", 3))
            .write_to_file(path.toLocal8Bit().constData());
        return path;
    }

    // The PNG's text chunks as its reader reports them.
    static std::map<std::string, std::string> texts(const VImage& png) {
        std::map<std::string, std::string> out;
        gchar** fields = vips_image_get_fields(png.get_image());
        for (gchar** f = fields; *f; ++f) {
            const std::string field = *f;
            if (const auto key = field.find("-Thumb::");
                field.rfind("png-comment-", 0) == 0 && key != std::string::npos)
                out[field.substr(key + 1)] = png.get_string(*f);
        }
        g_strfreev(fields);
        return out;
    }

    QTemporaryDir cache, files;
    QByteArray saved;
};

TEST_F(CustomIconTest, WritesBothSizesTaggedWithUriAndMTime) {
    const QString path = writeJpeg("holiday in é.jpg", 600, 400);
    ASSERT_TRUE(CustomIcon::setForFile(path));
    // Named by the MD5 of the percent-encoded URI.
    const QByteArray uri = "file://" + QFileInfo(path).absolutePath().toUtf8() + "/holiday%20in%20%C3%A9.jpg";
    EXPECT_EQ(CustomIcon::thumbnailPath(path, 128),
              cache.path() + "/thumbnails/normal/" +
                  QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex() + ".png");

    for (const auto& [size, height] : {std::pair{128, 85}, {256, 171}}) {
        const QString file = CustomIcon::thumbnailPath(path, size);
        EXPECT_EQ(QFileInfo(file).permissions() & (QFile::ReadGroup | QFile::ReadOther), 0) << size;
        const VImage png = VImage::new_from_file(file.toLocal8Bit().constData());
        EXPECT_EQ(png.width(), size);
        EXPECT_EQ(png.height(), height);
        EXPECT_NEAR(testsupport::pixelAt(png, size / 2, height / 2)[0], 200, 3);
        const auto tags = texts(png);
        EXPECT_EQ(tags.at("Thumb::URI"), uri.toStdString());
        EXPECT_EQ(tags.at("Thumb::MTime"), std::to_string(QFileInfo(path).lastModified().toSecsSinceEpoch()));
    }
    EXPECT_TRUE(CustomIcon::removeFromFile(path));
    EXPECT_FALSE(QFileInfo::exists(CustomIcon::thumbnailPath(path, 128)));
    EXPECT_FALSE(QFileInfo::exists(CustomIcon::thumbnailPath(path, 256)));
}

TEST_F(CustomIconTest, SmallPictureIsNotEnlargedAndFailuresAreQuiet) {
    const QString small = writeJpeg("small.jpg", 40, 30);
    ASSERT_TRUE(CustomIcon::setForFile(small));
    EXPECT_EQ(VImage::new_from_file(CustomIcon::thumbnailPath(small, 256).toLocal8Bit().constData()).width(),
              40);

    const QString text = files.filePath("notes.jpg");
    ASSERT_TRUE(testsupport::writeFile(text, "not a picture"));
    EXPECT_FALSE(CustomIcon::setForFile(text));
    EXPECT_FALSE(QFileInfo::exists(CustomIcon::thumbnailPath(text, 128)));
    EXPECT_FALSE(CustomIcon::setForFile(files.filePath("missing.jpg")));
    // A cache folder that cannot be made.
    qputenv("XDG_CACHE_HOME", text.toLocal8Bit());
    EXPECT_FALSE(CustomIcon::setForFile(small));
}

} // namespace
