#include "support/customicon.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <map>
#include <string>

using vips::VImage;

namespace {

class CustomIconTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(cache.isValid() && files.isValid());
        savedCache = qgetenv("XDG_CACHE_HOME");
        qputenv("XDG_CACHE_HOME", cache.path().toLocal8Bit());
    }
    void TearDown() override {
        if (savedCache.isNull())
            qunsetenv("XDG_CACHE_HOME");
        else
            qputenv("XDG_CACHE_HOME", savedCache);
    }

    QString writeJpeg(const QString& name, int w, int h) {
        const QString path = files.filePath(name);
        testsupport::solidImage(w, h, 200, 30, 30).extract_band(0, VImage::option()->set("n", 3))
            .write_to_file(path.toLocal8Bit().constData());
        return path;
    }

    // Text chunks of a PNG, as the PNG reader reports them.
    static std::map<std::string, std::string> texts(const VImage& png) {
        std::map<std::string, std::string> out;
        gchar** fields = vips_image_get_fields(png.get_image());
        for (gchar** f = fields; *f; ++f) {
            const std::string field = *f;
            const auto key = field.find("-Thumb::");
            if (field.rfind("png-comment-", 0) == 0 && key != std::string::npos)
                out[field.substr(key + 1)] = png.get_string(field.c_str());
        }
        g_strfreev(fields);
        return out;
    }

    QTemporaryDir cache;
    QTemporaryDir files;
    QByteArray savedCache;
};

TEST_F(CustomIconTest, WritesBothSizesTaggedWithUriAndMTime) {
    const QString path = writeJpeg("holiday in é.jpg", 600, 400);
    ASSERT_TRUE(CustomIcon::setForFile(path));

    // The name is the MD5 of the percent-encoded file URI.
    const QByteArray uri = "file://" + QFileInfo(path).absolutePath().toUtf8() + "/holiday%20in%20%C3%A9.jpg";
    const QString normal = CustomIcon::thumbnailPath(path, 128);
    EXPECT_EQ(normal, cache.path() + "/thumbnails/normal/" +
                          QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex() + ".png");

    for (const auto& [size, file, height] :
         {std::tuple{128, normal, 85}, std::tuple{256, CustomIcon::thumbnailPath(path, 256), 171}}) {
        ASSERT_TRUE(QFileInfo::exists(file)) << size;
        EXPECT_EQ(QFileInfo(file).permissions() & (QFile::ReadGroup | QFile::ReadOther), 0) << size;
        const VImage png = VImage::new_from_file(file.toLocal8Bit().constData());
        EXPECT_EQ(png.width(), size);
        EXPECT_EQ(png.height(), height);
        EXPECT_EQ(png.bands(), 4);
        EXPECT_NEAR(testsupport::pixelAt(png, size / 2, height / 2)[0], 200, 3);
        const auto tags = texts(png);
        EXPECT_EQ(tags.at("Thumb::URI"), uri.toStdString());
        EXPECT_EQ(tags.at("Thumb::MTime"), std::to_string(QFileInfo(path).lastModified().toSecsSinceEpoch()));
    }

    EXPECT_TRUE(CustomIcon::removeFromFile(path));
    EXPECT_FALSE(QFileInfo::exists(normal));
    EXPECT_FALSE(QFileInfo::exists(CustomIcon::thumbnailPath(path, 256)));
    EXPECT_TRUE(CustomIcon::removeFromFile(path));
}

TEST_F(CustomIconTest, SmallPictureIsNotEnlarged) {
    const QString path = writeJpeg("small.jpg", 40, 30);
    ASSERT_TRUE(CustomIcon::setForFile(path));
    const VImage png = VImage::new_from_file(CustomIcon::thumbnailPath(path, 256).toLocal8Bit().constData());
    EXPECT_EQ(png.width(), 40);
    EXPECT_EQ(png.height(), 30);
}

TEST_F(CustomIconTest, FailsQuietlyOnWhatCannotBeDone) {
    const QString text = files.filePath("notes.jpg");
    ASSERT_TRUE(testsupport::writeFile(text, "not a picture"));
    EXPECT_FALSE(CustomIcon::setForFile(text));
    EXPECT_FALSE(QFileInfo::exists(CustomIcon::thumbnailPath(text, 128)));
    EXPECT_FALSE(CustomIcon::setForFile(files.filePath("missing.jpg")));

    // A cache folder that cannot be made.
    const QString picture = writeJpeg("fine.jpg", 60, 40);
    const QString blocker = files.filePath("blocker");
    ASSERT_TRUE(testsupport::writeFile(blocker, "x"));
    qputenv("XDG_CACHE_HOME", blocker.toLocal8Bit());
    EXPECT_FALSE(CustomIcon::setForFile(picture));
}

} // namespace
