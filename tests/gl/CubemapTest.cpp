// Cube map textures: six faces from pointers or image lists, the checks on
// the lists, the cube target and wrap R, mipmaps without a null-data check.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "GLCallSpy.h"
#include "GLTestContext.h"
#include "GLTestHelpers.h"
#include "LogCapture.h"
#include "pmGL.h"

using namespace pmGL;
using gltest::getInteger;
using gltest::getTexParameter;

namespace {

constexpr int FACES = 6;

// Six 1x1 faces of distinct colours, `channels` bytes each.
std::vector<std::vector<std::uint8_t>> distinctFaces(int channels) {
    const std::uint8_t colours[FACES][4] = {{255, 0, 0, 255},   {0, 255, 0, 255},
                                            {0, 0, 255, 255},   {255, 255, 0, 255},
                                            {0, 255, 255, 128}, {40, 80, 120, 200}};
    std::vector<std::vector<std::uint8_t>> faces;
    for (const auto& colour : colours) faces.emplace_back(colour, colour + channels);
    return faces;
}

std::vector<ImageData<unsigned char>> imagesOf(std::vector<std::vector<std::uint8_t>>& faces,
                                               int channels) {
    std::vector<ImageData<unsigned char>> images;
    for (auto& face : faces) images.emplace_back(1, 1, channels, face.data());
    return images;
}

class CubemapTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        resetGLCallCounts();
    }

    // One RGBA pixel per face, in GL's face order.
    std::vector<std::uint8_t> sampleFaces(const Texture& tex) {
        gl->resizeTarget(FACES, 1);
        EXPECT_TRUE(gltest::drawTexture(tex, gltest::CUBEMAP_FACES_FRAGMENT_SHADER));
        return gl->readTarget();
    }
};

TEST_F(CubemapTest, ByteFacesSampleInGLOrder) {
    auto faces = distinctFaces(4);
    TextureOpts opts;
    opts.target = GL_TEXTURE_2D;  // a cube map whatever the options say
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    opts.wrapR = GL_MIRRORED_REPEAT;
    Texture tex;
    LogCapture log;
    createCubemapTexture(tex, imagesOf(faces, 4), opts);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_TRUE(isExist(tex));
    EXPECT_EQ(tex.opts.target, static_cast<unsigned>(GL_TEXTURE_CUBE_MAP));
    EXPECT_EQ(tex.width, 1);
    EXPECT_EQ(tex.height, 1);
    EXPECT_EQ(tex.opts.internalFormat, GL_RGBA8);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_WRAP_R), GL_MIRRORED_REPEAT);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_NEAREST);
    EXPECT_EQ(getInteger(GL_TEXTURE_BINDING_CUBE_MAP), 0);

    std::vector<std::uint8_t> expected;
    for (const auto& face : faces) expected.insert(expected.end(), face.begin(), face.end());
    EXPECT_EQ(sampleFaces(tex), expected);
    deleteTexture(tex);
}

TEST_F(CubemapTest, ThreeChannelFacesUseUnpackAlignmentOne) {
    auto faces = distinctFaces(3);
    Texture tex;
    createCubemapTexture(tex, imagesOf(faces, 3), TextureOpts());
    EXPECT_EQ(getInteger(GL_UNPACK_ALIGNMENT), 1);
    EXPECT_EQ(tex.opts.internalFormat, GL_RGB8);
    EXPECT_EQ(tex.opts.format, static_cast<unsigned>(GL_RGB));
    const std::vector<std::uint8_t> sampled = sampleFaces(tex);
    for (int face = 0; face < FACES; ++face) {
        for (int c = 0; c < 3; ++c) EXPECT_EQ(sampled[face * 4 + c], faces[face][c]);
        EXPECT_EQ(sampled[face * 4 + 3], 255);
    }
    deleteTexture(tex);
}

TEST_F(CubemapTest, FloatFacesSampleInGLOrder) {
    std::vector<std::vector<float>> faces;
    for (int face = 0; face < FACES; ++face) {
        faces.push_back({face / 5.f, 1.f - face / 5.f, 0.5f, 1.f});
    }
    std::vector<ImageData<float>> images;
    for (auto& face : faces) images.emplace_back(1, 1, 4, face.data());
    Texture tex;
    LogCapture log;
    createCubemapTexture(tex, images, TextureOpts());
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_EQ(tex.opts.type, static_cast<unsigned>(GL_FLOAT));
    EXPECT_EQ(tex.opts.internalFormat, GL_RGBA16F);
    const std::vector<std::uint8_t> sampled = sampleFaces(tex);
    for (int face = 0; face < FACES; ++face) {
        for (int c = 0; c < 4; ++c) {
            EXPECT_NEAR(sampled[face * 4 + c], faces[face][c] * 255.f, 1.0)
                << "face " << face << " channel " << c;
        }
    }
    deleteTexture(tex);
}

