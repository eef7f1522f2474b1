// Soak: every photo effect and both blurs, created, fed at two alternating
// sizes, drawn and deleted over and over on the library's private context.
// The GL object ledger shows that each Delete gives back every object the
// object made and that a Draw at a steady size makes none; resident memory
// after warm-up stays flat. PIXMORA_SOAK_CYCLES sets the number of cycles
// (default 200) and PIXMORA_SOAK_REPORT_EVERY the interval of the printed
// figures (default: none printed).
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "EnduranceSupport.h"
#include "GLObjectLedger.h"
#include "GLTestContext.h"
#include "LogCapture.h"
#include "pixmora.h"
#include "pmGLContextManager.h"

namespace {

using pmGL::GLContextManager;

long environmentNumber(const char* name, long fallback) {
    const char* text = std::getenv(name);
    if (text == nullptr || *text == '\0') return fallback;
    const long value = std::strtol(text, nullptr, 10);
    return value > 0 ? value : fallback;
}

struct Size {
    int width;
    int height;
};

// Two small sizes, neither a multiple of the other, so that every buffer that
// follows the input's size is made anew at each change.
constexpr Size kSizes[2] = {{24, 18}, {17, 30}};

enum class Family { Photo, StillBlur, VideoBlur };

struct Subject {
    Family family;
    unsigned type;
};

std::vector<Subject> allSubjects() {
    std::vector<Subject> subjects;
    for (unsigned type = PM_PHOTO_GREY; type <= PM_PHOTO_CROSS_HATCHING; ++type) {
        subjects.push_back({Family::Photo, type});
    }
    subjects.push_back({Family::StillBlur, PM_BLUR_PHOTO});
    subjects.push_back({Family::VideoBlur, PM_BLUR_VIDEO});
    return subjects;
}

// The cartoon compares its buffer with the source's size but builds it at
// least 1920 wide, so a narrower source rebuilds the buffer at every Draw by
// design; it must still give back what it replaces.
bool rebuildsOnEveryDraw(const Subject& subject) {
    return subject.family == Family::Photo && subject.type == PM_PHOTO_CARTOON;
}

// The monotonous blur and the cartoon work at 1920 x 1080 or 1920 wide
// whatever the input's size, which costs a software rasterizer about a second
// per life; they take part in one cycle of every PIXMORA_SOAK_FULL_SIZE_EVERY
// (default 25), the others in every cycle.
bool worksAtFullSize(const Subject& subject) {
    return subject.family == Family::Photo &&
           (subject.type == PM_PHOTO_MONOTONOUS_BLUR || subject.type == PM_PHOTO_CARTOON);
}

std::string nameOf(const Subject& subject) {
    switch (subject.family) {
        case Family::Photo:
            return "photo effect " + std::to_string(subject.type);
        case Family::StillBlur:
            return "still blur";
        default:
            return "video blur";
    }
}

class SoakTest : public ::testing::Test {
protected:
    void SetUp() override {
        GLContextManager::ReleaseInstance();
        pmEnableInternalGLContext();
        pmSetEGLDisplay(testDisplay());
        ASSERT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT)
            << "the soak runs with no context of its own";
    }
    void TearDown() override { GLContextManager::ReleaseInstance(); }

    pmFilterObject create(const Subject& subject) {
        void* handler = subject.family == Family::Photo ? pmPhotoFilterCreate(subject.type)
                                                        : pmBlurFilterCreate(subject.type);
        const pmFilterObject object{static_cast<int>(subject.type), handler};
        // At its default of 40 the still blur would shrink these small
        // pictures to nothing; at 4 its working copies are a few pixels.
        if (subject.family == Family::StillBlur) pmBlurFilterSetBlurIntensity(object, 4.0f);
        return object;
    }

    void feed(const Subject& subject, pmFilterObject object, Size size) {
        std::vector<uint8_t>& pixels = size.width == kSizes[0].width ? pictureA : pictureB;
        if (subject.family == Family::Photo) {
            pmPhotoFilterSetBuffer(object, pixels.data(), size.width, size.height, 4);
        } else {
            pmBlurFilterSetBuffer(object, pixels.data(), size.width, size.height, 4);
        }
    }

    void draw(const Subject& subject, pmFilterObject object, Size size) {
        if (subject.family == Family::Photo) {
            pmPhotoFilterDraw(object, size.width, size.height);
        } else {
            pmBlurFilterDraw(object, size.width, size.height);
        }
    }

    void readBack(const Subject& subject, pmFilterObject object, Size size) {
        if (subject.family != Family::StillBlur) return;
        pmBlurBuffer out{COLOR_TYPE_RGBA, output.data(), size.width, size.height};
        pmBlurFilterSetOutputBuffer(object, out);
    }

    void destroy(const Subject& subject, pmFilterObject& object) {
        if (subject.family == Family::Photo) {
            pmPhotoFilterDelete(&object);
        } else {
            pmBlurFilterDelete(&object);
        }
    }

