#include "app/guitest.h"
#include "app/models/desktopservices.h"
#include "app/models/thumbnailimage.h"

#include <QMimeData>
#include <QUrl>

using namespace quillet;

namespace {

TEST(ThumbnailImageTest, EveryBandCountBecomesAnImageOfTheSameSizeAndColour) {
    const vips::VImage rgba = testsupport::solidImage(64, 48, 200, 100, 50, 128);
    const struct {
        vips::VImage image;
        QRgb expected;
    } cases[] = {
        {rgba.extract_band(0), qRgb(200, 200, 200)},
        {rgba.extract_band(0).bandjoin(rgba.extract_band(3)), qRgba(200, 200, 200, 128)},
        {rgba.extract_band(0, vips::VImage::option()->set("n", 3)), qRgb(200, 100, 50)},
        {rgba, qRgba(200, 100, 50, 128)},
        {rgba.extract_band(0, vips::VImage::option()->set("n", 3)).cast(VIPS_FORMAT_USHORT),
         qRgb(200, 100, 50)},
    };
    for (const auto& c : cases) {
        const QImage image = thumbnailImage(c.image);
        ASSERT_EQ(image.size(), QSize(64, 48)) << c.image.bands() << " bands";
        const QRgb pixel = image.pixel(63, 47);
        EXPECT_EQ(pixel, c.expected) << c.image.bands() << " bands: " << std::hex << pixel;
    }
}

TEST(ThumbnailImageTest, ClipboardCarriesTheResultAsTiffAndItsPath) {
    auto dir = testsupport::scratchDir("clip");
    const QString path = guitest::makePictures(dir->path(), 1, 40).first();
    std::unique_ptr<QMimeData> data(DesktopServices::clipboardData(path));
    ASSERT_NE(data, nullptr);
    const QByteArray tiff = data->data("image/tiff");
    const vips::VImage decoded = vips::VImage::new_from_buffer(tiff.constData(), size_t(tiff.size()), "");
    EXPECT_EQ(decoded.width(), 40);
    EXPECT_EQ(decoded.height(), 40);
    EXPECT_EQ(data->text(), path);
    EXPECT_EQ(data->urls(), QList<QUrl>{QUrl::fromLocalFile(path)});

    testsupport::writeFile(dir->filePath("notes.txt"), "text");
    EXPECT_EQ(DesktopServices::clipboardData(dir->filePath("notes.txt")), nullptr);
}

} // namespace
