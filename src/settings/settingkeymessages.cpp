// The messages of SettingKey: what a key holds and how a value is refused.

#include "settings/settingkey.h"

#include <algorithm>

namespace quillet {

namespace {

constexpr qsizetype longestShown = 60;

// "whole number from 0 to 100", or "whole numbers ..." for a list.
QString wholeNumbers(int min, int max, bool plural = false) {
    const QString noun = plural ? QStringLiteral("whole numbers") : QStringLiteral("whole number");
    if (min == INT_MIN && max == INT_MAX)
        return noun;
    if (max == INT_MAX)
        return QStringLiteral("%1 of %2 or more").arg(noun).arg(min);
    return QStringLiteral("%1 from %2 to %3").arg(noun).arg(min).arg(max);
}

} // namespace

QString SettingKey::expectation() const {
    switch (type) {
    case SettingType::Int: {
        if (choices.isEmpty())
            return QStringLiteral("a ") + wholeNumbers(min, max);
        QStringList items;
        for (const SettingChoice& c : choices)
            items.append(QStringLiteral("%1 (%2)").arg(c.code).arg(c.displayName));
        return QStringLiteral("one of ") + items.join(QStringLiteral(", "));
    }
    case SettingType::Bool:
        return QStringLiteral("true or false");
    case SettingType::String:
        return maxLength ? QStringLiteral("text of at most %1 characters").arg(maxLength)
                         : QStringLiteral("text");
    case SettingType::Colour:
        return QStringLiteral("a colour \"rgba(r, g, b, a)\" with components from 0 to 1");
    case SettingType::IntList: {
        int low = min, high = max;
        if (!choices.isEmpty()) {
            const auto [first, last] = std::minmax_element(
                choices.begin(), choices.end(), [](const auto& a, const auto& b) { return a.code < b.code; });
            low = first->code;
            high = last->code;
        }
        const QString most = maxLength ? QStringLiteral("at most %1 ").arg(maxLength) : QString();
        return QStringLiteral("a list of %1%2").arg(most, wholeNumbers(low, high, true));
    }
    case SettingType::StringList:
        return QStringLiteral("a list of texts");
    case SettingType::CreatorList:
        return QStringLiteral("a list of creators, each {\"label\": text, \"code\": a four-character code}");
    case SettingType::Map:
        return QStringLiteral("a map from preset names to preset records");
    case SettingType::RecordList:
        return QStringLiteral("a list of preset records");
    }
    return {};
}

QString SettingKey::refusal(const QString& shown) const {
    return QStringLiteral("\"%1\" must be %2, not %3").arg(key, expectation(), shown);
}

QString SettingKey::wordRefusal(const QString& given) const {
    return QStringLiteral("\"%1\" must be one of %2, not %3")
        .arg(key, words().join(QStringLiteral(", ")), given.isEmpty() ? QStringLiteral("\"\"") : given);
}

QString SettingKey::shownValue(const QVariant& value) {
    QString text;
    switch (value.typeId()) {
    case QMetaType::UnknownType:
        return QStringLiteral("nothing");
    case QMetaType::Bool:
        text = value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
        break;
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        QStringList items;
        for (const QVariant& item : value.toList())
            items.append(shownValue(item));
        text = QLatin1Char('[') + items.join(QStringLiteral(", ")) + QLatin1Char(']');
        break;
    }
    case QMetaType::QVariantMap:
        text = QStringLiteral("a map of %1 entries").arg(value.toMap().size());
        break;
    default:
        text = value.toString();
        if (text.isEmpty())
            return QStringLiteral("\"\"");
    }
    if (text.size() > longestShown)
        text = text.left(longestShown - 3) + QStringLiteral("...");
    return text;
}

} // namespace quillet
