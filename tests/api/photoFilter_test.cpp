// The exported photo functions and the filter frame behind them, run on the
// test's own current context and read back from the test's framebuffer.
#include <cmath>
#include <cstdint>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "PixmoraWrapper.h"
#include "pixmora.h"
#include "pmFilters.h"

namespace {

using pmFilters::FilterCommon;

int greyOf(const uint8_t* p) {
    const float mono = p[0] / 255.0f * 0.2125f + p[1] / 255.0f * 0.7154f + p[2] / 255.0f * 0.0721f;
    return static_cast<int>(std::lround(mono * 255.0f));
}

// Where a read-back pixel (x, row) comes from in the top-row-first input for
// each flip mode. glTexImage2D puts the first input row at t = 0 and
// glReadPixels returns the bottom row first.
void sourceOf(int mode, int width, int height, int x, int row, int* sx, int* sy) {
    const bool mirrorX = mode == PM_FLIP_H || mode == PM_FLIP_HV;
    const bool invertY = !(mode == PM_FLIP_V || mode == PM_FLIP_HV);
    *sx = mirrorX ? width - 1 - x : x;
    *sy = invertY ? height - 1 - row : row;
}

// These tests draw into the test's own framebuffer, so the library runs on
// the test's context with its private context switched off.
class PhotoFilterTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        pmDisableInternalGLContext();
    }
    void TearDown() override {
        pmEnableInternalGLContext();
        GLTest::TearDown();
    }
    pmFilterObject create(unsigned type = PM_PHOTO_GREY) {
        pmFilterObject object{static_cast<int>(type), pmPhotoFilterCreate(type)};
        return object;
    }
    FilterCommon* filterOf(const pmFilterObject& object) {
        return static_cast<FilterCommon*>(object.handler);
    }
    // Draws the object into a fresh target of the input size and checks every
    // pixel against the CPU grey of its source pixel.
    void expectGreyPicture(pmFilterObject object, const std::vector<uint8_t>& pixels, int w, int h,
                           int channels, int mode) {
        gl->resizeTarget(w, h);
        pmPhotoFilterDraw(object, w, h);
        const std::vector<uint8_t> out = gl->readTarget();
        for (int row = 0; row < h; ++row) {
            for (int x = 0; x < w; ++x) {
                int sx = 0, sy = 0;
                sourceOf(mode, w, h, x, row, &sx, &sy);
                const int expected = greyOf(&pixels[(static_cast<size_t>(sy) * w + sx) * channels]);
                const uint8_t* p = &out[(static_cast<size_t>(row) * w + x) * 4];
                ASSERT_NEAR(p[0], expected, 1) << "mode " << mode << " at " << x << "," << row;
                ASSERT_NEAR(p[1], expected, 1);
                ASSERT_NEAR(p[2], expected, 1);
                ASSERT_EQ(p[3], 255);
            }
        }
    }
};

class GreyFlipTest : public PhotoFilterTest,
                     public ::testing::WithParamInterface<std::tuple<int, int>> {};

TEST_P(GreyFlipTest, GreyMatchesCpuFormulaForEachFlipModeAndChannelCount) {
    const int mode = std::get<0>(GetParam());
    const int channels = std::get<1>(GetParam());
    const int w = 13, h = 7;  // odd width: three-channel rows are not 4-byte aligned
    std::vector<uint8_t> pixels = makeTestPixels(w, h, channels, 21);
    pmFilterObject object = create();
    ASSERT_NE(object.handler, nullptr);
    pmPhotoFilterSetBuffer(object, pixels.data(), w, h, channels);
    pmPhotoFilterSetFlipMode(object, mode);
    expectGreyPicture(object, pixels, w, h, channels, mode);
    pmPhotoFilterDelete(&object);
}

INSTANTIATE_TEST_SUITE_P(AllModes, GreyFlipTest,
                         ::testing::Combine(::testing::Values(PM_FLIP_NONE, PM_FLIP_H, PM_FLIP_V,
                                                              PM_FLIP_HV),
                                            ::testing::Values(3, 4)));

