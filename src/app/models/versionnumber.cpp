#include "app/models/versionnumber.h"

#include <QStringList>

namespace quillet::VersionNumber {

QString toString(unsigned packed) {
    return QStringLiteral("%1.%2.%3").arg(packed >> 8).arg((packed >> 4) & 0xF).arg(packed & 0xF);
}

unsigned fromString(const QString& text) {
    const QStringList parts = text.trimmed().split(QLatin1Char('.'));
    if (parts.size() != 3)
        return 0;
    unsigned numbers[3] = {};
    for (int i = 0; i < 3; ++i) {
        bool ok = false;
        numbers[i] = parts[i].toUInt(&ok);
        if (!ok)
            return 0;
    }
    return numbers[0] << 8 | qMin(numbers[1], 15u) << 4 | qMin(numbers[2], 15u);
}

unsigned fromServerText(const QByteArray& body) {
    qsizetype i = 0;
    while (i < body.size() && (body[i] == ' ' || body[i] == '\t' || body[i] == '\n' || body[i] == '\r'))
        ++i;
    quint64 value = 0;
    for (; i < body.size(); ++i) {
        const char c = body[i];
        const int digit = c >= '0' && c <= '9'   ? c - '0'
                          : c >= 'a' && c <= 'f' ? c - 'a' + 10
                          : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                 : -1;
        if (digit < 0)
            break;
        value = value * 16 + unsigned(digit);
        if (value > 0xFFFFFFFFu)
            return 0;
    }
    return unsigned(value);
}

} // namespace quillet::VersionNumber
