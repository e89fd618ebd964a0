#include "engine/pipeline/pictureloader.h"

#include "engine/geometry/boxshrink.h"

#include <QFile>

#include <array>
#include <cstring>

namespace quillet {

namespace {

// The loaders we accept. libvips also "loads" CSV, matrix, FITS and raw files
// (and anything named .csv is a picture to it), which a photo batch must treat
// as ordinary files to copy or skip.
constexpr std::array<const char*, 11> acceptedLoaders = {
    "VipsForeignLoadJpegFile", "VipsForeignLoadPngFile",  "VipsForeignLoadNsgifFile",
    "VipsForeignLoadTiffFile", "VipsForeignLoadWebpFile", "VipsForeignLoadHeifFile",
    "VipsForeignLoadJp2kFile", "VipsForeignLoadJxlFile",  "VipsForeignLoadSvgFile",
    "VipsForeignLoadPdfFile",  "VipsForeignLoadPpmFile",
};

// Name of the libvips loader for the file, or null when it is not a picture
// libvips reads or not one we accept.
const char* acceptedLoaderFor(const QString& path) {
    const QByteArray native = QFile::encodeName(path);
    const char* loader = vips_foreign_find_load(native.constData());
    if (!loader) {
        vips_error_clear();
        return nullptr;
    }
    for (const char* accepted : acceptedLoaders)
        if (std::strcmp(loader, accepted) == 0)
            return loader;
    return nullptr;
}

// sRGB uchar, three bands or four with straight alpha, whatever the file held
// (grey, 16-bit, CMYK, palette, with or without alpha).
vips::VImage normalise(vips::VImage image) {
    if (image.interpretation() == VIPS_INTERPRETATION_sRGB && image.format() == VIPS_FORMAT_UCHAR &&
        (image.bands() == 3 || image.bands() == 4))
        return image;
    if (image.interpretation() != VIPS_INTERPRETATION_sRGB || image.format() != VIPS_FORMAT_UCHAR)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    if (image.format() != VIPS_FORMAT_UCHAR)
        image = image.cast(VIPS_FORMAT_UCHAR);
    if (image.bands() == 1 || image.bands() == 2) // colourspace leaves some one-band images alone
        image = image.bands() == 1 ? vips::VImage::bandjoin({image, image, image})
                                   : vips::VImage::bandjoin({image[0], image[0], image[0], image[1]});
    if (image.bands() > 4)
        image = image.extract_band(0, vips::VImage::option()->set("n", 4));
    return image.copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

// Averages blocks of `factor` x `factor` pixels, pulling rows from the
// decoder only as the shrink asks for them. Sides are rounded to the nearest
// whole block, which keeps the drift of the geometry's pixel scale
// (shrunk side / full side) under half a shrunk pixel. Colour is averaged
// premultiplied where there is alpha, or transparent pixels would bleed into
// their neighbours.
vips::VImage boxShrunk(const vips::VImage& image, int factor) {
    if (BoxShrink::takes(image))
        return BoxShrink::shrink(image, factor);
    if (!vips_image_hasalpha(image.get_image()))
        return image.shrink(factor, factor);
    return image.premultiply().shrink(factor, factor).unpremultiply().cast(image.format());
}

} // namespace

std::optional<PictureLoader::Header> PictureLoader::readHeader(const QString& path) {
    const char* loader = acceptedLoaderFor(path);
    if (!loader)
        return std::nullopt;
    try {
        // Opening reads the header only; pixels come later, on demand.
        const vips::VImage image = vips::VImage::new_from_file(QFile::encodeName(path).constData());
        return Header{image.width(), image.height(), std::strcmp(loader, "VipsForeignLoadJpegFile") == 0};
    } catch (const vips::VError&) {
        vips_error_clear();
        return std::nullopt;
    }
}

PictureLoader::Result PictureLoader::load(const QString& path, int shrink) {
    const auto header = readHeader(path);
    return header ? load(path, *header, shrink) : Result{};
}

namespace {

// The file opened for one pass from top to bottom: the loader keeps no
// buffer of its own.
vips::VImage openSequential(const QString& path, const PictureLoader::Header& header, int shrink) {
    auto options = vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL);
    if (header.isJpeg && (shrink == 2 || shrink == 4 || shrink == 8))
        options->set("shrink", shrink);
    return vips::VImage::new_from_file(QFile::encodeName(path).constData(), options);
}

PictureLoader::Result loaded(const vips::VImage& image, const PictureLoader::Header& header) {
    // Pictures without alpha let geometry skip premultiplying.
    const bool opaque = !vips_image_hasalpha(image.get_image());
    return {PictureLoader::Status::Loaded,
            Picture{normalise(image), double(header.width), double(header.height), opaque}};
}

PictureLoader::Result loadPicture(const QString& path, const PictureLoader::Header& header, int shrink,
                                  int boxShrink, bool decode) {
    if (header.width <= 0 || header.height <= 0)
        return {PictureLoader::Status::Corrupted, {}};
    try {
        vips::VImage image = openSequential(path, header, shrink);
        if (boxShrink > 1)
            image = boxShrunk(image, boxShrink);
        // Decode now, once: a corrupt file is caught here rather than halfway
        // through encoding, and geometry, watermarks and the status thumbnail
        // all read the same pixels. An RGB picture keeps its three bands, a
        // quarter less to hold and to resample than four.
        if (decode)
            image = image.copy_memory();
        return loaded(image, header);
    } catch (const vips::VError&) {
        vips_error_clear();
        return {PictureLoader::Status::Corrupted, {}};
    }
}

} // namespace

PictureLoader::Result PictureLoader::load(const QString& path, const Header& header, int shrink,
                                          int boxShrink) {
    return loadPicture(path, header, shrink, boxShrink, true);
}

PictureLoader::Result PictureLoader::open(const QString& path, const Header& header, int shrink,
                                          int boxShrink) {
    return loadPicture(path, header, shrink, boxShrink, false);
}

int PictureLoader::jpegShrinkFor(int width, int height, double drawnWidth, double drawnHeight) {
    if (width <= 0 || height <= 0 || drawnWidth <= 0 || drawnHeight <= 0)
        return 1;
    for (int shrink : {8, 4, 2})
        if (drawnWidth <= width / shrink && drawnHeight <= height / shrink)
            return shrink;
    return 1;
}

PictureLoader::Decode::Decode(const QString& path, const Header& header, int shrink) : m_header(header) {
    if (header.width <= 0 || header.height <= 0)
        return;
    try {
        m_image = openSequential(path, header, shrink).copy_memory();
        m_status = Status::Loaded;
    } catch (const vips::VError&) {
        vips_error_clear();
    }
}

PictureLoader::Result PictureLoader::Decode::picture(int boxShrink) const {
    if (m_status != Status::Loaded)
        return {m_status, {}};
    try {
        // The same block average as load() makes while the rows stream in.
        return loaded(boxShrink > 1 ? boxShrunk(m_image, boxShrink).copy_memory() : m_image, m_header);
    } catch (const vips::VError&) {
        vips_error_clear();
        return {Status::Corrupted, {}};
    }
}

const QStringList& PictureLoader::readableExtensions() {
    // The file types of the accepted loaders above, as libvips 8.14 lists them.
    static const QStringList extensions = {
        QStringLiteral("jpg"),  QStringLiteral("jpeg"), QStringLiteral("jpe"),  QStringLiteral("png"),
        QStringLiteral("gif"),  QStringLiteral("tif"),  QStringLiteral("tiff"), QStringLiteral("webp"),
        QStringLiteral("heic"), QStringLiteral("heif"), QStringLiteral("avif"), QStringLiteral("jp2"),
        QStringLiteral("j2k"),  QStringLiteral("jpt"),  QStringLiteral("j2c"),  QStringLiteral("jpc"),
        QStringLiteral("jxl"),  QStringLiteral("svg"),  QStringLiteral("svgz"), QStringLiteral("pdf"),
        QStringLiteral("pbm"),  QStringLiteral("pgm"),  QStringLiteral("ppm"),  QStringLiteral("pnm"),
    };
    return extensions;
}

bool PictureLoader::isReadableExtension(const QString& suffix) {
    return readableExtensions().contains(suffix.toLower());
}

} // namespace quillet
