#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "ScratchDirectory.h"
#include "pmStb.h"
#include "pmUtil.h"

namespace {

namespace fs = std::filesystem;
using Image = pmUtil::ImageData<unsigned char>;
using HdrImage = pmUtil::ImageData<float>;
using Block = pmUtil::MemoryBlock<unsigned char>;

// A fresh directory under /tmp for one test, removed afterwards.
class StbPackTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(scratch.created()); }

    std::string path(const std::string& name) const { return scratch.file(name); }

    std::vector<unsigned char> fileBytes(const std::string& name) const {
        std::ifstream in(path(name), std::ios::binary);
        return std::vector<unsigned char>(std::istreambuf_iterator<char>(in),
                                          std::istreambuf_iterator<char>());
    }

    ScratchDirectory scratch{"pixmora-pack"};
    const std::filesystem::path& dir = scratch.path();
};

std::vector<unsigned char> patternPixels(int width, int height, int channel) {
    std::vector<unsigned char> pixels(static_cast<size_t>(width) * height * channel);
    for (size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<unsigned char>(i * 37 + (i / 5) * 11);
    }
    return pixels;
}

std::vector<unsigned char> bytesOf(const Image& image) {
    return std::vector<unsigned char>(image.data, image.data + image.getCount());
}

std::vector<unsigned char> flipRows(const std::vector<unsigned char>& pixels, int width, int height,
                                    int channel) {
    const size_t row = static_cast<size_t>(width) * channel;
    std::vector<unsigned char> flipped(pixels.size());
    for (int y = 0; y < height; ++y) {
        std::copy_n(pixels.begin() + y * row, row, flipped.begin() + (height - 1 - y) * row);
    }
    return flipped;
}

template <typename T>
void appendValue(std::vector<unsigned char>& bytes, T value) {
    const unsigned char* raw = reinterpret_cast<const unsigned char*>(&value);
    bytes.insert(bytes.end(), raw, raw + sizeof(value));
}

// --- Packing in memory ------------------------------------------------------

class LosslessPack : public ::testing::TestWithParam<const char*> {};

