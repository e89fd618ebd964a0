#pragma once

#include "settings/processingparams.h"
#include "settings/rgbacolor.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace quillet {

// Parsing of the values `quillet process` options take.
namespace ProcessValues {

struct Box {
    int width = 0;
    int height = 0;
    int percent = 100; // crop area, when given as WxH@PERCENT
};

// A decimal integer within [min, max].
std::optional<int> parseInt(const QString& text, int min, int max);
// "WxH", and "WxH@P" when `withPercent`, of whole numbers; the ranges are
// left to the caller, which knows the keys they go to.
std::optional<Box> parseBox(const QString& text, bool withPercent);
// "#rgb", "#rrggbb", "#rrggbbaa", "white", "black", "transparent" or the
// stored form "rgba(r, g, b, a)".
std::optional<RgbaColor> parseColor(const QString& text);
// Four ASCII characters, packed first byte most significant.
std::optional<std::uint32_t> parseFourCharCode(const QString& text);
// Added to a refused colour: the forms parseColor() takes besides the stored one.
QString colourHint();
// Comma-separated text-field names ("filename,date") or codes ("0,4"), at
// least one, each a field the record knows.
std::optional<QList<int>> parseTextFields(const QString& text);
QStringList textFieldNames();

// Applies "Key=Value" to the record with the key's own type and range: Int,
// Bool (true/false/yes/no/on/off/1/0), string, colour, or a comma-separated
// list of field codes or names for "DynWatermarkFields". Returns the refusal
// message, prefixed with "--set: ", or empty on success.
QString applySetting(ProcessingParams& params, const QString& assignment);

} // namespace ProcessValues

} // namespace quillet
