// Writes synthetic camera-like JPEGs for the benchmark corpus.
//
// Reads one job per line from standard input: "PATH WIDTH HEIGHT SEED", and
// writes each picture to PATH without metadata (the EXIF is copied in later
// from real camera files). The same line always gives the same bytes with the
// same libvips and libjpeg: every random source is a seeded gaussnoise.
//
// The content mimics what makes photographs costly to decode and encode:
// smooth gradients (sky, light fall-off), clouds of detail at several scales
// (a 1/f spectrum), hard-edged regions softened like real edges, and sensor
// grain. Pure noise or flat colour would make JPEG sizes and decode times
// unlike a camera's.
//
// Usage: corpusgen [QUALITY] < jobs

#include <vips/vips8>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

using vips::VImage;

namespace {

// Smooth noise with features of about featureSize pixels, one band, unit
// deviation; the result is a little larger than width x height.
VImage cloud(int width, int height, int featureSize, int seed) {
    const int w = width / featureSize + 3;
    const int h = height / featureSize + 3;
    VImage coarse =
        VImage::gaussnoise(w, h, VImage::option()->set("sigma", 1.0)->set("mean", 0.0)->set("seed", seed));
    if (featureSize == 1)
        return coarse;
    return coarse.resize(featureSize, VImage::option()->set("kernel", VIPS_KERNEL_CUBIC));
}

VImage clipToUchar(const VImage& image) {
    VImage low = (image < 0.0).ifthenelse(0.0, image);
    return (low > 255.0).ifthenelse(255.0, low).cast(VIPS_FORMAT_UCHAR);
}

// Everything smooth, built at 1/lowScale of the size: full-size float
// arithmetic on many layers would make a 24 MP picture take half a minute.
VImage lowFrequencies(int width, int height, int lowScale, int seed) {
    const int lw = width / lowScale + 4;
    const int lh = height / lowScale + 4;
    const double tint = (seed % 7) / 7.0;
    VImage xy = VImage::xyz(lw, lh);
    VImage fx = xy[0] / double(lw);
    VImage fy = xy[1] / double(lh);

    // Sky at the top turning into warmer ground, with a lens fall-off.
    VImage red = fy * (90.0 + 60 * tint) + 70.0;
    VImage green = fy * 40.0 + fx * 25.0 + 95.0;
    VImage blue = fy * -110.0 + 190.0 - 40 * tint;
    VImage dx = fx - 0.5;
    VImage dy = fy - 0.5;
    VImage base = red.bandjoin(green).bandjoin(blue) * ((dx * dx + dy * dy) * -0.6 + 1.0);

    // Detail whose amplitude falls with its size (a 1/f spectrum, as in
    // photographs), shared by the bands, plus a coarse colour cast.
    auto lowCloud = [&](int lowFeature, int salt) {
        VImage c = cloud(lw, lh, lowFeature, seed * 16 + salt);
        return c.extract_area(0, 0, lw, lh);
    };
    VImage luminance =
        lowCloud(64, 1) * 30.0 + lowCloud(12, 2) * 16.0 + lowCloud(3, 3) * 9.0 + lowCloud(1, 4) * 5.0;
    VImage chroma = lowCloud(48, 5).bandjoin(lowCloud(48, 6)).bandjoin(lowCloud(48, 7)) * 14.0;
    return clipToUchar(base + luminance + chroma);
}

VImage synthesise(int width, int height, int seed) {
    constexpr int lowScale = 8;
    VImage low = lowFrequencies(width, height, lowScale, seed)
                     .resize(lowScale, VImage::option()->set("kernel", VIPS_KERNEL_CUBIC))
                     .extract_area(lowScale, lowScale, width, height);

    // Hard-edged regions (leaves, buildings), thresholded at full size and
    // softened to a lens-like edge.
    VImage regionField =
        clipToUchar(cloud(width / lowScale + 4, height / lowScale + 4, 8, seed * 16 + 8) * 40.0 + 128.0)
            .resize(lowScale)
            .extract_area(lowScale, lowScale, width, height);
    VImage regions = (regionField > 142).ifthenelse(36, 0).cast(VIPS_FORMAT_UCHAR).gaussblur(0.8);

    // Sensor grain and fine texture, made on one tile and repeated: a decoder
    // or encoder cannot tell, and fresh noise per pixel is the slowest part.
    const int tile = std::max(width, height) > 2048 ? 1024 : 256;
    VImage grain = VImage::gaussnoise(
        tile, tile, VImage::option()->set("sigma", 5.0)->set("mean", 0.0)->set("seed", seed * 16 + 9));
    VImage texture = cloud(tile, tile, 4, seed * 16 + 10).extract_area(0, 0, tile, tile) * 7.0;
    VImage detail = (grain + texture - 13.0)
                        .cast(VIPS_FORMAT_CHAR)
                        .replicate(width / tile + 1, height / tile + 1)
                        .extract_area(0, 0, width, height);

    VImage picture = clipToUchar(low + regions + detail);
    return picture.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

} // namespace

int main(int argc, char* argv[]) {
    if (VIPS_INIT(argv[0]) != 0) {
        std::fprintf(stderr, "corpusgen: cannot start libvips: %s\n", vips_error_buffer());
        return 1;
    }
    // Each job is used once; cached operations would only hold memory.
    vips_cache_set_max(0);
    const int quality = argc > 1 ? std::atoi(argv[1]) : 92;
    if (quality < 1 || quality > 100) {
        std::fprintf(stderr, "usage: corpusgen [QUALITY 1-100] < 'PATH WIDTH HEIGHT SEED' lines\n");
        return 2;
    }

    std::string line;
    int failures = 0;
    while (std::getline(std::cin, line)) {
        if (line.empty())
            continue;
        std::istringstream fields(line);
        std::string path;
        int width = 0, height = 0, seed = 0;
        if (!(fields >> path >> width >> height >> seed) || width < 16 || height < 16) {
            std::fprintf(stderr, "corpusgen: bad job line '%s'\n", line.c_str());
            ++failures;
            continue;
        }
        try {
            // Cameras subsample chroma even at high quality; libvips would not above Q90.
            synthesise(width, height, seed)
                .jpegsave(path.c_str(), VImage::option()
                                            ->set("Q", quality)
                                            ->set("strip", true)
                                            ->set("subsample_mode", VIPS_FOREIGN_SUBSAMPLE_ON));
        } catch (const vips::VError& error) {
            std::fprintf(stderr, "corpusgen: %s: %s\n", path.c_str(), error.what());
            ++failures;
        }
    }
    vips_shutdown();
    return failures == 0 ? 0 : 1;
}
