// ContrastFilter: pow and factor against the CPU, its defaults, its
// information-level log lines and its external-image form.
#include <cmath>
#include <cstdint>
#include <vector>

#include "GLTestContext.h"
#include "LogCapture.h"
#include "effect_test_support.h"
#include "pmDraw.h"
#include "pmGL.h"

namespace {

using namespace effecttest;

Expected contrastOf(const Picture& in, int x, int y, float constFactor, float powerFactor) {
    Expected e;
    for (int c = 0; c < 3; ++c) {
        e.rgba[c] = toByte(std::pow(in.unit(x, y, c), powerFactor) * constFactor);
    }
    e.rgba[3] = in.at(x, y, 3);
    return e;
}

class ContrastFilterTest : public GLTest {};

TEST_F(ContrastFilterTest, DefaultsAreFactorOnePointEightAndPowerTwoPointTwo) {
    pmDraw::ContrastFilter contrast;
    ASSERT_TRUE(pmDraw::createContrastFilter(contrast, false));
    EXPECT_FLOAT_EQ(contrast.ud.floats["uConstFactor"], 1.8f);
    EXPECT_FLOAT_EQ(contrast.ud.floats["uPowerFactor"], 2.2f);
    EXPECT_FALSE(contrast.renderOpts.blend.enabled);
    EXPECT_FALSE(contrast.useExternalTexture);
    pmDraw::deleteContrastFilter(contrast);
}

TEST_F(ContrastFilterTest, MatchesCpuCurveAndKeepsAlpha) {
    const int w = 24, h = 18;
    gl->resizeTarget(w, h);
    Picture in = makePicture(w, h, 21);
    pmGL::Texture tex = upload(in, true);
    pmDraw::ContrastFilter contrast;
    ASSERT_TRUE(pmDraw::createContrastFilter(contrast, false));
    pmDraw::setTexture(contrast, tex, glm::vec2(0.0f, 0.0f));
    pmDraw::runContrastFilter(contrast);
    expectPicture(
        gl->readTarget(), w, h, [&](int x, int y) { return contrastOf(in, x, y, 1.8f, 2.2f); }, 1,
        "defaults");

    pmDraw::setParameters(contrast, 0.7f, 0.45f);
    EXPECT_FLOAT_EQ(contrast.ud.floats["uConstFactor"], 0.7f);
    EXPECT_FLOAT_EQ(contrast.ud.floats["uPowerFactor"], 0.45f);
    pmDraw::runContrastFilter(contrast);
    expectPicture(
        gl->readTarget(), w, h, [&](int x, int y) { return contrastOf(in, x, y, 0.7f, 0.45f); }, 1,
        "set");
    pmDraw::deleteContrastFilter(contrast);
    pmGL::deleteTexture(tex);
}

TEST_F(ContrastFilterTest, CreateAndDeleteLogAtInformationLevel) {
    pmDraw::ContrastFilter contrast;
    LogCapture log;
    ASSERT_TRUE(pmDraw::createContrastFilter(contrast, false));
    pmDraw::deleteContrastFilter(contrast);
    const std::vector<LogLine> lines = log.lines();
    int info = 0;
    for (const LogLine& line : lines) {
        if (line.priority != 4) continue;
        ++info;
        EXPECT_EQ(line.text.rfind("pmDrawFilterEffect: ", 0), 0u) << line.text;
    }
    EXPECT_EQ(info, 4) << log.dump();
    EXPECT_EQ(log.countEndingWith("> createContrastFilter()"), 1);
    EXPECT_EQ(log.countEndingWith("> createContrastFilter() end"), 1);
    EXPECT_EQ(log.countEndingWith("> deleteContrastFilter()"), 1);
    EXPECT_EQ(log.countEndingWith("> deleteContrastFilter() end"), 1);
}

// The sampler type is that of the header: a 2D texture is reported, not refused.
TEST_F(ContrastFilterTest, ExternalFormReportsAPlainTexture) {
    Picture in = makePicture(4, 4, 3);
    pmGL::Texture tex = upload(in, true);
    pmDraw::ContrastFilter contrast;
    ASSERT_TRUE(pmDraw::createContrastFilter(contrast, true));
    EXPECT_TRUE(contrast.useExternalTexture);
    LogCapture log;
    pmDraw::setTexture(contrast, tex, 0.0f);
    EXPECT_EQ(log.countEndingWith("> tex.opts.target == GL_TEXTURE_EXTERNAL_OES"), 1) << log.dump();
    EXPECT_EQ(contrast.ud.textures["uTexture"].id, tex.id);
    pmDraw::deleteContrastFilter(contrast);
    pmGL::deleteTexture(tex);
}

TEST_F(ContrastFilterTest, ExternalFormSamplesAnEGLImage) {
    const int w = 12, h = 10;
    gl->resizeTarget(w, h);
    Picture in = makePicture(w, h, 5);
    pmGL::Texture plain = upload(in, true);

    auto createImage =
        reinterpret_cast<PFNEGLCREATEIMAGEKHRPROC>(eglGetProcAddress("eglCreateImageKHR"));
    auto destroyImage =
        reinterpret_cast<PFNEGLDESTROYIMAGEKHRPROC>(eglGetProcAddress("eglDestroyImageKHR"));
    auto targetTexture = reinterpret_cast<PFNGLEGLIMAGETARGETTEXTURE2DOESPROC>(
        eglGetProcAddress("glEGLImageTargetTexture2DOES"));
    ASSERT_TRUE(createImage && destroyImage && targetTexture);
    const EGLint attributes[] = {EGL_IMAGE_PRESERVED_KHR, EGL_TRUE, EGL_NONE};
    EGLImageKHR image = createImage(
        gl->display, gl->context, EGL_GL_TEXTURE_2D_KHR,
        reinterpret_cast<EGLClientBuffer>(static_cast<std::uintptr_t>(plain.id)), attributes);
    ASSERT_NE(image, EGL_NO_IMAGE_KHR);

    pmGL::Texture external;
    glGenTextures(1, &external.id);
    glBindTexture(GL_TEXTURE_EXTERNAL_OES, external.id);
    targetTexture(GL_TEXTURE_EXTERNAL_OES, image);
    glTexParameteri(GL_TEXTURE_EXTERNAL_OES, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_EXTERNAL_OES, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glBindTexture(GL_TEXTURE_EXTERNAL_OES, 0);
    external.width = w;
    external.height = h;
    external.opts.target = GL_TEXTURE_EXTERNAL_OES;
    external.opts.minFilter = GL_NEAREST;
    external.opts.magFilter = GL_NEAREST;

    pmDraw::ContrastFilter contrast;
    ASSERT_TRUE(pmDraw::createContrastFilter(contrast, true));
    {
        LogCapture log;
        pmDraw::setTexture(contrast, external, glm::vec2(0.0f, 0.0f));
        EXPECT_TRUE(log.lines().empty()) << log.dump();
    }
    pmDraw::runContrastFilter(contrast);
    expectPicture(
        gl->readTarget(), w, h, [&](int x, int y) { return contrastOf(in, x, y, 1.8f, 2.2f); }, 1,
        "external");
    pmDraw::deleteContrastFilter(contrast);
    glDeleteTextures(1, &external.id);
    destroyImage(gl->display, image);
    pmGL::deleteTexture(plain);
}

// A second create fails in the base (the quad exists) and adds its own line.
TEST_F(ContrastFilterTest, FailedCreateLogsTheTextureFilterFailure) {
    pmDraw::ContrastFilter contrast;
    ASSERT_TRUE(pmDraw::createContrastFilter(contrast, false));
    LogCapture log;
    EXPECT_FALSE(pmDraw::createContrastFilter(contrast, false));
    EXPECT_EQ(log.countEndingWith("> ___super::initialize() failed."), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> createTextureFilter() failed."), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> createContrastFilter() end"), 0) << log.dump();
    pmDraw::deleteContrastFilter(contrast);
}

}  // namespace
