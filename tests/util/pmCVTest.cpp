#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "ScratchDirectory.h"
#include "pmCV.h"
#include "pmUtil.h"

namespace {

namespace fs = std::filesystem;
using Image = pmUtil::ImageData<unsigned char>;
using Palette = std::vector<pmUtil::Color<unsigned char>>;

const char* const kFaceCascade =
    "/usr/share/opencv4/haarcascades/haarcascade_frontalface_default.xml";

// An image that owns its pixels in a vector, filled with one value.
struct OwnedImage {
    std::vector<unsigned char> pixels;
    Image image;

    OwnedImage(int width, int height, int channel, unsigned char value = 0)
        : pixels(static_cast<size_t>(width) * height * channel, value),
          image(width, height, channel, nullptr) {
        image.data = pixels.data();
    }

    unsigned char* at(int x, int y) {
        return pixels.data() + (static_cast<size_t>(y) * image.width + x) * image.channel;
    }

    void fill(std::initializer_list<unsigned char> color) {
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) std::copy(color.begin(), color.end(), at(x, y));
        }
    }
};

// Pixels whose every byte tells its row, column and channel apart.
OwnedImage patternImage(int width, int height, int channel) {
    OwnedImage owned(width, height, channel);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < channel; ++c) {
                owned.at(x, y)[c] = static_cast<unsigned char>(y * 37 + x * 11 + c * 71);
            }
        }
    }
    return owned;
}

bool hasColor(const Palette& palette, int r, int g, int b) {
    return std::any_of(palette.begin(), palette.end(), [&](const pmUtil::Color<unsigned char>& c) {
        return c.r == r && c.g == g && c.b == b;
    });
}

// A fresh directory under /tmp for one test, removed afterwards.
class CVFileTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(scratch.created()); }

    std::string path(const std::string& name) const { return scratch.file(name); }

    // Writes a motion JPEG file of `count` frames, each of one colour: frame
    // i is red for even i and blue for odd i.
    void writeVideo(const std::string& file, int count, int width, int height) {
        pmCV::VideoWriter writer;
        ASSERT_TRUE(pmCV::createVideoWriter(writer, file, 10.0f, width, height));
        OwnedImage frame(width, height, 3);
        for (int i = 0; i < count; ++i) {
            if (i % 2 == 0) {
                frame.fill({255, 0, 0});
            } else {
                frame.fill({0, 0, 255});
            }
            ASSERT_TRUE(pmCV::writeVideoFrame(writer, frame.image));
        }
        pmCV::deleteVideoWriter(writer);
    }

    ScratchDirectory scratch{"pixmora-cv"};
};

void expectNear(const unsigned char* pixel, int r, int g, int b, int tolerance) {
    EXPECT_NEAR(pixel[0], r, tolerance);
    EXPECT_NEAR(pixel[1], g, tolerance);
    EXPECT_NEAR(pixel[2], b, tolerance);
}

// --- Formats --------------------------------------------------------------------------

TEST(CVFormat, ChannelCountsMapToOpenCVTypes) {
    EXPECT_EQ(pmCV::getImageFormat(1), 0);
    EXPECT_EQ(pmCV::getImageFormat(2), 8);
    EXPECT_EQ(pmCV::getImageFormat(3), 16);
    EXPECT_EQ(pmCV::getImageFormat(4), 24);
    EXPECT_EQ(pmCV::getImageChannel(0), 1);
    EXPECT_EQ(pmCV::getImageChannel(8), 2);
    EXPECT_EQ(pmCV::getImageChannel(16), 3);
    EXPECT_EQ(pmCV::getImageChannel(24), 4);
}

