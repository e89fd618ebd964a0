// Writes the pictures of the memory benchmark, each in one libvips pipeline
// so that nothing but the file itself reaches the disk.
//
// Reads one job per line from standard input:
//   noisy PATH WIDTH HEIGHT SEED   gaussian noise in every band, JPEG Q 92 4:2:0
//   smooth PATH WIDTH HEIGHT SEED  detail at a few scales; format from PATH's suffix
// The same line always gives the same pixels with the same libvips.

#include <vips/vips8>

#include <iostream>
#include <sstream>
#include <string>

using vips::VImage;

namespace {

VImage noise(int width, int height, double sigma, int seed) {
    return VImage::gaussnoise(width, height,
                              VImage::option()->set("mean", 128.0)->set("sigma", sigma)->set("seed", seed));
}

VImage rgb(const VImage& r, const VImage& g, const VImage& b) {
    return VImage::bandjoin({r, g, b})
        .cast(VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

// Nothing for the entropy coder to squeeze: the decoder's worst case.
void noisy(const std::string& path, int width, int height, int seed) {
    rgb(noise(width, height, 50, 3 * seed), noise(width, height, 50, 3 * seed + 1),
        noise(width, height, 50, 3 * seed + 2))
        .jpegsave(path.c_str(),
                  VImage::option()->set("Q", 92)->set("subsample_mode", VIPS_FOREIGN_SUBSAMPLE_ON));
}

// Coarse noise enlarged: soft detail, as a stitched photograph has, which
// compresses in a reasonable time.
void smooth(const std::string& path, int width, int height, int seed) {
    const int factor = 20;
    const auto band = [&](int offset) {
        return noise(width / factor + 1, height / factor + 1, 50, seed + offset)
            .resize(factor, VImage::option()->set("kernel", VIPS_KERNEL_LINEAR))
            .extract_area(0, 0, width, height);
    };
    const VImage image = rgb(band(0), band(1), band(2));
    if (path.ends_with(".png"))
        image.pngsave(path.c_str(), VImage::option()->set("compression", 1));
    else
        image.tiffsave(path.c_str(), VImage::option()
                                         ->set("tile", true)
                                         ->set("tile_width", 256)
                                         ->set("tile_height", 256)
                                         ->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_JPEG)
                                         ->set("Q", 85));
}

} // namespace

int main(int, char* argv[]) {
    if (VIPS_INIT(argv[0]) != 0) {
        std::cerr << "memorygen: libvips did not start\n";
        return 1;
    }
    std::string line;
    while (std::getline(std::cin, line)) {
        std::istringstream fields(line);
        std::string kind, path;
        int width = 0, height = 0, seed = 0;
        if (!(fields >> kind >> path >> width >> height >> seed))
            continue;
        try {
            if (kind == "noisy")
                noisy(path, width, height, seed);
            else
                smooth(path, width, height, seed);
        } catch (const vips::VError& e) {
            std::cerr << "memorygen: " << path << ": " << e.what() << '\n';
            return 1;
        }
    }
    vips_shutdown();
    return 0;
}
