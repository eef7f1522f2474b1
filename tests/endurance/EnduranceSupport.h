// Helpers of the endurance tests: a render target in the calling thread's
// private context, the resident memory of the process, and CPU references.
#ifndef PIXMORA_TESTS_ENDURANCE_ENDURANCESUPPORT_H
#define PIXMORA_TESTS_ENDURANCE_ENDURANCESUPPORT_H

#include <GLES3/gl3.h>

#include <cstdint>
#include <vector>

// A framebuffer made in the calling thread's private context, for a thread
// that has no context of its own: the binding stays in the private context, so
// the library's Draw renders into it. Its GL objects are kept out of the
// ledger, and it must go before the thread's last library object does.
class PrivateTarget {
public:
    PrivateTarget(int width, int height);
    ~PrivateTarget();
    PrivateTarget(const PrivateTarget&) = delete;
    PrivateTarget& operator=(const PrivateTarget&) = delete;

    void clear();
    // Bottom row first, RGBA.
    std::vector<uint8_t> read();

private:
    int width;
    int height;
    GLuint texture = 0;
    GLuint framebuffer = 0;
};

// Resident memory of this process in KiB, from /proc/self/statm.
long residentKiB();

// The grey of one RGB pixel by the luma weights of the grey effect, in bytes.
int lumaOf(const uint8_t* rgb);

// A picture with structure: ramps and a diagonal step, RGBA, top row first.
std::vector<uint8_t> structuredPicture(int width, int height, unsigned seed);

#endif
