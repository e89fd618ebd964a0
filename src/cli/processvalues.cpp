#include "cli/processvalues.h"

#include "settings/settingsschema.h"

#include <QRegularExpression>

#include <climits>

namespace quillet {

namespace ProcessValues {

namespace {

const SettingKey& fieldsKey() {
    return SettingsSchema::entry(ParamKey::DynWatermarkFields);
}

// Field names become their codes; anything else stays as written for the
// key's own check to judge.
QVariantList fieldItems(const QString& text) {
    QVariantList items;
    for (const QString& part : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const auto code = fieldsKey().codeOfWord(part);
        items.append(code ? QVariant(*code) : QVariant(part.trimmed()));
    }
    return items;
}

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
    const auto width = parseInt(match.captured(1), 0, INT_MAX);
    const auto height = parseInt(match.captured(2), 0, INT_MAX);
    if (!width || !height)
        return std::nullopt;
    box.width = *width;
    box.height = *height;
    if (match.hasCaptured(3)) {
        const auto percent = parseInt(match.captured(3), 0, INT_MAX);
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

QString colourHint() {
    return QStringLiteral("(#rgb, #rrggbb, #rrggbbaa, white, black and transparent are understood too)");
}

QStringList textFieldNames() {
    return fieldsKey().words();
}

std::optional<QList<int>> parseTextFields(const QString& text) {
    const auto checked = fieldsKey().checked(fieldItems(text));
    if (!checked || checked->toList().isEmpty())
        return std::nullopt;
    QList<int> fields;
    for (const QVariant& code : checked->toList())
        fields.append(code.toInt());
    return fields;
}

QString applySetting(ProcessingParams& params, const QString& assignment) {
    const int equals = int(assignment.indexOf(QLatin1Char('=')));
    if (equals <= 0)
        return QStringLiteral("--set wants KEY=VALUE, not '%1'").arg(assignment);
    const QString key = assignment.left(equals).trimmed();
    const QString value = assignment.mid(equals + 1);
    const SettingKey* entry = SettingsSchema::find(key);
    if (!entry || entry->group != SettingGroup::Processing)
        return QStringLiteral("--set: unknown key '%1'").arg(key);

    std::optional<QVariant> parsed;
    switch (entry->type) {
    case SettingType::Int:
        if (const auto n = parseInt(value, INT_MIN, INT_MAX))
            parsed = entry->checked(*n);
        break;
    case SettingType::Bool:
        if (const auto on = parseBool(value))
            parsed = *on;
        break;
    case SettingType::String:
        parsed = entry->checked(value);
        break;
    case SettingType::Colour:
        if (const auto colour = parseColor(value))
            parsed = entry->checked(colour->toVariant());
        break;
    case SettingType::IntList:
        parsed = entry->checked(fieldItems(value));
        break;
    default:
        break;
    }
    if (!parsed) {
        const QString hint = entry->type == SettingType::Colour ? QLatin1Char(' ') + colourHint() : QString();
        return QStringLiteral("--set: ") + entry->refusal(SettingKey::shownValue(value)) + hint;
    }
    params.values().insert(key, *parsed);
    return {};
}

} // namespace ProcessValues

} // namespace quillet
