#include "pmImg.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include "LogCapture.h"
#include "pmUtil.h"

namespace {

using pmImg::ByteImage;
using Block = pmUtil::MemoryBlock<unsigned char>;

// An image over a vector owned by the test.
struct OwnedImage {
    std::vector<unsigned char> bytes;
    ByteImage image;

    OwnedImage(int width, int height, int channel, unsigned char fill = 0)
        : bytes(static_cast<size_t>(width) * height * channel, fill),
          image(width, height, channel, bytes.data()) {}
    // A copy points its image at its own bytes.
    OwnedImage(const OwnedImage& other) : bytes(other.bytes), image(other.image) {
        image.data = bytes.data();
    }
    OwnedImage& operator=(const OwnedImage&) = delete;
};

OwnedImage patternImage(int width, int height, int channel, int seed) {
    OwnedImage owned(width, height, channel);
    for (size_t i = 0; i < owned.bytes.size(); ++i) {
        owned.bytes[i] = static_cast<unsigned char>((i * 73 + seed * 29 + (i >> 3) * seed) & 0xFF);
    }
    return owned;
}

// --- Packed pixels --------------------------------------------------------------

TEST(PackedPixel, FloatToByteClampsAndTruncates) {
    EXPECT_EQ(pmImg::vec1p(1.5f).v[0], 255);
    EXPECT_EQ(pmImg::vec1p(1.5).v[0], 255);
    EXPECT_EQ(pmImg::vec1p(-0.2f).v[0], 0);
    EXPECT_EQ(pmImg::vec1p(0.999f).v[0], 254);
    EXPECT_EQ(pmImg::vec1p(1.0f).v[0], 255);
    EXPECT_EQ(pmImg::vec1p(0.5f).v[0], 127);
    EXPECT_EQ(pmImg::vec1p(std::nanf("")).v[0], 0);
}

TEST(PackedPixel, ByteToFloatScalesByReciprocal) {
    EXPECT_FLOAT_EQ(pmImg::vec1p(static_cast<unsigned char>(255)).getData(), 255 * 0.003921569f);
    EXPECT_FLOAT_EQ(pmImg::vec1p(static_cast<unsigned char>(0)).getData(), 0.0f);
    const glm::vec4 value = pmImg::vec4p(0, 51, 102, 255).getData();
    EXPECT_FLOAT_EQ(value.y, 51 * 0.003921569f);
    EXPECT_FLOAT_EQ(value.w, 255 * 0.003921569f);
}

TEST(PackedPixel, VectorsConvertEachComponent) {
    const pmImg::vec2p two(glm::vec2(0.2f, 2.0f));
    EXPECT_EQ(two[0], 51);
    EXPECT_EQ(two[1], 255);
    const pmImg::vec3p three(glm::vec3(-1.0f, 0.999f, 0.5f));
    EXPECT_EQ(three[0], 0);
    EXPECT_EQ(three[1], 254);
    EXPECT_EQ(three[2], 127);
    const pmImg::vec4p four(glm::vec4(0.0f, 0.25f, 0.75f, 1.0f));
    EXPECT_EQ(four[0], 0);
    EXPECT_EQ(four[1], 63);
    EXPECT_EQ(four[2], 191);
    EXPECT_EQ(four[3], 255);
    const glm::vec3 back = pmImg::vec3p(10, 20, 30).getData();
    EXPECT_FLOAT_EQ(back.x, 10 * 0.003921569f);
    EXPECT_FLOAT_EQ(back.z, 30 * 0.003921569f);
}

TEST(PackedPixel, OverlaysImageBytesInOrder) {
    unsigned char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    pmImg::vec4p* pixels = reinterpret_cast<pmImg::vec4p*>(bytes);
    EXPECT_EQ(pixels[1][0], 5);
    pixels[1][3] = 99;
    EXPECT_EQ(bytes[7], 99);
    pmImg::vec2p* pairs = reinterpret_cast<pmImg::vec2p*>(bytes);
    pairs[0] = pmImg::vec2p(40, 41);
    EXPECT_EQ(bytes[0], 40);
    EXPECT_EQ(bytes[1], 41);
    pmImg::vec1p single(static_cast<unsigned char>(3));
    single = static_cast<unsigned char>(200);
    EXPECT_EQ(single.v[0], 200);
    pmImg::vec3p copy(pmImg::vec3p(7, 8, 9));
    pmImg::vec3p assigned(0, 0, 0);
    assigned = copy;
    EXPECT_EQ(assigned[2], 9);
}

TEST(PackedPixel, IndexOutOfRangeIsLogged) {
    pmImg::vec4p pixels[2] = {pmImg::vec4p(1, 2, 3, 4), pmImg::vec4p(5, 6, 7, 8)};
    const pmImg::vec2p pair(1, 2);
    LogCapture log;
    EXPECT_EQ(pair[1], 2);
    EXPECT_TRUE(log.lines().empty());
    (void)pair[2];
    (void)pixels[1][-1];
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 4u) << log.dump();
    EXPECT_EQ(lines[0].text.rfind("pmImg: operator[](", 0), 0u) << lines[0].text;
    EXPECT_EQ(log.countEndingWith("> _i >= 0 && _i < 2"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> _i >= 0 && _i < 4"), 1) << log.dump();
}

// --- Channels -------------------------------------------------------------------

TEST(ImageChannels, MapCopiesTwoChannelsIntoThree) {
    OwnedImage src = patternImage(3, 2, 2, 1);
    OwnedImage dst(3, 2, 3, 77);
    pmImg::mapImageChannels(src.image, dst.image);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(dst.bytes[i * 3 + 0], src.bytes[i * 2 + 0]);
        EXPECT_EQ(dst.bytes[i * 3 + 1], src.bytes[i * 2 + 1]);
        EXPECT_EQ(dst.bytes[i * 3 + 2], 77);
    }
}

TEST(ImageChannels, MapWithOtherChannelCountsDoesNothing) {
    OwnedImage three = patternImage(3, 2, 3, 2);
    OwnedImage dst(3, 2, 3, 5);
    LogCapture log;
    pmImg::mapImageChannels(three.image, dst.image);
    EXPECT_EQ(dst.bytes, std::vector<unsigned char>(18, 5));
    OwnedImage two = patternImage(3, 2, 2, 2);
    OwnedImage four(3, 2, 4, 5);
    pmImg::mapImageChannels(two.image, four.image);
    EXPECT_EQ(four.bytes, std::vector<unsigned char>(24, 5));
    EXPECT_TRUE(log.lines().empty()) << log.dump();
}

TEST(ImageChannels, MapOfDifferentSizesIsLogged) {
    OwnedImage src = patternImage(3, 2, 2, 1);
    OwnedImage dst(2, 2, 3, 5);
    LogCapture log;
    pmImg::mapImageChannels(src.image, dst.image);
    EXPECT_EQ(log.countEndingWith(
                  "> src.getWidth() == dst.getWidth() && src.getHeight() == dst.getHeight()"),
              1)
        << log.dump();
    EXPECT_EQ(dst.bytes, std::vector<unsigned char>(12, 5));
}

TEST(ImageChannels, MergeTakesColourAndAlpha) {
    OwnedImage rgb = patternImage(4, 3, 3, 3);
    OwnedImage alpha = patternImage(4, 3, 4, 4);
    OwnedImage dst(4, 3, 4);
    pmImg::mergeImageChannels(rgb.image, alpha.image, dst.image);
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(dst.bytes[i * 4 + 0], rgb.bytes[i * 3 + 0]);
        EXPECT_EQ(dst.bytes[i * 4 + 1], rgb.bytes[i * 3 + 1]);
        EXPECT_EQ(dst.bytes[i * 4 + 2], rgb.bytes[i * 3 + 2]);
        EXPECT_EQ(dst.bytes[i * 4 + 3], alpha.bytes[i * 4 + 3]);
    }
}

