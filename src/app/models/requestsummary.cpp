#include "app/models/requestsummary.h"

#include <QCoreApplication>

namespace quillet {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("RequestSummary", text);
}

QString format(const OutputSettings& output) {
    QString text = FileFormat::displayName(output.format);
    if (output.writesLossless())
        return text + QLatin1Char(' ') + tr("lossless");
    if (FileFormat::isLossy(output.format)) {
        text += QLatin1Char(' ') + QString::number(output.jpegQuality);
        if (output.hasSizeLimit)
            text += QStringLiteral(", \u2264 %1 KB").arg(output.sizeLimitField());
    }
    return text;
}

QString sizing(const Sizing& sizing) {
    const QString box = QStringLiteral("%1\u00d7%2").arg(sizing.width).arg(sizing.height);
    switch (sizing.scaleType) {
    case ScaleType::ToWidth:
        return tr("width %1").arg(sizing.width);
    case ScaleType::ToHeight:
        return tr("height %1").arg(sizing.height);
    case ScaleType::Fit:
        return tr("fit %1").arg(box);
    case ScaleType::Crop:
        return tr("crop %1").arg(box);
    case ScaleType::Stretch:
        return tr("stretch %1").arg(box);
    case ScaleType::Percent:
        return QStringLiteral("%1 %").arg(sizing.percent);
    case ScaleType::Fill:
        return tr("fill %1").arg(box);
    default:
        return tr("original size");
    }
}

} // namespace

QString RequestSummary::of(const ProcessingRequest& request) {
    return format(request.output) + QStringLiteral(" \u00b7 ") + sizing(request.sizing);
}

} // namespace quillet
