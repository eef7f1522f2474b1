// Image records and files from a hostile source: length fields that claim
// more than the stream holds, impossible sizes and channel counts, truncated
// pixels, and headers that claim more pixels than their file can encode.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "ScratchDirectory.h"
#include "pmStb.h"
#include "pmUtil.h"
#include "util/pmStb.jpegTables.h"
#include "util/pmStb.pngChunks.h"

namespace {

namespace fs = std::filesystem;
using Image = pmUtil::ImageData<unsigned char>;
using Block = pmUtil::MemoryBlock<unsigned char>;
using Bytes = std::vector<unsigned char>;

template <typename T>
void append(Bytes& bytes, T value) {
    const unsigned char* raw = reinterpret_cast<const unsigned char*>(&value);
    bytes.insert(bytes.end(), raw, raw + sizeof(value));
}

Bytes extensionField(const std::string& extension) {
    Bytes bytes;
    append<std::uint64_t>(bytes, extension.size());
    bytes.insert(bytes.end(), extension.begin(), extension.end());
    return bytes;
}

Bytes rawRecord(std::int32_t width, std::int32_t height, std::int32_t channel,
                std::size_t pixelBytes) {
    Bytes bytes = extensionField(".raw");
    append(bytes, width);
    append(bytes, height);
    append(bytes, channel);
    bytes.resize(bytes.size() + pixelBytes, 0x5A);
    return bytes;
}

// A 54-byte BMP whose header claims `width` x `height` 24-bit pixels.
Bytes bmpHeader(std::int32_t width, std::int32_t height) {
    Bytes bytes = {'B', 'M'};
    append<std::uint32_t>(bytes, 54);
    append<std::uint32_t>(bytes, 0);
    append<std::uint32_t>(bytes, 54);
    append<std::uint32_t>(bytes, 40);
    append(bytes, width);
    append(bytes, height);
    append<std::uint16_t>(bytes, 1);
    append<std::uint16_t>(bytes, 24);
    for (int i = 0; i < 6; ++i) append<std::uint32_t>(bytes, 0);
    return bytes;
}

class StbHostileTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(scratch.created()); }
    std::string path(const std::string& name) const { return scratch.file(name); }

    std::string write(const std::string& name, const Bytes& bytes) const {
        std::ofstream out(path(name), std::ios::binary);
        out.write(reinterpret_cast<const char*>(bytes.data()),
                  static_cast<std::streamsize>(bytes.size()));
        return path(name);
    }

    // Reads one record of `bytes` and expects it refused with `reason`.
    void expectRefused(const Bytes& bytes, const std::string& reason) {
        std::ifstream in(write("record.bin", bytes), std::ios::binary);
        LogCapture log;
        Image image;
        EXPECT_NO_THROW(image = pmStb::readImage(in));
        EXPECT_EQ(image.data, nullptr);
        EXPECT_EQ(image.width, 0);
        EXPECT_EQ(image.height, 0);
        EXPECT_EQ(image.channel, 0);
        EXPECT_EQ(log.countEndingWith("> Broken image record: " + reason + ".\n"), 1) << log.dump();
    }

    ScratchDirectory scratch{"pixmora-stb-hostile"};
};

TEST_F(StbHostileTest, ExtensionLengthOfSixGibibytesIsRefused) {
    Bytes bytes;
    append<std::uint64_t>(bytes, 6ull << 30);
    bytes.insert(bytes.end(), {'.', 'r', 'a', 'w'});
    expectRefused(bytes, "extension longer than the stream");
}

TEST_F(StbHostileTest, TruncatedFieldsAreRefused) {
    expectRefused({1, 0, 0}, "truncated extension length");
    Bytes shortRaw = extensionField(".raw");
    append<std::int32_t>(shortRaw, 4);
    expectRefused(shortRaw, "truncated size");
    Bytes shortBlock = extensionField(".png");
    shortBlock.push_back(3);
    expectRefused(shortBlock, "truncated block length");
}