TEST_F(PhotoFilterTest, CreateLogsTypeAndBuildsAnInitialisedGreyFilter) {
    LogCapture log;
    pmFilterObject object = create();
    ASSERT_NE(object.handler, nullptr);
    EXPECT_TRUE(filterOf(object)->IsInit());
    EXPECT_NE(dynamic_cast<pmFilters::GrayFilter*>(filterOf(object)), nullptr);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0].priority, 6);
    EXPECT_NE(lines[0].text.find("PixmoraWrapper: pmPhotoFilterCreate("), std::string::npos);
    EXPECT_NE(lines[0].text.find(") > pmPhotoFilterCreate() - Type : 0"), std::string::npos);
    EXPECT_EQ(log.countEndingWith("> FilterCommon::Initialize()"), 1);
    EXPECT_EQ(log.countEndingWith("> Compositing and NativeCompositing is created"), 1);
    EXPECT_EQ(log.countEndingWith("> FilterCommon::Initialize(void) FINISHED."), 1);
    EXPECT_EQ(log.count("pmFilters: Initialize("), 3);
    pmPhotoFilterDelete(&object);
}

TEST_F(PhotoFilterTest, TypeAboveNineIsRefusedWithWrongTypeWords) {
    LogCapture log;
    EXPECT_EQ(pmPhotoFilterCreate(10), nullptr);
    EXPECT_EQ(pmPhotoFilterCreate(0xFFFFFFFFu), nullptr);
    EXPECT_EQ(log.countEndingWith("> pmPhotoFilterCreate() - Wrong Type. return nullptr."), 2);
}

TEST_F(PhotoFilterTest, DeleteClearsHandlerAndLogsStartAndFinish) {
    pmFilterObject object = create();
    LogCapture log;
    pmPhotoFilterDelete(&object);
    EXPECT_EQ(object.handler, nullptr);
    EXPECT_EQ(log.countEndingWith("> pmPhotoFilterDelete() - start to delete"), 1);
    EXPECT_EQ(log.countEndingWith("> pmPhotoFilterDelete() - finish to delete"), 1);
}

TEST_F(PhotoFilterTest, DeleteTwiceLogsEmptyObjectTheSecondTime) {
    pmFilterObject object = create();
    pmPhotoFilterDelete(&object);
    LogCapture log;
    pmPhotoFilterDelete(&object);
    EXPECT_EQ(log.countEndingWith("> This object is empty."), 1);
    EXPECT_EQ(log.lines().at(0).priority, 4);
    pmPhotoFilterDelete(nullptr);
    EXPECT_EQ(log.countEndingWith("> This object is empty."), 2);
}

TEST_F(PhotoFilterTest, NullHandlerCallsDoNothing) {
    pmFilterObject empty{0, nullptr};
    uint8_t pixel[4] = {1, 2, 3, 4};
    LogCapture log;
    gl->clearTarget(0.5f, 0.5f, 0.5f, 0.5f);
    const std::vector<uint8_t> before = gl->readTarget();
    pmPhotoFilterSetBuffer(empty, pixel, 1, 1, 4);
    pmPhotoFilterSetFlipMode(empty, PM_FLIP_H);
    pmPhotoFilterDraw(empty, 1, 1);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(gl->readTarget(), before);
}

TEST_F(PhotoFilterTest, WidthZeroKeepsInputInfoAndNextUploadUsesOldSize) {
    const int w = 6, h = 5;
    std::vector<uint8_t> first = makeTestPixels(w, h, 4, 1);
    std::vector<uint8_t> second = makeTestPixels(w, h, 4, 2);
    pmFilterObject object = create();
    pmPhotoFilterSetBuffer(object, first.data(), w, h, 4);
    LogCapture log;
    pmPhotoFilterSetBuffer(object, second.data(), 0, h, 3);
    EXPECT_EQ(log.countEndingWith("> Buffer's input size is wrong !"), 1);
    EXPECT_EQ(filterOf(object)->GetInputSize(), glm::ivec2(w, h));
    EXPECT_EQ(filterOf(object)->GetInputChannel(), 4);
    EXPECT_EQ(filterOf(object)->GetInputColorType(), COLOR_TYPE_RGBA);
    expectGreyPicture(object, second, w, h, 4, PM_FLIP_NONE);
    pmPhotoFilterDelete(&object);
}

