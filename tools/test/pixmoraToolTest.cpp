// Runs the pixmora tool as a user would and checks the files it writes.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "ToolRunner.h"
#include "pmStb.h"

namespace {

// The grey level of the effect: the luminance of the colour, on the CPU.
std::vector<int> expectedGrey(const std::vector<unsigned char>& pixels, int width, int height,
                              int channel) {
    std::vector<int> grey(static_cast<size_t>(width) * height);
    for (size_t i = 0; i < grey.size(); ++i) {
        const unsigned char* p = &pixels[i * channel];
        const float r = p[0] / 255.0f;
        const float g = (channel >= 3 ? p[1] : p[0]) / 255.0f;
        const float b = (channel >= 3 ? p[2] : p[0]) / 255.0f;
        const float mono = r * 0.2125f + g * 0.7154f + b * 0.0721f;
        grey[i] = static_cast<int>(std::lround(mono * 255.0f));
    }
    return grey;
}

std::vector<int> mirrored(const std::vector<int>& grey, int width, int height, bool horizontal,
                          bool vertical) {
    std::vector<int> result(grey.size());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int sx = horizontal ? width - 1 - x : x;
            const int sy = vertical ? height - 1 - y : y;
            result[static_cast<size_t>(y) * width + x] = grey[static_cast<size_t>(sy) * width + sx];
        }
    }
    return result;
}

// Checks that every pixel is grey, within one level of the expectation, and
// opaque where the output keeps alpha.
void expectGreyImage(const Image& image, const std::vector<int>& expected) {
    ASSERT_NE(image.data, nullptr);
    int mismatches = 0;
    for (size_t i = 0; i < expected.size(); ++i) {
        const unsigned char* p = &image.data[i * image.channel];
        for (int c = 0; c < 3; ++c) {
            if (std::abs(p[c] - expected[i]) > 1 && mismatches++ < 5) {
                ADD_FAILURE() << "pixel " << i << " channel " << c << " is " << int(p[c])
                              << ", expected " << expected[i];
            }
        }
        if (image.channel == 4 && p[3] != 255 && mismatches++ < 5) {
            ADD_FAILURE() << "pixel " << i << " alpha is " << int(p[3]);
        }
    }
    EXPECT_EQ(mismatches, 0);
}

TEST_F(ToolTest, GreyOfRgbImageMatchesLuminanceUpright) {
    const int width = 13;
    const int height = 7;
    std::vector<unsigned char> pixels = writeInput("in.png", width, height, 3);
    RunResult result =
        run("effect grey " + inQuotes(path("in.png")) + " " + inQuotes(path("out.png")));
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(result.err.empty()) << result.err;

    Image output = pmStb::loadImage(path("out.png"), false);
    EXPECT_EQ(output.width, width);
    EXPECT_EQ(output.height, height);
    EXPECT_EQ(output.channel, 3);
    expectGreyImage(output, expectedGrey(pixels, width, height, 3));
    pmUtil::deleteImageData(output);
}

TEST_F(ToolTest, GreyOfRgbaImageKeepsAlphaChannelOpaque) {
    std::vector<unsigned char> pixels = writeInput("in.png", 9, 6, 4);
    RunResult result =
        run("effect grey " + inQuotes(path("in.png")) + " " + inQuotes(path("out.png")));
    ASSERT_EQ(result.status, 0) << result.err;
    Image output = pmStb::loadImage(path("out.png"), false);
    EXPECT_EQ(output.channel, 4);
    expectGreyImage(output, expectedGrey(pixels, 9, 6, 4));
    pmUtil::deleteImageData(output);
}

TEST_F(ToolTest, GreyOfOneChannelImage) {
    std::vector<unsigned char> pixels = writeInput("in.png", 5, 4, 1);
    RunResult result =
        run("effect grey " + inQuotes(path("in.png")) + " " + inQuotes(path("out.png")));
    ASSERT_EQ(result.status, 0) << result.err;
    Image output = pmStb::loadImage(path("out.png"), false);
    EXPECT_EQ(output.channel, 3);
    expectGreyImage(output, expectedGrey(pixels, 5, 4, 1));
    pmUtil::deleteImageData(output);
}