TEST_F(StbHostileTest, RawSizesThatAreNotPositiveAreRefused) {
    expectRefused(rawRecord(-3, 2, 4, 64), "invalid size or channel count");
    expectRefused(rawRecord(3, 0, 4, 64), "invalid size or channel count");
    expectRefused(rawRecord(-65536, -65536, 1, 64), "invalid size or channel count");
}

TEST_F(StbHostileTest, RawChannelCountsOutsideOneToFourAreRefused) {
    for (int channel : {0, 5, 99, -1}) {
        expectRefused(rawRecord(2, 2, channel, 2 * 2 * 99), "invalid size or channel count");
    }
}

TEST_F(StbHostileTest, RawSizeWhoseByteCountOverflowsIntIsRefused) {
    expectRefused(rawRecord(65536, 65536, 4, 16), "invalid size or channel count");
    // Sides at the end of int: their byte count overflows even 64 bits (a
    // fuzzer's find, under the undefined-behaviour sanitizer).
    expectRefused(rawRecord(INT32_MAX, INT32_MAX, 4, 16), "invalid size or channel count");
    expectRefused(rawRecord(INT32_MAX, 2, 1, 16), "invalid size or channel count");
}

TEST_F(StbHostileTest, TruncatedRawPixelsAreRefused) {
    expectRefused(rawRecord(4, 4, 4, 10), "truncated pixels");
}

TEST_F(StbHostileTest, BlockLongerThanTheStreamIsRefused) {
    Bytes bytes = extensionField(".png");
    append<std::uint64_t>(bytes, 6ull << 30);
    bytes.resize(bytes.size() + 32, 0);
    expectRefused(bytes, "block longer than the stream");
}

TEST_F(StbHostileTest, RecordsAfterABrokenOneAreRefusedToo) {
    Bytes bytes = rawRecord(2, 2, 7, 28);
    const Bytes good = rawRecord(2, 2, 1, 4);
    bytes.insert(bytes.end(), good.begin(), good.end());
    std::ifstream in(write("two.bin", bytes), std::ios::binary);
    Image first = pmStb::readImage(in);
    Image second = pmStb::readImage(in);
    EXPECT_EQ(first.data, nullptr);
    EXPECT_EQ(second.data, nullptr);
}

TEST_F(StbHostileTest, WholeRecordsStillReadAfterTheGuards) {
    const Bytes bytes = rawRecord(3, 2, 1, 6);
    std::ifstream in(write("good.bin", bytes), std::ios::binary);
    Image image = pmStb::readImage(in);
    ASSERT_NE(image.data, nullptr);
    EXPECT_EQ(image.width, 3);
    EXPECT_EQ(image.height, 2);
    EXPECT_EQ(image.channel, 1);
    EXPECT_EQ(Bytes(image.data, image.data + 6), Bytes(6, 0x5A));
    pmUtil::deleteImageData(image);
}

TEST_F(StbHostileTest, ImagesOfFiveChannelsAreNeitherSavedNorPacked) {
    Bytes pixels(4 * 4 * 5, 0x33);
    const Image image(4, 4, 5, pixels.data());
    LogCapture log;
    EXPECT_FALSE(pmStb::saveImage(path("five.png"), image, false));
    EXPECT_FALSE(fs::exists(path("five.png")));
    EXPECT_EQ(log.countEndingWith("> Fail to save " + path("five.png") + ".\n"), 1) << log.dump();
    Block block = pmStb::createPackedImage(".png", image, false);
    EXPECT_EQ(block.data, nullptr);
    std::ofstream out(path("five.bin"), std::ios::binary);
    EXPECT_FALSE(pmStb::writeImage(out, image, ".raw"));
    EXPECT_FALSE(pmStb::writeImage(out, Image(-4, 4, 4, pixels.data()), ".raw"));
    out.close();
    EXPECT_EQ(fs::file_size(path("five.bin")), 0u);
}

