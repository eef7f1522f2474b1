// The OpenCV bridge. Every image is wrapped as a cv::Mat over its own pixels,
// without copying, and the RGB to BGR conversion is made at each edge.
#include "pmCV.h"

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>
#include <opencv2/videoio.hpp>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace pmCV {

static_assert(static_cast<int>(InterNearest) == cv::INTER_NEAREST &&
                  static_cast<int>(InterLinear) == cv::INTER_LINEAR &&
                  static_cast<int>(InterCubic) == cv::INTER_CUBIC &&
                  static_cast<int>(InterArea) == cv::INTER_AREA &&
                  static_cast<int>(InterLanczos4) == cv::INTER_LANCZOS4 &&
                  static_cast<int>(InterLinearExact) == cv::INTER_LINEAR_EXACT &&
                  static_cast<int>(InterNearestExact) == cv::INTER_NEAREST_EXACT,
              "interpolation methods follow OpenCV's flags");

namespace {

// Large images are sampled down to at most this many pixels for a palette.
constexpr int kPaletteSampleLimit = 5000;
// Each image of a palette over several images is sampled at this size.
constexpr int kPaletteImageSide = 50;

using Image = pmUtil::ImageData<unsigned char>;

// Whether the image can be wrapped: pixels, a positive size and 1 to 4
// channels whose byte count fits an int. OpenCV throws on anything else.
bool isWrappable(const Image& image) {
    const bool valid =
        image.data != nullptr && image.width > 0 && image.height > 0 && image.channel >= 1 &&
        image.channel <= 4 &&
        static_cast<std::int64_t>(image.width) * image.height * image.channel <= INT_MAX;
    if (!valid) {
        PM_LOGE("Invalid image (%d x %d x %d).\n", image.width, image.height, image.channel);
    }
    return valid;
}

// A Mat over the image's own pixels.
cv::Mat wrapImage(const Image& image) {
    return cv::Mat(image.height, image.width, getImageFormat(image.channel), image.data);
}

// Three channels for k-means: gray is widened, an alpha channel dropped.
cv::Mat toThreeChannels(const cv::Mat& mat) {
    cv::Mat result;
    if (mat.channels() == 1) {
        cv::cvtColor(mat, result, cv::COLOR_GRAY2BGR);
    } else if (mat.channels() == 4) {
        cv::cvtColor(mat, result, cv::COLOR_BGRA2BGR);
    } else {
        result = mat;
    }
    return result;
}

// Clusters float samples of three values and turns the centres, in order,
// into colours, each value truncated.
void clusterColors(const cv::Mat& samples, int count,
                   std::vector<pmUtil::Color<unsigned char>>& palette) {
    cv::Mat labels;
    cv::Mat centers;
    cv::kmeans(samples, count, labels, cv::TermCriteria(0, 0, 0.0), 1, cv::KMEANS_PP_CENTERS,
               centers);
    palette.clear();
    for (int row = 0; row < centers.rows; ++row) {
        const float* center = centers.ptr<float>(row);
        palette.emplace_back(static_cast<unsigned char>(static_cast<int>(center[0])),
                             static_cast<unsigned char>(static_cast<int>(center[1])),
                             static_cast<unsigned char>(static_cast<int>(center[2])));
    }
}

// The same checks and conversion for every fixed-format conversion.
bool convertFixed(const Image& input, Image& output, int inputChannel, int outputChannel,
                  int code) {
    if (!isWrappable(input) || !isWrappable(output)) return false;
    if (input.channel != inputChannel || output.channel != outputChannel ||
        input.width != output.width || input.height != output.height) {
        PM_LOGE("Input or output format is not correct.\n");
        return false;
    }
    cv::Mat dst = wrapImage(output);
    cv::cvtColor(wrapImage(input), dst, code);
    return true;
}

// Reads one frame of an open capture and converts it into the caller's image.
bool readFrame(cv::VideoCapture& capture, Image& image) {
    cv::Mat frame;
    bool result = capture.read(frame);
    // A frame of another size or depth than the caller's image is not read
    // into it: the caller's buffer holds only what it was made for.
    if (result && (frame.type() != CV_8UC3 || frame.cols != image.width ||
                   frame.rows != image.height || image.channel != 3 || image.data == nullptr)) {
        PM_LOGE("The frame does not fit the image.\n");
        return false;
    }
    if (result) {
        cv::Mat dst = wrapImage(image);
        cv::cvtColor(frame, dst, cv::COLOR_BGR2RGB);
    }
    return result;
}

}  // namespace

