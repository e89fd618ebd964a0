#pragma once

#include "support/filesystem.h"

#include <vips/vips8>

#include <QDateTime>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace quillet {

class MetadataNotes;

// The metadata record of one picture: name, kind, pixel size, file size,
// orientation, camera and exposure data, dates, caption, comment and a
// thumbnail of at most 32 x 32 pixels. Immutable once built, apart from the
// comment; safe to read from any thread, and two threads may build records at
// the same time (the JPEG/EXIF reader keeps its state per call).
class KVImageInfo {
  public:
    // Every field, in one plain value so tests and callers can build records.
    struct Data {
        QString path;
        QString kind;
        int width = 0;
        int height = 0;
        qint64 size = 0;
        int orientation = 0; // 1..8, 0 when unknown
        float ccdWidth = 0;
        float focalLength = 0;
        float exposureTime = 0;
        float aperture = 0;
        float distance = 0;
        float exposureBias = 0;
        int iso = 0;
        bool flashUsed = false;
        QString cameraMake;
        QString cameraModel;
        QString creationDateString;
        QDateTime creationDate; // invalid when none
        QDateTime fileDate;     // invalid when none
        QString caption;
        QString comment;
        std::optional<vips::VImage> thumbnail; // 4-band sRGB, at most 32 x 32
    };

    KVImageInfo() = default;
    explicit KVImageInfo(Data data) : m_data(std::move(data)) {}

    // initWithContentsOfFile:fallbackOnFile:. A JPEG is read through its EXIF;
    // with fallback, any other picture libvips opens gives a record with its
    // pixel size, file size and date. Nothing when the file gives no record.
    // Without makeThumbnail the record has no thumbnail and no pixels are
    // decoded (for listings that never show one). With `notes`, the JPEG
    // reader's messages are kept there instead of printed.
    static std::optional<KVImageInfo> fromFile(const QString& path, bool fallbackOnFile = true,
                                               bool makeThumbnail = true, MetadataNotes* notes = nullptr);
    // initWithIphotoInfo:. The record of the "ImagePath" file, with the
    // dictionary's "Caption" and "Comment"; an empty record without a path,
    // nothing when the file gives no record.
    static std::optional<KVImageInfo> fromIphotoInfo(const QVariantMap& info);
    // initWithCreationDate:. A record holding only the capture date.
    static KVImageInfo withCreationDate(const QDateTime& date);

    // Class methods fronting the EXIF transfer and the in-place orientation tag.
    // copyInfoFromPath:toPath: returns 1 when the destination was rewritten.
    static int copyInfoFromPath(const QString& source, const QString& destination,
                                FileSystem& fileSystem = FileSystem::standard(),
                                MetadataNotes* notes = nullptr);
    static int orientationForPath(const QString& path, FileSystem& fileSystem = FileSystem::standard());
    // Returns the previous orientation, or 0 when nothing was written.
    static int setOrientation(int orientation, const QString& path,
                              FileSystem& fileSystem = FileSystem::standard());

    const Data& data() const { return m_data; }

    // Accessors.
    QString path() const { return m_data.path; }
    QString name() const; // last path component without extension
    QString kind() const { return m_data.kind; }
    int width() const { return m_data.width; }
    int height() const { return m_data.height; }
    qint64 size() const { return m_data.size; }
    int orientation() const { return m_data.orientation; }
    bool flashUsedBool() const { return m_data.flashUsed; }
    float focalLengthFloat() const { return m_data.focalLength; }
    float focalLength35Float() const;
    float exposureTimeFloat() const { return m_data.exposureTime; }
    float apertureFloat() const { return m_data.aperture; }
    float distanceFloat() const { return m_data.distance; }
    float exposureBias() const { return m_data.exposureBias; }
    int isoInt() const { return m_data.iso; }
    QString cameraMake() const { return m_data.cameraMake; }
    QString cameraModel() const { return m_data.cameraModel; }
    QString creationDateString() const { return m_data.creationDateString; }
    QDateTime creationDate() const { return m_data.creationDate; }
    QDateTime fileDate() const { return m_data.fileDate; }
    QString caption() const { return m_data.caption.isNull() ? QStringLiteral("") : m_data.caption; }
    QString comment() const { return m_data.comment.isNull() ? QStringLiteral("") : m_data.comment; }
    const std::optional<vips::VImage>& thumbnail() const { return m_data.thumbnail; }
    void setComment(const QString& comment);

    // Display strings; "-" when the value is missing.
    QString flashUsed() const;
    QString focalLength() const;
    QString focalLength35() const;
    QString exposureTime() const;
    QString aperture() const;
    QString distance() const;
    QString iso() const;

    // Inspector column comparisons: -1 ascending, 0 same, 1 descending.
    int compareName(const KVImageInfo& other) const;
    int compareThumbnailedname(const KVImageInfo& other) const { return compareName(other); }
    int compareKind(const KVImageInfo& other) const;
    int compareWidth(const KVImageInfo& other) const;
    int compareHeight(const KVImageInfo& other) const;
    int compareSize(const KVImageInfo& other) const;
    int compareIso(const KVImageInfo& other) const;
    int compareFocallength(const KVImageInfo& other) const;
    int compareFocallength35(const KVImageInfo& other) const;
    int compareExposuretime(const KVImageInfo& other) const;
    int compareAperture(const KVImageInfo& other) const;
    int compareDistance(const KVImageInfo& other) const;
    int compareExposurebias(const KVImageInfo& other) const;
    int compareFlashused(const KVImageInfo& other) const;
    int compareCameramodel(const KVImageInfo& other) const;
    int compareCreationdate(const KVImageInfo& other) const;
    int compareFiledate(const KVImageInfo& other) const;

  private:
    Data m_data;
};

} // namespace quillet
