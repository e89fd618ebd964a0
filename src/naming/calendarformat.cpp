#include "naming/calendarformat.h"

#include <QTimeZone>

namespace quillet {

namespace {

const char* const weekdayNames[] = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                    "Friday", "Saturday", "Sunday"};
const char* const monthNames[] = {"January", "February", "March",     "April",   "May",      "June",
                                  "July",    "August",   "September", "October", "November", "December"};

QString padded(int value, int width) {
    return QStringLiteral("%1").arg(value, width, 10, QLatin1Char('0'));
}

QString shortName(const char* name) {
    return QString::fromLatin1(name, 3);
}

QString zoneOffset(const QDateTime& date) {
    const int seconds = date.offsetFromUtc();
    const int minutes = (seconds < 0 ? -seconds : seconds) / 60;
    return QString(seconds < 0 ? QLatin1Char('-') : QLatin1Char('+')) + padded(minutes / 60, 2) +
           padded(minutes % 60, 2);
}

QString zoneName(const QDateTime& date) {
    QString name = date.timeZoneAbbreviation();
    // Some zones have no abbreviation and Qt then answers "UTC+01:00" or
    // nothing; the offset is the honest fallback.
    return name.isEmpty() ? zoneOffset(date) : name;
}

// The text for one directive letter, or a null string when the letter is not one.
QString directive(QChar letter, const QDateTime& dt) {
    const QDate d = dt.date();
    const QTime t = dt.time();
    switch (letter.unicode()) {
    case 'a':
        return shortName(weekdayNames[d.dayOfWeek() - 1]);
    case 'A':
        return QString::fromLatin1(weekdayNames[d.dayOfWeek() - 1]);
    case 'b':
        return shortName(monthNames[d.month() - 1]);
    case 'B':
        return QString::fromLatin1(monthNames[d.month() - 1]);
    case 'c':
        return CalendarFormat::format(QStringLiteral("%a %b %d %H:%M:%S %Y"), dt);
    case 'd':
        return padded(d.day(), 2);
    case 'e':
        return QString::number(d.day());
    case 'F':
        return padded(t.msec(), 3);
    case 'H':
        return padded(t.hour(), 2);
    case 'I':
        return padded(t.hour() % 12 == 0 ? 12 : t.hour() % 12, 2);
    case 'j':
        return padded(d.dayOfYear(), 3);
    case 'm':
        return padded(d.month(), 2);
    case 'M':
        return padded(t.minute(), 2);
    case 'p':
        return t.hour() < 12 ? QStringLiteral("AM") : QStringLiteral("PM");
    case 'S':
        return padded(t.second(), 2);
    case 'w':
        return QString::number(d.dayOfWeek() % 7);
    case 'x':
        return CalendarFormat::format(QStringLiteral("%m/%d/%y"), dt);
    case 'X':
        return CalendarFormat::format(QStringLiteral("%H:%M:%S"), dt);
    case 'y':
        return padded(((d.year() % 100) + 100) % 100, 2);
    case 'Y':
        return QString::number(d.year());
    case 'Z':
        return zoneName(dt);
    case 'z':
        return zoneOffset(dt);
    case '%':
        return QStringLiteral("%");
    default:
        return {};
    }
}

} // namespace

QString CalendarFormat::format(const QString& pattern, const QDateTime& date) {
    if (!date.isValid())
        return {};
    QString out;
    out.reserve(pattern.size() + 16);
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        if (pattern[i] != QLatin1Char('%') || i + 1 == pattern.size()) {
            out += pattern[i];
            continue;
        }
        const QString text = directive(pattern[i + 1], date);
        if (text.isNull()) {
            out += pattern[i];
            continue;
        }
        out += text;
        ++i;
    }
    return out;
}

} // namespace quillet