struct FlipCase {
    const char* mode;
    bool horizontal;
    bool vertical;
};

class ToolFlipTest : public ToolTest, public ::testing::WithParamInterface<FlipCase> {};

TEST_P(ToolFlipTest, FlipModeMirrorsTheOutput) {
    const FlipCase flip = GetParam();
    std::vector<unsigned char> pixels = writeInput("in.png", 11, 6, 3);
    RunResult result = run("effect grey " + inQuotes(path("in.png")) + " " +
                           inQuotes(path("out.png")) + " --flip " + flip.mode);
    ASSERT_EQ(result.status, 0) << result.err;
    Image output = pmStb::loadImage(path("out.png"), false);
    expectGreyImage(
        output, mirrored(expectedGrey(pixels, 11, 6, 3), 11, 6, flip.horizontal, flip.vertical));
    pmUtil::deleteImageData(output);
}

INSTANTIATE_TEST_SUITE_P(Modes, ToolFlipTest,
                         ::testing::Values(FlipCase{"none", false, false},
                                           FlipCase{"h", true, false}, FlipCase{"v", false, true},
                                           FlipCase{"hv", true, true}),
                         [](const ::testing::TestParamInfo<FlipCase>& info) {
                             return std::string(info.param.mode);
                         });

TEST_F(ToolTest, VerboseShowsTheLibraryLog) {
    writeInput("in.png", 4, 4, 3);
    RunResult result = run("effect grey " + inQuotes(path("in.png")) + " " +
                           inQuotes(path("out.png")) + " --verbose");
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.err.find("pmPhotoFilterCreate() - Type : 0"), std::string::npos) << result.err;
}

TEST_F(ToolTest, HelpListsTheEffectCommandAndGrey) {
    RunResult top = run("--help");
    EXPECT_EQ(top.status, 0);
    EXPECT_NE(top.out.find("effect"), std::string::npos) << top.out;
    EXPECT_NE(top.out.find("grey"), std::string::npos) << top.out;

    RunResult effect = run("effect --help");
    EXPECT_EQ(effect.status, 0);
    EXPECT_NE(effect.out.find("--flip"), std::string::npos) << effect.out;
}

TEST_F(ToolTest, UnknownEffectIsRefused) {
    writeInput("in.png", 4, 4, 3);
    RunResult result =
        run("effect sparkle " + inQuotes(path("in.png")) + " " + inQuotes(path("out.png")));
    expectRefused(result, "unknown effect 'sparkle'");
    EXPECT_FALSE(fs::exists(path("out.png")));
}

TEST_F(ToolTest, MissingInputIsRefused) {
    RunResult result =
        run("effect grey " + inQuotes(path("absent.png")) + " " + inQuotes(path("out.png")));
    expectRefused(result, "cannot read image");
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_FALSE(fs::exists(path("out.png")));
}

TEST_F(ToolTest, InputThatIsNoImageIsRefused) {
    std::ofstream(dir / "text.png") << "plain text";
    RunResult result =
        run("effect grey " + inQuotes(path("text.png")) + " " + inQuotes(path("out.png")));
    expectRefused(result, "cannot read image");
    EXPECT_FALSE(fs::exists(path("out.png")));
}

TEST_F(ToolTest, UnwritableOutputIsRefused) {
    writeInput("in.png", 4, 4, 3);
    RunResult result = run("effect grey " + inQuotes(path("in.png")) + " " +
                           inQuotes(path("no/such/dir/out.png")));
    expectRefused(result, "cannot write image");
}

