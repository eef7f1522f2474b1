#include "EnduranceSupport.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <fstream>

#include "GLObjectLedger.h"
#include "pmGLContextManager.h"

namespace {

template <typename Work>
void inPrivateContext(Work work) {
    pmGL::GLContextManager* manager = pmGL::GLContextManager::GetInstancePtr();
    ASSERT_NE(manager, nullptr);
    EXPECT_TRUE(manager->Bind());
    glLedger::Pause pause;
    work();
    EXPECT_TRUE(manager->Unbind());
}

}  // namespace

PrivateTarget::PrivateTarget(int w, int h) : width(w), height(h) {
    inPrivateContext([&] {
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, w, h);
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
        glViewport(0, 0, w, h);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
    });
}

PrivateTarget::~PrivateTarget() {
    inPrivateContext([&] {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &framebuffer);
        glDeleteTextures(1, &texture);
    });
}

void PrivateTarget::clear() {
    inPrivateContext([&] {
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glViewport(0, 0, width, height);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
    });
}

std::vector<uint8_t> PrivateTarget::read() {
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * height * 4);
    inPrivateContext([&] {
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    });
    return pixels;
}

long residentKiB() {
    std::ifstream statm("/proc/self/statm");
    long size = 0, resident = 0;
    statm >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

int lumaOf(const uint8_t* p) {
    const float mono = p[0] / 255.0f * 0.2125f + p[1] / 255.0f * 0.7154f + p[2] / 255.0f * 0.0721f;
    return static_cast<int>(std::lround(mono * 255.0f));
}

std::vector<uint8_t> structuredPicture(int width, int height, unsigned seed) {
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * height * 4);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            uint8_t* p = &pixels[(static_cast<size_t>(y) * width + x) * 4];
            p[0] = static_cast<uint8_t>((x * 255 / (width > 1 ? width - 1 : 1) + seed * 37) % 256);
            p[1] =
                static_cast<uint8_t>((y * 255 / (height > 1 ? height - 1 : 1) + seed * 11) % 256);
            p[2] = static_cast<uint8_t>(x > y ? 220 - (seed % 32) : 30 + (seed % 32));
            p[3] = 255;
        }
    }
    return pixels;
}
