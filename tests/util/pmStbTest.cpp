#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
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

// A fresh directory under /tmp for one test, removed afterwards.
class StbFileTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(scratch.created()); }
    void TearDown() override {
        if (!previousDir.empty()) fs::current_path(previousDir);
    }

    std::string path(const std::string& name) const { return scratch.file(name); }

    void enterDir() {
        previousDir = fs::current_path();
        fs::current_path(dir);
    }

    std::vector<std::string> entries() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(dir)) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    ScratchDirectory scratch{"pixmora-stb"};
    const std::filesystem::path& dir = scratch.path();
    fs::path previousDir;
};

// Pixels whose every byte tells its row, column and channel apart.
std::vector<unsigned char> patternPixels(int width, int height, int channel) {
    std::vector<unsigned char> pixels(static_cast<size_t>(width) * height * channel);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < channel; ++c) {
                pixels[(static_cast<size_t>(y) * width + x) * channel + c] =
                    static_cast<unsigned char>(y * 37 + x * 11 + c * 71);
            }
        }
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

// --- Saving and loading -------------------------------------------------------

class PngRoundTrip : public StbFileTest, public ::testing::WithParamInterface<int> {};

TEST_P(PngRoundTrip, KeepsEveryByte) {
    const int channel = GetParam();
    std::vector<unsigned char> pixels = patternPixels(7, 5, channel);
    const std::string file = path("round.png");
    ASSERT_TRUE(pmStb::saveImage(file, Image(7, 5, channel, pixels.data()), false));

    Image loaded = pmStb::loadImage(file, false);
    ASSERT_NE(loaded.data, nullptr);
    EXPECT_EQ(loaded.width, 7);
    EXPECT_EQ(loaded.height, 5);
    EXPECT_EQ(loaded.channel, channel);
    EXPECT_TRUE(loaded.useFree);
    EXPECT_EQ(bytesOf(loaded), pixels);
    pmUtil::deleteImageData(loaded);
}

INSTANTIATE_TEST_SUITE_P(Channels, PngRoundTrip, ::testing::Values(1, 3, 4));

TEST_F(StbFileTest, SaveLogsWhatWasWritten) {
    std::vector<unsigned char> pixels = patternPixels(4, 2, 3);
    const std::string file = path("logged.png");
    LogCapture log;
    ASSERT_TRUE(pmStb::saveImage(file, Image(4, 2, 3, pixels.data()), true));
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u) << log.dump();
    EXPECT_EQ(lines[0].priority, 4);
    EXPECT_TRUE(
        std::regex_match(lines[0].text, std::regex(R"(^pmStb: saveImage\(\d+\) > [\s\S]*$)")))
        << lines[0].text;
    EXPECT_EQ(log.countEndingWith("> filename = " + file + ", info = (4 x 2 x 3), flip = 1\n"), 1)
        << log.dump();
}

TEST_F(StbFileTest, FlipOnSaveReversesRows) {
    std::vector<unsigned char> pixels = patternPixels(6, 4, 4);
    const std::string file = path("flipped.png");
    ASSERT_TRUE(pmStb::saveImage(file, Image(6, 4, 4, pixels.data()), true));
    Image loaded = pmStb::loadImage(file, false);
    EXPECT_EQ(bytesOf(loaded), flipRows(pixels, 6, 4, 4));
    pmUtil::deleteImageData(loaded);
}

TEST_F(StbFileTest, FlipOnLoadReversesRows) {
    std::vector<unsigned char> pixels = patternPixels(6, 4, 3);
    const std::string file = path("plain.png");
    ASSERT_TRUE(pmStb::saveImage(file, Image(6, 4, 3, pixels.data()), false));
    Image loaded = pmStb::loadImage(file, true);
    EXPECT_EQ(bytesOf(loaded), flipRows(pixels, 6, 4, 3));
    pmUtil::deleteImageData(loaded);
}

TEST_F(StbFileTest, FlipsAreResetAfterEachCall) {
    std::vector<unsigned char> pixels = patternPixels(3, 3, 3);
    ASSERT_TRUE(pmStb::saveImage(path("first.png"), Image(3, 3, 3, pixels.data()), true));
    ASSERT_TRUE(pmStb::saveImage(path("second.png"), Image(3, 3, 3, pixels.data()), false));
    Image flippedLoad = pmStb::loadImage(path("second.png"), true);
    pmUtil::deleteImageData(flippedLoad);

    Image loaded = pmStb::loadImage(path("second.png"), false);
    EXPECT_EQ(bytesOf(loaded), pixels);
    pmUtil::deleteImageData(loaded);
}

