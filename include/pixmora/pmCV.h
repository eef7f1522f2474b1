/**
 * @file pmCV.h
 * @brief The OpenCV bridge (pmCV) for the library's 8-bit images.
 *
 * Image files through OpenCV's codecs, video files in and out, a camera, face
 * detection with a cascade classifier, colour conversion and colour palettes by
 * k-means. Images here are interleaved and in RGB order; each function converts
 * to and from OpenCV's BGR order at its edge. No other layer depends on this one:
 * it is a tool set for applications.
 */
#ifndef PIXMORA_PMCV_H
#define PIXMORA_PMCV_H

#include <string>
#include <vector>

#include "pmExport.h"
#include "pmUtil.h"

// The OpenCV objects are held by pointer only, so users of this header do not
// need OpenCV's headers.
namespace cv {
class VideoCapture;
class VideoWriter;
class CascadeClassifier;
}  // namespace cv

namespace PM_VISIBLE pmCV {

// OpenCV's interpolation flags, by value.
enum InterpolationMethod : int {
    InterNearest = 0,
    InterLinear = 1,
    InterCubic = 2,
    InterArea = 3,
    InterLanczos4 = 4,
    InterLinearExact = 5,
    InterNearestExact = 6,
};

// A video file being read. Channels are always 3; currentFrame is the
// position of the frame last read.
struct VideoData {
    cv::VideoCapture* capture = nullptr;
    int width = 0;
    int height = 0;
    int channel = 0;
    int currentFrame = 0;
    int frameCount = 0;
};

// A motion JPEG video file being written.
struct VideoWriter {
    cv::VideoWriter* writer = nullptr;
    int width = 0;
    int height = 0;
};

// A camera being read. Channels are always 3.
struct CameraData {
    cv::VideoCapture* capture = nullptr;
    int width = 0;
    int height = 0;
    int channel = 0;
};

// A loaded face cascade.
struct DetectionData {
    cv::CascadeClassifier* classifier = nullptr;
};

// The OpenCV 8-bit type number of a channel count (1 to 4), and the reverse.
// Other input logs and gives 0.
int getImageFormat(int channel);
int getImageChannel(int format);

// Decodes an image file. With forceColor, the result has three channels;
// otherwise it keeps the file's own count. The pixels come from malloc
// (useFree is true) and are the caller's; with flip, the bottom row comes
// first. On failure the image is empty.
pmUtil::ImageData<unsigned char> loadImage(const std::string& path, bool flip, bool forceColor);

// Encodes an image in the format of the path's extension, bottom row first
// with flip. Returns OpenCV's result.
bool saveImage(const std::string& path, const pmUtil::ImageData<unsigned char>& image, bool flip);

// Opens a video file; whatever the record held is released first.
bool createVideoCapture(VideoData& context, const std::string& path);
// Reads the next frame into an RGB image of the record's size, allocated by
// the caller. False at the end of the file or without a capture.
bool readVideoCapture(VideoData& context, pmUtil::ImageData<unsigned char>& image);
// Moves the reading position to a frame.
bool setVideoCapturePosition(VideoData& context, int frame);
// Releases the stream; harmless on an empty record.
void deleteVideoCapture(VideoData& context);

// Opens a motion JPEG file for writing; whatever the record held is released
// first.
bool createVideoWriter(VideoWriter& context, const std::string& path, float fps, int width,
                       int height);
// Writes one RGB or RGBA frame of the record's size; a frame of another size or
// channel count is refused.
bool writeVideoFrame(VideoWriter& context, const pmUtil::ImageData<unsigned char>& image);
bool isOpened(VideoWriter& context);
// Finishes the file and releases the writer; harmless on an empty record.
void deleteVideoWriter(VideoWriter& context);

// Opens a camera by index and asks it for a frame size; the record holds the
// size the camera grants.
bool createCameraCapture(CameraData& context, int index, int width, int height);
// Reads one frame into an RGB image of the record's size.
bool readCameraCapture(CameraData& context, pmUtil::ImageData<unsigned char>& image);
void deleteCameraCapture(CameraData& context);

// Loads a cascade file; whatever the record held is released first.
bool createFaceDetection(DetectionData& context, const std::string& path);
// Finds faces of at least 30 x 30 pixels in a one-channel image. Any other
// image is refused and the output left as it was.
bool detectFaces(DetectionData& context, const pmUtil::ImageData<unsigned char>& image,
                 std::vector<pmUtil::Rect<int>>& faces);
void deleteFaceDetection(DetectionData& context);

// Resizes into the output's size; the channel counts must agree.
bool resizeImage(const pmUtil::ImageData<unsigned char>& input,
                 pmUtil::ImageData<unsigned char>& output, InterpolationMethod method);

// Conversions into an output image the caller allocated, of the same size.
// They take the input as OpenCV does: the gray conversion weighs the channels
// as B, G, R, and "YUV444" is OpenCV's YCrCb (Y, Cr, Cb in that order). The
// gray output must have one channel; an output of another count is left as
// it was.
bool convertColor2Gray(const pmUtil::ImageData<unsigned char>& input,
                       pmUtil::ImageData<unsigned char>& output);
bool convertRGB888ToYUV444(const pmUtil::ImageData<unsigned char>& input,
                           pmUtil::ImageData<unsigned char>& output);
bool convertBGR888ToYUV444(const pmUtil::ImageData<unsigned char>& input,
                           pmUtil::ImageData<unsigned char>& output);
bool convertYUV444ToRGB888(const pmUtil::ImageData<unsigned char>& input,
                           pmUtil::ImageData<unsigned char>& output);
bool convertYUV444ToBGR888(const pmUtil::ImageData<unsigned char>& input,
                           pmUtil::ImageData<unsigned char>& output);
bool convertRGBAToRGB(const pmUtil::ImageData<unsigned char>& input,
                      pmUtil::ImageData<unsigned char>& output);
bool convertBGRAToBGR(const pmUtil::ImageData<unsigned char>& input,
                      pmUtil::ImageData<unsigned char>& output);
bool convertRGBToRGBA(const pmUtil::ImageData<unsigned char>& input,
                      pmUtil::ImageData<unsigned char>& output);
bool convertBGRToBGRA(const pmUtil::ImageData<unsigned char>& input,
                      pmUtil::ImageData<unsigned char>& output);

// The main colours of an image by k-means, in the image's channel order and
// in no particular order among themselves. Large images are sampled down to
// at most 5000 pixels. A count larger than the number of samples makes
// OpenCV throw cv::Exception.
void generateColorPalette(const pmUtil::ImageData<unsigned char>& image, int count,
                          std::vector<pmUtil::Color<unsigned char>>& palette);
// The same over several images, each sampled at 50 x 50 pixels.
void generateColorPalette(const std::vector<pmUtil::ImageData<unsigned char>>& images, int count,
                          std::vector<pmUtil::Color<unsigned char>>& palette);

}  // namespace pmCV

#endif