TEST_P(LosslessPack, UnpacksToTheSamePixels) {
    for (int channel : {1, 3, 4}) {
        if (std::string(GetParam()) == ".bmp" && channel == 1) continue;
        std::vector<unsigned char> pixels = patternPixels(9, 7, channel);
        Block block =
            pmStb::createPackedImage(GetParam(), Image(9, 7, channel, pixels.data()), false);
        ASSERT_NE(block.data, nullptr) << GetParam() << " " << channel;
        EXPECT_GT(block.index, 0u);
        EXPECT_GE(block.length, block.index);
        Image unpacked = pmStb::createUnpackedImage(block, false);
        ASSERT_NE(unpacked.data, nullptr);
        EXPECT_EQ(unpacked.width, 9);
        EXPECT_EQ(unpacked.height, 7);
        EXPECT_EQ(unpacked.channel, channel);
        EXPECT_TRUE(unpacked.useFree);
        EXPECT_EQ(bytesOf(unpacked), pixels) << GetParam() << " " << channel;
        pmUtil::deleteImageData(unpacked);
        pmUtil::deleteMemoryBlock(block);
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, LosslessPack, ::testing::Values(".png", ".bmp", ".tga"));

TEST(StbPack, PngBlockAdoptsEncoderMemory) {
    std::vector<unsigned char> pixels = patternPixels(8, 8, 4);
    Block block = pmStb::createPackedImage(".png", Image(8, 8, 4, pixels.data()), false);
    ASSERT_NE(block.data, nullptr);
    EXPECT_TRUE(block.useFree);
    EXPECT_EQ(block.length, block.index);
    const unsigned char signature[] = {0x89, 'P', 'N', 'G'};
    EXPECT_EQ(std::memcmp(block.data, signature, 4), 0);
    pmUtil::deleteMemoryBlock(block);
}

TEST(StbPack, CallbackBlockIsRawSizedWhenEncodingFits) {
    std::vector<unsigned char> pixels(64 * 64 * 3, 90);
    Block block = pmStb::createPackedImage(".jpg", Image(64, 64, 3, pixels.data()), false);
    ASSERT_NE(block.data, nullptr);
    EXPECT_FALSE(block.useFree);
    EXPECT_EQ(block.length, 64u * 64u * 3u);
    EXPECT_LT(block.index, block.length);
    EXPECT_EQ(block.data[0], 0xFF);
    EXPECT_EQ(block.data[1], 0xD8);
    pmUtil::deleteMemoryBlock(block);
}

TEST(StbPack, SmallImagesWhoseFileOutgrowsThePixelsStillPack) {
    std::vector<unsigned char> pixels = patternPixels(2, 2, 3);
    for (const char* extension : {".jpg", ".bmp", ".tga"}) {
        LogCapture log;
        Block block = pmStb::createPackedImage(extension, Image(2, 2, 3, pixels.data()), false);
        ASSERT_NE(block.data, nullptr) << extension;
        EXPECT_GE(block.length, block.index);
        EXPECT_EQ(log.count("length >= index"), 0) << log.dump();
        Image unpacked = pmStb::createUnpackedImage(block, false);
        EXPECT_EQ(unpacked.width, 2) << extension;
        EXPECT_EQ(unpacked.channel, 3) << extension;
        pmUtil::deleteImageData(unpacked);
        pmUtil::deleteMemoryBlock(block);
    }
}

TEST(StbPack, FlipReversesRowsBothWays) {
    std::vector<unsigned char> pixels = patternPixels(5, 4, 3);
    Block block = pmStb::createPackedImage(".png", Image(5, 4, 3, pixels.data()), true);
    Image unpacked = pmStb::createUnpackedImage(block, false);
    EXPECT_EQ(bytesOf(unpacked), flipRows(pixels, 5, 4, 3));
    Image twice = pmStb::createUnpackedImage(block, true);
    EXPECT_EQ(bytesOf(twice), pixels);
    pmUtil::deleteImageData(twice);
    pmUtil::deleteImageData(unpacked);
    pmUtil::deleteMemoryBlock(block);

    Block tga = pmStb::createPackedImage(".tga", Image(5, 4, 3, pixels.data()), true);
    Image fromTga = pmStb::createUnpackedImage(tga, false);
    EXPECT_EQ(bytesOf(fromTga), flipRows(pixels, 5, 4, 3));
    pmUtil::deleteImageData(fromTga);
    pmUtil::deleteMemoryBlock(tga);

    // Both flips are cleared afterwards.
    Block plain = pmStb::createPackedImage(".bmp", Image(5, 4, 3, pixels.data()), false);
    Image fromBmp = pmStb::createUnpackedImage(plain, false);
    EXPECT_EQ(bytesOf(fromBmp), pixels);
    pmUtil::deleteImageData(fromBmp);
    pmUtil::deleteMemoryBlock(plain);
}

TEST(StbPack, LogsTheCompressionOfEachFormat) {
    std::vector<unsigned char> pixels(16 * 16 * 4, 128);
    const Image image(16, 16, 4, pixels.data());
    LogCapture log;
    for (const char* extension : {".png", ".jpg", ".bmp", ".tga"}) {
        Block block = pmStb::createPackedImage(extension, image, false);
        const std::vector<LogLine> lines = log.lines();
        ASSERT_EQ(lines.size(), 1u) << log.dump();
        EXPECT_EQ(lines[0].priority, 4);
        EXPECT_EQ(lines[0].text.rfind("pmStb: createPackedImage(", 0), 0u) << lines[0].text;
        const std::string name = std::string(extension).substr(1);
        // JPEG counts three channels of a four-channel image.
        const int raw = name == "jpg" ? 16 * 16 * 3 : 16 * 16 * 4;
        char expected[128];
        std::snprintf(expected, sizeof(expected), "> Compress(%s) - %d -> %d (%.1f%%)\n",
                      name.c_str(), raw, static_cast<int>(block.index),
                      100.0f * static_cast<float>(block.index) / static_cast<float>(raw));
        EXPECT_EQ(log.countEndingWith(expected), 1) << log.dump();
        pmUtil::deleteMemoryBlock(block);
        log.clear();
    }
}

TEST(StbPack, ExtensionOfOtherThanFourBytesGivesEmptyBlock) {
    std::vector<unsigned char> pixels = patternPixels(4, 4, 3);
    const Image image(4, 4, 3, pixels.data());
    for (const char* extension : {".jpeg", "png", "", ".pn", ".png "}) {
        LogCapture log;
        Block block = pmStb::createPackedImage(extension, image, false);
        EXPECT_EQ(block.data, nullptr) << extension;
        EXPECT_EQ(block.length, 0u);
        EXPECT_EQ(block.index, 0u);
        EXPECT_EQ(
            log.countEndingWith(std::string("> Fail to pack image format ") + extension + ".\n"), 1)
            << log.dump();
    }
}

TEST(StbPack, UnknownOrCapitalExtensionGivesEmptyBlock) {
    std::vector<unsigned char> pixels = patternPixels(4, 4, 3);
    for (const char* extension : {".xyz", ".PNG", ".raw", ".hdr"}) {
        LogCapture log;
        Block block = pmStb::createPackedImage(extension, Image(4, 4, 3, pixels.data()), false);
        EXPECT_EQ(block.data, nullptr) << extension;
        EXPECT_EQ(block.index, 0u);
        EXPECT_EQ(
            log.countEndingWith(std::string("> Fail to pack image format ") + extension + ".\n"), 1)
            << log.dump();
    }
}

TEST(StbPack, ImageWithoutPixelsGivesEmptyBlock) {
    LogCapture log;
    Block block = pmStb::createPackedImage(".png", Image(), false);
    EXPECT_EQ(block.data, nullptr);
    EXPECT_EQ(log.countEndingWith("> Fail to pack image format .png.\n"), 1) << log.dump();
}

TEST(StbPack, UnpackingGarbageFails) {
    unsigned char garbage[32];
    std::memset(garbage, 7, sizeof(garbage));
    LogCapture log;
    Image image =
        pmStb::createUnpackedImage(Block(garbage, sizeof(garbage), sizeof(garbage)), false);
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(image.width, 0);
    EXPECT_EQ(image.channel, 0);
    EXPECT_EQ(log.countEndingWith("> Fail to unpack an image block.\n"), 1) << log.dump();
    Image none = pmStb::createUnpackedImage(Block(), false);
    EXPECT_EQ(none.data, nullptr);
    EXPECT_EQ(log.countEndingWith("> Fail to unpack an image block.\n"), 2) << log.dump();
}

TEST(StbPack, UnpackReadsOnlyTheUsedBytes) {
    std::vector<unsigned char> pixels = patternPixels(6, 6, 3);
    Block block = pmStb::createPackedImage(".png", Image(6, 6, 3, pixels.data()), false);
    Block shortened(block.data, block.length, block.index / 2);
    LogCapture log;
    Image image = pmStb::createUnpackedImage(shortened, false);
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(log.countEndingWith("> Fail to unpack an image block.\n"), 1) << log.dump();
    pmUtil::deleteMemoryBlock(block);
}

TEST(StbPack, WriteMemoryBlockAppendsAtIndex) {
    Block block = pmUtil::createMemoryBlock<unsigned char>(8);
    unsigned char first[] = {1, 2, 3};
    unsigned char second[] = {4, 5};
    pmStb::writeMemoryBlock(&block, first, 3);
    pmStb::writeMemoryBlock(&block, second, 2);
    EXPECT_EQ(block.index, 5u);
    EXPECT_EQ(block.length, 8u);
    EXPECT_EQ(std::vector<unsigned char>(block.data, block.data + 5),
              (std::vector<unsigned char>{1, 2, 3, 4, 5}));

    // More than fits moves the bytes to a larger buffer.
    unsigned char many[10] = {9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
    pmStb::writeMemoryBlock(&block, many, 10);
    EXPECT_EQ(block.index, 15u);
    EXPECT_GE(block.length, 15u);
    EXPECT_EQ(block.data[4], 5);
    EXPECT_EQ(block.data[14], 9);
    pmUtil::deleteMemoryBlock(block);
}

// --- HDR files ----------------------------------------------------------------

TEST_F(StbPackTest, HdrRoundTripKeepsValuesClosely) {
    std::vector<float> pixels(6 * 3 * 3);
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = 0.25f + 0.5f * static_cast<float>(i);
    const std::string file = path("light.hdr");
    LogCapture log;
    ASSERT_TRUE(pmStb::saveHdrImage(file, HdrImage(6, 3, 3, pixels.data()), false));
    EXPECT_EQ(log.countEndingWith("> filename = " + file + ", info = (6 x 3 x 3), flip = 0\n"), 1)
        << log.dump();
    HdrImage loaded = pmStb::loadHdrImage(file, false);
    ASSERT_NE(loaded.data, nullptr);
    EXPECT_EQ(loaded.width, 6);
    EXPECT_EQ(loaded.height, 3);
    EXPECT_EQ(loaded.channel, 3);
    EXPECT_TRUE(loaded.useFree);
    for (size_t i = 0; i < pixels.size(); ++i) {
        // Shared-exponent storage keeps about eight bits of mantissa.
        EXPECT_NEAR(loaded.data[i], pixels[i], pixels[i] / 64.0f) << i;
    }
    pmUtil::deleteImageData(loaded);
}

TEST_F(StbPackTest, HdrFlipReversesRows) {
    std::vector<float> pixels = {1.0f, 1.0f, 1.0f, 4.0f, 4.0f, 4.0f};
    ASSERT_TRUE(pmStb::saveHdrImage(path("rows.hdr"), HdrImage(1, 2, 3, pixels.data()), true));
    HdrImage loaded = pmStb::loadHdrImage(path("rows.hdr"), false);
    ASSERT_NE(loaded.data, nullptr);
    EXPECT_FLOAT_EQ(loaded.data[0], 4.0f);
    EXPECT_FLOAT_EQ(loaded.data[3], 1.0f);
    HdrImage back = pmStb::loadHdrImage(path("rows.hdr"), true);
    EXPECT_FLOAT_EQ(back.data[0], 1.0f);
    pmUtil::deleteImageData(back);
    pmUtil::deleteImageData(loaded);
}

TEST_F(StbPackTest, HdrAcceptsOnlyHdrExtension) {
    std::vector<float> pixels(12, 1.0f);
    LogCapture log;
    EXPECT_FALSE(pmStb::saveHdrImage(path("a.png"), HdrImage(2, 2, 3, pixels.data()), false));
    EXPECT_FALSE(pmStb::saveHdrImage(path("a.HDR"), HdrImage(2, 2, 3, pixels.data()), false));
    EXPECT_EQ(log.countEndingWith("> Unsupported file extension (.png).\n"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> Unsupported file extension (.HDR).\n"), 1) << log.dump();
    EXPECT_TRUE(fs::is_empty(dir));
}

TEST_F(StbPackTest, HdrSaveIsGuardedAgainstLinkLoops) {
    fs::create_symlink("loop.hdr", dir / "loop.hdr");
    std::vector<float> pixels(12, 1.0f);
    LogCapture log;
    EXPECT_FALSE(pmStb::saveHdrImage(path("loop.hdr"), HdrImage(2, 2, 3, pixels.data()), false));
    EXPECT_EQ(log.countEndingWith("> Fail to save " + path("loop.hdr") + ".\n"), 1) << log.dump();
}

TEST_F(StbPackTest, HdrLoadOfMissingFileIsEmpty) {
    LogCapture log;
    HdrImage loaded = pmStb::loadHdrImage(path("none.hdr"), false);
    EXPECT_EQ(loaded.data, nullptr);
    EXPECT_EQ(loaded.width, 0);
    EXPECT_EQ(loaded.height, 0);
    EXPECT_EQ(loaded.channel, 0);
    EXPECT_EQ(log.countEndingWith("> Fail to load " + path("none.hdr") + ".\n"), 1) << log.dump();
    EXPECT_EQ(log.lines().at(0).text.rfind("pmStb: loadHdrImage(", 0), 0u);
}

TEST_F(StbPackTest, HdrLoadOfByteImageScalesToOne) {
    std::vector<unsigned char> pixels = {0, 255, 0, 255};
    ASSERT_TRUE(pmStb::saveImage(path("grey.png"), Image(2, 2, 1, pixels.data()), false));
    HdrImage loaded = pmStb::loadHdrImage(path("grey.png"), false);
    ASSERT_NE(loaded.data, nullptr);
    EXPECT_EQ(loaded.channel, 1);
    EXPECT_FLOAT_EQ(loaded.data[0], 0.0f);
    EXPECT_NEAR(loaded.data[1], 1.0f, 1e-5f);
    pmUtil::deleteImageData(loaded);
}

// --- Stream records -------------------------------------------------------------

TEST_F(StbPackTest, RawRecordIsByteExact) {
    std::vector<unsigned char> pixels = patternPixels(3, 2, 4);
    {
        std::ofstream out(path("raw.bin"), std::ios::binary);
        EXPECT_TRUE(pmStb::writeImage(out, Image(3, 2, 4, pixels.data()), ".raw"));
    }
    std::vector<unsigned char> expected;
    appendValue<std::uint64_t>(expected, 4);
    expected.insert(expected.end(), {'.', 'r', 'a', 'w'});
    appendValue<std::int32_t>(expected, 3);
    appendValue<std::int32_t>(expected, 2);
    appendValue<std::int32_t>(expected, 4);
    expected.insert(expected.end(), pixels.begin(), pixels.end());
    EXPECT_EQ(fileBytes("raw.bin"), expected);

    std::ifstream in(path("raw.bin"), std::ios::binary);
    Image image = pmStb::readImage(in);
    ASSERT_NE(image.data, nullptr);
    EXPECT_EQ(image.width, 3);
    EXPECT_EQ(image.height, 2);
    EXPECT_EQ(image.channel, 4);
    EXPECT_FALSE(image.useFree);
    EXPECT_EQ(bytesOf(image), pixels);
    pmUtil::deleteImageData(image);
}

TEST_F(StbPackTest, JpegRecordKeepsSizeButNotBytes) {
    std::vector<unsigned char> pixels = patternPixels(16, 8, 3);
    {
        std::ofstream out(path("jpg.bin"), std::ios::binary);
        EXPECT_TRUE(pmStb::writeImage(out, Image(16, 8, 3, pixels.data()), ".jpg"));
    }
    const std::vector<unsigned char> bytes = fileBytes("jpg.bin");
    ASSERT_GT(bytes.size(), 20u);
    std::uint64_t blockLength = 0;
    std::memcpy(&blockLength, bytes.data() + 12, 8);
    EXPECT_EQ(bytes.size(), 20u + blockLength);
    EXPECT_EQ(bytes[20], 0xFF);
    EXPECT_EQ(bytes[21], 0xD8);

    std::ifstream in(path("jpg.bin"), std::ios::binary);
    Image image = pmStb::readImage(in);
    ASSERT_NE(image.data, nullptr);
    EXPECT_EQ(image.width, 16);
    EXPECT_EQ(image.height, 8);
    EXPECT_EQ(image.channel, 3);
    EXPECT_TRUE(image.useFree);
    EXPECT_NE(bytesOf(image), pixels);
    pmUtil::deleteImageData(image);
}

TEST_F(StbPackTest, LosslessRecordsRoundTripInOneStream) {
    std::vector<unsigned char> rgba = patternPixels(7, 5, 4);
    std::vector<unsigned char> rgb = patternPixels(4, 9, 3);
    std::vector<unsigned char> grey = patternPixels(3, 3, 1);
    {
        std::ofstream out(path("many.bin"), std::ios::binary);
        EXPECT_TRUE(pmStb::writeImage(out, Image(7, 5, 4, rgba.data()), ".png"));
        EXPECT_TRUE(pmStb::writeImage(out, Image(4, 9, 3, rgb.data()), ".bmp"));
        EXPECT_TRUE(pmStb::writeImage(out, Image(3, 3, 1, grey.data()), ".tga"));
        EXPECT_TRUE(pmStb::writeImage(out, Image(3, 3, 1, grey.data()), ".raw"));
    }
    std::ifstream in(path("many.bin"), std::ios::binary);
    const std::vector<std::vector<unsigned char>*> expected = {&rgba, &rgb, &grey, &grey};
    const int channels[] = {4, 3, 1, 1};
    for (size_t i = 0; i < expected.size(); ++i) {
        Image image = pmStb::readImage(in);
        ASSERT_NE(image.data, nullptr) << i;
        EXPECT_EQ(image.channel, channels[i]) << i;
        EXPECT_EQ(bytesOf(image), *expected[i]) << i;
        pmUtil::deleteImageData(image);
    }
    EXPECT_EQ(in.peek(), std::ifstream::traits_type::eof());
}

TEST_F(StbPackTest, UnsupportedExtensionWritesEmptyBlock) {
    std::vector<unsigned char> pixels = patternPixels(2, 2, 3);
    LogCapture log;
    {
        std::ofstream out(path("xyz.bin"), std::ios::binary);
        EXPECT_TRUE(pmStb::writeImage(out, Image(2, 2, 3, pixels.data()), ".xyz"));
    }
    EXPECT_EQ(log.countEndingWith("> Fail to pack image format .xyz.\n"), 1) << log.dump();
    std::vector<unsigned char> expected;
    appendValue<std::uint64_t>(expected, 4);
    expected.insert(expected.end(), {'.', 'x', 'y', 'z'});
    appendValue<std::uint64_t>(expected, 0);
    EXPECT_EQ(fileBytes("xyz.bin"), expected);

    log.clear();
    std::ifstream in(path("xyz.bin"), std::ios::binary);
    Image image = pmStb::readImage(in);
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(image.width, 0);
    EXPECT_EQ(image.height, 0);
    EXPECT_EQ(image.channel, 0);
    EXPECT_EQ(log.countEndingWith("> Fail to unpack an image block.\n"), 1) << log.dump();
    pmUtil::deleteImageData(image);
}

TEST_F(StbPackTest, LongerExtensionIsWrittenWhole) {
    std::vector<unsigned char> pixels = patternPixels(2, 2, 3);
    {
        std::ofstream out(path("jpeg.bin"), std::ios::binary);
        EXPECT_TRUE(pmStb::writeImage(out, Image(2, 2, 3, pixels.data()), ".jpeg"));
    }
    std::vector<unsigned char> expected;
    appendValue<std::uint64_t>(expected, 5);
    expected.insert(expected.end(), {'.', 'j', 'p', 'e', 'g'});
    appendValue<std::uint64_t>(expected, 0);
    EXPECT_EQ(fileBytes("jpeg.bin"), expected);
}

TEST_F(StbPackTest, ClosedStreamsAndMissingPixelsAreRefused) {
    std::vector<unsigned char> pixels = patternPixels(2, 2, 3);
    std::ofstream closedOut;
    EXPECT_FALSE(pmStb::writeImage(closedOut, Image(2, 2, 3, pixels.data()), ".raw"));
    {
        std::ofstream out(path("none.bin"), std::ios::binary);
        EXPECT_FALSE(pmStb::writeImage(out, Image(2, 2, 3, nullptr), ".png"));
    }
    EXPECT_TRUE(fileBytes("none.bin").empty());

    std::ifstream closedIn;
    Image image = pmStb::readImage(closedIn);
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(image.width, 0);
}

}  // namespace
