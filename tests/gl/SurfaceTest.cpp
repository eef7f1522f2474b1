// Native surfaces: TBM surfaces made, mapped and destroyed, and their import
// as external textures through an EGLImage, sampled back byte for byte.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "GLCallSpy.h"
#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "gl/pmGL.eglImage.h"
#include "pmGL.h"

using namespace pmGL;
using gltest::getTexParameter;

namespace {

constexpr unsigned ABGR8888_CODE = 0x34324241;

bool startsWith(const LogLine& line, const std::string& prefix) {
    return line.text.rfind(prefix, 0) == 0;
}

// The one logged line that ends with `tail`, or an empty line.
LogLine lineEndingWith(const LogCapture& log, const std::string& tail) {
    for (const LogLine& line : log.lines()) {
        if (line.text.size() >= tail.size() &&
            line.text.compare(line.text.size() - tail.size(), tail.size(), tail) == 0) {
            return line;
        }
    }
    return LogLine();
}

TEST(SurfaceTBM, CreateMakesAnABGRSurfaceOfTheSize) {
    tbm_surface_h surface = nullptr;
    ASSERT_TRUE(createSurfaceTBM(surface, 5, 3));
    ASSERT_NE(surface, nullptr);
    tbm_surface_info_s info{};
    ASSERT_EQ(tbm_surface_get_info(surface, &info), TBM_SURFACE_ERROR_NONE);
    EXPECT_EQ(info.width, 5u);
    EXPECT_EQ(info.height, 3u);
    EXPECT_EQ(info.format, static_cast<tbm_format>(TBM_FORMAT_ABGR8888));
    EXPECT_EQ(info.format, ABGR8888_CODE);
    deleteSurfaceTBM(surface);
    EXPECT_EQ(surface, nullptr);
    deleteSurfaceTBM(surface);  // null: nothing to do
    EXPECT_EQ(surface, nullptr);
}

TEST(SurfaceTBM, RefusedCreationIsFalseAndNull) {
    tbm_surface_h surface = nullptr;
    EXPECT_FALSE(createSurfaceTBM(surface, -1, 4));
    EXPECT_EQ(surface, nullptr);
}

TEST(SurfaceTBM, MapGivesAViewOfTheSurfaceMemory) {
    tbm_surface_h surface = nullptr;
    ASSERT_TRUE(createSurfaceTBM(surface, 4, 2));
    LogCapture log;
    ImageData<unsigned char> view = mapSurfaceTBM(surface, true, true);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(view.getWidth(), 4);
    EXPECT_EQ(view.getHeight(), 2);
    EXPECT_EQ(view.getChannel(), 4);
    EXPECT_FALSE(view.useFree);
    tbm_surface_info_s info{};
    tbm_surface_get_info(surface, &info);
    EXPECT_EQ(view.data, info.planes[0].ptr);
    std::memset(view.data, 7, view.getCount());
    unmapSurfaceTBM(surface);

    ImageData<unsigned char> readOnly = mapSurfaceTBM(surface, true, false);
    ASSERT_NE(readOnly.data, nullptr);
    EXPECT_EQ(readOnly.data[view.getCount() - 1], 7);
    unmapSurfaceTBM(surface);
    EXPECT_NE(mapSurfaceTBM(surface, false, true).data, nullptr);
    unmapSurfaceTBM(surface);
    deleteSurfaceTBM(surface);
}

TEST(SurfaceTBM, NullHandleMapsToAnEmptyImageAndUnmapsToNothing) {
    tbm_surface_h surface = nullptr;
    LogCapture log;
    ImageData<unsigned char> view = mapSurfaceTBM(surface, true, true);
    EXPECT_EQ(view.getWidth(), 0);
    EXPECT_EQ(view.getHeight(), 0);
    EXPECT_EQ(view.getCount(), 0u);
    EXPECT_EQ(view.data, nullptr);
    unmapSurfaceTBM(surface);
    EXPECT_EQ(surface, nullptr);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
}

TEST(SurfaceTBM, FailedMapGivesAnEmptyImage) {
    tbm_surface_h surface = nullptr;
    ASSERT_TRUE(createSurfaceTBM(surface, 2, 2));
    const ImageData<unsigned char> view = mapSurfaceTBM(surface, false, false);  // option 0
    EXPECT_EQ(view.getCount(), 0u);
    EXPECT_EQ(view.data, nullptr);
    deleteSurfaceTBM(surface);
}

TEST(SurfaceTBM, RowsNotOfFourBytesATexelAreOnlyReported) {
    tbm_surface_h surface = tbm_surface_create(4, 2, TBM_FORMAT_NV12);
    ASSERT_NE(surface, nullptr);
    LogCapture log;
    const ImageData<unsigned char> view = mapSurfaceTBM(surface, true, false);
    EXPECT_EQ(log.countEndingWith("> surfaceStride == surfaceInfo.planes[0].stride"), 1)
        << log.dump();
    EXPECT_EQ(view.getWidth(), 4);
    EXPECT_EQ(view.getChannel(), 4);
    EXPECT_NE(view.data, nullptr);
    unmapSurfaceTBM(surface);
    deleteSurfaceTBM(surface);
}

class SurfaceImportTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        ASSERT_TRUE(setEGLInfo(info, gl->display, nullptr, nullptr, gl->context));
        resetGLCallCounts();
    }

    void TearDown() override {
        deleteSurfaceTexture(st, info);
        deleteSurfaceTBM(surface);
        GLTest::TearDown();
    }

    // A surface of the given size filled with deterministic pixels.
    std::vector<std::uint8_t> makeFilledSurface(int width, int height) {
        EXPECT_TRUE(createSurfaceTBM(surface, width, height));
        std::vector<std::uint8_t> pixels = makeTestPixels(width, height, 4, 7);
        ImageData<unsigned char> view = mapSurfaceTBM(surface, false, true);
        std::memcpy(view.data, pixels.data(), pixels.size());
        unmapSurfaceTBM(surface);
        return pixels;
    }

    // The external texture drawn 1:1 over a target of its size.
    std::vector<std::uint8_t> drawnSurfaceTexture() {
        gl->resizeTarget(st.tex.width, st.tex.height);
        EXPECT_TRUE(gltest::drawTexture(st.tex, gltest::EXTERNAL_TEXTURE_FRAGMENT_SHADER));
        return gl->readTarget();
    }

    static TextureOpts nearestOpts() {
        TextureOpts opts;
        opts.minFilter = GL_NEAREST;
        opts.magFilter = GL_NEAREST;
        return opts;
    }

    EGLInfo info;
    SurfaceTexture st;
    tbm_surface_h surface = nullptr;
};