int getImageFormat(int channel) {
    switch (channel) {
        case 1:
            return CV_8UC1;
        case 2:
            return CV_8UC2;
        case 3:
            return CV_8UC3;
        case 4:
            return CV_8UC4;
        default:
            PM_LOGE("unsupported channel type (%d)\n", channel);
            return 0;
    }
}

int getImageChannel(int format) {
    switch (format) {
        case CV_8UC1:
            return 1;
        case CV_8UC2:
            return 2;
        case CV_8UC3:
            return 3;
        case CV_8UC4:
            return 4;
        default:
            PM_LOGE("unsupported cv format (%d)\n", format);
            return 0;
    }
}

// --- Image files ----------------------------------------------------------------------

pmUtil::ImageData<unsigned char> loadImage(const std::string& path, bool flip, bool forceColor) {
    cv::Mat mat = cv::imread(path, forceColor ? cv::IMREAD_COLOR : cv::IMREAD_UNCHANGED);
    if (mat.empty()) {
        PM_LOGE("Failed to load %s.\n", path.c_str());
        return Image();
    }
    if (mat.depth() != CV_8U) {
        // Images are 8 bits a channel here: deeper files are scaled down to
        // that, so that the pixels match the label.
        cv::Mat eight;
        const double scale = mat.depth() == CV_16U || mat.depth() == CV_16S ? 1.0 / 257.0 : 1.0;
        mat.convertTo(eight, CV_MAKETYPE(CV_8U, mat.channels()), scale);
        mat = eight;
    }
    const int channel = mat.channels();
    if (channel < 1 || channel > 4) {
        PM_LOGE("Failed to load %s.\n", path.c_str());
        return Image();
    }
    const std::size_t size = mat.total() * mat.elemSize();
    auto* pixels = static_cast<unsigned char*>(std::malloc(size));
    if (pixels == nullptr) {
        PM_LOGE("Failed to load %s.\n", path.c_str());
        return Image();
    }
    cv::Mat rgb(mat.rows, mat.cols, mat.type(), pixels);
    if (channel == 3) {
        cv::cvtColor(mat, rgb, cv::COLOR_BGR2RGB);
    } else if (channel == 4) {
        cv::cvtColor(mat, rgb, cv::COLOR_BGRA2RGBA);
    } else {
        mat.copyTo(rgb);
    }
    if (flip) {
        auto* flipped = static_cast<unsigned char*>(std::malloc(size));
        if (flipped == nullptr) {
            std::free(pixels);
            PM_LOGE("Failed to load %s.\n", path.c_str());
            return Image();
        }
        cv::Mat flippedMat(mat.rows, mat.cols, mat.type(), flipped);
        cv::flip(rgb, flippedMat, 0);
        std::free(pixels);
        pixels = flipped;
    }
    return Image(mat.cols, mat.rows, channel, pixels, true);
}

bool saveImage(const std::string& path, const pmUtil::ImageData<unsigned char>& image, bool flip) {
    if (image.data == nullptr) {
        PM_LOGE("No image data to save.\n");
        return false;
    }
    if (!isWrappable(image)) return false;
    cv::Mat mat = wrapImage(image);
    cv::Mat bgr;
    if (image.channel == 3) {
        cv::cvtColor(mat, bgr, cv::COLOR_BGR2RGB);
    } else if (image.channel == 4) {
        cv::cvtColor(mat, bgr, cv::COLOR_BGRA2RGBA);
    } else {
        bgr = mat;
    }
    if (flip) {
        cv::Mat flipped;
        cv::flip(bgr, flipped, 0);
        bgr = flipped;
    }
    bool result = false;
    try {
        result = cv::imwrite(path, bgr);
    } catch (const cv::Exception& e) {
        // An extension without an encoder is refused by an exception; it
        // counts as a failed save.
        PM_LOGE("%s\n", e.what());
        result = false;
    }
    if (result) {
        PM_LOGI("filename = %s, info = (%d x %d x %d), flip = %d\n", path.c_str(), image.width,
                image.height, image.channel, flip ? 1 : 0);
    } else {
        PM_LOGE("Failed to save %s.\n", path.c_str());
    }
    return result;
}

