#pragma once

#include "engine/pipeline/sourcemetadata.h"
#include "metadata/metadatapolicy.h"

namespace quillet {

// The input's metadata cut down to what a policy lets an output carry.
namespace MetadataStrip {

// Filters the EXIF block and the XMP packet of `source` in place and says
// what went. The colour profile is left to the pixel stage, which converts
// the colours before it is dropped.
MetadataRemoval apply(SourceMetadata& source, MetadataPolicy policy);

} // namespace MetadataStrip

} // namespace quillet
