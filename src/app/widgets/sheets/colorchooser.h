#pragma once

#include "settings/rgbacolor.h"

#include <QString>

#include <optional>

class QWidget;

namespace quillet {

class Sheets;

// The colour chooser, alpha included, asked through the one question service
// (a test answers it with code 1 and the colour as "#AARRGGBB").
namespace ColorChooser {

// None when cancelled.
std::optional<RgbaColor> choose(Sheets& sheets, QWidget* window, const QString& title,
                                const RgbaColor& start);

} // namespace ColorChooser

} // namespace quillet