// --- Video files ----------------------------------------------------------------------

bool createVideoCapture(VideoData& context, const std::string& path) {
    deleteVideoCapture(context);
    context.capture = pmUtil::safeNew<cv::VideoCapture>();
    if (context.capture == nullptr) return false;
    context.capture->open(path, cv::CAP_ANY);
    if (!context.capture->isOpened()) {
        PM_LOGE("unable to open %s.\n", path.c_str());
        deleteVideoCapture(context);
        return false;
    }
    context.width = static_cast<int>(context.capture->get(cv::CAP_PROP_FRAME_WIDTH));
    context.height = static_cast<int>(context.capture->get(cv::CAP_PROP_FRAME_HEIGHT));
    context.channel = 3;
    context.currentFrame = 0;
    context.frameCount = static_cast<int>(context.capture->get(cv::CAP_PROP_FRAME_COUNT));
    return true;
}

bool readVideoCapture(VideoData& context, pmUtil::ImageData<unsigned char>& image) {
    if (context.capture == nullptr) {
        PM_LOGE("the video capture is not opened.\n");
        return false;
    }
    context.currentFrame = static_cast<int>(context.capture->get(cv::CAP_PROP_POS_FRAMES));
    PM_ASSERT(context.width == image.getWidth() && context.height == image.getHeight() &&
              context.channel == image.getChannel());
    return readFrame(*context.capture, image);
}

bool setVideoCapturePosition(VideoData& context, int frame) {
    if (context.capture == nullptr) {
        PM_LOGE("the video capture is not opened.\n");
        return false;
    }
    return context.capture->set(cv::CAP_PROP_POS_FRAMES, frame);
}

void deleteVideoCapture(VideoData& context) {
    if (context.capture != nullptr) {
        context.capture->release();
        delete context.capture;
        context.capture = nullptr;
    }
    context.width = 0;
    context.height = 0;
    context.channel = 0;
    context.currentFrame = 0;
    context.frameCount = 0;
}

bool createVideoWriter(VideoWriter& context, const std::string& path, float fps, int width,
                       int height) {
    deleteVideoWriter(context);
    context.writer = pmUtil::safeNew<cv::VideoWriter>();
    if (context.writer == nullptr) return false;
    // Always motion JPEG through OpenCV's own writer, so that no external
    // codec is needed.
    context.writer->open(path, cv::CAP_OPENCV_MJPEG, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'),
                         fps, cv::Size(width, height), true);
    if (!context.writer->isOpened()) {
        PM_LOGE("unable to open %s.\n", path.c_str());
        deleteVideoWriter(context);
        return false;
    }
    context.width = width;
    context.height = height;
    return true;
}

bool writeVideoFrame(VideoWriter& context, const pmUtil::ImageData<unsigned char>& image) {
    if (context.writer == nullptr) {
        PM_LOGE("the video writer is not opened.\n");
        return false;
    }
    PM_ASSERT(context.width == image.getWidth() && context.height == image.getHeight());
    if (!isWrappable(image)) return false;
    // OpenCV's motion JPEG writer throws on a frame of another size; such a
    // frame is refused after the assertion has been logged.
    if (context.width != image.getWidth() || context.height != image.getHeight()) return false;
    cv::Mat bgr;
    if (image.channel == 3) {
        cv::cvtColor(wrapImage(image), bgr, cv::COLOR_RGB2BGR);
    } else if (image.channel == 4) {
        cv::cvtColor(wrapImage(image), bgr, cv::COLOR_RGBA2BGR);
    } else {
        PM_LOGE("channel mismatch.\n");
        return false;
    }
    context.writer->write(bgr);
    return true;
}

bool isOpened(VideoWriter& context) {
    return context.writer != nullptr && context.writer->isOpened();
}

void deleteVideoWriter(VideoWriter& context) {
    if (context.writer != nullptr) {
        context.writer->release();
        delete context.writer;
        context.writer = nullptr;
    }
    context.width = 0;
    context.height = 0;
}

// --- Camera ---------------------------------------------------------------------------

