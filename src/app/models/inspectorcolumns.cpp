#include "app/models/inspectorcolumns.h"

#include <QCoreApplication>
#include <QHash>
#include <QLocale>

namespace quillet {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("InspectorColumns", text);
}

// Every comparison the record offers, by its name.
const QHash<QString, InspectorColumns::Comparison>& comparisons() {
    static const QHash<QString, InspectorColumns::Comparison> table{
        {QStringLiteral("compareName"), &KVImageInfo::compareName},
        {QStringLiteral("compareThumbnailedname"), &KVImageInfo::compareThumbnailedname},
        {QStringLiteral("compareKind"), &KVImageInfo::compareKind},
        {QStringLiteral("compareWidth"), &KVImageInfo::compareWidth},
        {QStringLiteral("compareHeight"), &KVImageInfo::compareHeight},
        {QStringLiteral("compareSize"), &KVImageInfo::compareSize},
        {QStringLiteral("compareIso"), &KVImageInfo::compareIso},
        {QStringLiteral("compareFocallength"), &KVImageInfo::compareFocallength},
        {QStringLiteral("compareFocallength35"), &KVImageInfo::compareFocallength35},
        {QStringLiteral("compareExposuretime"), &KVImageInfo::compareExposuretime},
        {QStringLiteral("compareAperture"), &KVImageInfo::compareAperture},
        {QStringLiteral("compareDistance"), &KVImageInfo::compareDistance},
        {QStringLiteral("compareExposurebias"), &KVImageInfo::compareExposurebias},
        {QStringLiteral("compareFlashused"), &KVImageInfo::compareFlashused},
        {QStringLiteral("compareCameramodel"), &KVImageInfo::compareCameramodel},
        {QStringLiteral("compareCreationdate"), &KVImageInfo::compareCreationdate},
        {QStringLiteral("compareFiledate"), &KVImageInfo::compareFiledate},
    };
    return table;
}

QString dateText(const QDateTime& date) {
    return date.isValid() ? QLocale().toString(date, QLocale::ShortFormat) : QString();
}

} // namespace

const std::vector<InspectorColumns::Column>& InspectorColumns::all() {
    const Qt::Alignment left = Qt::AlignLeft | Qt::AlignVCenter;
    const Qt::Alignment right = Qt::AlignRight | Qt::AlignVCenter;
    const Qt::Alignment centre = Qt::AlignCenter;
    static const std::vector<Column> columns{
        {QLatin1String(ThumbnailedName), tr("Name"), left, 220, true},
        {QLatin1String(OutputFilename), tr("Output Name"), left, 180, true},
        {QStringLiteral("kind"), tr("Kind"), left, 70, true},
        {QStringLiteral("width"), tr("Width"), right, 64, true},
        {QStringLiteral("height"), tr("Height"), right, 64, true},
        {QStringLiteral("size"), tr("Bytes"), right, 90, true},
        {QStringLiteral("cameraModel"), tr("Camera"), left, 150, true},
        {QStringLiteral("creationDate"), tr("Date Taken"), left, 140, true},
        {QStringLiteral("fileDate"), tr("File Date"), left, 140, false},
        {QStringLiteral("exposureTime"), tr("Exposure"), right, 76, true},
        {QStringLiteral("aperture"), tr("Aperture"), right, 70, true},
        {QStringLiteral("iso"), tr("ISO"), right, 50, true},
        {QStringLiteral("focalLength"), tr("Focal Length"), right, 84, false},
        {QStringLiteral("focalLength35"), tr("35 mm Equivalent"), right, 110, false},
        {QStringLiteral("flashUsed"), tr("Flash"), centre, 50, false},
        {QStringLiteral("distance"), tr("Distance"), right, 70, false},
        {QStringLiteral("exposureBias"), tr("Exposure Bias"), right, 90, false},
        {QStringLiteral("name"), tr("File Name"), left, 160, false},
    };
    return columns;
}

int InspectorColumns::indexOf(const QString& identifier) {
    const std::vector<Column>& columns = all();
    for (size_t i = 0; i < columns.size(); ++i)
        if (columns[i].identifier == identifier)
            return int(i);
    return -1;
}

InspectorColumns::Comparison InspectorColumns::comparison(const QString& identifier) {
    if (identifier.isEmpty())
        return nullptr;
    const QString name =
        QStringLiteral("compare") + identifier.left(1).toUpper() + identifier.mid(1).toLower();
    return comparisons().value(name, nullptr);
}

QString InspectorColumns::text(const KVImageInfo& info, const QString& id) {
    if (id == QLatin1String("name") || id == QLatin1String(ThumbnailedName))
        return info.name();
    if (id == QLatin1String("kind"))
        return info.kind();
    if (id == QLatin1String("width"))
        return QString::number(info.width());
    if (id == QLatin1String("height"))
        return QString::number(info.height());
    if (id == QLatin1String("size"))
        return QString::number(info.size());
    if (id == QLatin1String("cameraModel"))
        return info.cameraModel();
    if (id == QLatin1String("creationDate"))
        return dateText(info.creationDate());
    if (id == QLatin1String("fileDate"))
        return dateText(info.fileDate());
    if (id == QLatin1String("exposureTime"))
        return info.exposureTime();
    if (id == QLatin1String("aperture"))
        return info.aperture();
    if (id == QLatin1String("iso"))
        return info.iso();
    if (id == QLatin1String("focalLength"))
        return info.focalLength();
    if (id == QLatin1String("focalLength35"))
        return info.focalLength35();
    if (id == QLatin1String("flashUsed"))
        return info.flashUsed();
    if (id == QLatin1String("distance"))
        return info.distance();
    if (id == QLatin1String("exposureBias"))
        return QString::number(double(info.exposureBias()), 'g', 3);
    return {};
}

} // namespace quillet
