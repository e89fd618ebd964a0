#pragma once

#include <QString>
#include <QVariant>

#include <optional>

namespace quillet {

// An RGBA colour with components in 0..1, as the colour wells hand them over.
struct RgbaColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    static RgbaColor white(double alpha = 1.0) { return {1, 1, 1, alpha}; }
    static RgbaColor black(double alpha = 1.0) { return {0, 0, 0, alpha}; }

    // Stored form: the text "rgba(r, g, b, a)" with each component written in
    // the shortest form that reads back to the same double, so a colour
    // survives any settings store (INI, JSON, property list) bit for bit.
    QVariant toVariant() const;
    QString toString() const;
    // Accepts the stored form; anything else gives nothing.
    static std::optional<RgbaColor> fromVariant(const QVariant& value);

    // Components scaled to 0..255 and rounded, the form pixel code wants.
    int red8() const;
    int green8() const;
    int blue8() const;
    int alpha8() const;

    friend bool operator==(const RgbaColor&, const RgbaColor&) = default;
};

} // namespace quillet
