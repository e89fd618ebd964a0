#pragma once

#include "engine/picture.h"

#include <QByteArray>

namespace quillet {

// The colour profile an output carries.
namespace ColourProfile {

// Converts the picture's pixels from `profile` to sRGB, in place, and returns
// the sRGB profile to embed. A picture without a profile, or already in sRGB,
// is left alone and keeps `profile`. Throws vips::VError when the profile
// cannot be used.
QByteArray convertToSrgb(Picture& picture, const QByteArray& profile);

} // namespace ColourProfile

} // namespace quillet
