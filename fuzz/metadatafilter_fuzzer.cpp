// Feeds one input to the EXIF and XMP filters under every policy, the first
// byte choosing the block's byte order when it is used as a TIFF header.
// A filtered block keeps its size (nothing moves), and filtering it again
// finds no place or serial left to remove.

#include "metadata/exiffilter.h"
#include "metadata/xmpfilter.h"

#include <cstdlib>

using namespace quillet;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const QByteArray header = data[0] & 1 ? QByteArray("MM\0*", 4) : QByteArray("II*\0", 4);
    const QByteArray raw(reinterpret_cast<const char*>(data) + 1, qsizetype(size - 1));
    for (const QByteArray& input : {raw, header + raw}) {
        for (const MetadataPolicy policy : {MetadataPolicy::NoLocation, MetadataPolicy::Minimal}) {
            const ExifFilter::Result once = ExifFilter::filter(input, policy);
            if (!once.tiff.isEmpty() && once.tiff.size() != input.size())
                std::abort();
            const ExifFilter::Result twice = ExifFilter::filter(once.tiff, policy);
            if (twice.removed.location != 0 || twice.removed.identifying != 0)
                std::abort();
        }
        if (!ExifFilter::filter(input, MetadataPolicy::None).tiff.isEmpty())
            std::abort();
    }
    for (const MetadataPolicy policy : {MetadataPolicy::NoLocation, MetadataPolicy::Minimal}) {
        const XmpFilter::Result once = XmpFilter::filter(raw, policy);
        const XmpFilter::Result twice = XmpFilter::filter(once.packet, policy);
        if (twice.removed.location != 0 || twice.removed.identifying != 0)
            std::abort();
    }
    return 0;
}