TEST_F(StbFileTest, BmpAndTgaRoundTripExactly) {
    std::vector<unsigned char> pixels = patternPixels(5, 3, 3);
    for (const char* name : {"image.bmp", "image.tga"}) {
        ASSERT_TRUE(pmStb::saveImage(path(name), Image(5, 3, 3, pixels.data()), false)) << name;
        Image loaded = pmStb::loadImage(path(name), false);
        EXPECT_EQ(loaded.channel, 3) << name;
        EXPECT_EQ(bytesOf(loaded), pixels) << name;
        pmUtil::deleteImageData(loaded);
    }
}

TEST_F(StbFileTest, JpegKeepsSizeButNotBytes) {
    std::vector<unsigned char> pixels = patternPixels(16, 8, 3);
    ASSERT_TRUE(pmStb::saveImage(path("image.jpg"), Image(16, 8, 3, pixels.data()), false));
    Image loaded = pmStb::loadImage(path("image.jpg"), false);
    ASSERT_NE(loaded.data, nullptr);
    EXPECT_EQ(loaded.width, 16);
    EXPECT_EQ(loaded.height, 8);
    EXPECT_EQ(loaded.channel, 3);
    pmUtil::deleteImageData(loaded);
}

TEST_F(StbFileTest, CapitalExtensionIsUnsupported) {
    std::vector<unsigned char> pixels = patternPixels(2, 2, 3);
    LogCapture log;
    EXPECT_FALSE(pmStb::saveImage(path("upper.PNG"), Image(2, 2, 3, pixels.data()), false));
    EXPECT_EQ(log.countEndingWith("> Unsupported file extension (.PNG).\n"), 1) << log.dump();
    EXPECT_TRUE(entries().empty());
}

TEST_F(StbFileTest, OtherExtensionsAreUnsupported) {
    std::vector<unsigned char> pixels = patternPixels(2, 2, 3);
    LogCapture log;
    EXPECT_FALSE(pmStb::saveImage(path("noext"), Image(2, 2, 3, pixels.data()), false));
    EXPECT_FALSE(pmStb::saveImage(path("image.jpeg"), Image(2, 2, 3, pixels.data()), false));
    EXPECT_FALSE(pmStb::saveImage(path("image.hdr"), Image(2, 2, 3, pixels.data()), false));
    EXPECT_EQ(log.countEndingWith("> Unsupported file extension ().\n"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> Unsupported file extension (.jpeg).\n"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> Unsupported file extension (.hdr).\n"), 1) << log.dump();
    EXPECT_TRUE(entries().empty());
}

