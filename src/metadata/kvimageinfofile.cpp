// The parts of KVImageInfo that read and write files: building a record from
// a picture, and the class methods over the EXIF transfer and the orientation.

#include "metadata/kvimageinfo.h"

#include "metadata/exiftransfer.h"
#include "metadata/imagekind.h"
#include "metadata/jpegsections.h"
#include "metadata/orientationtag.h"
#include "metadata/pictureexif.h"
#include "metadata/thumbnailmaker.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <cstring>

namespace quillet {

namespace {

const int ThumbnailBox = 32;

// EXIF text is ASCII by the book; cameras write UTF-8 or Latin-1 beyond it.
QString fromCText(const char* text) {
    const QByteArray bytes(text);
    const QString utf8 = QString::fromUtf8(bytes);
    return utf8.contains(QChar::ReplacementCharacter) ? QString::fromLatin1(bytes) : utf8;
}

// "%Y:%m:%d %H:%M:%S" in local time; invalid when the text does not parse.
QDateTime parseExifDate(const char* text) {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    char tail = 0;
    if (std::sscanf(text, "%4d:%2d:%2d %2d:%2d:%2d%c", &year, &month, &day, &hour, &minute, &second, &tail) !=
        6)
        return {};
    const QDate date(year, month, day);
    const QTime time(hour, minute, second);
    if (!date.isValid() || !time.isValid())
        return {};
    return QDateTime(date, time);
}

// Camera, exposure, comment and capture date: what EXIF tells, whatever the
// picture's format.
void extractExifFields(const ImageInfo& info, KVImageInfo::Data& data) {
    data.cameraMake = fromCText(info.CameraMake);
    data.cameraModel = fromCText(info.CameraModel);
    data.ccdWidth = info.CCDWidth;
    data.focalLength = info.FocalLength;
    data.exposureTime = info.ExposureTime;
    data.aperture = info.ApertureFNumber;
    data.distance = info.Distance;
    data.exposureBias = info.ExposureBias;
    data.iso = info.ISOequivalent;
    data.flashUsed = info.FlashUsed > 0; // unknown counts as no flash
    if (info.Comments[0] != '\0')
        data.comment = fromCText(info.Comments);
    data.creationDateString = fromCText(info.DateTime);
    if (!data.creationDateString.isEmpty())
        data.creationDate = parseExifDate(info.DateTime);
}

void extractFromImageInfo(const JpegContext& ctx, KVImageInfo::Data& data, bool makeThumbnail) {
    const ImageInfo& info = ctx.Info;
    if (makeThumbnail && info.ThumbnailPointer && info.ThumbnailSize > 0)
        data.thumbnail = thumbnailmaker::thumbnailForBuffer(info.ThumbnailPointer, info.ThumbnailSize,
                                                            ThumbnailBox, ThumbnailBox);
    extractExifFields(info, data);
    data.width = info.Width;
    data.height = info.Height;
    data.size = info.FileSize;
    data.orientation = info.Orientation;
    data.fileDate = QDateTime::fromSecsSinceEpoch(info.FileDateTime);
}

// The EXIF of a picture other than a JPEG, from its header. A JPEG that
// reached this point failed its own EXIF read and is left as it stands.
void extractFromHeaderExif(const vips::VImage& header, const QString& path, KVImageInfo::Data& data,
                           MetadataNotes* notes) {
    const char* loader = vips_foreign_find_load(QFile::encodeName(path).constData());
    if (!loader) {
        vips_error_clear();
        return;
    }
    if (std::strcmp(loader, "VipsForeignLoadJpegFile") == 0)
        return;
    const QByteArray exif = PictureExif::fromHeader(header, loader, path);
    if (exif.isEmpty())
        return;
    JpegContext ctx;
    ctx.Notes = notes;
    ctx.CurrentFile = QFile::encodeName(path).toStdString();
    ctx.Info.FlashUsed = -1;
    ctx.Info.MeteringMode = -1;
    PictureExif::parse(ctx, exif);
    extractExifFields(ctx.Info, data);
    if (ctx.Info.Orientation >= 1 && ctx.Info.Orientation <= 8)
        data.orientation = ctx.Info.Orientation;
}

// Any picture libvips can open: its pixel size from the header alone, and
// the EXIF fields when the header carries EXIF.
bool extractFromFile(const QString& path, KVImageInfo::Data& data, MetadataNotes* notes) {
    try {
        const vips::VImage image = vips::VImage::new_from_file(QFile::encodeName(path).constData());
        if (image.width() == 0 && image.height() == 0)
            return false;
        data.width = image.width();
        data.height = image.height();
        data.flashUsed = false;
        extractFromHeaderExif(image, path, data, notes);
    } catch (const vips::VError&) {
        return false;
    }
    const QFileInfo file(path);
    if (file.exists()) {
        data.size = file.size();
        data.fileDate = file.lastModified();
    }
    return true;
}

} // namespace

std::optional<KVImageInfo> KVImageInfo::fromFile(const QString& path, bool fallbackOnFile, bool makeThumbnail,
                                                 MetadataNotes* notes) {
    Data data;
    data.path = path;
    data.kind = kindFromPath(path);

    JpegContext ctx;
    ctx.Notes = notes;
    const QByteArray native = QFile::encodeName(path);
    if (parseFile(ctx, native.constData())) {
        extractFromImageInfo(ctx, data, makeThumbnail);
        DiscardData(ctx);
        if (data.thumbnail)
            return KVImageInfo(std::move(data));
    } else if (!fallbackOnFile || !extractFromFile(path, data, notes)) {
        return std::nullopt;
    }
    if (makeThumbnail)
        data.thumbnail = thumbnailmaker::thumbnailForPath(path, ThumbnailBox, ThumbnailBox);
    return KVImageInfo(std::move(data));
}

std::optional<KVImageInfo> KVImageInfo::fromIphotoInfo(const QVariantMap& dictionary) {
    const QString path = dictionary.value(QStringLiteral("ImagePath")).toString();
    if (path.isEmpty())
        return KVImageInfo();
    std::optional<KVImageInfo> info = fromFile(path);
    if (info) {
        info->m_data.caption = dictionary.value(QStringLiteral("Caption")).toString();
        info->setComment(dictionary.value(QStringLiteral("Comment")).toString());
    }
    return info;
}

int KVImageInfo::copyInfoFromPath(const QString& source, const QString& destination, FileSystem& fileSystem,
                                  MetadataNotes* notes) {
    JpegContext ctx;
    ctx.Files = &fileSystem;
    ctx.Notes = notes;
    return copyExif(ctx, QFile::encodeName(source).constData(), QFile::encodeName(destination).constData());
}

int KVImageInfo::orientationForPath(const QString& path, FileSystem& fileSystem) {
    return _getOrientation(QFile::encodeName(path).constData(), fileSystem);
}

int KVImageInfo::setOrientation(int orientation, const QString& path, FileSystem& fileSystem) {
    return _setOrientation(QFile::encodeName(path).constData(), uint8_t(orientation), fileSystem);
}

} // namespace quillet
