// Pictures the tests build for themselves.
#ifndef PIXMORA_TESTS_TESTPICTURES_H
#define PIXMORA_TESTS_TESTPICTURES_H

#include <cstdint>
#include <vector>

struct Rgb {
    int r, g, b;
};

// RGBA bytes of one colour, opaque.
std::vector<uint8_t> solidPicture(int width, int height, Rgb colour);

#endif
