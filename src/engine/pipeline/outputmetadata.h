#pragma once

#include "engine/pipeline/renderfile.h"
#include "engine/pipeline/sourcemetadata.h"
#include "metadata/metadatapolicy.h"
#include "support/filesystem.h"

#include <QString>

namespace quillet {

class MetadataNotes;

// The metadata a JPEG output takes over from its input when EXIF is kept.
namespace OutputMetadata {

// Gives the JPEG at `output` the EXIF of `source` (through the JPEG transfer
// for a JPEG input, from `metadata` for any other format) and its XMP (a JPEG
// input's Extended XMP too), and makes every resolution the file records say
// `resolution` dpi. With `uprightPixels` (turned by the batch or by the
// decoder) the copied orientation becomes 1, in the EXIF and in the XMP.
// Returns 1 when EXIF was written into the output, as the JPEG transfer does.
// With any policy but Keep, `metadata` holds what the policy leaves, and
// that is all the output gets: a JPEG input's sections are not copied, only
// its first comment, which NoLocation keeps.
int preserve(const QString& source, const SourceMetadata& metadata, const QString& output, int resolution,
             bool uprightPixels, FileSystem& fileSystem, MetadataNotes* notes,
             MetadataPolicy policy = MetadataPolicy::Keep);

// What a written JPEG output takes over when EXIF is kept: preserve() from
// the rendered file's input under the request's `policy` (nothing at all
// under None), then, with everything kept, the orientation made 1 when the
// batch turned the pixels. Returns what preserve() returns with everything
// kept, 0 otherwise.
int carry(const RenderedFile& rendered, int resolution, MetadataPolicy policy, const QString& output,
          FileSystem& fileSystem, MetadataNotes* notes);

// The bytes with the JFIF and EXIF resolutions set to `resolution` dpi, and
// the EXIF and XMP orientations reset to 1 when `resetOrientation` asks; the
// bytes as they were when nothing needed changing.
QByteArray withResolution(const QByteArray& jpeg, int resolution, bool resetOrientation);

} // namespace OutputMetadata

} // namespace quillet