TEST_F(PhotoFilterTest, ChannelCountsOtherThanThreeMeanRgba) {
    pmFilterObject object = create();
    std::vector<uint8_t> pixels = makeTestPixels(4, 4, 4);
    for (int channels : {1, 4, 2, 0, -3}) {
        pmPhotoFilterSetBuffer(object, pixels.data(), 4, 4, channels);
        EXPECT_EQ(filterOf(object)->GetInputChannel(), 4) << channels;
        EXPECT_EQ(filterOf(object)->GetInputColorType(), COLOR_TYPE_RGBA) << channels;
    }
    pmPhotoFilterSetBuffer(object, pixels.data(), 4, 4, 3);
    EXPECT_EQ(filterOf(object)->GetInputChannel(), 3);
    EXPECT_EQ(filterOf(object)->GetInputColorType(), COLOR_TYPE_RGB);
    pmPhotoFilterDelete(&object);
}

TEST_F(PhotoFilterTest, SecondBufferOfEqualShapeUpdatesTheExistingTexture) {
    const int w = 8, h = 4;
    std::vector<uint8_t> first = makeTestPixels(w, h, 4, 5);
    std::vector<uint8_t> second = makeTestPixels(w, h, 4, 6);
    pmFilterObject object = create();
    pmPhotoFilterSetBuffer(object, first.data(), w, h, 4);
    const unsigned fb = filterOf(object)->inputBuffer.id;
    const unsigned tex = filterOf(object)->inputBuffer.colorTex.at(0).id;
    pmPhotoFilterSetBuffer(object, second.data(), w, h, 4);
    EXPECT_EQ(filterOf(object)->inputBuffer.id, fb);
    EXPECT_EQ(filterOf(object)->inputBuffer.colorTex.at(0).id, tex);
    expectGreyPicture(object, second, w, h, 4, PM_FLIP_NONE);

    // A new channel count or size rebuilds the buffer with the new picture.
    std::vector<uint8_t> rgb = makeTestPixels(w, h, 3, 7);
    pmPhotoFilterSetBuffer(object, rgb.data(), w, h, 3);
    EXPECT_EQ(filterOf(object)->inputBuffer.colorTex.at(0).opts.format,
              static_cast<unsigned>(GL_RGB));
    expectGreyPicture(object, rgb, w, h, 3, PM_FLIP_NONE);
    std::vector<uint8_t> bigger = makeTestPixels(w + 2, h, 4, 8);
    pmPhotoFilterSetBuffer(object, bigger.data(), w + 2, h, 4);
    EXPECT_EQ(filterOf(object)->inputBuffer.width, w + 2);
    expectGreyPicture(object, bigger, w + 2, h, 4, PM_FLIP_NONE);
    pmPhotoFilterDelete(&object);
}

TEST_F(PhotoFilterTest, InputBufferKeepsItsMipmapOptions) {
    std::vector<uint8_t> pixels = makeTestPixels(8, 8, 4);
    pmFilterObject object = create();
    pmPhotoFilterSetBuffer(object, pixels.data(), 8, 8, 4);
    const pmGL::Texture& tex = filterOf(object)->inputBuffer.colorTex.at(0);
    EXPECT_EQ(tex.opts.target, static_cast<unsigned>(GL_TEXTURE_2D));
    EXPECT_EQ(tex.opts.internalFormat, GL_RGBA8);
    EXPECT_TRUE(tex.opts.mipmap);
    EXPECT_EQ(tex.opts.minFilter, GL_LINEAR_MIPMAP_LINEAR);
    EXPECT_EQ(tex.opts.magFilter, GL_LINEAR);
    EXPECT_EQ(tex.opts.wrapS, GL_CLAMP_TO_EDGE);
    EXPECT_EQ(tex.opts.wrapT, GL_CLAMP_TO_EDGE);
    pmPhotoFilterDelete(&object);
}