TEST_F(StbHostileTest, FileHeaderClaimingMorePixelsThanItsBytesIsRefused) {
    const std::string file = write("huge.bmp", bmpHeader(16000, 16000));
    LogCapture log;
    Image image = pmStb::loadImage(file, false);
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(image.width, 0);
    EXPECT_EQ(log.countEndingWith("> Fail to load " + file + ".\n"), 1) << log.dump();
    // The header alone may still be read.
    int width = 0, height = 0, channel = 0;
    EXPECT_TRUE(pmStb::loadImageInfo(file, &width, &height, &channel));
    EXPECT_EQ(width, 16000);
}

TEST_F(StbHostileTest, PackedBlockClaimingMorePixelsThanItsBytesIsRefused) {
    Bytes bytes = bmpHeader(16000, 16000);
    const Block block(bytes.data(), bytes.size(), bytes.size(), false);
    LogCapture log;
    Image image = pmStb::createUnpackedImage(block, false);
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(log.countEndingWith("> Fail to unpack an image block.\n"), 1) << log.dump();
}

TEST_F(StbHostileTest, BlockWhoseIndexPassesItsLengthIsRefused) {
    Bytes bytes = bmpHeader(2, 2);
    const Block block(bytes.data(), 4, 4, false);
    Block lying = block;
    lying.index = 4096;
    LogCapture log;
    Image image = pmStb::createUnpackedImage(lying, false);
    EXPECT_EQ(image.data, nullptr);
}

}  // namespace

namespace {

Bytes fileOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

const std::string HUFFMAN_OVERFLOW = PIXMORA_TEST_DATA_DIR "/hostile/jpeg-huffman-overflow.jpg";

// SOI, then a DHT whose sixteen code counts of 17 add up to 272.
Bytes jpegWithCodes(unsigned char count) {
    Bytes bytes = {0xFF, 0xD8, 0xFF, 0xC4, 0x00, 0x13, 0x00};
    bytes.insert(bytes.end(), 16, count);
    return bytes;
}

TEST(StbJpegTables, TablesOfMoreThan256CodesAreFound) {
    EXPECT_FALSE(pmStb::hasSafeHuffmanTables(jpegWithCodes(17).data(), 2 + 4 + 1 + 16));
    EXPECT_TRUE(pmStb::hasSafeHuffmanTables(jpegWithCodes(16).data(), 2 + 4 + 1 + 16));
    const Bytes found = fileOf(HUFFMAN_OVERFLOW);
    ASSERT_FALSE(found.empty());
    EXPECT_FALSE(pmStb::hasSafeHuffmanTables(found.data(), found.size()));
}

TEST(StbJpegTables, TablesOfTheLibrarysOwnJpegsPass) {
    for (int channel : {1, 3}) {
        Bytes pixels(16 * 9 * channel);
        for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i);
        Block block = pmStb::createPackedImage(".jpg", Image(16, 9, channel, pixels.data()), false);
        ASSERT_NE(block.data, nullptr);
        EXPECT_TRUE(pmStb::hasSafeHuffmanTables(block.data, block.index));
        pmUtil::deleteMemoryBlock(block);
    }
    // Not a JPEG stream at all.
    const unsigned char png[] = {0x89, 'P', 'N', 'G', 0xFF, 0xC4, 0, 0x13, 0, 255, 255};
    EXPECT_TRUE(pmStb::hasSafeHuffmanTables(png, sizeof(png)));
}

