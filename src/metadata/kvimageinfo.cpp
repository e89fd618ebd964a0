#include "metadata/kvimageinfo.h"

#include "metadata/imagekind.h"

#include <cmath>

namespace quillet {

namespace {

const QString missing = QStringLiteral("-");

// Maps a three-way result of any sign onto -1, 0, 1.
int sign(int value) {
    return (value > 0) - (value < 0);
}

template <typename T> int compareNumbers(T mine, T theirs) {
    if (mine < theirs)
        return -1;
    if (mine > theirs)
        return 1;
    return 0;
}

// NaN on either side is unordered: the column puts such rows last.
int compareFloats(float mine, float theirs) {
    if (std::isnan(mine) || std::isnan(theirs))
        return 1;
    return compareNumbers(mine, theirs);
}

// A missing date sorts before any present one, so the order stays total.
int compareDates(const QDateTime& mine, const QDateTime& theirs) {
    if (!theirs.isValid())
        return 1;
    return compareNumbers(mine.toMSecsSinceEpoch(), theirs.toMSecsSinceEpoch());
}

} // namespace

KVImageInfo KVImageInfo::withCreationDate(const QDateTime& date) {
    Data data;
    data.creationDate = date;
    return KVImageInfo(std::move(data));
}

QString KVImageInfo::name() const {
    return fileBaseName(m_data.path);
}

float KVImageInfo::focalLength35Float() const {
    if (!(m_data.ccdWidth > 0))
        return 0;
    // The half is added here and the "%.0f" display rounds once more: the
    // column has always shown it so.
    return float(m_data.focalLength / m_data.ccdWidth * 36 + 0.5);
}

void KVImageInfo::setComment(const QString& comment) {
    if (!comment.isEmpty())
        m_data.comment = comment;
}

QString KVImageInfo::flashUsed() const {
    return m_data.flashUsed ? QStringLiteral("Yes") : QStringLiteral("No");
}

QString KVImageInfo::focalLength() const {
    return m_data.focalLength > 0 ? QString::asprintf("%.0f", double(m_data.focalLength)) : missing;
}

QString KVImageInfo::focalLength35() const {
    const float value = focalLength35Float();
    return value > 0 ? QString::asprintf("%.0f", double(value)) : missing;
}

QString KVImageInfo::exposureTime() const {
    // Exposures of a second or more still show as one over a fraction.
    return m_data.exposureTime > 0 ? QString::asprintf("1/%.0f", 1.0 / double(m_data.exposureTime)) : missing;
}

QString KVImageInfo::aperture() const {
    return m_data.aperture > 0 ? QString::asprintf("f/%0.1f", double(m_data.aperture)) : missing;
}

QString KVImageInfo::distance() const {
    return m_data.distance > 0 ? QString::asprintf("%.1f", double(m_data.distance)) : missing;
}

QString KVImageInfo::iso() const {
    return m_data.iso > 0 ? QString::number(m_data.iso) : missing;
}

int KVImageInfo::compareName(const KVImageInfo& other) const {
    return sign(name().compare(other.name()));
}

int KVImageInfo::compareKind(const KVImageInfo& other) const {
    if (m_data.kind.isNull())
        return -1;
    const int result = sign(m_data.kind.compare(other.m_data.kind));
    return result != 0 ? result : compareName(other);
}

#define QUILLET_NUMERIC_COMPARE(method, compare, field)                                                      \
    int KVImageInfo::method(const KVImageInfo& other) const {                                                \
        const int result = compare(field, other.field);                                                      \
        return result != 0 ? result : compareName(other);                                                    \
    }

QUILLET_NUMERIC_COMPARE(compareWidth, compareNumbers, m_data.width)
QUILLET_NUMERIC_COMPARE(compareHeight, compareNumbers, m_data.height)
QUILLET_NUMERIC_COMPARE(compareSize, compareNumbers, m_data.size)
QUILLET_NUMERIC_COMPARE(compareIso, compareNumbers, m_data.iso)
QUILLET_NUMERIC_COMPARE(compareFocallength, compareFloats, m_data.focalLength)
QUILLET_NUMERIC_COMPARE(compareFocallength35, compareFloats, focalLength35Float())
QUILLET_NUMERIC_COMPARE(compareExposuretime, compareFloats, m_data.exposureTime)
QUILLET_NUMERIC_COMPARE(compareAperture, compareFloats, m_data.aperture)
QUILLET_NUMERIC_COMPARE(compareDistance, compareFloats, m_data.distance)
QUILLET_NUMERIC_COMPARE(compareExposurebias, compareFloats, m_data.exposureBias)

#undef QUILLET_NUMERIC_COMPARE

int KVImageInfo::compareFlashused(const KVImageInfo& other) const {
    if (m_data.flashUsed != other.m_data.flashUsed)
        return m_data.flashUsed ? -1 : 1;
    return compareName(other);
}

int KVImageInfo::compareCameramodel(const KVImageInfo& other) const {
    if (m_data.cameraModel.isNull())
        return -1;
    const int result = sign(m_data.cameraModel.compare(other.m_data.cameraModel));
    return result != 0 ? result : compareName(other);
}

int KVImageInfo::compareCreationdate(const KVImageInfo& other) const {
    int result = 0;
    if (m_data.creationDate.isValid())
        result = compareDates(m_data.creationDate, other.m_data.creationDate);
    else if (other.m_data.creationDate.isValid())
        result = -1;
    return result != 0 ? result : compareName(other);
}

int KVImageInfo::compareFiledate(const KVImageInfo& other) const {
    int result = 0;
    // Against the other record's capture date, not its file date: the column
    // has always sorted so.
    if (m_data.fileDate.isValid())
        result = compareDates(m_data.fileDate, other.m_data.creationDate);
    else if (other.m_data.fileDate.isValid())
        result = -1;
    return result != 0 ? result : compareName(other);
}

} // namespace quillet
