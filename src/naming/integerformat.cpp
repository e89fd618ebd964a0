#include "naming/integerformat.h"

#include <cstdint>

namespace quillet {

namespace {

struct Directive {
    bool left = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    bool zero = false;
    int width = 0;
    int precision = -1; // none
    QChar conversion;
};

bool isDigit(QChar c) {
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

// Reads a run of decimal digits; false when the number passes MaxField.
bool readNumber(const QString& s, qsizetype& i, int& out) {
    out = 0;
    while (i < s.size() && isDigit(s[i])) {
        out = out * 10 + (s[i].unicode() - '0');
        if (out > IntegerFormat::MaxField)
            return false;
        ++i;
    }
    return true;
}

// Parses the directive that starts at pattern[start] == '%'. Returns the index
// just past it, or -1 when it is not an integer directive we accept.
qsizetype parseDirective(const QString& s, qsizetype start, Directive& d) {
    qsizetype i = start + 1;
    for (; i < s.size(); ++i) {
        const QChar c = s[i];
        if (c == QLatin1Char('-'))
            d.left = true;
        else if (c == QLatin1Char('+'))
            d.plus = true;
        else if (c == QLatin1Char(' '))
            d.space = true;
        else if (c == QLatin1Char('#'))
            d.alternate = true;
        else if (c == QLatin1Char('0'))
            d.zero = true;
        else
            break;
    }
    if (!readNumber(s, i, d.width))
        return -1;
    if (i < s.size() && s[i] == QLatin1Char('.')) {
        ++i;
        if (!readNumber(s, i, d.precision))
            return -1;
    }
    static const QString lengthLetters = QStringLiteral("hljztLq");
    while (i < s.size() && lengthLetters.contains(s[i]))
        ++i;
    if (i >= s.size())
        return -1;
    static const QString conversions = QStringLiteral("diuxXo");
    if (!conversions.contains(s[i]))
        return -1;
    d.conversion = s[i];
    return i + 1;
}

QString render(const Directive& d, int value) {
    const char conv = char(d.conversion.unicode());
    const bool isSigned = conv == 'd' || conv == 'i';
    const bool negative = isSigned && value < 0;
    // Magnitude in 64 bits so INT_MIN has a positive form.
    const std::uint64_t magnitude =
        isSigned ? (negative ? std::uint64_t(-std::int64_t(value)) : std::uint64_t(value))
                 : std::uint64_t(std::uint32_t(value));
    const int base = conv == 'o' ? 8 : (conv == 'x' || conv == 'X') ? 16 : 10;

    QString digits;
    if (!(d.precision == 0 && magnitude == 0))
        digits = QString::number(magnitude, base);
    if (conv == 'X')
        digits = digits.toUpper();
    if (d.precision > digits.size())
        digits.prepend(QString(d.precision - digits.size(), QLatin1Char('0')));
    if (conv == 'o' && d.alternate && !digits.startsWith(QLatin1Char('0')))
        digits.prepend(QLatin1Char('0'));

    QString sign;
    if (negative)
        sign = QStringLiteral("-");
    else if (isSigned && d.plus)
        sign = QStringLiteral("+");
    else if (isSigned && d.space)
        sign = QStringLiteral(" ");
    else if (d.alternate && magnitude != 0 && conv == 'x')
        sign = QStringLiteral("0x");
    else if (d.alternate && magnitude != 0 && conv == 'X')
        sign = QStringLiteral("0X");

    const qsizetype pad = d.width - sign.size() - digits.size();
    if (pad <= 0)
        return sign + digits;
    if (d.left)
        return sign + digits + QString(pad, QLatin1Char(' '));
    // printf ignores the 0 flag when a precision is given.
    if (d.zero && d.precision < 0)
        return sign + QString(pad, QLatin1Char('0')) + digits;
    return QString(pad, QLatin1Char(' ')) + sign + digits;
}

} // namespace

QString IntegerFormat::format(const QString& pattern, int value) {
    QString out;
    out.reserve(pattern.size() + 12);
    qsizetype i = 0;
    while (i < pattern.size()) {
        const qsizetype percent = pattern.indexOf(QLatin1Char('%'), i);
        if (percent < 0) {
            out += QStringView(pattern).mid(i);
            break;
        }
        out += QStringView(pattern).mid(i, percent - i);
        if (percent + 1 < pattern.size() && pattern[percent + 1] == QLatin1Char('%')) {
            out += QLatin1Char('%');
            i = percent + 2;
            continue;
        }
        Directive d;
        const qsizetype end = parseDirective(pattern, percent, d);
        if (end < 0) {
            // Not ours: the '%' stays as text and scanning goes on after it.
            out += QLatin1Char('%');
            i = percent + 1;
            continue;
        }
        out += render(d, value);
        i = end;
    }
    return out;
}

} // namespace quillet