TEST(CVFormat, UnsupportedInputLogsAndGivesZero) {
    LogCapture log;
    EXPECT_EQ(pmCV::getImageFormat(5), 0);
    EXPECT_EQ(pmCV::getImageChannel(5), 0);
    EXPECT_EQ(log.countEndingWith("> unsupported channel type (5)\n"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> unsupported cv format (5)\n"), 1) << log.dump();
    for (const LogLine& line : log.lines()) EXPECT_EQ(line.priority, 6);
}

TEST(CVFormat, InterpolationMethodsAreOpenCVFlags) {
    EXPECT_EQ(static_cast<int>(pmCV::InterNearest), static_cast<int>(cv::INTER_NEAREST));
    EXPECT_EQ(static_cast<int>(pmCV::InterLinear), static_cast<int>(cv::INTER_LINEAR));
    EXPECT_EQ(static_cast<int>(pmCV::InterArea), static_cast<int>(cv::INTER_AREA));
}

// --- Image files ----------------------------------------------------------------------

TEST_F(CVFileTest, LoadMissingFileGivesEmptyImage) {
    LogCapture log;
    const std::string file = path("missing.png");
    Image image = pmCV::loadImage(file, false, true);
    EXPECT_EQ(image.width, 0);
    EXPECT_EQ(image.height, 0);
    EXPECT_EQ(image.channel, 0);
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(log.countEndingWith("> Failed to load " + file + ".\n"), 1) << log.dump();
}

TEST_F(CVFileTest, SaveAndLoadKeepRGBOrder) {
    OwnedImage source = patternImage(5, 3, 3);
    const std::string file = path("rgb.png");
    LogCapture log;
    ASSERT_TRUE(pmCV::saveImage(file, source.image, false));
    EXPECT_EQ(log.countEndingWith("> filename = " + file + ", info = (5 x 3 x 3), flip = 0\n"), 1)
        << log.dump();

    // The file itself is in OpenCV's BGR order.
    cv::Mat onDisk = cv::imread(file, cv::IMREAD_UNCHANGED);
    ASSERT_EQ(onDisk.channels(), 3);
    EXPECT_EQ(onDisk.at<cv::Vec3b>(1, 2)[0], source.at(2, 1)[2]);
    EXPECT_EQ(onDisk.at<cv::Vec3b>(1, 2)[2], source.at(2, 1)[0]);

    Image loaded = pmCV::loadImage(file, false, true);
    ASSERT_NE(loaded.data, nullptr);
    EXPECT_TRUE(loaded.useFree);
    EXPECT_EQ(loaded.width, 5);
    EXPECT_EQ(loaded.height, 3);
    EXPECT_EQ(loaded.channel, 3);
    EXPECT_TRUE(std::equal(source.pixels.begin(), source.pixels.end(), loaded.data));
    pmUtil::deleteImageData(loaded);
}

TEST_F(CVFileTest, SaveAndLoadRGBAWithFlip) {
    OwnedImage source = patternImage(4, 3, 4);
    const std::string file = path("rgba.png");
    ASSERT_TRUE(pmCV::saveImage(file, source.image, true));
    Image loaded = pmCV::loadImage(file, true, false);
    ASSERT_EQ(loaded.channel, 4);
    // Flipped twice: the original rows in their original order.
    EXPECT_TRUE(std::equal(source.pixels.begin(), source.pixels.end(), loaded.data));
    pmUtil::deleteImageData(loaded);

    Image once = pmCV::loadImage(file, false, false);
    ASSERT_EQ(once.channel, 4);
    EXPECT_TRUE(std::equal(source.at(0, 2), source.at(0, 2) + 16, once.data));
    pmUtil::deleteImageData(once);
}

TEST_F(CVFileTest, GreyLoadWithoutForceColourKeepsOneChannel) {
    OwnedImage source = patternImage(6, 4, 1);
    const std::string file = path("grey.png");
    ASSERT_TRUE(pmCV::saveImage(file, source.image, false));

    Image grey = pmCV::loadImage(file, false, false);
    ASSERT_NE(grey.data, nullptr);
    EXPECT_EQ(grey.channel, 1);
    EXPECT_TRUE(std::equal(source.pixels.begin(), source.pixels.end(), grey.data));
    pmUtil::deleteImageData(grey);

    Image colour = pmCV::loadImage(file, false, true);
    ASSERT_NE(colour.data, nullptr);
    EXPECT_EQ(colour.channel, 3);
    EXPECT_EQ(colour.data[3 * 7 + 0], source.pixels[7]);
    EXPECT_EQ(colour.data[3 * 7 + 2], source.pixels[7]);
    pmUtil::deleteImageData(colour);
}

TEST_F(CVFileTest, SaveWithoutPixelsIsRefused) {
    LogCapture log;
    Image empty;
    EXPECT_FALSE(pmCV::saveImage(path("none.png"), empty, false));
    EXPECT_EQ(log.countEndingWith("> No image data to save.\n"), 1) << log.dump();
    EXPECT_FALSE(fs::exists(path("none.png")));
}

TEST_F(CVFileTest, SaveIntoMissingDirectoryFails) {
    OwnedImage source = patternImage(2, 2, 3);
    const std::string file = path("no/such/dir/a.png");
    LogCapture log;
    EXPECT_FALSE(pmCV::saveImage(file, source.image, false));
    EXPECT_EQ(log.countEndingWith("> Failed to save " + file + ".\n"), 1) << log.dump();
}

TEST_F(CVFileTest, SaveWithUnknownExtensionFails) {
    OwnedImage source = patternImage(2, 2, 3);
    const std::string file = path("a.xyz");
    LogCapture log;
    EXPECT_FALSE(pmCV::saveImage(file, source.image, false));
    EXPECT_EQ(log.countEndingWith("> Failed to save " + file + ".\n"), 1) << log.dump();
    EXPECT_FALSE(fs::exists(file));
}

// --- Video files ----------------------------------------------------------------------

TEST_F(CVFileTest, VideoWrittenAndReadBack) {
    const std::string file = path("clip.avi");
    writeVideo(file, 5, 64, 48);

    pmCV::VideoData video;
    ASSERT_TRUE(pmCV::createVideoCapture(video, file));
    EXPECT_NE(video.capture, nullptr);
    EXPECT_EQ(video.width, 64);
    EXPECT_EQ(video.height, 48);
    EXPECT_EQ(video.channel, 3);
    EXPECT_EQ(video.frameCount, 5);

    OwnedImage frame(64, 48, 3);
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(pmCV::readVideoCapture(video, frame.image)) << i;
        EXPECT_EQ(video.currentFrame, i);
        if (i % 2 == 0) {
            expectNear(frame.at(10, 10), 255, 0, 0, 8);
        } else {
            expectNear(frame.at(10, 10), 0, 0, 255, 8);
        }
    }
    EXPECT_FALSE(pmCV::readVideoCapture(video, frame.image));

    ASSERT_TRUE(pmCV::setVideoCapturePosition(video, 1));
    ASSERT_TRUE(pmCV::readVideoCapture(video, frame.image));
    EXPECT_EQ(video.currentFrame, 1);
    expectNear(frame.at(10, 10), 0, 0, 255, 8);

    pmCV::deleteVideoCapture(video);
    EXPECT_EQ(video.capture, nullptr);
    pmCV::deleteVideoCapture(video);
}

TEST_F(CVFileTest, VideoReadIntoWrongSizeLogsAssertion) {
    const std::string file = path("clip.avi");
    writeVideo(file, 2, 32, 32);
    pmCV::VideoData video;
    ASSERT_TRUE(pmCV::createVideoCapture(video, file));
    OwnedImage wrong(16, 16, 3, 7);
    LogCapture log;
    pmCV::readVideoCapture(video, wrong.image);
    EXPECT_EQ(log.countEndingWith("> context.width == image.getWidth() && context.height == "
                                  "image.getHeight() && context.channel == image.getChannel()"),
              1)
        << log.dump();
    // The frame does not fit, so the caller's pixels are left alone.
    EXPECT_TRUE(std::all_of(wrong.pixels.begin(), wrong.pixels.end(),
                            [](unsigned char v) { return v == 7; }));
    pmCV::deleteVideoCapture(video);
}

TEST_F(CVFileTest, VideoCaptureOfMissingFileFails) {
    const std::string file = path("missing.avi");
    pmCV::VideoData video;
    LogCapture log;
    EXPECT_FALSE(pmCV::createVideoCapture(video, file));
    EXPECT_EQ(video.capture, nullptr);
    EXPECT_EQ(log.countEndingWith("> unable to open " + file + ".\n"), 1) << log.dump();
}

TEST_F(CVFileTest, VideoCaptureWithoutStreamIsRefused) {
    pmCV::VideoData video;
    OwnedImage frame(4, 4, 3);
    LogCapture log;
    EXPECT_FALSE(pmCV::readVideoCapture(video, frame.image));
    EXPECT_FALSE(pmCV::setVideoCapturePosition(video, 0));
    EXPECT_EQ(log.countEndingWith("> the video capture is not opened.\n"), 2) << log.dump();
    pmCV::deleteVideoCapture(video);
}

TEST_F(CVFileTest, SecondCreateReplacesTheCapture) {
    const std::string first = path("a.avi");
    const std::string second = path("b.avi");
    writeVideo(first, 3, 32, 16);
    writeVideo(second, 2, 16, 32);
    pmCV::VideoData video;
    ASSERT_TRUE(pmCV::createVideoCapture(video, first));
    ASSERT_TRUE(pmCV::createVideoCapture(video, second));
    EXPECT_EQ(video.width, 16);
    EXPECT_EQ(video.height, 32);
    EXPECT_EQ(video.frameCount, 2);
    pmCV::deleteVideoCapture(video);
}

TEST_F(CVFileTest, VideoWriterTakesRGBAFrames) {
    const std::string file = path("rgba.avi");
    pmCV::VideoWriter writer;
    ASSERT_TRUE(pmCV::createVideoWriter(writer, file, 25.0f, 32, 32));
    EXPECT_TRUE(pmCV::isOpened(writer));
    EXPECT_EQ(writer.width, 32);
    EXPECT_EQ(writer.height, 32);
    OwnedImage frame(32, 32, 4);
    frame.fill({0, 255, 0, 0});
    EXPECT_TRUE(pmCV::writeVideoFrame(writer, frame.image));
    pmCV::deleteVideoWriter(writer);
    EXPECT_EQ(writer.writer, nullptr);
    EXPECT_FALSE(pmCV::isOpened(writer));

    pmCV::VideoData video;
    ASSERT_TRUE(pmCV::createVideoCapture(video, file));
    OwnedImage read(32, 32, 3);
    ASSERT_TRUE(pmCV::readVideoCapture(video, read.image));
    expectNear(read.at(5, 5), 0, 255, 0, 8);
    pmCV::deleteVideoCapture(video);
}

TEST_F(CVFileTest, VideoWriterRefusesOneChannel) {
    pmCV::VideoWriter writer;
    ASSERT_TRUE(pmCV::createVideoWriter(writer, path("grey.avi"), 10.0f, 16, 16));
    OwnedImage grey(16, 16, 1);
    LogCapture log;
    EXPECT_FALSE(pmCV::writeVideoFrame(writer, grey.image));
    EXPECT_EQ(log.countEndingWith("> channel mismatch.\n"), 1) << log.dump();
    pmCV::deleteVideoWriter(writer);
}

TEST_F(CVFileTest, VideoWriterSizeMismatchLogsAssertion) {
    pmCV::VideoWriter writer;
    ASSERT_TRUE(pmCV::createVideoWriter(writer, path("size.avi"), 10.0f, 16, 16));
    OwnedImage frame(8, 16, 3);
    LogCapture log;
    EXPECT_FALSE(pmCV::writeVideoFrame(writer, frame.image));
    EXPECT_EQ(log.countEndingWith(
                  "> context.width == image.getWidth() && context.height == image.getHeight()"),
              1)
        << log.dump();
    pmCV::deleteVideoWriter(writer);
}

TEST_F(CVFileTest, VideoWriterFailures) {
    pmCV::VideoWriter writer;
    OwnedImage frame(16, 16, 3);
    LogCapture log;
    EXPECT_FALSE(pmCV::writeVideoFrame(writer, frame.image));
    EXPECT_EQ(log.countEndingWith("> the video writer is not opened.\n"), 1) << log.dump();
    EXPECT_FALSE(pmCV::isOpened(writer));

    const std::string file = path("no/such/dir/out.avi");
    EXPECT_FALSE(pmCV::createVideoWriter(writer, file, 10.0f, 16, 16));
    EXPECT_EQ(writer.writer, nullptr);
    EXPECT_FALSE(pmCV::isOpened(writer));
    EXPECT_EQ(log.countEndingWith("> unable to open " + file + ".\n"), 1) << log.dump();
    pmCV::deleteVideoWriter(writer);
}

// --- Camera ---------------------------------------------------------------------------

TEST(CVCamera, MissingCameraFailsToOpen) {
    pmCV::CameraData camera;
    LogCapture log;
    EXPECT_FALSE(pmCV::createCameraCapture(camera, 97, 640, 480));
    EXPECT_EQ(camera.capture, nullptr);
    EXPECT_EQ(log.countEndingWith("> unable to open camera 97.\n"), 1) << log.dump();

    OwnedImage frame(640, 480, 3);
    EXPECT_FALSE(pmCV::readCameraCapture(camera, frame.image));
    EXPECT_EQ(log.countEndingWith("> the camera capture is not opened.\n"), 1) << log.dump();
    pmCV::deleteCameraCapture(camera);
    EXPECT_EQ(camera.capture, nullptr);
}

// --- Face detection -------------------------------------------------------------------

TEST(CVFaces, PackagedCascadeLoads) {
    pmCV::DetectionData detection;
    ASSERT_TRUE(pmCV::createFaceDetection(detection, kFaceCascade));
    EXPECT_NE(detection.classifier, nullptr);
    // A second load replaces the first.
    ASSERT_TRUE(pmCV::createFaceDetection(detection, kFaceCascade));
    pmCV::deleteFaceDetection(detection);
    EXPECT_EQ(detection.classifier, nullptr);
    pmCV::deleteFaceDetection(detection);
}

TEST(CVFaces, MissingCascadeFails) {
    pmCV::DetectionData detection;
    LogCapture log;
    EXPECT_FALSE(pmCV::createFaceDetection(detection, "/tmp/pixmora-no-such-cascade.xml"));
    EXPECT_EQ(detection.classifier, nullptr);
    EXPECT_EQ(log.countEndingWith("> Failed to load face cascade.\n"), 1) << log.dump();
}

TEST(CVFaces, DetectionRunsOnGreyPicture) {
    pmCV::DetectionData detection;
    ASSERT_TRUE(pmCV::createFaceDetection(detection, kFaceCascade));
    OwnedImage picture = patternImage(160, 120, 1);
    std::vector<pmUtil::Rect<int>> faces(2);
    ASSERT_TRUE(pmCV::detectFaces(detection, picture.image, faces));
    for (const auto& face : faces) {
        EXPECT_GE(face.width, 30);
        EXPECT_GE(face.height, 30);
    }
    pmCV::deleteFaceDetection(detection);
}

TEST(CVFaces, ColourPictureIsRefusedWithoutTouchingOutput) {
    pmCV::DetectionData detection;
    ASSERT_TRUE(pmCV::createFaceDetection(detection, kFaceCascade));
    OwnedImage picture(64, 64, 3);
    std::vector<pmUtil::Rect<int>> faces{pmUtil::Rect<int>(1, 2, 3, 4)};
    LogCapture log;
    EXPECT_FALSE(pmCV::detectFaces(detection, picture.image, faces));
    EXPECT_EQ(log.countEndingWith("> An input image must be gray.\n"), 1) << log.dump();
    ASSERT_EQ(faces.size(), 1u);
    EXPECT_EQ(faces[0].x, 1);
    EXPECT_EQ(faces[0].y, 2);
    EXPECT_EQ(faces[0].width, 3);
    EXPECT_EQ(faces[0].height, 4);
    pmCV::deleteFaceDetection(detection);
}

// --- Resizing and conversions ---------------------------------------------------------

TEST(CVConvert, ResizeNearest) {
    OwnedImage input(2, 2, 3);
    input.fill({10, 20, 30});
    std::copy_n(std::vector<unsigned char>{200, 100, 50}.begin(), 3, input.at(1, 1));
    OwnedImage output(4, 4, 3);
    ASSERT_TRUE(pmCV::resizeImage(input.image, output.image, pmCV::InterNearest));
    expectNear(output.at(0, 0), 10, 20, 30, 0);
    expectNear(output.at(3, 3), 200, 100, 50, 0);
    expectNear(output.at(2, 2), 200, 100, 50, 0);
    expectNear(output.at(1, 1), 10, 20, 30, 0);
}

TEST(CVConvert, ResizeRefusesChannelMismatch) {
    OwnedImage input(2, 2, 3, 9);
    OwnedImage output(4, 4, 4, 1);
    EXPECT_FALSE(pmCV::resizeImage(input.image, output.image, pmCV::InterLinear));
    EXPECT_EQ(output.pixels[0], 1);
}

TEST(CVConvert, GrayWeighsChannelsAsBGR) {
    OwnedImage rgb(2, 1, 3);
    rgb.fill({255, 0, 0});
    OwnedImage grey(2, 1, 1);
    ASSERT_TRUE(pmCV::convertColor2Gray(rgb.image, grey.image));
    // The first channel is taken as blue: 0.114 * 255.
    EXPECT_EQ(grey.pixels[0], 29);

    OwnedImage rgba(2, 1, 4);
    rgba.fill({0, 0, 255, 0});
    ASSERT_TRUE(pmCV::convertColor2Gray(rgba.image, grey.image));
    EXPECT_EQ(grey.pixels[1], 76);
}

TEST(CVConvert, GrayRefusals) {
    OwnedImage two(2, 2, 2);
    OwnedImage grey(2, 2, 1, 5);
    LogCapture log;
    EXPECT_FALSE(pmCV::convertColor2Gray(two.image, grey.image));
    EXPECT_EQ(log.countEndingWith("> Unsupported channel size (2).\n"), 1) << log.dump();
    OwnedImage rgb(3, 2, 3);
    EXPECT_FALSE(pmCV::convertColor2Gray(rgb.image, grey.image));
    EXPECT_EQ(log.countEndingWith("> Input or output format is not correct.\n"), 1) << log.dump();
    EXPECT_EQ(grey.pixels[0], 5);
}

TEST(CVConvert, YCrCbBothWays) {
    OwnedImage rgb(1, 1, 3);
    rgb.fill({255, 0, 0});
    OwnedImage yuv(1, 1, 3);
    ASSERT_TRUE(pmCV::convertRGB888ToYUV444(rgb.image, yuv.image));
    // Y, Cr, Cb of pure red.
    expectNear(yuv.at(0, 0), 76, 255, 85, 1);

    OwnedImage bgrAsYuv(1, 1, 3);
    ASSERT_TRUE(pmCV::convertBGR888ToYUV444(rgb.image, bgrAsYuv.image));
    // The same bytes read as BGR are pure blue.
    expectNear(bgrAsYuv.at(0, 0), 29, 107, 255, 1);

    OwnedImage back(1, 1, 3);
    OwnedImage grey(1, 1, 3);
    grey.fill({90, 140, 200});
    ASSERT_TRUE(pmCV::convertRGB888ToYUV444(grey.image, yuv.image));
    ASSERT_TRUE(pmCV::convertYUV444ToRGB888(yuv.image, back.image));
    expectNear(back.at(0, 0), 90, 140, 200, 2);
    ASSERT_TRUE(pmCV::convertYUV444ToBGR888(yuv.image, back.image));
    expectNear(back.at(0, 0), 200, 140, 90, 2);
}

TEST(CVConvert, AlphaAddedAndDropped) {
    OwnedImage rgba(2, 2, 4);
    rgba.fill({1, 2, 3, 4});
    OwnedImage rgb(2, 2, 3);
    ASSERT_TRUE(pmCV::convertRGBAToRGB(rgba.image, rgb.image));
    expectNear(rgb.at(1, 1), 1, 2, 3, 0);
    rgba.fill({9, 8, 7, 6});
    ASSERT_TRUE(pmCV::convertBGRAToBGR(rgba.image, rgb.image));
    expectNear(rgb.at(0, 1), 9, 8, 7, 0);

    OwnedImage out(2, 2, 4);
    ASSERT_TRUE(pmCV::convertRGBToRGBA(rgb.image, out.image));
    EXPECT_EQ(out.at(1, 0)[0], 9);
    EXPECT_EQ(out.at(1, 0)[2], 7);
    EXPECT_EQ(out.at(1, 0)[3], 255);
    out.fill({0, 0, 0, 0});
    ASSERT_TRUE(pmCV::convertBGRToBGRA(rgb.image, out.image));
    EXPECT_EQ(out.at(0, 0)[3], 255);
}

TEST(CVConvert, FormatMismatchIsLoggedWithoutConverting) {
    OwnedImage rgb(2, 2, 3, 50);
    OwnedImage wrongSize(3, 2, 3, 1);
    OwnedImage wrongChannel(2, 2, 4, 1);
    LogCapture log;
    EXPECT_FALSE(pmCV::convertRGB888ToYUV444(rgb.image, wrongSize.image));
    EXPECT_FALSE(pmCV::convertYUV444ToBGR888(rgb.image, wrongChannel.image));
    EXPECT_FALSE(pmCV::convertRGBAToRGB(rgb.image, wrongSize.image));
    EXPECT_FALSE(pmCV::convertRGBToRGBA(wrongChannel.image, wrongChannel.image));
    EXPECT_EQ(log.countEndingWith("> Input or output format is not correct.\n"), 4) << log.dump();
    EXPECT_EQ(wrongSize.pixels[0], 1);
    EXPECT_EQ(wrongChannel.pixels[0], 1);
}

// --- Colour palettes ------------------------------------------------------------------

TEST(CVPalette, TwoColoursInImageOrder) {
    OwnedImage image(20, 10, 3);
    image.fill({255, 0, 0});
    for (int y = 0; y < 10; ++y) {
        for (int x = 10; x < 20; ++x)
            std::copy_n(std::vector<unsigned char>{0, 0, 255}.begin(), 3, image.at(x, y));
    }
    Palette palette{pmUtil::Color<unsigned char>(1, 1, 1)};
    pmCV::generateColorPalette(image.image, 2, palette);
    ASSERT_EQ(palette.size(), 2u);
    EXPECT_TRUE(hasColor(palette, 255, 0, 0));
    EXPECT_TRUE(hasColor(palette, 0, 0, 255));
}

TEST(CVPalette, GreyAndRGBAImagesAreWidenedOrNarrowed) {
    OwnedImage grey(8, 8, 1, 77);
    Palette palette;
    pmCV::generateColorPalette(grey.image, 1, palette);
    ASSERT_EQ(palette.size(), 1u);
    EXPECT_TRUE(hasColor(palette, 77, 77, 77));

    OwnedImage rgba(8, 8, 4);
    rgba.fill({10, 20, 30, 40});
    pmCV::generateColorPalette(rgba.image, 1, palette);
    ASSERT_EQ(palette.size(), 1u);
    EXPECT_TRUE(hasColor(palette, 10, 20, 30));
}

// One distinct pixel on black: with two colours it is found exactly when it
// is among the samples.
bool paletteFindsPixel(int width, int height, int x, int y) {
    OwnedImage image(width, height, 3);
    std::copy_n(std::vector<unsigned char>{200, 100, 50}.begin(), 3, image.at(x, y));
    Palette palette;
    pmCV::generateColorPalette(image.image, 2, palette);
    return hasColor(palette, 200, 100, 50);
}

TEST(CVPalette, SamplingOfLargeImages) {
    // Below the limit every pixel is a sample: 4999 pixels.
    EXPECT_TRUE(paletteFindsPixel(1, 4999, 0, 4998));
    // Exactly the limit is resized at its own size: nothing is lost.
    EXPECT_TRUE(paletteFindsPixel(50, 100, 1, 1));
    EXPECT_TRUE(paletteFindsPixel(50, 100, 49, 99));
    // Above it, rows and columns are halved together: 3 x 1667 becomes 1 x 833.
    EXPECT_FALSE(paletteFindsPixel(3, 1667, 1, 1));
    // 10 x 10000 becomes 2 x 2500, sampling every fifth column and fourth row.
    EXPECT_FALSE(paletteFindsPixel(10, 10000, 1, 1));
    EXPECT_TRUE(paletteFindsPixel(10, 10000, 5, 4));
}

TEST(CVPalette, CountAboveSampleCountThrows) {
    OwnedImage small = patternImage(3, 4, 3);
    Palette palette;
    EXPECT_NO_THROW(pmCV::generateColorPalette(small.image, 12, palette));
    EXPECT_EQ(palette.size(), 12u);
    EXPECT_THROW(pmCV::generateColorPalette(small.image, 13, palette), cv::Exception);

    // 10 x 10000 is sampled to 5000 pixels.
    OwnedImage tall(10, 10000, 3);
    EXPECT_THROW(pmCV::generateColorPalette(tall.image, 5001, palette), cv::Exception);
}

TEST(CVPalette, SeveralImages) {
    OwnedImage red(50, 50, 3);
    red.fill({255, 0, 0});
    OwnedImage blue(10, 7, 4);
    blue.fill({0, 0, 255, 255});
    OwnedImage grey(64, 64, 1, 100);
    std::vector<Image> images{red.image, blue.image, grey.image};
    Palette palette;
    pmCV::generateColorPalette(images, 3, palette);
    ASSERT_EQ(palette.size(), 3u);
    EXPECT_TRUE(hasColor(palette, 255, 0, 0));
    EXPECT_TRUE(hasColor(palette, 0, 0, 255));
    EXPECT_TRUE(hasColor(palette, 100, 100, 100));

    // Each image gives 2500 samples.
    EXPECT_THROW(pmCV::generateColorPalette(images, 7501, palette), cv::Exception);
}

TEST(CVPalette, NoImagesIsRefused) {
    Palette palette{pmUtil::Color<unsigned char>(1, 2, 3)};
    LogCapture log;
    pmCV::generateColorPalette(std::vector<Image>(), 3, palette);
    EXPECT_EQ(log.countEndingWith("> Please set images first.\n"), 1) << log.dump();
    EXPECT_EQ(palette.size(), 1u);
}

}  // namespace

