#include "TestPictures.h"

#include <cstddef>

std::vector<uint8_t> solidPicture(int width, int height, Rgb colour) {
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * height * 4);
    for (size_t i = 0; i < pixels.size(); i += 4) {
        pixels[i] = static_cast<uint8_t>(colour.r);
        pixels[i + 1] = static_cast<uint8_t>(colour.g);
        pixels[i + 2] = static_cast<uint8_t>(colour.b);
        pixels[i + 3] = 255;
    }
    return pixels;
}

std::vector<uint8_t> stepCheckerRampPicture(int width, int height) {
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * height * 4);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            uint8_t* p = &pixels[(static_cast<size_t>(y) * width + x) * 4];
            p[0] = x >= 40 ? 255 : 0;
            p[1] = ((x / 8 + y / 8) % 2) != 0 ? 230 : 20;
            p[2] = static_cast<uint8_t>(y * 255 / (height - 1));
            p[3] = 255;
        }
    }
    return pixels;
}
