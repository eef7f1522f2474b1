// Eight threads at once, each with its own grey effect, still blur and video
// blur on its own private context, 500 exported calls each, every drawn or
// read-back picture checked against the CPU. A watchdog fails the program
// rather than let a deadlock hang the suite.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "EnduranceSupport.h"
#include "GLObjectLedger.h"
#include "GLTestContext.h"
#include "LogCapture.h"
#include "TestPictures.h"
#include "pixmora.h"
#include "pmGLContextManager.h"

namespace {

using pmGL::GLContextManager;

constexpr int kThreads = 8;
constexpr int kCallsPerThread = 500;
constexpr int kRecreateEvery = 12;  // iterations between new sets of objects

// Pixels of the grey effect's output (bottom row first) that are not the
// luma of the top-row-first input within one level: the shader's float sum
// and the CPU's differ only in rounding of the last bit before conversion.
int greyMismatches(const std::vector<uint8_t>& out, const std::vector<uint8_t>& in, int w, int h) {
    int mismatches = 0;
    for (int row = 0; row < h; ++row) {
        for (int x = 0; x < w; ++x) {
            const uint8_t* p = &out[(static_cast<size_t>(row) * w + x) * 4];
            const int expected = lumaOf(&in[(static_cast<size_t>(h - 1 - row) * w + x) * 4]);
            if (std::abs(p[0] - expected) > 1 || p[0] != p[1] || p[1] != p[2] || p[3] != 255) {
                ++mismatches;
            }
        }
    }
    return mismatches;
}

// Pixels that are not the flat colour within one level. A blur of a flat
// picture is the picture (the weights sum to one); the random dither moves a
// channel by at most half a level, and the conversion to bytes rounds.
int flatMismatches(const std::vector<uint8_t>& out, Rgb c) {
    int mismatches = 0;
    for (size_t i = 0; i < out.size(); i += 4) {
        if (std::abs(out[i] - c.r) > 1 || std::abs(out[i + 1] - c.g) > 1 ||
            std::abs(out[i + 2] - c.b) > 1) {
            ++mismatches;
        }
    }
    return mismatches;
}

struct Objects {
    pmFilterObject grey{PM_PHOTO_GREY, nullptr};
    pmFilterObject still{PM_BLUR_PHOTO, nullptr};
    pmFilterObject video{PM_BLUR_VIDEO, nullptr};
};

// One thread's work: returns the number of failed checks, and counts its
// exported calls in `calls`.
int threadWork(unsigned seed, std::atomic<int>& calls) {
    int failures = 0;
    int made = 0;
    auto call = [&](auto&& work) {
        work();
        ++made;
    };
    const int w = 10 + static_cast<int>(seed % 3);
    const int h = 8 + static_cast<int>(seed % 2);
    Objects objects;
    std::unique_ptr<PrivateTarget> target;
    for (int iteration = 0; made < kCallsPerThread; ++iteration) {
        if (iteration % kRecreateEvery == 0) {
            target.reset();
            call([&] { pmPhotoFilterDelete(&objects.grey); });
            call([&] { pmBlurFilterDelete(&objects.still); });
            call([&] { pmBlurFilterDelete(&objects.video); });
            call([&] { objects.grey.handler = pmPhotoFilterCreate(PM_PHOTO_GREY); });
            call([&] { objects.still.handler = pmBlurFilterCreate(PM_BLUR_PHOTO); });
            call([&] { objects.video.handler = pmBlurFilterCreate(PM_BLUR_VIDEO); });
            if (!objects.grey.handler || !objects.still.handler || !objects.video.handler) {
                return -1;
            }
            call([&] { pmBlurFilterSetBlurIntensity(objects.still, 4.0f); });
            call([&] { pmBlurFilterSetInterpolation(objects.video, false); });
            target = std::make_unique<PrivateTarget>(w, h);
        }
        const std::vector<uint8_t> picture = structuredPicture(w, h, seed * 1000 + iteration);
        target->clear();
        call([&] {
            pmPhotoFilterSetBuffer(objects.grey, const_cast<uint8_t*>(picture.data()), w, h, 4);
        });
        call([&] { pmPhotoFilterDraw(objects.grey, w, h); });
        failures += greyMismatches(target->read(), picture, w, h);

        const Rgb colour{static_cast<int>((seed * 53 + iteration * 7) % 256),
                         static_cast<int>((seed * 31 + iteration * 13) % 256),
                         static_cast<int>((seed * 17 + iteration * 29) % 256)};
        std::vector<uint8_t> flat = solidPicture(w, h, colour);
        std::vector<uint8_t> readBack(flat.size(), 0);
        call([&] { pmBlurFilterSetBuffer(objects.still, flat.data(), w, h, 4); });
        call([&] {
            pmBlurFilterSetOutputBuffer(objects.still,
                                        pmBlurBuffer{COLOR_TYPE_RGBA, readBack.data(), w, h});
        });
        failures += flatMismatches(readBack, colour);

        target->clear();
        call([&] { pmBlurFilterSetBuffer(objects.video, flat.data(), w, h, 4); });
        call([&] { pmBlurFilterDraw(objects.video, w, h); });
        failures += flatMismatches(target->read(), colour);
    }
    target.reset();
    call([&] { pmPhotoFilterDelete(&objects.grey); });
    call([&] { pmBlurFilterDelete(&objects.still); });
    call([&] { pmBlurFilterDelete(&objects.video); });
    if (eglGetCurrentContext() != EGL_NO_CONTEXT) ++failures;
    calls += made;
    return failures;
}

class ThreadsTest : public ::testing::Test {
protected:
    void SetUp() override {
        GLContextManager::ReleaseInstance();
        pmEnableInternalGLContext();
        pmSetEGLDisplay(testDisplay());
    }
    void TearDown() override { GLContextManager::ReleaseInstance(); }
};

TEST_F(ThreadsTest, EightThreadsEachOnItsOwnContextDrawWhatTheCpuComputes) {
    const long liveBefore = glLedger::liveObjects();
    const long contextsBefore = glLedger::liveContexts();
    LogCapture quiet;
    std::atomic<int> calls{0};
    std::vector<std::future<int>> results;
    for (unsigned t = 0; t < kThreads; ++t) {
        results.push_back(std::async(std::launch::async, threadWork, t + 1, std::ref(calls)));
    }
    // The watchdog: a thread that never comes back cannot be joined, so the
    // program reports and ends instead of hanging until the suite's timeout.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(240);
    for (unsigned t = 0; t < kThreads; ++t) {
        if (results[t].wait_until(deadline) != std::future_status::ready) {
            std::fprintf(stderr, "ThreadsTest: thread %u did not finish within 240 s\n", t);
            std::fflush(stderr);
            std::_Exit(1);
        }
        EXPECT_EQ(results[t].get(), 0) << "thread " << t;
    }
    EXPECT_GE(calls.load(), kThreads * kCallsPerThread);
    EXPECT_TRUE(GLContextManager::GetInstancePtr()->Contexts().empty());
    EXPECT_EQ(glLedger::liveContexts(), contextsBefore);
    EXPECT_EQ(glLedger::liveObjects(), liveBefore) << glLedger::describe();
}

}  // namespace
