#pragma once

#include "engine/picture.h"
#include "engine/pipeline/sourcemetadata.h"
#include "metadata/kvimageinfo.h"
#include "settings/processingrequest.h"
#include "support/activitylog.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace quillet {

// The steps of the per-file pipeline that other parts of the engine provide,
// gathered behind one narrow front so the batch reads as its steps.
namespace PipelineSteps {

// EXIF orientation of the file, 1 when it has none. A JPEG's comes from its
// EXIF block (the reader's messages go to `notes` when given); another
// format's from what its decoder read, and a HEIF picture, decoded upright,
// has none.
int orientationOf(const QString& path, const SourceMetadata& source = {}, MetadataNotes* notes = nullptr);
// Image and text watermarks as the request asks. True when the text was
// drawn smaller than the picture's height asks for, at the renderer's limit.
bool drawWatermarks(Picture& picture, const ProcessingRequest& request,
                    const std::optional<Picture>& watermark, const KVImageInfo* info, ActivityLog& log);
// The output bytes with the colour profile given, empty on failure. WebP,
// AVIF and JPEG XL take the EXIF and XMP of `source` when the request keeps
// the header, the orientation reset to 1 when the pixels are `upright`. The
// quality the bytes were made at goes to `keptQuality` when given.
QByteArray encode(const Picture& picture, const ProcessingRequest& request, ActivityLog& log,
                  const QByteArray& iccProfile = {}, const SourceMetadata& source = {}, bool upright = false,
                  int* keptQuality = nullptr);
// The status thumbnail: fit into 64 x 64, never enlarged.
vips::VImage thumbnail(const Picture& picture);
// The watermark picture, none when the file does not load.
std::optional<Picture> loadWatermark(const QString& path);

} // namespace PipelineSteps

} // namespace quillet