bool createCameraCapture(CameraData& context, int index, int width, int height) {
    deleteCameraCapture(context);
    cv::VideoCapture* pCapture = pmUtil::safeNew<cv::VideoCapture>();
    if (pCapture == nullptr) return false;
    pCapture->open(index, cv::CAP_ANY);
    if (!pCapture->isOpened()) {
        PM_LOGE("unable to open camera %d.\n", index);
        delete pCapture;
        return false;
    }
    // A camera may refuse the size; the one it grants is read back below.
    PM_ASSERT(pCapture->set(cv::CAP_PROP_FRAME_WIDTH, width));
    PM_ASSERT(pCapture->set(cv::CAP_PROP_FRAME_HEIGHT, height));
    context.capture = pCapture;
    context.width = static_cast<int>(pCapture->get(cv::CAP_PROP_FRAME_WIDTH));
    context.height = static_cast<int>(pCapture->get(cv::CAP_PROP_FRAME_HEIGHT));
    context.channel = 3;
    return true;
}

bool readCameraCapture(CameraData& context, pmUtil::ImageData<unsigned char>& image) {
    if (context.capture == nullptr) {
        PM_LOGE("the camera capture is not opened.\n");
        return false;
    }
    PM_ASSERT(context.width == image.getWidth() && context.height == image.getHeight() &&
              context.channel == image.getChannel());
    return readFrame(*context.capture, image);
}

void deleteCameraCapture(CameraData& context) {
    if (context.capture != nullptr) {
        context.capture->release();
        delete context.capture;
        context.capture = nullptr;
    }
    context.width = 0;
    context.height = 0;
    context.channel = 0;
}

// --- Face detection -------------------------------------------------------------------

bool createFaceDetection(DetectionData& context, const std::string& path) {
    deleteFaceDetection(context);
    context.classifier = pmUtil::safeNew<cv::CascadeClassifier>();
    if (context.classifier == nullptr) return false;
    bool loaded = false;
    try {
        loaded = context.classifier->load(path);
    } catch (const cv::Exception& e) {
        // A truncated or malformed cascade file is refused by an exception.
        PM_LOGE("%s\n", e.what());
    }
    if (!loaded) {
        PM_LOGE("Failed to load face cascade.\n");
        deleteFaceDetection(context);
        return false;
    }
    return true;
}

bool detectFaces(DetectionData& context, const pmUtil::ImageData<unsigned char>& image,
                 std::vector<pmUtil::Rect<int>>& faces) {
    if (image.channel != 1) {
        PM_LOGE("An input image must be gray.\n");
        return false;
    }
    if (!isWrappable(image)) return false;
    if (context.classifier == nullptr) {
        PM_LOGE("Failed to load face cascade.\n");
        return false;
    }
    std::vector<cv::Rect> found;
    context.classifier->detectMultiScale(wrapImage(image), found, 1.1, 3, 0, cv::Size(30, 30),
                                         cv::Size());
    faces.clear();
    for (const cv::Rect& rect : found) {
        faces.emplace_back(rect.x, rect.y, rect.width, rect.height);
    }
    return true;
}

void deleteFaceDetection(DetectionData& context) {
    delete context.classifier;
    context.classifier = nullptr;
}

// --- Resizing and colour conversion ---------------------------------------------------

bool resizeImage(const pmUtil::ImageData<unsigned char>& input,
                 pmUtil::ImageData<unsigned char>& output, InterpolationMethod method) {
    if (input.channel != output.channel || !isWrappable(input) || !isWrappable(output)) {
        return false;
    }
    cv::Mat dst = wrapImage(output);
    cv::resize(wrapImage(input), dst, cv::Size(output.width, output.height), 0, 0,
               static_cast<int>(method));
    return true;
}

bool convertColor2Gray(const pmUtil::ImageData<unsigned char>& input,
                       pmUtil::ImageData<unsigned char>& output) {
    int code = 0;
    if (input.channel == 3) {
        code = cv::COLOR_BGR2GRAY;
    } else if (input.channel == 4) {
        code = cv::COLOR_BGRA2GRAY;
    } else {
        PM_LOGE("Unsupported channel size (%d).\n", input.channel);
        return false;
    }
    if (!isWrappable(input) || !isWrappable(output) || output.channel != 1) return false;
    if (input.width != output.width || input.height != output.height) {
        PM_LOGE("Input or output format is not correct.\n");
        return false;
    }
    cv::Mat dst = wrapImage(output);
    cv::cvtColor(wrapImage(input), dst, code);
    return true;
}