TEST_F(StbFileTest, SymbolicLinkLoopIsRefused) {
    fs::create_symlink("loopB.png", dir / "loopA.png");
    fs::create_symlink("loopA.png", dir / "loopB.png");
    std::vector<unsigned char> pixels = patternPixels(2, 2, 3);
    const std::string file = path("loopA.png");
    fs::create_symlink("self.jpg", dir / "self.jpg");
    LogCapture log;
    EXPECT_FALSE(pmStb::saveImage(file, Image(2, 2, 3, pixels.data()), false));
    EXPECT_FALSE(pmStb::saveImage(path("self.jpg"), Image(2, 2, 3, pixels.data()), false));
    EXPECT_EQ(log.countEndingWith("> Fail to save " + file + ".\n"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> Fail to save " + path("self.jpg") + ".\n"), 1) << log.dump();
    EXPECT_EQ(entries().size(), 3u) << "only the links are there";
    for (const auto& entry : fs::directory_iterator(dir)) {
        EXPECT_TRUE(fs::is_symlink(entry.symlink_status())) << entry.path();
    }
}

TEST_F(StbFileTest, DirectoryLoopIsRefused) {
    fs::create_symlink("cycle", dir / "cycle");
    std::vector<unsigned char> pixels = patternPixels(2, 2, 3);
    const std::string file = path("cycle/out.png");
    LogCapture log;
    EXPECT_FALSE(pmStb::saveImage(file, Image(2, 2, 3, pixels.data()), false));
    EXPECT_EQ(log.countEndingWith("> Fail to save " + file + ".\n"), 1) << log.dump();
    EXPECT_EQ(entries(), (std::vector<std::string>{"cycle"}));
}

TEST_F(StbFileTest, RelativeLinkToRegularFileIsWritten) {
    std::ofstream(dir / "target.png") << "placeholder";
    fs::create_symlink("target.png", dir / "link.png");
    enterDir();
    std::vector<unsigned char> pixels = patternPixels(4, 4, 4);
    EXPECT_TRUE(pmStb::saveImage("link.png", Image(4, 4, 4, pixels.data()), false));

    EXPECT_TRUE(fs::is_symlink(dir / "link.png"));
    Image loaded = pmStb::loadImage(path("target.png"), false);
    EXPECT_EQ(bytesOf(loaded), pixels);
    pmUtil::deleteImageData(loaded);
}

TEST_F(StbFileTest, RelativePathWithDotPartsIsWritten) {
    fs::create_directory(dir / "sub");
    enterDir();
    std::vector<unsigned char> pixels = patternPixels(2, 2, 3);
    EXPECT_TRUE(pmStb::saveImage("./sub/../new.png", Image(2, 2, 3, pixels.data()), false));
    EXPECT_TRUE(fs::is_regular_file(dir / "new.png"));
}

TEST_F(StbFileTest, OverwritesExistingFile) {
    std::vector<unsigned char> first = patternPixels(3, 3, 3);
    std::vector<unsigned char> second(first.size(), 200);
    const std::string file = path("again.png");
    ASSERT_TRUE(pmStb::saveImage(file, Image(3, 3, 3, first.data()), false));
    ASSERT_TRUE(pmStb::saveImage(file, Image(3, 3, 3, second.data()), false));
    Image loaded = pmStb::loadImage(file, false);
    EXPECT_EQ(bytesOf(loaded), second);
    pmUtil::deleteImageData(loaded);
}

TEST_F(StbFileTest, MissingDirectoryFailsToSave) {
    std::vector<unsigned char> pixels = patternPixels(2, 2, 3);
    const std::string file = path("absent/out.png");
    LogCapture log;
    EXPECT_FALSE(pmStb::saveImage(file, Image(2, 2, 3, pixels.data()), false));
    EXPECT_EQ(log.countEndingWith("> Fail to save " + file + ".\n"), 1) << log.dump();
}

TEST_F(StbFileTest, ImageWithoutPixelsFailsToSave) {
    LogCapture log;
    EXPECT_FALSE(pmStb::saveImage(path("empty.png"), Image(), false));
    EXPECT_EQ(log.countEndingWith("> Fail to save " + path("empty.png") + ".\n"), 1);
    EXPECT_TRUE(entries().empty());
}

TEST_F(StbFileTest, MissingFileLoadsEmptyImage) {
    const std::string file = path("missing.png");
    LogCapture log;
    Image loaded = pmStb::loadImage(file, false);
    EXPECT_EQ(loaded.data, nullptr);
    EXPECT_EQ(loaded.width, 0);
    EXPECT_EQ(loaded.height, 0);
    EXPECT_EQ(loaded.channel, 0);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u) << log.dump();
    EXPECT_EQ(lines[0].text.rfind("pmStb: loadImage(", 0), 0u) << lines[0].text;
    EXPECT_EQ(log.countEndingWith("> Fail to load " + file + ".\n"), 1) << log.dump();
    pmUtil::deleteImageData(loaded);
}

TEST_F(StbFileTest, FileThatIsNoImageLoadsEmptyImage) {
    std::ofstream(dir / "text.png") << "not an image at all";
    LogCapture log;
    Image loaded = pmStb::loadImage(path("text.png"), false);
    EXPECT_EQ(loaded.data, nullptr);
    EXPECT_EQ(loaded.width, 0);
    EXPECT_EQ(log.countEndingWith("> Fail to load " + path("text.png") + ".\n"), 1);
}

// --- Image information --------------------------------------------------------

TEST_F(StbFileTest, LoadImageInfoReadsSizeAndChannels) {
    std::vector<unsigned char> pixels = patternPixels(9, 4, 4);
    ASSERT_TRUE(pmStb::saveImage(path("info.png"), Image(9, 4, 4, pixels.data()), false));
    int width = 0;
    int height = 0;
    int channel = 0;
    LogCapture log;
    EXPECT_TRUE(pmStb::loadImageInfo(path("info.png"), &width, &height, &channel));
    EXPECT_EQ(width, 9);
    EXPECT_EQ(height, 4);
    EXPECT_EQ(channel, 4);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(StbFileTest, LoadImageInfoOfMissingFileLogsWithoutFullStop) {
    int width = -1;
    int height = -1;
    int channel = -1;
    const std::string file = path("missing.jpg");
    LogCapture log;
    EXPECT_FALSE(pmStb::loadImageInfo(file, &width, &height, &channel));
    EXPECT_EQ(log.countEndingWith("> Fail to load " + file + "\n"), 1) << log.dump();
}

}  // namespace