TEST(ImageChannels, MergeOfMismatchedImagesIsRefused) {
    OwnedImage rgb = patternImage(4, 3, 3, 3);
    OwnedImage alpha = patternImage(4, 2, 4, 4);
    OwnedImage dst(4, 3, 4, 9);
    OwnedImage dst3(4, 3, 3, 9);
    OwnedImage alphaOk = patternImage(4, 3, 4, 4);
    LogCapture log;
    pmImg::mergeImageChannels(rgb.image, alpha.image, dst.image);
    pmImg::mergeImageChannels(rgb.image, alphaOk.image, dst3.image);
    EXPECT_EQ(log.countEndingWith("> Size is different each other.\n"), 2) << log.dump();
    EXPECT_EQ(log.lines().at(0).text.rfind("pmImg: mergeImageChannels(", 0), 0u);
    EXPECT_EQ(dst.bytes, std::vector<unsigned char>(48, 9));
    EXPECT_EQ(dst3.bytes, std::vector<unsigned char>(36, 9));
}

TEST(ImageChannels, SplitSendsEachChannelToItsPlane) {
    OwnedImage src = patternImage(5, 2, 3, 6);
    std::vector<OwnedImage> planes = {OwnedImage(5, 2, 1), OwnedImage(5, 2, 1),
                                      OwnedImage(5, 2, 1)};
    std::vector<ByteImage> dst;
    for (OwnedImage& plane : planes) dst.push_back(plane.image);
    LogCapture log;
    pmImg::splitImageChannels(src.image, dst);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    for (int i = 0; i < 10; ++i) {
        for (int k = 0; k < 3; ++k) EXPECT_EQ(planes[k].bytes[i], src.bytes[i * 3 + k]);
    }
}