TEST_F(PhotoFilterTest, NullBufferIsRefusedWithItsWords) {
    pmFilterObject object = create();
    LogCapture log;
    pmPhotoFilterSetBuffer(object, nullptr, 4, 4, 4);
    EXPECT_EQ(log.countEndingWith("> FilterCommon::SetInputBuffer() - buf is null."), 1);
    EXPECT_FALSE(pmGL::isExist(filterOf(object)->inputBuffer));
    pmPhotoFilterDelete(&object);
}

TEST_F(PhotoFilterTest, DrawIgnoresWidthAndHeight) {
    const int w = 9, h = 6;
    std::vector<uint8_t> pixels = makeTestPixels(w, h, 4, 13);
    pmFilterObject object = create();
    pmPhotoFilterSetBuffer(object, pixels.data(), w, h, 4);
    gl->resizeTarget(w, h);
    pmPhotoFilterDraw(object, w, h);
    const std::vector<uint8_t> reference = gl->readTarget();
    for (auto size : {std::make_pair(0, 0), std::make_pair(1, 1), std::make_pair(-5, 4000)}) {
        gl->clearTarget(0, 0, 0, 0);
        pmPhotoFilterDraw(object, size.first, size.second);
        EXPECT_EQ(gl->readTarget(), reference) << size.first << "x" << size.second;
    }
    pmPhotoFilterDelete(&object);
}

TEST_F(PhotoFilterTest, DrawUsesTheCallersViewport) {
    const int w = 8, h = 8;
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 4, 255);
    pmFilterObject object = create();
    pmPhotoFilterSetBuffer(object, pixels.data(), w, h, 4);
    gl->resizeTarget(w, h);
    glViewport(0, 0, w / 2, h / 2);
    pmPhotoFilterDraw(object, w, h);
    const std::vector<uint8_t> out = gl->readTarget();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const bool inside = x < w / 2 && y < h / 2;
            EXPECT_EQ(out[(static_cast<size_t>(y) * w + x) * 4], inside ? 255 : 0) << x << "," << y;
        }
    }
    pmPhotoFilterDelete(&object);
}

TEST_F(PhotoFilterTest, FlipModesLogTheirNamesAndStoreTheirVectors) {
    pmFilterObject object = create();
    struct Case {
        int mode;
        const char* words;
        glm::vec2 flip;
    };
    const Case cases[] = {{PM_FLIP_H, "> FlipMode [H Flip]", {1, 1}},
                          {PM_FLIP_V, "> FlipMode [V Flip]", {0, 0}},
                          {PM_FLIP_HV, "> FlipMode [HV Flip]", {1, 0}},
                          {PM_FLIP_NONE, "> FlipMode [None]", {0, 1}},
                          {7, "> FlipMode [None]", {0, 1}},
                          {-1, "> FlipMode [None]", {0, 1}}};
    for (const Case& c : cases) {
        LogCapture log;
        pmPhotoFilterSetFlipMode(object, c.mode);
        ASSERT_EQ(log.countEndingWith(c.words), 1) << log.dump();
        EXPECT_EQ(log.lines().at(0).priority, 4);
        EXPECT_EQ(log.count("> Set flip ["), 1);
        EXPECT_EQ(filterOf(object)->flip, c.flip);
    }
    pmPhotoFilterDelete(&object);
}

TEST_F(PhotoFilterTest, DefaultFlipInvertsTheVerticalAxis) {
    pmFilterObject object = create();
    EXPECT_EQ(filterOf(object)->flip, glm::vec2(0.0f, 1.0f));
    pmPhotoFilterDelete(&object);
}