TEST_F(ToolTest, UnknownOutputExtensionIsRefused) {
    writeInput("in.png", 4, 4, 3);
    RunResult result =
        run("effect grey " + inQuotes(path("in.png")) + " " + inQuotes(path("out.gif")));
    expectRefused(result, "must end in .png");
    EXPECT_FALSE(fs::exists(path("out.gif")));
}

TEST_F(ToolTest, UnknownFlipModeIsRefused) {
    writeInput("in.png", 4, 4, 3);
    RunResult result = run("effect grey " + inQuotes(path("in.png")) + " " +
                           inQuotes(path("out.png")) + " --flip diagonal");
    expectRefused(result, "--flip");
    EXPECT_FALSE(fs::exists(path("out.png")));
}

TEST_F(ToolTest, MissingArgumentsAreRefused) {
    expectRefused(run(""), "subcommand");
    expectRefused(run("effect grey"), "IN");
}

struct KernelExpectation {
    int size;
    const char* sigma;
    int steps;
    const char* weights;
    const char* offsets;
};

TEST_F(ToolTest, KernelPrintsTheTableOfTheSmallSizes) {
    const KernelExpectation table[] = {
        {3, "0.23", 1, "0.50000", "0.01742"},
        {7, "0.68", 2, "0.44908 0.05092", "0.53805 2.06278"},
        {11, "1.13", 3, "0.33023 0.15701 0.01276", "0.62184 2.27310 4.14653"},
        {15, "1.59", 4, "0.24961 0.19246 0.05148 0.00645", "0.64434 2.37885 4.29111 6.21661"},
    };
    for (const KernelExpectation& row : table) {
        RunResult result = run("kernel " + std::to_string(row.size));
        ASSERT_EQ(result.status, 0) << result.err;
        const std::string expected = "kernel size " + std::to_string(row.size) + "\nsigma    " +
                                     row.sigma + "\nsteps    " + std::to_string(row.steps) +
                                     "\nweights  " + row.weights + "\noffsets  " + row.offsets +
                                     "\n";
        EXPECT_EQ(result.out, expected);
    }
}

TEST_F(ToolTest, KernelOfLargerSizesFindsTheirSigma) {
    RunResult k31 = run("kernel 31");
    EXPECT_NE(k31.out.find("sigma    3.41\nsteps    8\n"), std::string::npos) << k31.out;
    RunResult k63 = run("kernel 63");
    EXPECT_NE(k63.out.find("sigma    7.05\nsteps    16\n"), std::string::npos) << k63.out;
}

TEST_F(ToolTest, KernelSnapsToAUsableSizeAndPrintsTheShaderText) {
    RunResult result = run("kernel 9 --glsl");
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out.rfind("kernel size 11 (asked for 9)\n", 0), 0u) << result.out;
    EXPECT_NE(result.out.find("const int stepCount = 3;"), std::string::npos);
    EXPECT_NE(result.out.find("vec4 GaussianBlur(sampler2D tex0"), std::string::npos);
    expectRefused(run("kernel many"), "N");
}

TEST_F(ToolTest, BlurOfAConstantPictureIsThatPicture) {
    const int w = 40, h = 30;
    std::vector<unsigned char> pixels(static_cast<size_t>(w) * h * 3);
    for (size_t i = 0; i < pixels.size(); i += 3) {
        pixels[i] = 200;
        pixels[i + 1] = 120;
        pixels[i + 2] = 40;
    }
    ASSERT_TRUE(pmStb::saveImage(path("flat.png"), Image(w, h, 3, pixels.data()), false));
    RunResult result = run("blur " + inQuotes(path("flat.png")) + " " + inQuotes(path("soft.png")) +
                           " --intensity 10");
    ASSERT_EQ(result.status, 0) << result.err;
    Image out = pmStb::loadImage(path("soft.png"), false);
    ASSERT_EQ(out.width, w);
    ASSERT_EQ(out.height, h);
    for (int i = 0; i < w * h; ++i) {
        ASSERT_NEAR(out.data[i * out.channel], 200, 1);
        ASSERT_NEAR(out.data[i * out.channel + 2], 40, 1);
    }
    pmUtil::deleteImageData(out);
}

