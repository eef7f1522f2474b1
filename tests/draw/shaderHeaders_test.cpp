// Which header each stage of a pass is built on, read back from the linked
// program's shaders: an external pass swaps the header of its fragment stage
// only, and the sampler macro is used by the contrast and copy passes alone.
#include <cstring>
#include <string>
#include <vector>

#include "GLTestContext.h"
#include "GaussianBlur.h"
#include "pmDraw.h"
#include "pmDrawLUT.h"
#include "pmGLSL.h"

namespace {

struct StageSources {
    std::string vertex;
    std::string fragment;
};

// The sources of the shaders still attached to `program`: the library
// deletes its shaders after linking, which only flags them while attached.
StageSources sourcesOf(unsigned program) {
    StageSources sources;
    GLuint shaders[4] = {};
    GLsizei count = 0;
    glGetAttachedShaders(program, 4, &count, shaders);
    for (GLsizei i = 0; i < count; ++i) {
        GLint type = 0, length = 0;
        glGetShaderiv(shaders[i], GL_SHADER_TYPE, &type);
        glGetShaderiv(shaders[i], GL_SHADER_SOURCE_LENGTH, &length);
        std::string text(static_cast<size_t>(length), '\0');
        glGetShaderSource(shaders[i], length, nullptr, &text[0]);
        text.resize(std::strlen(text.c_str()));
        (type == GL_VERTEX_SHADER ? sources.vertex : sources.fragment) = text;
    }
    return sources;
}

bool startsWith(const std::string& text, const std::string& head) {
    return text.compare(0, head.size(), head) == 0;
}

// Uses of the sampler macro outside the header that defines it.
int macroUses(const std::string& fragment) {
    std::string body = fragment;
    for (const std::string* header : {&pmGLSL::defaultHeader, &pmGLSL::EGLImageHeader}) {
        if (startsWith(body, *header)) body = body.substr(header->size());
    }
    int uses = 0;
    for (size_t at = body.find("TEXTURE_2D"); at != std::string::npos;
         at = body.find("TEXTURE_2D", at + 1)) {
        ++uses;
    }
    return uses;
}

bool hasExternalImages() {
    const char* extensions = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    return extensions != nullptr &&
           std::strstr(extensions, "GL_OES_EGL_image_external_essl3") != nullptr;
}

class ShaderHeaderTest : public GLTest {};

TEST_F(ShaderHeaderTest, ExternalPassesChangeOnlyTheirFragmentHeader) {
    if (!hasExternalImages()) GTEST_SKIP() << "no GL_OES_EGL_image_external_essl3 here";
    pmDraw::NoFilter copy;
    ASSERT_TRUE(pmDraw::createNoFilter(copy, true));
    pmDraw::ContrastFilter contrast;
    ASSERT_TRUE(pmDraw::createContrastFilter(contrast, true));
    for (unsigned program : {copy.program.id, contrast.program.id}) {
        const StageSources sources = sourcesOf(program);
        ASSERT_FALSE(sources.vertex.empty());
        EXPECT_TRUE(startsWith(sources.vertex, pmGLSL::defaultHeader)) << sources.vertex;
        EXPECT_EQ(sources.vertex.find("GL_OES_EGL_image_external"), std::string::npos);
        EXPECT_TRUE(startsWith(sources.fragment, pmGLSL::EGLImageHeader)) << sources.fragment;
    }
    pmDraw::deleteNoFilter(copy);
    pmDraw::deleteContrastFilter(contrast);
}

TEST_F(ShaderHeaderTest, OnlyTheContrastAndCopyPassesUseTheSamplerMacro) {
    pmDraw::NoFilter copy;
    pmDraw::ContrastFilter contrast;
    ASSERT_TRUE(pmDraw::createNoFilter(copy, false));
    ASSERT_TRUE(pmDraw::createContrastFilter(contrast, false));
    for (unsigned program : {copy.program.id, contrast.program.id}) {
        const std::string fragment = sourcesOf(program).fragment;
        EXPECT_NE(fragment.find("uniform TEXTURE_2D uTexture"), std::string::npos) << fragment;
    }

    pmDraw::Grey grey;
    pmDraw::Sepia sepia;
    pmDraw::DistortionChroma distortion;
    pmDraw::NightVision nightVision;
    pmDraw::CrossStitching crossStitching;
    pmDraw::KuwaharaFilter kuwahara;
    pmDraw::Halftone halftone;
    pmDraw::CrossHatching crossHatching;
    pmDraw::LUTFilter lut;
    pmDraw::GaussianBlur blur;
    ASSERT_TRUE(pmDraw::createGrey(grey));
    ASSERT_TRUE(pmDraw::createSepia(sepia));
    ASSERT_TRUE(pmDraw::createDistortionChroma(distortion));
    ASSERT_TRUE(pmDraw::createNightVision(nightVision));
    ASSERT_TRUE(pmDraw::createCrossStitching(crossStitching));
    ASSERT_TRUE(pmDraw::createKuwaharaFilter(kuwahara));
    ASSERT_TRUE(pmDraw::createHalftone(halftone));
    ASSERT_TRUE(pmDraw::createCrossHatching(crossHatching));
    ASSERT_TRUE(lut.initialize());
    ASSERT_TRUE(pmDraw::createGaussianBlur(blur, 7));
    const std::vector<std::pair<const char*, unsigned>> others = {
        {"grey", grey.program.id},
        {"sepia", sepia.program.id},
        {"chromatic distortion", distortion.program.id},
        {"night vision", nightVision.program.id},
        {"cross stitching", crossStitching.program.id},
        {"Kuwahara", kuwahara.program.id},
        {"halftone", halftone.program.id},
        {"cross hatching", crossHatching.program.id},
        {"look-up", lut.program.id},
        {"horizontal blur", blur.programs[0].id},
        {"vertical blur", blur.programs[1].id}};
    for (const auto& pass : others) {
        const StageSources sources = sourcesOf(pass.second);
        ASSERT_FALSE(sources.fragment.empty()) << pass.first;
        EXPECT_EQ(macroUses(sources.fragment), 0) << pass.first << ":\n" << sources.fragment;
        EXPECT_TRUE(startsWith(sources.vertex, pmGLSL::defaultHeader)) << pass.first;
    }
    pmDraw::deleteGrey(grey);
    pmDraw::deleteSepia(sepia);
    pmDraw::deleteDistortionChroma(distortion);
    pmDraw::deleteNightVision(nightVision);
    pmDraw::deleteCrossStitching(crossStitching);
    pmDraw::deleteKuwaharaFilter(kuwahara);
    pmDraw::deleteHalftone(halftone);
    pmDraw::deleteCrossHatching(crossHatching);
    lut.finalize();
    pmDraw::deleteGaussianBlur(blur);
    pmDraw::deleteNoFilter(copy);
    pmDraw::deleteContrastFilter(contrast);
}

}  // namespace