// ---- Hostile input

namespace {

TEST_F(CVFileTest, VideoReadIntoWrongSizeReturnsFalse) {
    const std::string file = path("clip.avi");
    writeVideo(file, 2, 32, 32);
    pmCV::VideoData video;
    ASSERT_TRUE(pmCV::createVideoCapture(video, file));
    OwnedImage wrong(16, 16, 3, 7);
    LogCapture log;
    EXPECT_FALSE(pmCV::readVideoCapture(video, wrong.image));
    EXPECT_EQ(log.countEndingWith("> The frame does not fit the image.\n"), 1) << log.dump();
    OwnedImage grey(32, 32, 1, 7);
    EXPECT_FALSE(pmCV::readVideoCapture(video, grey.image));
    EXPECT_TRUE(std::all_of(grey.pixels.begin(), grey.pixels.end(),
                            [](unsigned char v) { return v == 7; }));
    pmCV::deleteVideoCapture(video);
}

TEST_F(CVFileTest, TruncatedCascadeIsRefusedWithoutAnException) {
    std::ifstream in(kFaceCascade, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ASSERT_GT(text.size(), 4000u);
    {
        std::ofstream out(path("cut.xml"), std::ios::binary);
        out << text.substr(0, 3000);
    }
    pmCV::DetectionData detection;
    LogCapture log;
    bool created = true;
    EXPECT_NO_THROW(created = pmCV::createFaceDetection(detection, path("cut.xml")));
    EXPECT_FALSE(created);
    EXPECT_EQ(detection.classifier, nullptr);
    EXPECT_EQ(log.countEndingWith("> Failed to load face cascade.\n"), 1) << log.dump();
}

TEST_F(CVFileTest, SixteenBitPngComesBackAsEightBit) {
    cv::Mat deep(2, 3, CV_16UC3);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x) {
            deep.at<cv::Vec3w>(y, x) = cv::Vec3w(257 * (10 * x), 257 * (50 + y), 65535);
        }
    }
    ASSERT_TRUE(cv::imwrite(path("deep.png"), deep));
    Image image = pmCV::loadImage(path("deep.png"), false, false);
    ASSERT_NE(image.data, nullptr);
    EXPECT_EQ(image.channel, 3);
    // RGB order: red was the third of OpenCV's BGR values.
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x) {
            const unsigned char* p = image.data + (y * 3 + x) * 3;
            EXPECT_EQ(p[0], 255);
            EXPECT_EQ(p[1], 50 + y);
            EXPECT_EQ(p[2], 10 * x);
        }
    }
    pmUtil::deleteImageData(image);
}