TEST_F(ToolTest, BlurKeepsTheOrientationAndAppliesDimAndMix) {
    const int w = 32, h = 32;
    std::vector<unsigned char> pixels(static_cast<size_t>(w) * h * 3, 0);
    for (int y = 0; y < h / 2; ++y) {
        for (int x = 0; x < w * 3; ++x) pixels[y * w * 3 + x] = 250;  // bright top half
    }
    ASSERT_TRUE(pmStb::saveImage(path("half.png"), Image(w, h, 3, pixels.data()), false));
    RunResult result = run("blur " + inQuotes(path("half.png")) + " " + inQuotes(path("soft.png")) +
                           " --intensity 1 --kernel 7");
    ASSERT_EQ(result.status, 0) << result.err;
    Image out = pmStb::loadImage(path("soft.png"), false);
    EXPECT_GT(out.data[0], 200);                                              // top row bright
    EXPECT_LT(out.data[(static_cast<size_t>(h) - 1) * w * out.channel], 50);  // bottom dark
    pmUtil::deleteImageData(out);
    result = run("blur " + inQuotes(path("half.png")) + " " + inQuotes(path("red.png")) +
                 " --mix 1,0,0,1");
    ASSERT_EQ(result.status, 0) << result.err;
    out = pmStb::loadImage(path("red.png"), false);
    EXPECT_GE(out.data[0], 254);
    EXPECT_LE(out.data[1], 1);
    pmUtil::deleteImageData(out);
}

// A blur of a ramp stays a ramp: rising along x, its mean kept. --smooth must
// reach the object, so its picture differs from the default quality's.
TEST_F(ToolTest, SmoothBlurKeepsARampRisingAndDiffersFromTheDefault) {
    const int w = 96, h = 16;
    std::vector<unsigned char> pixels(static_cast<size_t>(w) * h * 3);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            for (int c = 0; c < 3; ++c) pixels[(y * w + x) * 3 + c] = (x * 255) / (w - 1);
        }
    }
    ASSERT_TRUE(pmStb::saveImage(path("ramp.png"), Image(w, h, 3, pixels.data()), false));
    const std::string in = inQuotes(path("ramp.png"));
    RunResult result = run("blur " + in + " " + inQuotes(path("default.png")) + " --intensity 5");
    ASSERT_EQ(result.status, 0) << result.err;
    result = run("blur " + in + " " + inQuotes(path("smooth.png")) + " --intensity 5 --smooth");
    ASSERT_EQ(result.status, 0) << result.err;
    Image plain = pmStb::loadImage(path("default.png"), false);
    Image smooth = pmStb::loadImage(path("smooth.png"), false);
    ASSERT_TRUE(plain.isCompatible(smooth));
    const int row = h / 2, ch = smooth.channel;
    long sum = 0;
    int differing = 0;
    for (int x = 0; x < w; ++x) {
        const size_t at = (static_cast<size_t>(row) * w + x) * ch;
        sum += smooth.data[at];
        if (smooth.data[at] != plain.data[at]) ++differing;
        // The dither may move a level either way.
        if (x > 0) {
            EXPECT_GE(smooth.data[at] + 1, smooth.data[at - ch]) << "x " << x;
        }
    }
    EXPECT_NEAR(static_cast<double>(sum) / w, 127.5, 3.0);
    EXPECT_GT(differing, 0);
    pmUtil::deleteImageData(plain);
    pmUtil::deleteImageData(smooth);
}

TEST_F(ToolTest, BlurRefusesAMalformedMixColour) {
    writeInput("in.png", 4, 4, 3);
    expectRefused(
        run("blur " + inQuotes(path("in.png")) + " " + inQuotes(path("out.png")) + " --mix 1,2"),
        "--mix");
    EXPECT_FALSE(fs::exists(path("out.png")));
}

