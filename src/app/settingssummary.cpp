#include "app/settingssummary.h"

#include "naming/renamer.h"
#include "settings/processingparams.h"

#include <QCoreApplication>

namespace quillet {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("SettingsSummary", text);
}

QString sizeText(const ProcessingParams& params) {
    const int width = params.intValue(QLatin1String(ParamKey::Width));
    const int height = params.intValue(QLatin1String(ParamKey::Height));
    const QString box = QStringLiteral("%1 \u00d7 %2").arg(width).arg(height);
    const int type = params.intValue(QLatin1String(ParamKey::ScaleType));
    QString text;
    switch (type) {
    case ScaleType::ToWidth:
        text = tr("%1 px wide").arg(width);
        break;
    case ScaleType::ToHeight:
        text = tr("%1 px high").arg(height);
        break;
    case ScaleType::Fit:
        text = tr("Fit within %1").arg(box);
        break;
    case ScaleType::Crop:
        return tr("Crop to %1 (%2% of the area)")
            .arg(box)
            .arg(params.intValue(QLatin1String(ParamKey::CropAreaPercentage)));
    case ScaleType::Stretch:
        text = tr("Stretch to %1").arg(box);
        break;
    case ScaleType::Percent:
        return tr("%1% of the original").arg(params.intValue(QLatin1String(ParamKey::ScalePercent)));
    case ScaleType::Fill:
        text = tr("Fill %1").arg(box);
        break;
    default:
        return tr("Original size");
    }
    if (params.boolValue(QLatin1String(ParamKey::ScaleDownOnly)))
        text += tr(", never enlarged");
    return text;
}

QString rotationText(int code) {
    switch (code) {
    case Rotation::Clockwise:
        return tr("90\u00b0 clockwise");
    case Rotation::CounterClockwise:
        return tr("90\u00b0 counter-clockwise");
    case Rotation::HalfTurn:
        return tr("180\u00b0");
    case Rotation::Automatic:
        return tr("Automatic (EXIF orientation)");
    default:
        return tr("None");
    }
}

} // namespace

QList<QPair<QString, QString>> settingsSummary(const ProcessingParams& params, const Renamer& renamer) {
    const int format = params.intValue(QLatin1String(ParamKey::FileFormat));
    const bool jpeg = format != FileFormat::Png && format != FileFormat::Tiff;
    QString quality = tr("Lossless");
    if (jpeg) {
        quality = QString::number(params.intValue(QLatin1String(ParamKey::JpegQuality)));
        if (params.sizeLimitBytes() > 0)
            quality += tr(", at most %1 KB").arg(params.sizeLimitField());
    }
    const QString names = renamer.examplesLine();
    return {
        {tr("Size"), sizeText(params)},
        {tr("Format"), format == FileFormat::Png    ? tr("PNG")
                       : format == FileFormat::Tiff ? tr("TIFF")
                                                    : tr("JPEG")},
        {tr("Quality"), quality},
        {tr("Resolution"), tr("%1 dpi").arg(params.resolution())},
        {tr("Rotation"), rotationText(params.intValue(QLatin1String(ParamKey::Rotation)))},
        {tr("EXIF data"),
         jpeg && params.boolValue(QLatin1String(ParamKey::PreserveHeader)) ? tr("Kept") : tr("Not kept")},
        {tr("Names"), names.isEmpty() ? tr("Same as input filename") : names},
    };
}

} // namespace quillet
