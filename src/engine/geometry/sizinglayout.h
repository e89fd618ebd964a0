#pragma once

#include "engine/geometry/sizemath.h"
#include "settings/processingrequest.h"

namespace quillet {

// The one place that maps a sizing mode onto its layout: the geometry step
// draws it, and the loader reads from it how far a JPEG may be shrunk while it
// is decoded. `picture` is the logical size after any rotation. ScaleType::None
// gives the copy layout.
SizeMath::Layout sizingLayout(const Sizing& sizing, SizeMath::SizeF picture);

} // namespace quillet