bool convertRGB888ToYUV444(const pmUtil::ImageData<unsigned char>& input,
                           pmUtil::ImageData<unsigned char>& output) {
    return convertFixed(input, output, 3, 3, cv::COLOR_RGB2YCrCb);
}

bool convertBGR888ToYUV444(const pmUtil::ImageData<unsigned char>& input,
                           pmUtil::ImageData<unsigned char>& output) {
    return convertFixed(input, output, 3, 3, cv::COLOR_BGR2YCrCb);
}

bool convertYUV444ToRGB888(const pmUtil::ImageData<unsigned char>& input,
                           pmUtil::ImageData<unsigned char>& output) {
    return convertFixed(input, output, 3, 3, cv::COLOR_YCrCb2RGB);
}

bool convertYUV444ToBGR888(const pmUtil::ImageData<unsigned char>& input,
                           pmUtil::ImageData<unsigned char>& output) {
    return convertFixed(input, output, 3, 3, cv::COLOR_YCrCb2BGR);
}

bool convertRGBAToRGB(const pmUtil::ImageData<unsigned char>& input,
                      pmUtil::ImageData<unsigned char>& output) {
    return convertFixed(input, output, 4, 3, cv::COLOR_BGRA2BGR);
}

bool convertBGRAToBGR(const pmUtil::ImageData<unsigned char>& input,
                      pmUtil::ImageData<unsigned char>& output) {
    return convertFixed(input, output, 4, 3, cv::COLOR_BGRA2BGR);
}

bool convertRGBToRGBA(const pmUtil::ImageData<unsigned char>& input,
                      pmUtil::ImageData<unsigned char>& output) {
    return convertFixed(input, output, 3, 4, cv::COLOR_BGR2BGRA);
}

bool convertBGRToBGRA(const pmUtil::ImageData<unsigned char>& input,
                      pmUtil::ImageData<unsigned char>& output) {
    return convertFixed(input, output, 3, 4, cv::COLOR_BGR2BGRA);
}

// --- Colour palettes ------------------------------------------------------------------

void generateColorPalette(const pmUtil::ImageData<unsigned char>& image, int count,
                          std::vector<pmUtil::Color<unsigned char>>& palette) {
    if (!isWrappable(image)) return;
    cv::Mat mat = toThreeChannels(wrapImage(image));
    cv::Mat samples;
    if (mat.rows * mat.cols < kPaletteSampleLimit) {
        samples = mat.reshape(3, mat.rows * mat.cols);
    } else {
        // Rows and columns are halved together until few enough pixels are
        // left; an image of exactly the limit is resized at its own size.
        int rows = mat.rows;
        int cols = mat.cols;
        while (rows * cols > kPaletteSampleLimit) {
            rows /= 2;
            cols /= 2;
        }
        cv::Mat small;
        cv::resize(mat, small, cv::Size(cols, rows), 0, 0, cv::INTER_NEAREST);
        samples = small.reshape(3, rows * cols);
    }
    cv::Mat floats;
    samples.convertTo(floats, CV_32F, 1.0, 0.0);
    clusterColors(floats, count, palette);
}

void generateColorPalette(const std::vector<pmUtil::ImageData<unsigned char>>& images, int count,
                          std::vector<pmUtil::Color<unsigned char>>& palette) {
    if (images.empty()) {
        PM_LOGE("Please set images first.\n");
        return;
    }
    for (const Image& image : images) {
        if (!isWrappable(image)) return;
    }
    constexpr int pixelsPerImage = kPaletteImageSide * kPaletteImageSide;
    cv::Mat samples(pixelsPerImage * static_cast<int>(images.size()), 1, CV_32FC3);
    for (std::size_t i = 0; i < images.size(); ++i) {
        cv::Mat mat = wrapImage(images[i]);
        if (mat.cols != kPaletteImageSide || mat.rows != kPaletteImageSide) {
            cv::Mat resized;
            cv::resize(mat, resized, cv::Size(kPaletteImageSide, kPaletteImageSide), 0, 0,
                       cv::INTER_NEAREST);
            mat = resized;
        }
        mat = toThreeChannels(mat);
        const int first = static_cast<int>(i) * pixelsPerImage;
        cv::Mat rows = samples.rowRange(first, first + pixelsPerImage);
        mat.reshape(3, pixelsPerImage).convertTo(rows, CV_32F, 1.0, 0.0);
    }
    clusterColors(samples, count, palette);
}

}  // namespace pmCV