TEST(CVHostile, ImagesWithoutPixelsOrWithBadSizesAreRefused) {
    OwnedImage good(4, 4, 3, 9);
    OwnedImage goodGrey(4, 4, 1, 9);
    const Image bad[] = {Image(4, 4, 3, nullptr), Image(-4, 4, 3, good.pixels.data()),
                         Image(4, 0, 3, good.pixels.data()), Image(4, 4, 7, good.pixels.data()),
                         Image(1, 1, 0, good.pixels.data())};
    Palette palette;
    std::vector<pmUtil::Rect<int>> faces;
    pmCV::DetectionData detection;
    ASSERT_TRUE(pmCV::createFaceDetection(detection, kFaceCascade));
    for (const Image& image : bad) {
        Image out = image;
        EXPECT_NO_THROW({
            EXPECT_FALSE(pmCV::saveImage("/tmp/pixmora-never.png", image, false));
            EXPECT_FALSE(pmCV::resizeImage(image, good.image, pmCV::InterNearest));
            EXPECT_FALSE(pmCV::resizeImage(good.image, out, pmCV::InterNearest));
            EXPECT_FALSE(pmCV::convertColor2Gray(image, goodGrey.image));
            EXPECT_FALSE(pmCV::convertRGB888ToYUV444(image, good.image));
            EXPECT_FALSE(pmCV::convertRGB888ToYUV444(good.image, out));
            pmCV::generateColorPalette(image, 2, palette);
            pmCV::generateColorPalette(std::vector<Image>{good.image, image}, 2, palette);
            Image grey = image;
            grey.channel = 1;
            pmCV::detectFaces(detection, grey, faces);
        });
    }
    pmCV::deleteFaceDetection(detection);
}

}  // namespace