TEST(StbJpegTables, JpegWithTooManyCodesIsNeitherReadNorDecoded) {
    LogCapture log;
    int width = 0, height = 0, channel = 0;
    EXPECT_FALSE(pmStb::loadImageInfo(HUFFMAN_OVERFLOW, &width, &height, &channel));
    Image image = pmStb::loadImage(HUFFMAN_OVERFLOW, false);
    EXPECT_EQ(image.data, nullptr);
    pmUtil::ImageData<float> hdr = pmStb::loadHdrImage(HUFFMAN_OVERFLOW, false);
    EXPECT_EQ(hdr.data, nullptr);
    Bytes bytes = fileOf(HUFFMAN_OVERFLOW);
    const Block block(bytes.data(), bytes.size(), bytes.size(), false);
    Image unpacked = pmStb::createUnpackedImage(block, false);
    EXPECT_EQ(unpacked.data, nullptr);
    EXPECT_EQ(log.countEndingWith("> Fail to load " + HUFFMAN_OVERFLOW + "\n"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> Fail to load " + HUFFMAN_OVERFLOW + ".\n"), 2) << log.dump();
    EXPECT_EQ(log.countEndingWith("> Fail to unpack an image block.\n"), 1) << log.dump();
}

}  // namespace

namespace {

// A PNG of the library's own, with its first IDAT chunk claiming `length`.
Bytes pngWithIdatLength(std::uint32_t length) {
    Bytes pixels(8 * 8 * 3, 0x40);
    Block block = pmStb::createPackedImage(".png", Image(8, 8, 3, pixels.data()), false);
    Bytes bytes(block.data, block.data + block.index);
    pmUtil::deleteMemoryBlock(block);
    const std::string text(bytes.begin(), bytes.end());
    const std::size_t type = text.find("IDAT");
    for (int i = 0; i < 4; ++i) {
        bytes[type - 4 + i] = static_cast<unsigned char>(length >> (24 - 8 * i));
    }
    return bytes;
}

TEST(StbPngChunks, ChunkClaimingMoreThanTheStreamIsFound) {
    const Bytes lying = pngWithIdatLength(0x7FFFFFF0u);
    EXPECT_FALSE(pmStb::hasHonestChunkLengths(lying.data(), lying.size()));
    Bytes pixels(8 * 8 * 3, 0x40);
    Block own = pmStb::createPackedImage(".png", Image(8, 8, 3, pixels.data()), false);
    EXPECT_TRUE(pmStb::hasHonestChunkLengths(own.data, own.index));
    pmUtil::deleteMemoryBlock(own);
}

TEST(StbPngChunks, PngWithALyingChunkIsNotDecoded) {
    Bytes lying = pngWithIdatLength(0x7FFFFFF0u);
    const Block block(lying.data(), lying.size(), lying.size(), false);
    LogCapture log;
    Image image = pmStb::createUnpackedImage(block, false);
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(log.countEndingWith("> Fail to unpack an image block.\n"), 1) << log.dump();
}

}  // namespace

namespace {

TEST(LogCaptureNesting, TwoLiveCapturesEachSeeTheirLinesAndFreeTheirOwn) {
    auto outer = std::make_unique<LogCapture>();
    {
        LogCapture inner;
        pmStb::createUnpackedImage(Block(), false);
        EXPECT_EQ(inner.countEndingWith("> Fail to unpack an image block.\n"), 1);
    }
    pmStb::createUnpackedImage(Block(), false);
    EXPECT_EQ(outer->countEndingWith("> Fail to unpack an image block.\n"), 2);
    outer.reset();
}

}  // namespace

namespace {

// A scan that names a Huffman table no DHT defined. The decoder's state starts
// zeroed, so the result is the same on every decode; under the sanitizer
// build an index past the tables stops the test.
TEST(StbJpegTables, ScanWithAnUndefinedTableDecodesTheSameEveryTime) {
    Bytes bytes = fileOf(PIXMORA_TEST_DATA_DIR "/hostile/jpeg-undefined-huffman.jpg");
    ASSERT_FALSE(bytes.empty());
    std::vector<Bytes> results;
    for (int i = 0; i < 2; ++i) {
        const Block block(bytes.data(), bytes.size(), bytes.size(), false);
        Image image = pmStb::createUnpackedImage(block, false);
        results.push_back(image.data ? Bytes(image.data, image.data + image.getCount()) : Bytes());
        pmUtil::deleteImageData(image);
    }
    EXPECT_EQ(results[0], results[1]);
}

}  // namespace
