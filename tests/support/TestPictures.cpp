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
