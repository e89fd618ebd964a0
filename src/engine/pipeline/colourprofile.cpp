#include "engine/pipeline/colourprofile.h"

#include "engine/pipeline/sourcemetadata.h"

namespace quillet {

namespace ColourProfile {

QByteArray convertToSrgb(Picture& picture, const QByteArray& profile) {
    if (profile.isEmpty() || SourceMetadata::isSrgbProfile(profile))
        return profile;
    vips::VImage image = picture.image.copy();
    vips_image_set_blob_copy(image.get_image(), VIPS_META_ICC_NAME, profile.constData(),
                             size_t(profile.size()));
    // Relative colorimetric keeps in-gamut colours exact, which is what a
    // photographer expects of a conversion for the web.
    image = image.icc_transform(
        "srgb",
        vips::VImage::option()->set("embedded", true)->set("intent", VIPS_INTENT_RELATIVE)->set("depth", 8));
    if (image.format() != VIPS_FORMAT_UCHAR)
        image = image.cast(VIPS_FORMAT_UCHAR);
    QByteArray srgb;
    const void* data = nullptr;
    size_t size = 0;
    if (vips_image_get_typeof(image.get_image(), VIPS_META_ICC_NAME) &&
        vips_image_get_blob(image.get_image(), VIPS_META_ICC_NAME, &data, &size) == 0)
        srgb = QByteArray(static_cast<const char*>(data), qsizetype(size));
    picture.image = image.copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
    return srgb;
}

} // namespace ColourProfile

} // namespace quillet