TEST_F(SurfaceImportTest, SurfacePixelsSampleBackByteForByte) {
    const std::vector<std::uint8_t> pixels = makeFilledSurface(5, 3);
    LogCapture log;
    EXPECT_TRUE(createSurfaceTexture(st, info, surface, nearestOpts()));
    EXPECT_NE(st.image, nullptr);
    ASSERT_TRUE(isExist(st.tex));
    EXPECT_TRUE(glIsTexture(st.tex.id));
    EXPECT_EQ(st.tex.width, 5);
    EXPECT_EQ(st.tex.height, 3);
    EXPECT_EQ(drawnSurfaceTexture(), pixels);
    // The library's own surfaces are ABGR8888, which is not among the named ones.
    const std::string formatWord = "> current tbm format[875708993] set as default.\n";
    EXPECT_EQ(log.countEndingWith(formatWord), 1) << log.dump();
    EXPECT_TRUE(startsWith(lineEndingWith(log, formatWord), "pmGL: createSurfaceTexture("));
    EXPECT_EQ(log.lines().size(), 1u) << log.dump();
}

TEST_F(SurfaceImportTest, TheExternalTextureHasFixedFormatsAndTheCallersSampling) {
    makeFilledSurface(2, 2);
    TextureOpts opts = nearestOpts();
    opts.target = GL_TEXTURE_2D;
    opts.type = GL_FLOAT;
    opts.internalFormat = GL_R16F;
    opts.format = GL_RED;
    opts.magFilter = GL_LINEAR;
    opts.linear = false;
    ASSERT_TRUE(createSurfaceTexture(st, info, surface, opts));
    const TextureOpts& own = st.tex.opts;
    EXPECT_EQ(own.target, static_cast<unsigned>(GL_TEXTURE_EXTERNAL_OES));
    EXPECT_EQ(own.type, static_cast<unsigned>(GL_UNSIGNED_BYTE));
    EXPECT_EQ(own.internalFormat, GL_RGBA8);
    EXPECT_EQ(own.format, static_cast<unsigned>(GL_RGBA));
    EXPECT_EQ(own.minFilter, GL_NEAREST);
    EXPECT_EQ(own.magFilter, GL_LINEAR);
    EXPECT_FALSE(own.linear);
    EXPECT_EQ(getTexParameter(st.tex, GL_TEXTURE_MIN_FILTER), GL_NEAREST);
    EXPECT_EQ(getTexParameter(st.tex, GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    EXPECT_EQ(getTexParameter(st.tex, GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(gltest::getInteger(GL_TEXTURE_BINDING_EXTERNAL_OES), 0);
    EXPECT_EQ(gltest::getInteger(GL_UNPACK_ALIGNMENT), 4);
    EXPECT_EQ(glCallCounts().generateMipmap, 0);
}

// External textures take no mipmaps: GL refuses both the filter and the
// chain, which is reported, and the import still succeeds.
TEST_F(SurfaceImportTest, MipmapFlagTurnsTheFilterIntoAMipmapFilter) {
    makeFilledSurface(2, 2);
    TextureOpts opts;
    opts.mipmap = true;
    LogCapture log;
    EXPECT_TRUE(createSurfaceTexture(st, info, surface, opts));
    EXPECT_EQ(st.tex.opts.minFilter, GL_LINEAR_MIPMAP_LINEAR);
    EXPECT_EQ(glCallCounts().generateMipmap, 1);
    EXPECT_EQ(log.countEndingWith("> GL error flag set: GL_INVALID_ENUM\n"), 1) << log.dump();
}

TEST_F(SurfaceImportTest, NamedFormatsAreImportedWithoutAWord) {
    for (tbm_format format : {TBM_FORMAT_RGBA8888, TBM_FORMAT_ARGB8888, TBM_FORMAT_NV12}) {
        surface = tbm_surface_create(4, 2, format);
        LogCapture log;
        EXPECT_TRUE(createSurfaceTexture(st, info, surface, TextureOpts()));
        EXPECT_TRUE(log.lines().empty()) << log.dump();
        EXPECT_EQ(st.tex.width, 4);
        EXPECT_EQ(st.tex.height, 2);
        deleteSurfaceTexture(st, info);
        deleteSurfaceTBM(surface);
    }
}

TEST_F(SurfaceImportTest, ZeroSizedSurfaceGivesAnImageAndAnEmptyTexture) {
    ASSERT_TRUE(createSurfaceTBM(surface, 0, 0));
    LogCapture log;
    EXPECT_TRUE(createSurfaceTexture(st, info, surface, TextureOpts()));
    EXPECT_NE(st.image, nullptr);
    EXPECT_EQ(st.tex.id, 0u);
    const std::string sizeWord = "> Invalid texture size = (0, 0).";
    EXPECT_EQ(log.countEndingWith(sizeWord), 1) << log.dump();
    EXPECT_TRUE(startsWith(lineEndingWith(log, sizeWord), "pmGL: createTextureEGLImageKHR("));
    deleteSurfaceTexture(st, info);
    EXPECT_EQ(st.image, nullptr);
}

// The stand-in, like the device's library, refuses to describe a null handle,
// so the import stops before any image is asked for.
TEST_F(SurfaceImportTest, NullSurfaceFailsAtItsDescription) {
    LogCapture log;
    EXPECT_FALSE(createSurfaceTexture(st, info, nullptr, TextureOpts()));
    EXPECT_EQ(log.countEndingWith(">  tbm_surface_get_info is not TBM_SURFACE_ERROR_NONE .\n"), 1)
        << log.dump();
    EXPECT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(st.image, nullptr);
    EXPECT_EQ(st.tex.id, 0u);
}

TEST_F(SurfaceImportTest, ImageOfANullSurfaceIsRefusedByName) {
    LogCapture log;
    EXPECT_EQ(createEGLImage(st, info, nullptr), nullptr);
    ASSERT_EQ(log.lines().size(), 1u) << log.dump();
    EXPECT_TRUE(startsWith(log.lines()[0], "pmGL: createEGLImage("));
    EXPECT_EQ(log.countEndingWith("> tbm_surface_h is null.\n"), 1);
}

TEST_F(SurfaceImportTest, RefusedImageFailsTheImportAndLeavesNothing) {
    makeFilledSurface(2, 2);
    int notADisplay = 0;
    info.display = &notADisplay;
    LogCapture log;
    EXPECT_FALSE(createSurfaceTexture(st, info, surface, TextureOpts()));
    eglGetError();
    const std::string failedWord = "> Create KHR Image is Failed.\n";
    EXPECT_EQ(log.countEndingWith(failedWord), 1) << log.dump();
    EXPECT_TRUE(startsWith(lineEndingWith(log, failedWord), "pmGL: createEGLImage("));
    EXPECT_EQ(log.countEndingWith(">  data.image is null.\n"), 1);
    EXPECT_EQ(st.image, nullptr);
    EXPECT_EQ(st.tex.id, 0u);
#ifndef PIXMORA_DEVICE_PLATFORM
    EXPECT_EQ(st.source.id, 0u);
#endif
}

TEST_F(SurfaceImportTest, RecordWithoutProcsFailsLikeARefusedImage) {
    makeFilledSurface(2, 2);
    EGLInfo empty;
    empty.display = gl->display;
    LogCapture log;
    EXPECT_FALSE(createSurfaceTexture(st, empty, surface, TextureOpts()));
    EXPECT_EQ(log.countEndingWith("> Create KHR Image is Failed.\n"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith(">  data.image is null.\n"), 1);
}

TEST_F(SurfaceImportTest, DeleteReleasesTheImageAndTheTextures) {
    makeFilledSurface(3, 3);
    ASSERT_TRUE(createSurfaceTexture(st, info, surface, TextureOpts()));
    const unsigned tex = st.tex.id;
#ifndef PIXMORA_DEVICE_PLATFORM
    const unsigned source = st.source.id;
    EXPECT_TRUE(glIsTexture(source));
#endif
    LogCapture log;
    deleteSurfaceTexture(st, info);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(st.image, nullptr);
    EXPECT_EQ(st.tex.id, 0u);
    EXPECT_FALSE(glIsTexture(tex));
#ifndef PIXMORA_DEVICE_PLATFORM
    EXPECT_EQ(st.source.id, 0u);
    EXPECT_FALSE(glIsTexture(source));
#endif
}

TEST_F(SurfaceImportTest, ImportingAgainReleasesThePreviousImport) {
    makeFilledSurface(2, 2);
    ASSERT_TRUE(createSurfaceTexture(st, info, surface, nearestOpts()));
    const unsigned firstTex = st.tex.id;
    tbm_surface_h second = nullptr;
    ASSERT_TRUE(createSurfaceTBM(second, 3, 1));
    std::vector<std::uint8_t> pixels = makeTestPixels(3, 1, 4, 9);
    std::memcpy(mapSurfaceTBM(second, false, true).data, pixels.data(), pixels.size());
    unmapSurfaceTBM(second);
    EXPECT_TRUE(createSurfaceTexture(st, info, second, nearestOpts()));
    EXPECT_FALSE(glIsTexture(firstTex));
    EXPECT_EQ(drawnSurfaceTexture(), pixels);
    deleteSurfaceTexture(st, info);
    deleteSurfaceTBM(second);
}

}  // namespace
