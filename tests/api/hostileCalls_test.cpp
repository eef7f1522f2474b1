// Bad calls through the exported functions, as a careless or hostile caller
// makes them: null, stale and mistyped handles, impossible sizes, numbers that
// are not numbers, kernel sizes at the ends of int. Each gives a log line or
// nothing, never a black picture nor a touch outside the caller's buffers.
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <thread>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "PhotoFilterBlur.h"
#include "PhotoFilterVideoBlur.h"
#include "TestPictures.h"
#include "pixmora.h"
#include "pmGLContextManager.h"

namespace {

using pmFilters::PhotoFilterBlur;
using pmFilters::PhotoFilterVideoBlur;

constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
constexpr float INFINITE = std::numeric_limits<float>::infinity();
constexpr std::uint8_t POISON = 0xA5;
constexpr std::size_t GUARD = 64;

// An output buffer with poisoned guard bytes on both sides.
struct GuardedBuffer {
    explicit GuardedBuffer(std::size_t size) : bytes(size + 2 * GUARD, POISON), size(size) {}
    std::uint8_t* data() { return bytes.data() + GUARD; }
    bool guardsIntact() const {
        for (std::size_t i = 0; i < GUARD; ++i) {
            if (bytes[i] != POISON || bytes[GUARD + size + i] != POISON) return false;
        }
        return true;
    }
    std::vector<std::uint8_t> inside() const {
        return std::vector<std::uint8_t>(bytes.begin() + GUARD, bytes.begin() + GUARD + size);
    }
    std::vector<std::uint8_t> bytes;
    std::size_t size;
};

// Every pixel within `tolerance` of the colour: the dithering moves a level.
bool isEverywhere(const std::vector<std::uint8_t>& rgba, std::uint8_t r, std::uint8_t g,
                  std::uint8_t b, int tolerance = 2) {
    for (std::size_t i = 0; i < rgba.size(); i += 4) {
        if (std::abs(rgba[i] - r) > tolerance || std::abs(rgba[i + 1] - g) > tolerance ||
            std::abs(rgba[i + 2] - b) > tolerance) {
            return false;
        }
    }
    return !rgba.empty();
}

class HostileCallTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        pmDisableInternalGLContext();
    }
    void TearDown() override {
        if (object.handler) pmBlurFilterDelete(&object);
        pmEnableInternalGLContext();
        GLTest::TearDown();
    }
    void create(unsigned type = PM_BLUR_PHOTO, int kernel = 35) {
        object = {static_cast<int>(type), pmBlurFilterCreateWithKernelSize(type, kernel)};
        ASSERT_NE(object.handler, nullptr);
    }
    PhotoFilterBlur* photo() { return static_cast<PhotoFilterBlur*>(object.handler); }
    // The constant picture blurred and read back, with the guards checked.
    std::vector<std::uint8_t> blurConstant(int w, int h) {
        std::vector<std::uint8_t> input = solidPicture(w, h, {40, 160, 220});
        pmBlurFilterSetBuffer(object, input.data(), w, h, 4);
        GuardedBuffer out(static_cast<std::size_t>(w) * h * 4);
        pmBlurFilterSetOutputBuffer(object, {COLOR_TYPE_RGBA, out.data(), w, h});
        EXPECT_TRUE(out.guardsIntact());
        return out.inside();
    }
    pmFilterObject object{0, nullptr};
};

TEST_F(HostileCallTest, IntensityThatIsNotANumberKeepsTheLastOne) {
    create();
    pmBlurFilterSetBlurIntensity(object, 10.0f);
    LogCapture log;
    pmBlurFilterSetBlurIntensity(object, NOT_A_NUMBER);
    EXPECT_FLOAT_EQ(photo()->intensity, 10.0f);
    EXPECT_EQ(log.count("> Intensity value is not valid. Blur intensity range : 1.000000 ~ "
                        "50.000000"),
              1)
        << log.dump();
    EXPECT_TRUE(isEverywhere(blurConstant(32, 24), 40, 160, 220));
}

TEST_F(HostileCallTest, InfiniteIntensitiesAreHeldAtTheEnds) {
    create();
    pmBlurFilterSetBlurIntensity(object, INFINITE);
    EXPECT_FLOAT_EQ(photo()->intensity, 50.0f);
    pmBlurFilterSetBlurIntensity(object, -INFINITE);
    EXPECT_FLOAT_EQ(photo()->intensity, 1.0f);
    EXPECT_TRUE(isEverywhere(blurConstant(32, 24), 40, 160, 220));
}

