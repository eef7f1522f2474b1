// Out of memory: with the allocation drill on, the Create functions yield
// null with the allocator's words and make no GL object, the image stream
// loader yields an empty image, and whole lives of every object run with
// every Nth allocation refused without a crash or a GL object left behind.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "EnduranceSupport.h"
#include "GLObjectLedger.h"
#include "GLTestContext.h"
#include "LogCapture.h"
#include "pixmora.h"
#include "pmGLContextManager.h"
#include "pmStb.h"
#include "util/AllocationFailure.h"

namespace {

using pmGL::GLContextManager;

// Ends the drill however the test leaves.
struct Drill {
    explicit Drill(unsigned period) { pmUtil::failEveryNthAllocation(period); }
    ~Drill() { pmUtil::failEveryNthAllocation(0); }
};

// The allocator's line: its own file and function, and the exception's text.
int refusalLines(const LogCapture& log, const std::string& function) {
    const std::regex line("^pmUtil: " + function + R"(\(\d+\) > std::bad_alloc\n$)");
    int count = 0;
    for (const LogLine& entry : log.lines()) {
        if (entry.priority == 6 && std::regex_match(entry.text, line)) ++count;
    }
    return count;
}

class AllocationFailureTest : public ::testing::Test {
protected:
    void SetUp() override {
        GLContextManager::ReleaseInstance();
        pmEnableInternalGLContext();
        pmSetEGLDisplay(testDisplay());
        ASSERT_NE(GLContextManager::GetInstancePtr(), nullptr);
    }
    void TearDown() override {
        pmUtil::failEveryNthAllocation(0);
        GLContextManager::ReleaseInstance();
    }
    size_t contexts() { return GLContextManager::GetInstancePtr()->Contexts().size(); }
};

TEST_F(AllocationFailureTest, EveryCreateYieldsNullWithTheAllocatorsWords) {
    const long liveBefore = glLedger::liveObjects();
    const long contextsBefore = glLedger::liveContexts();
    for (unsigned type = PM_PHOTO_GREY; type <= PM_PHOTO_CROSS_HATCHING + 2; ++type) {
        const bool photo = type <= PM_PHOTO_CROSS_HATCHING;
        const unsigned blurType = type - PM_PHOTO_CROSS_HATCHING - 1;
        LogCapture log;
        void* handler = nullptr;
        {
            Drill drill(1);
            handler = photo ? pmPhotoFilterCreate(type) : pmBlurFilterCreate(blurType);
            EXPECT_EQ(pmUtil::refusedAllocations(), 1u) << "type " << type;
        }
        EXPECT_EQ(handler, nullptr) << "type " << type;
        EXPECT_EQ(refusalLines(log, "safeNew"), 1) << log.dump();
        EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT) << "Create unbinds on the way out";
        // The reference that Create took stays raised, as documented; the
        // test gives it back itself.
        EXPECT_EQ(contexts(), 1u);
        GLContextManager::GetInstancePtr()->Terminate();
        EXPECT_EQ(contexts(), 0u);
        EXPECT_EQ(glLedger::liveObjects(), liveBefore) << "type " << type;
        EXPECT_EQ(glLedger::liveContexts(), contextsBefore) << "type " << type;
    }
}

TEST_F(AllocationFailureTest, ImageStreamLoaderYieldsAnEmptyImage) {
    char path[] = "/tmp/pixmora-alloc-XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    close(fd);
    std::vector<uint8_t> pixels = makeTestPixels(5, 4, 3, 9);
    {
        std::ofstream out(path, std::ios::binary);
        ASSERT_TRUE(pmStb::writeImage(out, pmUtil::ImageData<unsigned char>(5, 4, 3, pixels.data()),
                                      ".raw"));
    }
    // The extension's text is short and bounded, so the pixels are the one
    // allocation the reader makes through safeNewArray.
    for (unsigned period : {1u}) {
        LogCapture log;
        std::ifstream in(path, std::ios::binary);
        pmUtil::ImageData<unsigned char> image;
        {
            Drill drill(period);
            image = pmStb::readImage(in);
            EXPECT_EQ(pmUtil::refusedAllocations(), 1u) << "period " << period;
        }
        EXPECT_EQ(image.data, nullptr) << "period " << period;
        EXPECT_EQ(image.width, 0);
        EXPECT_EQ(image.height, 0);
        EXPECT_EQ(image.channel, 0);
        EXPECT_EQ(refusalLines(log, "safeNewArray"), 1) << log.dump();
    }
    // Without the drill the same record reads back whole.
    std::ifstream in(path, std::ios::binary);
    pmUtil::ImageData<unsigned char> image = pmStb::readImage(in);
    ASSERT_NE(image.data, nullptr);
    EXPECT_EQ(std::vector<uint8_t>(image.data, image.data + image.getCount()), pixels);
    pmUtil::deleteImageData(image);
    std::remove(path);
}

// Whole lives of every object with every Nth allocation refused: whatever
// gets refused, a Create that succeeded is used and deleted and gives back
// every GL object, and a Create that failed leaves only its documented
// context reference, which the test releases.
TEST_F(AllocationFailureTest, LivesWithEveryNthAllocationRefusedLeaveNothing) {
    const long liveBefore = glLedger::liveObjects();
    const long contextsBefore = glLedger::liveContexts();
    const int w = 12, h = 10;
    std::vector<uint8_t> pixels = structuredPicture(w, h, 5);
    std::vector<uint8_t> readBack(static_cast<size_t>(w) * h * 4);
    LogCapture quiet;
    unsigned refused = 0;
    int failedCreates = 0;
    for (unsigned period = 1; period <= 4; ++period) {
        Drill drill(period);
        for (unsigned type = PM_PHOTO_GREY; type <= PM_PHOTO_CROSS_HATCHING + 2; ++type) {
            if (type == PM_PHOTO_MONOTONOUS_BLUR || type == PM_PHOTO_CARTOON) continue;
            const bool photo = type <= PM_PHOTO_CROSS_HATCHING;
            const unsigned blurType = type - PM_PHOTO_CROSS_HATCHING - 1;
            pmFilterObject object{static_cast<int>(photo ? type : blurType),
                                  photo ? pmPhotoFilterCreate(type) : pmBlurFilterCreate(blurType)};
            if (object.handler == nullptr) {
                ++failedCreates;
                GLContextManager::GetInstancePtr()->Terminate();
                continue;
            }
            {
                PrivateTarget target(w, h);
                if (photo) {
                    pmPhotoFilterSetBuffer(object, pixels.data(), w, h, 4);
                    pmPhotoFilterDraw(object, w, h);
                } else {
                    pmBlurFilterSetBuffer(object, pixels.data(), w, h, 4);
                    pmBlurFilterDraw(object, w, h);
                    pmBlurFilterSetOutputBuffer(
                        object, pmBlurBuffer{COLOR_TYPE_RGBA, readBack.data(), w, h});
                }
            }
            if (photo) {
                pmPhotoFilterDelete(&object);
            } else {
                pmBlurFilterDelete(&object);
            }
            ASSERT_EQ(glLedger::liveObjects(), liveBefore)
                << "type " << type << ", period " << period << ": " << glLedger::describe();
            quiet.clear();
        }
        refused += pmUtil::refusedAllocations();
    }
    EXPECT_GT(refused, 0u);
    EXPECT_GT(failedCreates, 0);
    EXPECT_EQ(contexts(), 0u);
    EXPECT_EQ(glLedger::liveContexts(), contextsBefore);
}

}  // namespace