    // One life of one object: made, fed and drawn at one size, drawn again
    // at that size (which must make nothing), fed a second frame of that size
    // and drawn, then fed and drawn at the other size, then deleted.
    void oneLife(const Subject& subject, int cycle, long baseline) {
        const Size first = kSizes[cycle % 2];
        const Size second = kSizes[(cycle + 1) % 2];
        pmFilterObject object = create(subject);
        ASSERT_NE(object.handler, nullptr) << nameOf(subject);
        feed(subject, object, first);
        draw(subject, object, first);
        readBack(subject, object, first);
        feed(subject, object, first);
        draw(subject, object, first);
        readBack(subject, object, first);
        const long madeBefore = glLedger::madeObjects();
        const long liveBefore = glLedger::liveObjects();
        draw(subject, object, first);
        draw(subject, object, first);
        readBack(subject, object, first);
        ASSERT_EQ(glLedger::liveObjects(), liveBefore)
            << nameOf(subject) << ": Draws at a steady size piled up GL objects, cycle " << cycle;
        if (!rebuildsOnEveryDraw(subject)) {
            ASSERT_EQ(glLedger::madeObjects(), madeBefore)
                << nameOf(subject) << ": a Draw at a steady size made a GL object, cycle " << cycle
                << "\n"
                << quiet.dump();
        }
        feed(subject, object, second);
        draw(subject, object, second);
        readBack(subject, object, second);
        destroy(subject, object);
        ASSERT_EQ(object.handler, nullptr);
        ASSERT_EQ(glLedger::liveObjects(), baseline)
            << nameOf(subject) << " left GL objects after Delete, cycle " << cycle << ": "
            << glLedger::describe();
    }

    LogCapture quiet;  // thousands of progress lines are kept from the terminal
    std::vector<uint8_t> pictureA = structuredPicture(kSizes[0].width, kSizes[0].height, 3);
    std::vector<uint8_t> pictureB = structuredPicture(kSizes[1].width, kSizes[1].height, 8);
    std::vector<uint8_t> output = std::vector<uint8_t>(30 * 30 * 4);
};

TEST_F(SoakTest, EveryObjectGivesBackItsGLObjectsCycleAfterCycle) {
    const long cycles = environmentNumber("PIXMORA_SOAK_CYCLES", 200);
    const long reportEvery = environmentNumber("PIXMORA_SOAK_REPORT_EVERY", 0);
    const long fullSizeEvery = environmentNumber("PIXMORA_SOAK_FULL_SIZE_EVERY", 25);
    const long warmUp = cycles / 4;
    const long contextsBefore = glLedger::liveContexts();
    const long liveBefore = glLedger::liveObjects();

    // A grey effect holds the private context for the whole soak, so that a
    // leak would pile up in one context rather than vanish with it.
    pmFilterObject keeper{PM_PHOTO_GREY, pmPhotoFilterCreate(PM_PHOTO_GREY)};
    ASSERT_NE(keeper.handler, nullptr);
    ASSERT_EQ(glLedger::liveContexts(), contextsBefore + 1);
    const long baseline = glLedger::liveObjects();
    auto target = std::make_unique<PrivateTarget>(30, 30);

    const std::vector<Subject> subjects = allSubjects();
    long residentWarmUpPeak = 0;
    long residentPeak = 0;
    for (long cycle = 0; cycle < cycles; ++cycle) {
        for (const Subject& subject : subjects) {
            if (worksAtFullSize(subject) && cycle % fullSizeEvery != 0) continue;
            oneLife(subject, static_cast<int>(cycle), baseline);
            if (HasFatalFailure()) return;
        }
        quiet.clear();
        // Freed driver memory comes and goes with the full-size effects, so
        // the peak of the warm-up quarter is compared with the peak after it.
        const long resident = residentKiB();
        long& peak = cycle < warmUp ? residentWarmUpPeak : residentPeak;
        if (resident > peak) peak = resident;
        if (reportEvery > 0 && ((cycle + 1) % reportEvery == 0 || cycle == 0)) {
            std::printf(
                "soak cycle %6ld: live GL objects %ld (keeper %ld), live contexts %ld, "
                "GL names made %ld, resident %ld KiB\n",
                cycle + 1, glLedger::liveObjects(), baseline - liveBefore, glLedger::liveContexts(),
                glLedger::madeObjects(), resident);
            std::fflush(stdout);
        }
    }
    ASSERT_EQ(glLedger::liveContexts(), contextsBefore + 1);

    target.reset();
    pmPhotoFilterDelete(&keeper);
    EXPECT_EQ(glLedger::liveContexts(), contextsBefore);
    EXPECT_EQ(glLedger::liveObjects(), liveBefore) << glLedger::describe();
    std::printf("soak: %ld cycles; resident peak %ld KiB in the first %ld cycles, %ld KiB after\n",
                cycles, residentWarmUpPeak, warmUp, residentPeak);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    // A leak of even one small texture's worth of driver memory per life
    // would exceed this over the CI's cycles only at gross rates; the ledger
    // above is the exact check, this one catches heap growth outside GL.
    // Sanitizers keep freed memory in quarantine, so only plain builds check.
    // A short run ends before the driver's own memory reaches its plateau (in
    // a fresh root with no shader cache: 161 MiB after 50 cycles, 212 MiB
    // after 200, where a 10,000-cycle run stays at 215 MiB), so only long runs
    // (scripts/soak.sh) judge the growth; short ones report it.
    constexpr long memoryJudgedFrom = 1000;
    if (cycles >= memoryJudgedFrom) {
        EXPECT_LT(residentPeak - residentWarmUpPeak, 16 * 1024)
            << "resident memory grew after warm-up";
    }
#endif
}

}  // namespace
