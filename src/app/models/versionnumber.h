#pragma once

#include <QByteArray>
#include <QString>

namespace quillet {

// A release number packed into one integer: the major number from bit 8 up,
// the minor in bits 4 to 7 and the patch in bits 0 to 3 (0x201 is 2.0.1,
// 0x1A3 is 1.10.3). Packed numbers compare as plain unsigned integers.
namespace VersionNumber {

// "major.minor.patch".
QString toString(unsigned packed);
// The packed form of a "major.minor.patch" text such as QUILLET_VERSION; a
// minor or patch number above 15 is kept at 15. 0 when it is no such text.
unsigned fromString(const QString& text);
// The number an update server's answer gives: one hexadecimal number at the
// start, after any white space, and nothing of what follows ("2.0.2" gives
// 2). 0 when there are no hexadecimal digits there, or more than 32 bits.
unsigned fromServerText(const QByteArray& body);

} // namespace VersionNumber

} // namespace quillet