TEST(ImageChannels, SplitChecksPlaneCountAndShape) {
    OwnedImage src = patternImage(5, 2, 3, 6);
    OwnedImage plane(5, 2, 1, 4);
    OwnedImage wide(5, 2, 2, 4);
    std::vector<ByteImage> tooFew = {plane.image, plane.image};
    std::vector<ByteImage> wrongShape = {plane.image, plane.image, wide.image};
    LogCapture log;
    pmImg::splitImageChannels(src.image, tooFew);
    pmImg::splitImageChannels(src.image, wrongShape);
    EXPECT_EQ(log.countEndingWith("> src.getChannel() == (int)dst.size()"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> it.getChannel() == 1"), 1) << log.dump();
    EXPECT_EQ(plane.bytes, std::vector<unsigned char>(10, 4));
}

// --- Delta ----------------------------------------------------------------------

TEST(ImageDelta, ExtractGivesMagnitudeAndSign) {
    OwnedImage a(4, 1, 1);
    OwnedImage b(4, 1, 1);
    a.bytes = {10, 200, 5, 0};
    b.bytes = {30, 100, 5, 255};
    OwnedImage abs(4, 1, 1, 99);
    OwnedImage sign(4, 1, 1, 99);
    pmImg::extractDelta(a.image, b.image, abs.image, sign.image);
    EXPECT_EQ(abs.bytes, (std::vector<unsigned char>{20, 100, 0, 255}));
    EXPECT_EQ(sign.bytes, (std::vector<unsigned char>{1, 2, 0, 1}));
}

TEST(ImageDelta, SelfDeltaIsZeroAndPacksToNothing) {
    OwnedImage src = patternImage(6, 5, 3, 8);
    OwnedImage abs(6, 5, 3, 1);
    OwnedImage sign(6, 5, 3, 1);
    pmImg::extractDelta(src.image, src.image, abs.image, sign.image);
    EXPECT_EQ(abs.bytes, std::vector<unsigned char>(90, 0));
    EXPECT_EQ(sign.bytes, std::vector<unsigned char>(90, 0));
    Block block = pmImg::compressSign(sign.image);
    EXPECT_EQ(block.index, 0u);
    EXPECT_EQ(block.length, 12u);
    EXPECT_TRUE(block.useFree);
    pmUtil::deleteMemoryBlock(block);
}

TEST(ImageDelta, MergeForwardAndBackRestoresBothImages) {
    OwnedImage a = patternImage(7, 4, 4, 3);
    OwnedImage b = patternImage(7, 4, 4, 11);
    OwnedImage abs(7, 4, 4);
    OwnedImage sign(7, 4, 4);
    pmImg::extractDelta(a.image, b.image, abs.image, sign.image);

    OwnedImage work = a;
    pmImg::mergeDelta(work.image, abs.image, sign.image, false);
    EXPECT_EQ(work.bytes, b.bytes);
    pmImg::mergeDelta(work.image, abs.image, sign.image, true);
    EXPECT_EQ(work.bytes, a.bytes);
}

TEST(ImageDelta, MergeWrapsAtEightBits) {
    OwnedImage value(2, 1, 1);
    value.bytes = {250, 3};
    OwnedImage abs(2, 1, 1);
    abs.bytes = {10, 5};
    OwnedImage sign(2, 1, 1);
    sign.bytes = {1, 7};
    pmImg::mergeDelta(value.image, abs.image, sign.image, false);
    EXPECT_EQ(value.bytes, (std::vector<unsigned char>{4, 254}));
}

TEST(ImageDelta, IncompatibleImagesAreLogged) {
    OwnedImage a(2, 2, 1, 1);
    OwnedImage b(2, 2, 3, 2);
    OwnedImage abs(2, 2, 1, 9);
    OwnedImage sign(2, 2, 1, 9);
    LogCapture log;
    pmImg::extractDelta(a.image, b.image, abs.image, sign.image);
    pmImg::mergeDelta(b.image, abs.image, sign.image, false);
    EXPECT_EQ(log.countEndingWith("> src1.isCompatible(src2)"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> inout.isCompatible(deltaAbs)"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> inout.isCompatible(deltaSign)"), 1) << log.dump();
    EXPECT_EQ(abs.bytes, std::vector<unsigned char>(4, 9));
    EXPECT_EQ(b.bytes, std::vector<unsigned char>(12, 2));
}

// --- Sign packing ---------------------------------------------------------------

TEST(SignPacking, OneBitPerChangedByteLowBitFirst) {
    OwnedImage sign(11, 1, 1);
    sign.bytes = {0, 2, 1, 0, 2, 2, 1, 1, 1, 2, 2};
    Block block = pmImg::compressSign(sign.image);
    ASSERT_NE(block.data, nullptr);
    EXPECT_EQ(block.length, 2u);
    EXPECT_EQ(block.index, 2u);
    // Bits for the nine non-zero signs: 1 0 1 1 0 0 0 1 | 1
    EXPECT_EQ(block.data[0], 0x8D);
    EXPECT_EQ(block.data[1], 0x01);
    pmUtil::deleteMemoryBlock(block);
}

TEST(SignPacking, CompressThenDecompressRestoresEverySign) {
    OwnedImage a = patternImage(13, 7, 3, 5);
    OwnedImage b = patternImage(13, 7, 3, 17);
    b.bytes[4] = a.bytes[4];
    b.bytes[40] = a.bytes[40];
    OwnedImage abs(13, 7, 3);
    OwnedImage sign(13, 7, 3);
    pmImg::extractDelta(a.image, b.image, abs.image, sign.image);

    Block block = pmImg::compressSign(sign.image);
    EXPECT_EQ(block.length, (13u * 7u * 3u + 7u) / 8u);
    LogCapture log;
    ByteImage restored = pmImg::decompressSign(abs.image, block);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    ASSERT_NE(restored.data, nullptr);
    EXPECT_TRUE(restored.isCompatible(sign.image));
    EXPECT_FALSE(restored.useFree);
    EXPECT_EQ(std::vector<unsigned char>(restored.data, restored.data + restored.getCount()),
              sign.bytes);
    EXPECT_EQ(restored.data[4], 0);
    pmUtil::deleteImageData(restored);
    pmUtil::deleteMemoryBlock(block);
}

TEST(SignPacking, EmptyImageAllocatesNothing) {
    Block block = pmImg::compressSign(ByteImage());
    EXPECT_EQ(block.data, nullptr);
    EXPECT_EQ(block.length, 0u);
    EXPECT_EQ(block.index, 0u);
}

TEST(SignPacking, BlockOfWrongLengthIsLogged) {
    OwnedImage abs(4, 1, 1);
    abs.bytes = {1, 1, 1, 1};
    unsigned char bits[2] = {0x0F, 0};
    LogCapture log;
    ByteImage restored = pmImg::decompressSign(abs.image, Block(bits, 2, 2));
    EXPECT_EQ(log.countEndingWith("> (size_t)((validCount + 7) / 8) == signCompressed.getIndex()"),
              1)
        << log.dump();
    ASSERT_NE(restored.data, nullptr);
    EXPECT_EQ(restored.data[3], 2);
    pmUtil::deleteImageData(restored);
}

// --- Random pattern -------------------------------------------------------------

TEST(RandomPattern, FollowsTheFormulaAndRepeats) {
    OwnedImage first(9, 6, 1);
    OwnedImage second(9, 6, 1, 1);
    pmImg::generateRandomPattern(first.image);
    pmImg::generateRandomPattern(second.image);
    EXPECT_EQ(first.bytes, second.bytes);
    const float invW = 1.0f / 8.0f;
    const float invH = 1.0f / 5.0f;
    int distinct = 0;
    for (int y = 0; y < 6; ++y) {
        for (int x = 0; x < 9; ++x) {
            const float u = static_cast<float>(x) * invW;
            const float v = static_cast<float>(y) * invH;
            const float t = sinf(u * 13.6797f + v * 83.917f) * 48732.363f;
            const float value = (t - floorf(t)) * 255.0f;
            const unsigned char expected =
                static_cast<unsigned char>(std::min(255.0f, std::max(0.0f, value)));
            EXPECT_EQ(first.bytes[y * 9 + x], expected) << x << "," << y;
            if (first.bytes[y * 9 + x] != first.bytes[0]) ++distinct;
        }
    }
    EXPECT_GT(distinct, 30);
}

TEST(RandomPattern, NeedsOneChannel) {
    OwnedImage three(4, 4, 3, 6);
    LogCapture log;
    pmImg::generateRandomPattern(three.image);
    EXPECT_EQ(log.countEndingWith("> container.getChannel() == 1"), 1) << log.dump();
    EXPECT_EQ(three.bytes, std::vector<unsigned char>(48, 6));
}

}  // namespace