TEST_F(ToolTest, GalleryWritesEveryPictureAndAnIndex) {
    writeInput("in.png", 24, 16, 3);
    fs::create_directories(path("gallery"));
    RunResult result = run("gallery " + inQuotes(path("in.png")) + " " + inQuotes(path("gallery")));
    ASSERT_EQ(result.status, 0) << result.err;
    const std::string index = readFile(path("gallery/index.html"));
    for (const char* file : {"effect-grey.png", "effect-painting.png", "effect-cross-hatch.png",
                             "blur-5.png", "blur-20.png", "blur-40.png"}) {
        EXPECT_TRUE(fs::exists(path(std::string("gallery/") + file))) << file;
        EXPECT_NE(index.find(std::string("src=\"") + file + "\""), std::string::npos) << file;
    }
    EXPECT_NE(index.find("intensity 20"), std::string::npos);
}

TEST_F(ToolTest, GalleryMakesAMissingFolderAndRefusesAFile) {
    writeInput("in.png", 8, 6, 3);
    RunResult made =
        run("gallery " + inQuotes(path("in.png")) + " " + inQuotes(path("new/deeper")));
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_TRUE(fs::exists(path("new/deeper/index.html")));
    std::ofstream(dir / "plain") << "a file";
    expectRefused(run("gallery " + inQuotes(path("in.png")) + " " + inQuotes(path("plain"))),
                  "cannot create folder");
}

TEST_F(ToolTest, EveryEffectNameWritesAPicture) {
    writeInput("in.png", 20, 12, 3);
    for (const char* name : {"grey", "sepia", "bloom", "monotonous-blur", "cartoon", "chroma",
                             "night-vision", "cross-stitch", "painting", "cross-hatch"}) {
        const std::string out = path(std::string(name) + ".png");
        RunResult result = run(std::string("effect ") + name + " " + inQuotes(path("in.png")) +
                               " " + inQuotes(out));
        ASSERT_EQ(result.status, 0) << name << ": " << result.err;
        Image image = pmStb::loadImage(out, false);
        EXPECT_EQ(image.width, 20) << name;
        EXPECT_EQ(image.height, 12) << name;
        pmUtil::deleteImageData(image);
    }
}

TEST_F(ToolTest, LutWithAnIdentityTableGivesThePictureBack) {
    std::vector<unsigned char> pixels = writeInput("in.png", 16, 8, 3);
    const int n = 16;
    std::vector<unsigned char> table(static_cast<size_t>(n) * n * n * 3);
    for (int y = 0; y < n; ++y) {
        for (int x = 0; x < n * n; ++x) {
            unsigned char* p = &table[(static_cast<size_t>(y) * n * n + x) * 3];
            p[0] = static_cast<unsigned char>((x % n) * 255 / (n - 1));
            p[1] = static_cast<unsigned char>(y * 255 / (n - 1));
            p[2] = static_cast<unsigned char>((x / n) * 255 / (n - 1));
        }
    }
    ASSERT_TRUE(pmStb::saveImage(path("table.png"), Image(n * n, n, 3, table.data()), false));
    RunResult result = run("lut " + inQuotes(path("in.png")) + " " + inQuotes(path("table.png")) +
                           " " + inQuotes(path("out.png")));
    ASSERT_EQ(result.status, 0) << result.err;
    Image out = pmStb::loadImage(path("out.png"), false);
    ASSERT_EQ(out.width, 16);
    for (size_t i = 0; i < pixels.size(); ++i) {
        ASSERT_NEAR(out.data[i], pixels[i], 2) << i;
    }
    pmUtil::deleteImageData(out);
    expectRefused(run("lut " + inQuotes(path("in.png")) + " " + inQuotes(path("in.png")) + " " +
                      inQuotes(path("bad.png"))),
                  "N*N pixels wide");
}

}  // namespace