TEST_F(CubemapTest, FiveImagesAreRefusedAndTheRecordKept) {
    auto faces = distinctFaces(4);
    Texture tex;
    createCubemapTexture(tex, 2, 2, TextureOpts());
    const Texture before = tex;
    auto images = imagesOf(faces, 4);
    images.pop_back();
    LogCapture log;
    createCubemapTexture(tex, images, TextureOpts());
    EXPECT_EQ(log.countEndingWith("> cubemap requires 6 faces."), 1) << log.dump();
    EXPECT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(tex.id, before.id);
    EXPECT_EQ(tex.width, 2);
    EXPECT_TRUE(glIsTexture(tex.id));
    EXPECT_EQ(glCallCounts().deleteTextures, 0);

    images = imagesOf(faces, 4);
    images.push_back(images.front());
    createCubemapTexture(tex, images, TextureOpts());
    EXPECT_EQ(log.countEndingWith("> cubemap requires 6 faces."), 2);
    EXPECT_EQ(tex.id, before.id);
    deleteTexture(tex);
}

TEST_F(CubemapTest, FacesOfAnotherSizeOrChannelCountAreRefused) {
    auto faces = distinctFaces(4);
    std::vector<std::uint8_t> wide(2 * 4, 0);
    Texture tex;
    LogCapture log;
    auto images = imagesOf(faces, 4);
    images[3] = ImageData<unsigned char>(2, 1, 4, wide.data());
    createCubemapTexture(tex, images, TextureOpts());
    images = imagesOf(faces, 4);
    images[5] = ImageData<unsigned char>(1, 1, 3, faces[5].data());
    createCubemapTexture(tex, images, TextureOpts());
    EXPECT_EQ(log.countEndingWith("> cubemap images require same size."), 2) << log.dump();
    EXPECT_FALSE(isExist(tex));
}

TEST_F(CubemapTest, SizeBelowOneLogsAndLeavesTheRecord) {
    Texture tex;
    createCubemapTexture(tex, 1, 1, TextureOpts());
    const unsigned id = tex.id;
    LogCapture log;
    createCubemapTexture(tex, 0, 4, TextureOpts());
    createCubemapTexture(tex, 4, -1, TextureOpts());
    EXPECT_EQ(log.countEndingWith("> Invalid texture size = (0, 4)."), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> Invalid texture size = (4, -1)."), 1);
    EXPECT_EQ(tex.id, id);
    EXPECT_EQ(tex.width, 1);
    deleteTexture(tex);
}

TEST_F(CubemapTest, EmptyFacesWithMipmapsStillBuildTheChain) {
    TextureOpts opts;
    opts.mipmap = true;
    opts.minFilter = GL_NEAREST;
    Texture tex;
    LogCapture log;
    createCubemapTexture(tex, 4, 4, opts);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    EXPECT_TRUE(tex.opts.mipmap);
    EXPECT_EQ(tex.opts.minFilter, GL_NEAREST_MIPMAP_NEAREST);
    EXPECT_EQ(getTexParameter(tex, GL_TEXTURE_MIN_FILTER), GL_NEAREST_MIPMAP_NEAREST);
    EXPECT_EQ(glCallCounts().generateMipmap, 1);

    opts.minFilter = GL_LINEAR;
    createCubemapTexture(tex, 4, 4, opts);
    EXPECT_EQ(tex.opts.minFilter, GL_LINEAR_MIPMAP_LINEAR);
    EXPECT_EQ(glCallCounts().generateMipmap, 2);
    deleteTexture(tex);
}

TEST_F(CubemapTest, PlainFiltersMakeNoMipmaps) {
    Texture tex;
    createCubemapTexture(tex, 2, 2, TextureOpts());
    EXPECT_EQ(glCallCounts().generateMipmap, 0);
    EXPECT_EQ(tex.opts.minFilter, GL_LINEAR);
    deleteTexture(tex);
}

TEST_F(CubemapTest, CreationDeletesWhatTheRecordHeld) {
    Texture tex;
    createCubemapTexture(tex, 2, 2, TextureOpts());
    const unsigned old = tex.id;
    createCubemapTexture(tex, 1, 1, TextureOpts());
    EXPECT_FALSE(glIsTexture(old));
    EXPECT_TRUE(glIsTexture(tex.id));
    EXPECT_EQ(tex.width, 1);
    deleteTexture(tex);
}

TEST_F(CubemapTest, PointerFormUploadsEachFaceAndNullMakesAnEmptyFace) {
    auto faces = distinctFaces(4);
    void* pointers[FACES];
    for (int face = 0; face < FACES; ++face) pointers[face] = faces[face].data();
    pointers[2] = nullptr;
    TextureOpts opts;
    opts.minFilter = GL_NEAREST;
    opts.magFilter = GL_NEAREST;
    Texture tex;
    LogCapture log;
    createCubemapTexture(tex, 1, 1, pointers, opts);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    const std::vector<std::uint8_t> sampled = sampleFaces(tex);
    for (int face = 0; face < FACES; ++face) {
        if (face == 2) continue;  // undefined contents
        const std::vector<std::uint8_t> pixel(sampled.begin() + face * 4,
                                              sampled.begin() + face * 4 + 4);
        EXPECT_EQ(pixel, faces[face]) << "face " << face;
    }
    deleteTexture(tex);
}

}  // namespace