TEST_F(PhotoFilterTest, PrintLogWritesTheMessageAtErrorLevel) {
    LogCapture log;
    PrintLog("hello from the application");
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].priority, 6);
    EXPECT_EQ(lines[0].tag, "Pixmora");
    EXPECT_EQ(lines[0].format, "%s: %s(%d) > %s");
    EXPECT_NE(lines[0].text.find("PixmoraWrapper: PrintLog("), std::string::npos);
    EXPECT_NE(lines[0].text.find(") > hello from the application"), std::string::npos);
}

TEST_F(PhotoFilterTest, UninitialisedObjectLogsAndDoesNothing) {
    // An object whose Initialize never ran behaves as one whose Initialize failed.
    auto* filter = new pmFilters::GrayFilter();
    // Made here rather than by Create: the exported functions must know it.
    pmWrapper::registerObject(filter);
    pmFilterObject object{0, filter};
    std::vector<uint8_t> pixels = makeTestPixels(4, 4, 4);
    LogCapture log;
    pmPhotoFilterSetBuffer(object, pixels.data(), 4, 4, 4);
    pmPhotoFilterSetFlipMode(object, PM_FLIP_H);
    pmPhotoFilterDraw(object, 4, 4);
    filter->SetInputBufferSize(glm::vec2(3, 3));
    filter->SetOutputBufferInfo(COLOR_TYPE_RGB, 2, 2);
    EXPECT_EQ(log.countEndingWith("> It is not initialized."), 5);
    EXPECT_EQ(filter->GetInputSize(), glm::ivec2(1920, 1080));
    EXPECT_EQ(filter->GetInputChannel(), 3);
    EXPECT_EQ(filter->flip, glm::vec2(0.0f, 1.0f));
    EXPECT_FALSE(pmGL::isExist(filter->inputBuffer));
    log.clear();
    pmPhotoFilterDelete(&object);
    // GrayFilter::Terminate finds isInit false and says so.
    EXPECT_EQ(log.countEndingWith("> It is not initialized."), 1);
    EXPECT_EQ(object.handler, nullptr);
}

TEST_F(PhotoFilterTest, TerminateLeavesNoLiveGlObject) {
    std::vector<uint8_t> pixels = makeTestPixels(8, 8, 4);
    pmFilterObject object = create();
    pmPhotoFilterSetBuffer(object, pixels.data(), 8, 8, 4);
    pmPhotoFilterDraw(object, 8, 8);
    auto* gray = static_cast<pmFilters::GrayFilter*>(object.handler);
    std::vector<unsigned> textures{gray->inputBuffer.colorTex.at(0).id};
    const unsigned framebuffer = gray->inputBuffer.id;
    std::vector<const pmDraw::TextureFilter*> passes{&gray->grey, &gray->compositing,
                                                     &gray->nativeCompositing};
    std::vector<unsigned> programs, buffers, arrays;
    for (const auto* pass : passes) {
        programs.push_back(pass->program.id);
        buffers.push_back(pass->quad.id);
        arrays.push_back(pass->vertexArray.id);
    }
    for (unsigned id : programs) ASSERT_TRUE(glIsProgram(id));
    ASSERT_TRUE(glIsFramebuffer(framebuffer));
    pmPhotoFilterDelete(&object);
    // GL keeps a deleted program alive while it is current; once the caller
    // moves on, nothing of the object must remain.
    glUseProgram(0);
    for (unsigned id : textures) EXPECT_FALSE(glIsTexture(id));
    EXPECT_FALSE(glIsFramebuffer(framebuffer));
    for (unsigned id : programs) EXPECT_FALSE(glIsProgram(id));
    for (unsigned id : buffers) EXPECT_FALSE(glIsBuffer(id));
    for (unsigned id : arrays) EXPECT_FALSE(glIsVertexArray(id));
}

