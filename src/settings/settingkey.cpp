#include "settings/settingkey.h"

#include "settings/rgbacolor.h"

#include <algorithm>
#include <cmath>

namespace quillet {

namespace {

// A whole number in any of the forms a store hands back: an integer type, an
// integral double (property lists, JSON) or decimal text (INI files). A
// boolean is not a number here, even though QVariant would convert it.
std::optional<qlonglong> wholeNumber(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UShort: {
        bool ok = false;
        const qlonglong n = value.toLongLong(&ok);
        return ok ? std::optional(n) : std::nullopt;
    }
    case QMetaType::ULongLong: {
        const qulonglong n = value.toULongLong();
        return n <= qulonglong(LLONG_MAX) ? std::optional(qlonglong(n)) : std::nullopt;
    }
    case QMetaType::Double:
    case QMetaType::Float: {
        const double d = value.toDouble();
        // Beyond 2^53 doubles skip whole numbers; nothing stored is near it.
        if (!std::isfinite(d) || d != std::floor(d) || std::fabs(d) > 9007199254740992.0)
            return std::nullopt;
        return qlonglong(d);
    }
    case QMetaType::QString: {
        bool ok = false;
        const qlonglong n = value.toString().trimmed().toLongLong(&ok, 10);
        return ok ? std::optional(n) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

std::optional<bool> truthValue(const QVariant& value) {
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    if (value.typeId() == QMetaType::QString) {
        const QString t = value.toString().trimmed().toLower();
        if (t == QLatin1String("true") || t == QLatin1String("1"))
            return true;
        if (t == QLatin1String("false") || t == QLatin1String("0"))
            return false;
        return std::nullopt;
    }
    const auto n = wholeNumber(value);
    if (n && (*n == 0 || *n == 1))
        return *n == 1;
    return std::nullopt;
}

// An INI file hands a list of one back as plain text, and an empty list as
// empty text.
std::optional<QVariantList> listOf(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::QVariantList:
        return value.toList();
    case QMetaType::QStringList: {
        QVariantList list;
        for (const QString& s : value.toStringList())
            list.append(s);
        return list;
    }
    case QMetaType::QString:
        return value.toString().isEmpty() ? QVariantList{} : QVariantList{value};
    default:
        return std::nullopt;
    }
}

std::optional<QVariant> creator(const QVariant& value) {
    if (value.typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    const QVariantMap map = value.toMap();
    const QVariant label = map.value(QStringLiteral("label"));
    const auto code = wholeNumber(map.value(QStringLiteral("code")));
    if (label.typeId() != QMetaType::QString || !code || *code < 0 || *code > 0xffffffffLL)
        return std::nullopt;
    return QVariantMap{{QStringLiteral("label"), label}, {QStringLiteral("code"), uint(*code)}};
}

bool isUnit(double v) {
    return v >= 0.0 && v <= 1.0;
}

} // namespace

QVariant SettingKey::defaultValue() const {
    return computedDefault ? computedDefault() : fixedDefault;
}

bool SettingKey::allows(int n) const {
    if (n < min || n > max)
        return false;
    return choices.isEmpty() || choice(n);
}

std::optional<QVariant> SettingKey::checked(const QVariant& value) const {
    const auto within = [this](qsizetype size) { return maxLength == 0 || size <= maxLength; };
    switch (type) {
    case SettingType::Int: {
        const auto n = wholeNumber(value);
        if (!n || *n < INT_MIN || *n > INT_MAX || !allows(int(*n)))
            return std::nullopt;
        return QVariant(int(*n));
    }
    case SettingType::Bool: {
        const auto on = truthValue(value);
        return on ? std::optional(QVariant(*on)) : std::nullopt;
    }
    case SettingType::String:
        if (value.typeId() != QMetaType::QString || !within(value.toString().size()))
            return std::nullopt;
        return value;
    case SettingType::Colour: {
        const auto c = RgbaColor::fromVariant(value);
        if (!c || !isUnit(c->red) || !isUnit(c->green) || !isUnit(c->blue) || !isUnit(c->alpha))
            return std::nullopt;
        return c->toVariant();
    }
    case SettingType::IntList: {
        const auto list = listOf(value);
        if (!list || !within(list->size()))
            return std::nullopt;
        QVariantList out;
        for (const QVariant& item : *list) {
            const auto n = wholeNumber(item);
            if (!n || *n < INT_MIN || *n > INT_MAX || !allows(int(*n)))
                return std::nullopt;
            out.append(int(*n));
        }
        return out;
    }
    case SettingType::StringList: {
        const auto list = listOf(value);
        if (!list || !within(list->size()))
            return std::nullopt;
        QStringList out;
        for (const QVariant& item : *list) {
            if (item.typeId() != QMetaType::QString)
                return std::nullopt;
            out.append(item.toString());
        }
        return out;
    }
    case SettingType::CreatorList: {
        const auto list = listOf(value);
        if (!list)
            return std::nullopt;
        QVariantList out;
        for (const QVariant& item : *list) {
            const auto c = creator(item);
            if (!c)
                return std::nullopt;
            out.append(*c);
        }
        return out;
    }
    case SettingType::Map:
        if (value.typeId() != QMetaType::QVariantMap)
            return std::nullopt;
        for (const QVariant& record : value.toMap())
            if (record.typeId() != QMetaType::QVariantMap)
                return std::nullopt;
        return value;
    case SettingType::RecordList: {
        // The records themselves are checked by the preset store, one by one.
        if (value.typeId() == QMetaType::QString && value.toString().isEmpty())
            return QVariantList{};
        if (value.typeId() != QMetaType::QVariantList)
            return std::nullopt;
        return value;
    }
    }
    return std::nullopt;
}

SettingKey SettingKey::withMinimum(int minimum) const {
    SettingKey copy = *this;
    copy.min = std::max(min, minimum);
    return copy;
}

const SettingChoice* SettingKey::choice(int code) const {
    for (const SettingChoice& c : choices)
        if (c.code == code)
            return &c;
    return nullptr;
}

QStringList SettingKey::words() const {
    QStringList out;
    for (const SettingChoice& c : choices)
        out += c.words;
    return out;
}

std::optional<int> SettingKey::codeOfWord(const QString& word) const {
    for (const SettingChoice& c : choices)
        for (const QString& w : c.words)
            if (w.compare(word.trimmed(), Qt::CaseInsensitive) == 0)
                return c.code;
    return std::nullopt;
}

} // namespace quillet
