#include "engine/pipeline/avifencoder.h"

#include <libheif/heif.h>

#include <cstring>
#include <memory>
#include <stdexcept>

namespace quillet {

namespace AvifEncoder {

namespace {

void check(const heif_error& error) {
    if (error.code != heif_error_Ok)
        throw std::runtime_error(error.message ? error.message : "libheif failed");
}

template <typename T, void (*Release)(T*)> struct Releaser {
    void operator()(T* p) const { Release(p); }
};
template <typename T, void (*Release)(T*)> using Owned = std::unique_ptr<T, Releaser<T, Release>>;

void releaseHandle(heif_image_handle* handle) {
    heif_image_handle_release(handle);
}
void releaseImage(heif_image* image) {
    heif_image_release(image);
}
void releaseEncoder(heif_encoder* encoder) {
    heif_encoder_release(encoder);
}

heif_error appendTo(heif_context*, const void* data, size_t size, void* userdata) {
    static_cast<QByteArray*>(userdata)->append(static_cast<const char*>(data), qsizetype(size));
    return {heif_error_Ok, heif_suberror_Unspecified, "ok"};
}

// The pixels copied row by row into an interleaved libheif picture.
Owned<heif_image, releaseImage> heifImage(const vips::VImage& pixels) {
    const bool alpha = pixels.bands() == 4;
    heif_image* raw = nullptr;
    check(heif_image_create(pixels.width(), pixels.height(), heif_colorspace_RGB,
                            alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB, &raw));
    Owned<heif_image, releaseImage> image(raw);
    check(heif_image_add_plane(raw, heif_channel_interleaved, pixels.width(), pixels.height(), 8));
    int stride = 0;
    uint8_t* plane = heif_image_get_plane(raw, heif_channel_interleaved, &stride);
    const size_t rowBytes = size_t(pixels.width()) * size_t(pixels.bands());
    const auto* source = static_cast<const uint8_t*>(vips_image_get_data(pixels.get_image()));
    if (!plane || !source)
        throw std::runtime_error("no pixels to encode");
    for (int y = 0; y < pixels.height(); ++y)
        std::memcpy(plane + size_t(y) * size_t(stride), source + size_t(y) * rowBytes, rowBytes);
    return image;
}

} // namespace

QByteArray encode(const vips::VImage& input, int quality, const EmbeddedMetadata& metadata,
                  ModernEncoder::Effort effort) {
    vips::VImage pixels = input;
    if (pixels.bands() < 3)
        pixels = pixels.colourspace(VIPS_INTERPRETATION_sRGB);
    if (pixels.format() != VIPS_FORMAT_UCHAR)
        pixels = pixels.cast(VIPS_FORMAT_UCHAR);
    pixels = pixels.copy_memory();

    const Owned<heif_image, releaseImage> image = heifImage(pixels);
    if (!metadata.iccProfile.isEmpty())
        check(heif_image_set_raw_color_profile(image.get(), "prof", metadata.iccProfile.constData(),
                                               size_t(metadata.iccProfile.size())));

    const std::unique_ptr<heif_context, void (*)(heif_context*)> context(heif_context_alloc(),
                                                                         heif_context_free);
    heif_encoder* rawEncoder = nullptr;
    check(heif_context_get_encoder_for_format(context.get(), heif_compression_AV1, &rawEncoder));
    const Owned<heif_encoder, releaseEncoder> encoder(rawEncoder);
    check(heif_encoder_set_lossy_quality(rawEncoder, quality));
    // What libvips chose too: full chroma from quality 90, speed 5 of 0..9.
    heif_encoder_set_parameter_string(rawEncoder, "chroma", quality >= 90 ? "444" : "420");
    heif_encoder_set_parameter_integer(rawEncoder, "speed", effort == ModernEncoder::Effort::Fast ? 8 : 5);

    const std::unique_ptr<heif_encoding_options, void (*)(heif_encoding_options*)> options(
        heif_encoding_options_alloc(), heif_encoding_options_free);
    options->save_alpha_channel = pixels.bands() == 4;
    heif_image_handle* rawHandle = nullptr;
    check(heif_context_encode_image(context.get(), image.get(), rawEncoder, options.get(), &rawHandle));
    const Owned<heif_image_handle, releaseHandle> handle(rawHandle);

    if (!metadata.exif.isEmpty())
        check(heif_context_add_exif_metadata(context.get(), rawHandle, metadata.exif.constData(),
                                             int(metadata.exif.size())));
    if (!metadata.xmp.isEmpty())
        check(heif_context_add_XMP_metadata(context.get(), rawHandle, metadata.xmp.constData(),
                                            int(metadata.xmp.size())));

    QByteArray bytes;
    heif_writer writer{1, appendTo};
    check(heif_context_write(context.get(), &writer, &bytes));
    return bytes;
}

} // namespace AvifEncoder

} // namespace quillet
