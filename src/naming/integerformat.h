#pragma once

#include <QString>

namespace quillet {

// A printf-style formatter for one int argument that only understands the
// integer directives, so a format typed by the user can never read memory it
// was not given. It knows "%%" and
//   % [flags -+ #0] [width] [.precision] [length hh h l ll j z t L q] d|i|u|x|X|o
// with printf's meaning (u, x, X and o see the argument as a 32-bit unsigned
// value, as printf does with an int). Every integer directive prints the same
// argument. Anything else beginning with '%' (%s, %n, %*d, %1$d, a lone '%',
// ...) is copied as literal text. A width or precision above MaxField is
// copied as literal text too: no file name can be that long, and a hostile
// "%99999999d" must not allocate its way out of memory.
namespace IntegerFormat {

inline constexpr int MaxField = 255;

QString format(const QString& pattern, int value);

} // namespace IntegerFormat

} // namespace quillet