TEST_F(HostileCallTest, DimmingAndMixColourThatAreNotNumbersChangeNothing) {
    for (unsigned type : {PM_BLUR_PHOTO, PM_BLUR_VIDEO}) {
        create(type);
        pmBlurFilterSetBlurDimming(object, 0.5f);
        pmBlurFilterSetBlurMixColor(object, 0.1f, 0.2f, 0.3f, 0.4f);
        LogCapture log;
        pmBlurFilterSetBlurDimming(object, NOT_A_NUMBER);
        pmBlurFilterSetBlurMixColor(object, 0.5f, NOT_A_NUMBER, 0.5f, 0.5f);
        EXPECT_EQ(log.count("> Intensity value is not valid. Dimming intensity range"), 1);
        EXPECT_EQ(log.countEndingWith("> Mix color is not valid: it stays as it was."), 1)
            << log.dump();
        if (type == PM_BLUR_PHOTO) {
            EXPECT_FLOAT_EQ(photo()->dim, 0.5f);
            EXPECT_EQ(photo()->blur.dither.ud.vec4s["uMixColor"],
                      glm::vec4(0.1f, 0.2f, 0.3f, 0.4f));
        } else {
            EXPECT_FLOAT_EQ(static_cast<PhotoFilterVideoBlur*>(object.handler)->dim, 0.5f);
        }
        pmBlurFilterDelete(&object);
    }
}

TEST_F(HostileCallTest, KernelSizesAtTheEndsOfIntAreHeldInRange) {
    const std::pair<int, int> sizes[] = {{-3, 7}, {INT_MIN, 7}, {INT_MAX, 127}, {INT_MAX - 3, 127},
                                         {3, 7},  {128, 127}};
    for (const auto& [wanted, expected] : sizes) {
        LogCapture log;
        create(PM_BLUR_PHOTO, wanted);
        EXPECT_EQ(photo()->kernelSize, expected) << wanted;
        EXPECT_EQ(log.countEndingWith("> blur kernel size = " + std::to_string(expected)), 1);
        pmBlurFilterSetBlurIntensity(object, 4.0f);
        EXPECT_TRUE(isEverywhere(blurConstant(32, 24), 40, 160, 220)) << wanted;
        pmBlurFilterDelete(&object);
    }
}

TEST_F(HostileCallTest, OnePixelPictureBlursToItselfAtTheDefaultIntensity) {
    create();
    EXPECT_TRUE(isEverywhere(blurConstant(1, 1), 40, 160, 220));
    EXPECT_TRUE(isEverywhere(blurConstant(3, 1), 40, 160, 220));
}

TEST_F(HostileCallTest, BadSizesAndChannelCountsTouchNothingOutsideTheBuffers) {
    create();
    std::vector<std::uint8_t> input = solidPicture(8, 8, {1, 2, 3});
    LogCapture log;
    for (const auto& [w, h] : {std::pair<int, int>{0, 8},
                               {-8, 8},
                               {8, -1},
                               {INT_MAX, 2},
                               {65536, 65536},
                               {INT_MIN, INT_MIN}}) {
        pmBlurFilterSetBuffer(object, input.data(), w, h, 4);
        pmBlurFilterSetInputBuffer(object, {COLOR_TYPE_RGB, input.data(), w, h});
        GuardedBuffer out(64);
        pmBlurFilterSetOutputBuffer(object, {COLOR_TYPE_RGBA, out.data(), w, h});
        EXPECT_TRUE(out.guardsIntact()) << w << " x " << h;
        for (std::uint8_t byte : out.inside()) ASSERT_EQ(byte, POISON) << w << " x " << h;
    }
    // Both sizes whose byte count overflows int, in and out.
    EXPECT_EQ(log.countEndingWith("> Buffer's input size is wrong !"), 12) << log.dump();
    EXPECT_EQ(log.countEndingWith("> Buffer's output size is wrong !"), 6) << log.dump();
    for (int channels : {0, 1, 2, 5, -3, 99}) {
        pmBlurFilterSetBuffer(object, input.data(), 8, 8, channels);
    }
    pmBlurFilterSetBuffer(object, nullptr, 8, 8, 4);
    pmBlurFilterSetOutputBuffer(object, {COLOR_TYPE_RGBA, nullptr, 8, 8});
    // Still usable afterwards.
    EXPECT_TRUE(isEverywhere(blurConstant(16, 8), 40, 160, 220));
}

