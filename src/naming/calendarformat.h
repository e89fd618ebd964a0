#pragma once

#include <QDateTime>
#include <QString>

namespace quillet {

// Renders a date with the calendar '%' directives of the date-format list,
// without locale (English names) and in the date's own time, not converted
// to any other zone:
//   %a %A  weekday, short / full        %b %B  month, short / full
//   %c     "%a %b %d %H:%M:%S %Y"       %d     day of month 01-31
//   %e     day of month 1-31            %F     milliseconds 000-999
//   %H     hour 00-23                   %I     hour 01-12
//   %j     day of year 001-366          %m     month 01-12
//   %M     minute 00-59                 %p     AM / PM
//   %S     second 00-59                 %w     weekday 0-6, Sunday 0
//   %x     "%m/%d/%y"                   %X     "%H:%M:%S"
//   %y     year 00-99                   %Y     year with century
//   %Z     zone abbreviation            %z     zone offset +hhmm
//   %%     a percent sign
// Any other '%' sequence, and a trailing lone '%', is kept as text.
// An invalid date renders as the empty string.
namespace CalendarFormat {

QString format(const QString& pattern, const QDateTime& date);

} // namespace CalendarFormat

} // namespace quillet
