#include "support/customicon.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QFileInfo>
#include <QTemporaryDir>

#include <map>
#include <string>

using namespace quillet;

using vips::VImage;

namespace {

class CustomIconTest : public ::testing::Test {
  protected:
    void SetUp() override { qputenv("XDG_CACHE_HOME", cache.path().toLocal8Bit()); }

    QString writeJpeg(const QString& name, int w, int h) {
        const QString path = files.filePath(name);
        testsupport::solidImage(w, h, 200, 30, 30)
            .extract_band(0, VImage::option()->set("n", 3))
            .write_to_file(path.toLocal8Bit().constData());
        return path;
    }

    // The PNG's text chunks by key, as its reader reports them ("png-comment-N-Key").
    static std::map<std::string, std::string> texts(const VImage& png) {
        std::map<std::string, std::string> out;
        gchar** fields = vips_image_get_fields(png.get_image());
        for (gchar** f = fields; *f; ++f)
            if (const char* key = strstr(*f, "-Thumb::"); key && g_str_has_prefix(*f, "png-comment-"))
                out[key + 1] = png.get_string(*f);
        return g_strfreev(fields), out;
    }

    QTemporaryDir cache, files;
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
        EXPECT_EQ(std::pair(png.width(), png.height()), std::pair(size, height));
        EXPECT_NEAR(testsupport::pixelAt(png, size / 2, height / 2)[0], 200, 3);
        const auto tags = texts(png);
        EXPECT_EQ(tags.at("Thumb::URI"), uri.toStdString());
        EXPECT_EQ(tags.at("Thumb::MTime"), std::to_string(QFileInfo(path).lastModified().toSecsSinceEpoch()));
    }
    EXPECT_TRUE(CustomIcon::removeFromFile(path));
    for (int size : {128, 256})
        EXPECT_FALSE(QFileInfo::exists(CustomIcon::thumbnailPath(path, size)));
}

TEST_F(CustomIconTest, SmallPictureIsNotEnlargedAndFailuresAreQuiet) {
    const QString small = writeJpeg("small.jpg", 40, 30);
    ASSERT_TRUE(CustomIcon::setForFile(small));
    const QString icon = CustomIcon::thumbnailPath(small, 256);
    EXPECT_EQ(VImage::new_from_file(icon.toLocal8Bit().constData()).width(), 40);

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
