#include "settings/rgbacolor.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace quillet {

namespace {

QString number(double v) {
    return QString::number(v, 'g', 17);
}

int to8(double v) {
    return static_cast<int>(std::lround(std::clamp(v, 0.0, 1.0) * 255.0));
}

} // namespace

QString RgbaColor::toString() const {
    return QStringLiteral("rgba(%1, %2, %3, %4)")
        .arg(number(red), number(green), number(blue), number(alpha));
}

QVariant RgbaColor::toVariant() const {
    return toString();
}

std::optional<RgbaColor> RgbaColor::fromVariant(const QVariant& value) {
    const QString text = value.toString().trimmed();
    if (!text.startsWith(QLatin1String("rgba(")) || !text.endsWith(QLatin1Char(')')))
        return std::nullopt;
    const QStringList parts = text.mid(5, text.size() - 6).split(QLatin1Char(','));
    if (parts.size() != 4)
        return std::nullopt;
    double c[4];
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        c[i] = parts[i].trimmed().toDouble(&ok);
        if (!ok || !std::isfinite(c[i]))
            return std::nullopt;
    }
    return RgbaColor{c[0], c[1], c[2], c[3]};
}

int RgbaColor::red8() const {
    return to8(red);
}
int RgbaColor::green8() const {
    return to8(green);
}
int RgbaColor::blue8() const {
    return to8(blue);
}
int RgbaColor::alpha8() const {
    return to8(alpha);
}

} // namespace quillet