TEST_F(PhotoFilterTest, OutputInfoStoresEvenAWrongSize) {
    pmFilterObject object = create();
    FilterCommon* filter = filterOf(object);
    LogCapture log;
    filter->SetOutputBufferInfo(COLOR_TYPE_YUV, -2, 10);
    EXPECT_EQ(log.countEndingWith("> SetOutputBufferInfo width[-2], height[10]"), 1);
    EXPECT_EQ(log.countEndingWith("> Buffer's output size is wrong !"), 1);
    EXPECT_EQ(filter->GetOutputSize(), glm::ivec2(-2, 10));
    EXPECT_EQ(filter->GetOutputChannel(), 3);
    filter->SetOutputBufferInfo(static_cast<__ColorType>(9), 4, 4);
    EXPECT_EQ(filter->GetOutputColorType(), COLOR_TYPE_RGBA);
    EXPECT_EQ(filter->GetOutputChannel(), 4);
    pmPhotoFilterDelete(&object);
}

TEST_F(PhotoFilterTest, InputSizeIsTruncatedFromFloat) {
    pmFilterObject object = create();
    FilterCommon* filter = filterOf(object);
    filter->SetInputBufferSize(glm::vec2(10.9f, 3.2f));
    EXPECT_EQ(filter->GetInputSize(), glm::ivec2(10, 3));
    // Sizes beyond single precision come back rounded to what a float holds.
    filter->SetInputBufferInfo(COLOR_TYPE_RGBA, 16777217, 3);
    EXPECT_EQ(filter->GetInputSize().x, 16777216);
    pmPhotoFilterDelete(&object);
}

TEST(BufferInfoTest, DefaultsAndColourTypes) {
    pmFilters::BufferInfo info;
    EXPECT_EQ(info.size, glm::ivec2(1920, 1080));
    EXPECT_EQ(info.channel, 3);
    EXPECT_EQ(info.colorType, COLOR_TYPE_RGBA);
    EXPECT_EQ(info.buffer, nullptr);
    const int channels[] = {4, 3, 4, 3, 4, 3};
    for (int code = 0; code < 6; ++code) {
        info.SetBufferColorType(static_cast<__ColorType>(code));
        EXPECT_EQ(info.colorType, code);
        EXPECT_EQ(info.channel, channels[code]);
    }
    info.SetBufferColorType(static_cast<__ColorType>(-1));
    EXPECT_EQ(info.colorType, COLOR_TYPE_RGBA);
    EXPECT_EQ(info.channel, 4);
    unsigned char byte = 0;
    info.SetBuffer(&byte);
    EXPECT_EQ(info.buffer, &byte);
}

TEST(KernelSizeTest, SnapsToFourNPlusSeven) {
    LogCapture log;
    EXPECT_EQ(pmFilters::fixKernelSize(35), 35);
    EXPECT_EQ(pmFilters::fixKernelSize(36), 35);
    EXPECT_EQ(pmFilters::fixKernelSize(37), 39);
    EXPECT_EQ(pmFilters::fixKernelSize(3), 7);
    EXPECT_EQ(pmFilters::fixKernelSize(7), 7);
    EXPECT_EQ(pmFilters::fixKernelSize(9), 11);
    EXPECT_EQ(log.countEndingWith("> blur kernel size = 35"), 2);
    EXPECT_EQ(log.countEndingWith("> blur kernel size = 39"), 1);
}

TEST(ScaleFactorTest, IntensityIsRescaledByTheLargerSides) {
    EXPECT_FLOAT_EQ(pmFilters::convertToInternalScaleFactor(40.0f, 35, {1920, 1080}, {1920, 1080}),
                    1.0f / 40.0f);
    // a twice as large as b doubles the effective intensity.
    EXPECT_FLOAT_EQ(pmFilters::convertToInternalScaleFactor(10.0f, 35, {800, 600}, {400, 300}),
                    1.0f / 20.0f);
    // A b without positive size leaves the intensity as given.
    EXPECT_FLOAT_EQ(pmFilters::convertToInternalScaleFactor(10.0f, 70, {800, 600}, {0, 0}),
                    2.0f / 10.0f);
}

}  // namespace
