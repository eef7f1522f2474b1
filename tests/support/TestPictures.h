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

// RGBA bytes with structure along both axes and no symmetry that would hide
// a flip or a swapped axis: red steps from 0 to 255 at x = 40, green is a
// checker of 8 x 8 blocks, blue ramps up the rows of memory.
std::vector<uint8_t> stepCheckerRampPicture(int width, int height);

#endif