TEST_F(HostileCallTest, NullStaleAndMistypedHandlesAreRefused) {
    create(PM_BLUR_PHOTO);
    const pmFilterObject stale = object;
    pmFilterObject video{PM_BLUR_VIDEO, pmBlurFilterCreate(PM_BLUR_VIDEO)};
    ASSERT_NE(video.handler, nullptr);
    int notAnObject = 7;
    const pmFilterObject records[] = {{0, nullptr},
                                      {1, nullptr},
                                      {9, nullptr},
                                      {PM_BLUR_VIDEO, object.handler},
                                      {PM_BLUR_PHOTO, video.handler},
                                      {PM_BLUR_PHOTO, &notAnObject},
                                      {-4, object.handler}};
    std::vector<std::uint8_t> input = solidPicture(4, 4, {9, 9, 9});
    LogCapture log;
    for (const pmFilterObject& record : records) {
        pmBlurFilterSetBlurIntensity(record, 3.0f);
        pmBlurFilterSetBlurDimming(record, 0.25f);
        pmBlurFilterSetBlurMixColor(record, 1, 1, 1, 1);
        pmBlurFilterSetDithering(record, false);
        pmBlurFilterSetInterpolation(record, false);
        if (record.handler != object.handler && record.handler != video.handler) {
            pmBlurFilterSetBuffer(record, input.data(), 4, 4, 4);
            pmBlurFilterDraw(record, 4, 4);
            pmBlurFilterSetFlipMode(record, 1);
            GuardedBuffer out(64);
            pmBlurFilterSetOutputBuffer(record, {COLOR_TYPE_RGBA, out.data(), 4, 4});
            EXPECT_TRUE(out.guardsIntact());
        }
    }
    EXPECT_EQ(log.count("> Object type 1 does not match its handler."), 5) << log.dump();
    EXPECT_EQ(log.count("> Object type 0 does not match its handler."), 3) << log.dump();
    EXPECT_GE(log.count("> Object Handler is not a live object."), 1);
    // The mistyped calls left both objects as they were.
    EXPECT_FLOAT_EQ(photo()->intensity, 40.0f);
    EXPECT_FLOAT_EQ(photo()->dim, 1.0f);

    // Deleted through one record, the copy is stale: refused, not freed twice.
    pmBlurFilterDelete(&object);
    log.clear();
    pmBlurFilterSetBlurIntensity(stale, 3.0f);
    pmBlurFilterDraw(stale, 4, 4);
    pmFilterObject staleCopy = stale;
    pmBlurFilterDelete(&staleCopy);
    EXPECT_EQ(staleCopy.handler, nullptr);
    EXPECT_EQ(log.count("> Object Handler is not a live object."), 3) << log.dump();
    pmPhotoFilterDraw(stale, 4, 4);
    pmFilterObject photoStale = stale;
    pmPhotoFilterDelete(&photoStale);
    pmBlurFilterDelete(&video);
}

TEST_F(HostileCallTest, PhotoEffectHandleIsNotABlur) {
    pmFilterObject grey{PM_BLUR_PHOTO, pmPhotoFilterCreate(0)};
    ASSERT_NE(grey.handler, nullptr);
    LogCapture log;
    pmBlurFilterSetBlurIntensity(grey, 3.0f);
    grey.type = PM_BLUR_VIDEO;
    pmBlurFilterSetDithering(grey, false);
    EXPECT_EQ(log.count("does not match its handler."), 2) << log.dump();
    pmPhotoFilterDelete(&grey);
}

// The photo entry points given sizes that cannot be, sizes whose byte count
// overflows int, and channel counts other than three and four.
class PhotoHostileCallTest : public HostileCallTest {
protected:
    void SetUp() override {
        HostileCallTest::SetUp();
        grey = {PM_BLUR_PHOTO, pmPhotoFilterCreate(0)};
        ASSERT_NE(grey.handler, nullptr);
    }
    void TearDown() override {
        pmPhotoFilterDelete(&grey);
        HostileCallTest::TearDown();
    }
    // Draws into a cleared 8 x 8 target and checks every pixel against the
    // CPU grey of the constant colour.
    void expectGreyOf(int r, int g, int b) {
        const long expected = std::lround(r * 0.2125f + g * 0.7154f + b * 0.0721f);
        gl->resizeTarget(8, 8);
        gl->clearTarget(0, 0, 0, 0);
        pmPhotoFilterDraw(grey, 8, 8);
        const std::vector<std::uint8_t> out = gl->readTarget();
        for (std::size_t i = 0; i < out.size(); i += 4) {
            ASSERT_NEAR(out[i], expected, 1) << i;
            ASSERT_EQ(out[i + 3], 255);
        }
    }
    pmFilterObject grey{0, nullptr};
};

TEST_F(PhotoHostileCallTest, SizesThatCannotBeAreRefusedAndThePictureKept) {
    std::vector<std::uint8_t> picture = solidPicture(8, 8, {200, 100, 50});
    pmPhotoFilterSetBuffer(grey, picture.data(), 8, 8, 4);
    std::vector<std::uint8_t> other = solidPicture(8, 8, {0, 0, 0});
    LogCapture log;
    const std::pair<int, int> sizes[] = {
        {0, 8}, {-8, 8}, {8, -1}, {INT_MIN, 8}, {INT_MIN, INT_MIN}};
    for (const auto& [w, h] : sizes) {
        pmPhotoFilterSetBuffer(grey, other.data(), w, h, 4);
        pmPhotoFilterDraw(grey, w, h);
    }
    EXPECT_EQ(log.countEndingWith("> Buffer's input size is wrong !"), 5) << log.dump();
    for (int channels : {0, 1, 2, 5, -3, 99}) {
        pmPhotoFilterSetBuffer(grey, picture.data(), 8, 8, channels);
    }
    pmPhotoFilterSetFlipMode(grey, 12345);
    expectGreyOf(200, 100, 50);
}

