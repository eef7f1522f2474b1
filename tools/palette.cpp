// pixmora palette: the main colours of a picture by the bridge's k-means,
// one "#rrggbb" line each, darkest first, and a swatch picture if asked.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "Pictures.h"
#include "ToolError.h"
#include <pixmora/pmCV.h>

namespace {

using Colour = pmUtil::Color<unsigned char>;

// Each colour of the swatch is a square of this side, side by side.
constexpr int kSwatchSide = 64;

struct PaletteRequest {
    std::string input;
    int count = 0;
    std::string output;
};

int luma(const Colour& c) {
    return 299 * c.r + 587 * c.g + 114 * c.b;
}

// k-means lists its centres in no useful order; dark to light reads well and
// stays the same from run to run.
void sortByBrightness(std::vector<Colour>& palette) {
    std::stable_sort(palette.begin(), palette.end(),
                     [](const Colour& a, const Colour& b) { return luma(a) < luma(b); });
}

std::vector<Colour> paletteOf(Image& rgb, int count) {
    std::vector<Colour> palette;
    try {
        pmCV::generateColorPalette(rgb, count, palette);
    } catch (const std::exception& error) {
        throw ToolError(std::string("cannot find the palette: ") + error.what());
    }
    if (palette.size() != static_cast<size_t>(count)) throw ToolError("cannot find the palette");
    return palette;
}

void writeSwatch(const std::string& path, const std::vector<Colour>& palette) {
    const int width = kSwatchSide * static_cast<int>(palette.size());
    std::vector<unsigned char> pixels(static_cast<size_t>(width) * kSwatchSide * 3);
    for (int y = 0; y < kSwatchSide; ++y) {
        for (int x = 0; x < width; ++x) {
            const Colour& colour = palette[x / kSwatchSide];
            unsigned char* p = &pixels[(static_cast<size_t>(y) * width + x) * 3];
            p[0] = colour.r;
            p[1] = colour.g;
            p[2] = colour.b;
        }
    }
    savePicture(path, pixels, width, kSwatchSide, 3);
}

void runPalette(const PaletteRequest& request) {
    if (!request.output.empty()) checkOutputExtension(request.output);
    Image rgb = pmCV::loadImage(request.input, false, true);
    if (rgb.data == nullptr) throw ToolError("cannot read image '" + request.input + "'");
    const long long pixels = static_cast<long long>(rgb.width) * rgb.height;
    if (request.count > pixels) {
        pmUtil::deleteImageData(rgb);
        throw ToolError("K of " + std::to_string(request.count) + " is more than the picture's " +
                        std::to_string(pixels) + " pixels");
    }
    std::vector<Colour> palette;
    try {
        palette = paletteOf(rgb, request.count);
    } catch (...) {
        pmUtil::deleteImageData(rgb);
        throw;
    }
    pmUtil::deleteImageData(rgb);
    sortByBrightness(palette);
    for (const Colour& colour : palette)
        std::printf("#%02x%02x%02x\n", colour.r, colour.g, colour.b);
    if (!request.output.empty()) writeSwatch(request.output, palette);
}

}  // namespace

void addPaletteCommand(CLI::App& app) {
    auto request = std::make_shared<PaletteRequest>();
    CLI::App* palette = app.add_subcommand(
        "palette", "Find the K main colours of a picture: one '#rrggbb' line each, darkest first");
    palette->add_option("IN", request->input, "Input picture: any file the OpenCV codecs read")
        ->required();
    palette->add_option("K", request->count, "Number of colours, 1 to 256")
        ->required()
        ->check(CLI::Range(1, 256));
    palette->add_option("--out", request->output,
                        "Also write a swatch picture: .png, .jpg, .bmp or .tga");
    palette->fallthrough();
    palette->callback([request] { runPalette(*request); });
    setExample(*palette, "pixmora palette landscape.jpg 5 --out swatch.png");
}
