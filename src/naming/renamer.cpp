#include "naming/renamer.h"

#include "metadata/kvimageinfo.h"
#include "naming/calendarformat.h"
#include "naming/dateformats.h"
#include "naming/integerformat.h"
#include "settings/userdefaults.h"

#include <QSettings>

namespace quillet {

namespace {

const char* const conflictSeparators[] = {"-", "_", " "};
constexpr int conflictSeparatorCount = 3;

// Reads through the schema, so a stored value out of its range reads as the
// key's default (an unregistered key as 0) rather than as itself.
int readInt(QSettings& settings, const char* key) {
    return UserDefaults(settings).intValue(QLatin1String(key));
}

} // namespace

Renamer::Renamer() : m_dateFormats(DateFormats::list()) {}

Renamer::Renamer(QSettings& settings) : Renamer() {
    readFromDefaults(settings);
}

Renamer::Renamer(const Renamer& other) {
    *this = other;
}

Renamer& Renamer::operator=(const Renamer& other) {
    m_type = other.m_type;
    m_prefix = other.m_prefix;
    m_suffix = other.m_suffix;
    m_digits = other.m_digits;
    m_startFrom = other.m_startFrom;
    m_dateFormatTag = other.m_dateFormatTag;
    m_conflictFormatTag.store(other.m_conflictFormatTag.load());
    m_dateFallbackTag = other.m_dateFallbackTag;
    m_dateFormats = other.m_dateFormats;
    return *this;
}

QDateTime Renamer::sampleDate() {
    return QDateTime(QDate(2005, 2, 14), QTime(15, 32, 47), Qt::LocalTime);
}

std::optional<QString> Renamer::nameFromInputName(const QString& name, const KVImageInfo* info,
                                                  int index) const {
    switch (m_type) {
    case KeepName:
        return name;
    case Sequence:
        return sequenceName(index);
    case PrefixSuffix:
        return m_prefix + name + m_suffix;
    case Date:
        return dateName(info).value_or(name);
    default:
        return std::nullopt;
    }
}

QString Renamer::sequenceName(int index) const {
    // The prefix and suffix are part of the format on purpose ("100%%" gives
    // "100%"); IntegerFormat makes that safe for any text.
    const int digits = m_digits < 1 ? 1 : m_digits;
    const QString pattern =
        m_prefix + QStringLiteral("%0.") + QString::number(digits) + QLatin1Char('d') + m_suffix;
    // The sum wraps like the int it always was rather than overflowing.
    const int number = static_cast<int>(static_cast<unsigned>(index) + static_cast<unsigned>(m_startFrom));
    return IntegerFormat::format(pattern, number);
}

std::optional<QString> Renamer::dateName(const KVImageInfo* info) const {
    if (!info)
        return std::nullopt;
    // A tag outside the list names no format: keep the input name rather
    // than guess at one.
    if (m_dateFormatTag < 0 || m_dateFormatTag >= m_dateFormats.size())
        return std::nullopt;
    QDateTime date = info->creationDate();
    if (!date.isValid() && m_dateFallbackTag == 0)
        date = info->fileDate();
    if (!date.isValid())
        return std::nullopt;
    return m_prefix + CalendarFormat::format(m_dateFormats.at(m_dateFormatTag), date) + m_suffix;
}

QString Renamer::conflictResolverForIndex(int n) const {
    int tag = m_conflictFormatTag.load();
    if (tag < 0 || tag >= conflictSeparatorCount) {
        // Another thread may be doing the same; either way the field ends at 0.
        m_conflictFormatTag.compare_exchange_strong(tag, 0);
        tag = 0;
    }
    return QString::fromLatin1(conflictSeparators[tag]) + QString::number(n);
}

std::optional<QString> Renamer::examples() const {
    if (m_type == KeepName)
        return std::nullopt;
    std::optional<KVImageInfo> sample;
    if (m_type == Date) {
        KVImageInfo::Data data;
        data.creationDate = sampleDate();
        sample.emplace(std::move(data));
    }
    const KVImageInfo* info = sample ? &*sample : nullptr;
    const std::optional<QString> first = nameFromInputName(QStringLiteral("infile1"), info, 0);
    std::optional<QString> second = nameFromInputName(QStringLiteral("infile2"), info, 1);
    if (!first || !second)
        return std::nullopt;
    // Both date samples were taken at the sample date: the second shows the
    // name a picture of the same moment gets, with the chosen separator.
    if (m_type == Date && *second == *first)
        *second += conflictResolverForIndex(1);
    return *first + QStringLiteral(", ") + *second;
}

QString Renamer::examplesLine() const {
    const std::optional<QString> text = examples();
    return text ? QStringLiteral("e.g. %1 ...").arg(*text) : QString();
}

QStringList Renamer::dateFormatTitles() const {
    QStringList titles;
    for (const QString& format : m_dateFormats)
        titles.append(CalendarFormat::format(format, sampleDate()));
    return titles;
}

void Renamer::readFromDefaults(QSettings& settings) {
    m_type = readInt(settings, TypeKey);
    m_dateFormatTag = readInt(settings, DateFormatTagKey);
    m_conflictFormatTag.store(readInt(settings, ConflictFormatTagKey));
    m_dateFallbackTag = readInt(settings, DateFallbackTagKey);
    if (m_type == KeepName)
        return;
    const UserDefaults defaults(settings);
    setPrefix(defaults.stringValue(QLatin1String(PrefixKey)));
    setSuffix(defaults.stringValue(QLatin1String(SuffixKey)));
    if (m_type == Sequence) {
        m_digits = readInt(settings, DigitsKey);
        m_startFrom = readInt(settings, StartFromKey);
    }
}

void Renamer::writeToDefaults(QSettings& settings) const {
    settings.setValue(QLatin1String(TypeKey), m_type);
    settings.setValue(QLatin1String(PrefixKey), m_prefix);
    settings.setValue(QLatin1String(SuffixKey), m_suffix);
    settings.setValue(QLatin1String(DigitsKey), m_digits);
    settings.setValue(QLatin1String(StartFromKey), m_startFrom);
    settings.setValue(QLatin1String(DateFormatTagKey), m_dateFormatTag);
    settings.setValue(QLatin1String(ConflictFormatTagKey), m_conflictFormatTag.load());
    settings.setValue(QLatin1String(DateFallbackTagKey), m_dateFallbackTag);
}

void Renamer::acceptChanges(bool accept, QSettings& settings) {
    if (accept)
        writeToDefaults(settings);
    else
        readFromDefaults(settings);
}

} // namespace quillet