// A size whose RGBA bytes overflow int is refused with the size words; one
// GL cannot hold is refused by GL before it reads a byte of the caller's
// buffer. Either way a later picture draws again.
TEST_F(PhotoHostileCallTest, SizesBeyondIntOrGLAreRefusedWithoutReadingTheBuffer) {
    std::vector<std::uint8_t> picture = solidPicture(8, 8, {10, 220, 30});
    LogCapture log;
    for (const auto& [w, h] : {std::pair<int, int>{INT_MAX, 2}, {46341, 46341}, {2, INT_MAX}}) {
        pmPhotoFilterSetBuffer(grey, picture.data(), w, h, 3);
        pmPhotoFilterDraw(grey, 8, 8);
    }
    EXPECT_EQ(log.countEndingWith("> Buffer's input size is wrong !"), 3) << log.dump();
    log.clear();
    pmPhotoFilterSetBuffer(grey, picture.data(), 65536, 1, 3);
    EXPECT_EQ(log.count("> GL error flag set: GL_INVALID_VALUE"), 1) << log.dump();
    pmPhotoFilterSetBuffer(grey, picture.data(), 8, 8, 4);
    expectGreyOf(10, 220, 30);
}

// A thread that never created an object has no private context: every call
// from it logs that and binds nothing, and nothing outside the caller's
// buffer is touched. The object still works on its own thread afterwards.
TEST(HostileThreadTest, CallsFromAThreadThatMadeNoObjectBindNothing) {
    pmGL::GLContextManager::ReleaseInstance();
    pmSetEGLDisplay(testDisplay());
    const int w = 8, h = 4;
    std::vector<std::uint8_t> picture = solidPicture(w, h, {30, 60, 90});
    std::vector<std::uint8_t> result(static_cast<std::size_t>(w) * h * 4, 0);
    // The owner lives until the stranger is done: a thread's id may be given
    // to the next thread once it has ended, and would find its context.
    std::thread owner([&] {
        pmFilterObject blur{PM_BLUR_PHOTO, pmBlurFilterCreate(PM_BLUR_PHOTO)};
        pmFilterObject video{PM_BLUR_VIDEO, pmBlurFilterCreate(PM_BLUR_VIDEO)};
        pmFilterObject grey{PM_BLUR_PHOTO, pmPhotoFilterCreate(0)};
        ASSERT_NE(blur.handler, nullptr);
        ASSERT_NE(video.handler, nullptr);
        ASSERT_NE(grey.handler, nullptr);
        std::thread stranger([&] {
            ASSERT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
            LogCapture log;
            GuardedBuffer out(static_cast<std::size_t>(w) * h * 4);
            pmBlurFilterSetBuffer(blur, picture.data(), w, h, 4);
            pmBlurFilterSetOutputBuffer(blur, {COLOR_TYPE_RGBA, out.data(), w, h});
            pmBlurFilterDraw(blur, w, h);
            pmBlurFilterSetBuffer(video, picture.data(), w, h, 4);
            pmBlurFilterDraw(video, w, h);
            pmPhotoFilterSetBuffer(grey, picture.data(), w, h, 4);
            pmPhotoFilterDraw(grey, w, h);
            EXPECT_TRUE(out.guardsIntact());
            // Nothing current: the read-back had nowhere to read from.
            for (std::uint8_t byte : out.inside()) ASSERT_EQ(byte, POISON);
            // Bind and Unbind of each of the seven calls.
            EXPECT_EQ(log.countEndingWith("> failed to find a valid context.\n"), 14) << log.dump();
            EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
        });
        stranger.join();
        pmBlurFilterSetBuffer(blur, picture.data(), w, h, 4);
        pmBlurFilterSetBlurIntensity(blur, 2.0f);
        pmBlurFilterSetOutputBuffer(blur, {COLOR_TYPE_RGBA, result.data(), w, h});
        pmBlurFilterDelete(&blur);
        pmBlurFilterDelete(&video);
        pmPhotoFilterDelete(&grey);
    });
    owner.join();
    EXPECT_TRUE(isEverywhere(result, 30, 60, 90, 1));
    pmGL::GLContextManager::ReleaseInstance();
}

}  // namespace
