#include "engine/pipeline/metadatastrip.h"

#include "metadata/exiffilter.h"
#include "metadata/xmpfilter.h"

namespace quillet {

namespace MetadataStrip {

MetadataRemoval apply(SourceMetadata& source, MetadataPolicy policy) {
    if (policy == MetadataPolicy::Keep)
        return {};
    ExifFilter::Result exif = ExifFilter::filter(source.exif, policy);
    XmpFilter::Result xmp = XmpFilter::filter(source.xmp, policy);
    source.exif = std::move(exif.tiff);
    source.xmp = std::move(xmp.packet);
    MetadataRemoval removed = exif.removed;
    removed += xmp.removed;
    return removed;
}

} // namespace MetadataStrip

} // namespace quillet
