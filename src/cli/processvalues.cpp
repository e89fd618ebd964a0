#include "cli/processvalues.h"

#include <QRegularExpression>

#include <array>

namespace quillet {

namespace ProcessValues {

namespace {

// Names of the text fields, indexed by field code.
const std::array<const char*, 15> fieldNames = {
    "filename", "dimensions", "filesize", "camera",   "date", "iso",     "flash",   "focal",
    "focal35",  "exposure",   "aperture", "distance", "bias", "caption", "comment",
};

const QStringList boolKeys = {
    QLatin1String(ParamKey::FlipRatio),
    QLatin1String(ParamKey::ScaleDownOnly),
    QLatin1String(ParamKey::HasFizeLimit),
    QLatin1String(ParamKey::PreserveHeader),
    QLatin1String(ParamKey::PreserveTransparency),
    QLatin1String(ParamKey::WatermarkEnabled),
    QLatin1String(ParamKey::ImageWatermarkEnabled),
    QLatin1String(ParamKey::DynWatermarkEnabled),
};
const QStringList intKeys = {
    QLatin1String(ParamKey::Rotation),
    QLatin1String(ParamKey::ScaleType),
    QLatin1String(ParamKey::Width),
    QLatin1String(ParamKey::Height),
    QLatin1String(ParamKey::ScalePercent),
    QLatin1String(ParamKey::CropAreaPercentage),
    QLatin1String(ParamKey::ScaleQuality),
    QLatin1String(ParamKey::Resolution),
    QLatin1String(ParamKey::FileFormat),
    QLatin1String(ParamKey::JpegQuality),
    QLatin1String(ParamKey::SizeLimit),
    QLatin1String(ParamKey::WatermarkOpacity),
    QLatin1String(ParamKey::WatermarkLocation),
    QLatin1String(ParamKey::DynWatermarkBackgroundOpacity),
    QLatin1String(ParamKey::DynWatermarkSize),
    QLatin1String(ParamKey::DynWatermarkStyle),
};
const QStringList stringKeys = {QLatin1String(ParamKey::Name), QLatin1String(ParamKey::WatermarkPath)};
const QStringList colorKeys = {QLatin1String(ParamKey::BackgroundColor),
                               QLatin1String(ParamKey::DynWatermarkBackgroundColor)};

std::optional<bool> parseBool(const QString& text) {
    const QString t = text.trimmed().toLower();
    if (t == QLatin1String("true") || t == QLatin1String("yes") || t == QLatin1String("on") ||
        t == QLatin1String("1"))
        return true;
    if (t == QLatin1String("false") || t == QLatin1String("no") || t == QLatin1String("off") ||
        t == QLatin1String("0"))
        return false;
    return std::nullopt;
}

} // namespace

std::optional<int> parseInt(const QString& text, int min, int max) {
    bool ok = false;
    const qlonglong value = text.trimmed().toLongLong(&ok, 10);
    if (!ok || value < min || value > max)
        return std::nullopt;
    return int(value);
}

std::optional<Box> parseBox(const QString& text, bool withPercent) {
    static const QRegularExpression pattern(
        QStringLiteral("^\\s*(\\d+)\\s*[xX]\\s*(\\d+)\\s*(?:@\\s*(\\d+)\\s*)?$"));
    const auto match = pattern.match(text);
    if (!match.hasMatch() || (!withPercent && match.hasCaptured(3)))
        return std::nullopt;
    Box box;
    const auto width = parseInt(match.captured(1), 1, 1000000);
    const auto height = parseInt(match.captured(2), 1, 1000000);
    if (!width || !height)
        return std::nullopt;
    box.width = *width;
    box.height = *height;
    if (match.hasCaptured(3)) {
        const auto percent = parseInt(match.captured(3), 1, 100);
        if (!percent)
            return std::nullopt;
        box.percent = *percent;
    }
    return box;
}

std::optional<RgbaColor> parseColor(const QString& text) {
    const QString t = text.trimmed().toLower();
    if (t == QLatin1String("white"))
        return RgbaColor::white();
    if (t == QLatin1String("black"))
        return RgbaColor::black();
    if (t == QLatin1String("transparent"))
        return RgbaColor::white(0.0);
    if (t.startsWith(QLatin1Char('#'))) {
        QString hex = t.mid(1);
        if (hex.size() == 3)
            hex = QString(hex[0]) + hex[0] + hex[1] + hex[1] + hex[2] + hex[2];
        if (hex.size() != 6 && hex.size() != 8)
            return std::nullopt;
        bool ok = false;
        const uint value = hex.toUInt(&ok, 16);
        if (!ok)
            return std::nullopt;
        const uint rgba = hex.size() == 6 ? (value << 8) | 0xff : value;
        return RgbaColor{((rgba >> 24) & 0xff) / 255.0, ((rgba >> 16) & 0xff) / 255.0,
                         ((rgba >> 8) & 0xff) / 255.0, (rgba & 0xff) / 255.0};
    }
    return RgbaColor::fromVariant(text.trimmed());
}

std::optional<std::uint32_t> parseFourCharCode(const QString& text) {
    if (text.size() != 4)
        return std::nullopt;
    std::uint32_t code = 0;
    for (const QChar c : text) {
        if (c.unicode() < 0x20 || c.unicode() > 0x7e)
            return std::nullopt;
        code = (code << 8) | c.unicode();
    }
    return code;
}

QStringList textFieldNames() {
    QStringList names;
    for (const char* name : fieldNames)
        names.append(QLatin1String(name));
    return names;
}

std::optional<QList<int>> parseTextFields(const QString& text) {
    QList<int> fields;
    const QStringList names = textFieldNames();
    for (const QString& part : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QString item = part.trimmed().toLower();
        int code = int(names.indexOf(item));
        if (code < 0) {
            const auto number = parseInt(item, 0, int(names.size()) - 1);
            if (!number)
                return std::nullopt;
            code = *number;
        }
        fields.append(code);
    }
    if (fields.isEmpty())
        return std::nullopt;
    return fields;
}

QString applySetting(ProcessingParams& params, const QString& assignment) {
    const int equals = int(assignment.indexOf(QLatin1Char('=')));
    if (equals <= 0)
        return QStringLiteral("--set wants KEY=VALUE, not '%1'").arg(assignment);
    const QString key = assignment.left(equals).trimmed();
    const QString value = assignment.mid(equals + 1);
    const auto bad = [&](const QString& kind) {
        return QStringLiteral("--set %1 wants %2, not '%3'").arg(key, kind, value);
    };
    if (boolKeys.contains(key)) {
        const auto on = parseBool(value);
        if (!on)
            return bad(QStringLiteral("true or false"));
        params.setBool(key, *on);
    } else if (intKeys.contains(key)) {
        const auto number = parseInt(value, -1000000000, 1000000000);
        if (!number)
            return bad(QStringLiteral("a whole number"));
        params.setInt(key, *number);
    } else if (stringKeys.contains(key)) {
        params.setString(key, value);
    } else if (colorKeys.contains(key)) {
        const auto color = parseColor(value);
        if (!color)
            return bad(QStringLiteral("a colour"));
        params.setColor(key, *color);
    } else if (key == QLatin1String(ParamKey::DynWatermarkFields)) {
        if (value.trimmed().isEmpty()) {
            params.setIntList(key, {});
        } else {
            const auto fields = parseTextFields(value);
            if (!fields)
                return bad(QStringLiteral("field codes or names separated by commas"));
            params.setIntList(key, *fields);
        }
    } else {
        return QStringLiteral("--set: unknown key '%1'").arg(key);
    }
    return {};
}

} // namespace ProcessValues

} // namespace quillet
