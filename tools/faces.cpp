// pixmora faces: the bridge's face detection on a picture, one line
// "x y w h" per face, and the picture with the faces framed if asked.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "Pictures.h"
#include "ToolError.h"
#include <pixmora/pmCV.h>

namespace {

const char* const kDefaultCascade =
    "/usr/share/opencv4/haarcascades/haarcascade_frontalface_default.xml";
// Frames are drawn this thick, in this colour, so that they show on any photo.
constexpr int kFrameThickness = 3;
const unsigned char kFrameColour[3] = {0, 255, 0};

struct FacesRequest {
    std::string input;
    std::string cascade = kDefaultCascade;
    std::string output;
};

// The detector wants one channel. The bridge's conversion weighs channels as
// blue, green, red, so the picture is put in that order for it first.
std::vector<unsigned char> greyOf(Image& rgb) {
    std::vector<unsigned char> bgr(rgb.data,
                                   rgb.data + static_cast<size_t>(rgb.width) * rgb.height * 3);
    for (size_t i = 0; i < bgr.size(); i += 3) std::swap(bgr[i], bgr[i + 2]);
    std::vector<unsigned char> grey(static_cast<size_t>(rgb.width) * rgb.height);
    Image bgrImage(rgb.width, rgb.height, 3, bgr.data());
    Image greyImage(rgb.width, rgb.height, 1, grey.data());
    if (!pmCV::convertColor2Gray(bgrImage, greyImage))
        throw ToolError("cannot make a grey picture");
    return grey;
}

std::vector<pmUtil::Rect<int>> detect(const std::string& cascade, Image& rgb) {
    pmCV::DetectionData detector;
    if (!pmCV::createFaceDetection(detector, cascade)) {
        throw ToolError("cannot load face cascade '" + cascade + "'");
    }
    std::vector<unsigned char> grey = greyOf(rgb);
    std::vector<pmUtil::Rect<int>> faces;
    const bool found =
        pmCV::detectFaces(detector, Image(rgb.width, rgb.height, 1, grey.data()), faces);
    pmCV::deleteFaceDetection(detector);
    if (!found) throw ToolError("face detection failed");
    return faces;
}

void paintBox(Image& rgb, int x0, int y0, int x1, int y1) {
    x0 = std::max(x0, 0);
    y0 = std::max(y0, 0);
    x1 = std::min(x1, rgb.width);
    y1 = std::min(y1, rgb.height);
    for (int y = y0; y < y1; ++y) {
        for (int x = x0; x < x1; ++x) {
            unsigned char* p = rgb.data + (static_cast<size_t>(y) * rgb.width + x) * 3;
            std::copy(kFrameColour, kFrameColour + 3, p);
        }
    }
}

void frameFace(Image& rgb, const pmUtil::Rect<int>& face) {
    const int t = kFrameThickness;
    const int right = face.x + face.width;
    const int bottom = face.y + face.height;
    paintBox(rgb, face.x, face.y, right, face.y + t);
    paintBox(rgb, face.x, bottom - t, right, bottom);
    paintBox(rgb, face.x, face.y, face.x + t, bottom);
    paintBox(rgb, right - t, face.y, right, bottom);
}

void runFaces(const FacesRequest& request) {
    if (!request.output.empty()) checkOutputExtension(request.output);
    Image rgb = pmCV::loadImage(request.input, false, true);
    if (rgb.data == nullptr) throw ToolError("cannot read image '" + request.input + "'");
    std::vector<unsigned char> pixels(rgb.data,
                                      rgb.data + static_cast<size_t>(rgb.width) * rgb.height * 3);
    const int width = rgb.width;
    const int height = rgb.height;
    pmUtil::deleteImageData(rgb);
    Image picture(width, height, 3, pixels.data());
    const std::vector<pmUtil::Rect<int>> faces = detect(request.cascade, picture);
    for (const pmUtil::Rect<int>& face : faces) {
        std::printf("%d %d %d %d\n", face.x, face.y, face.width, face.height);
        frameFace(picture, face);
    }
    if (!request.output.empty()) savePicture(request.output, pixels, width, height, 3);
}

}  // namespace

void addFacesCommand(CLI::App& app) {
    auto request = std::make_shared<FacesRequest>();
    CLI::App* faces = app.add_subcommand(
        "faces", "Find faces in a picture: one line 'x y w h' per face, in pixels");
    faces->add_option("IN", request->input, "Input picture: any file the OpenCV codecs read")
        ->required();
    faces->add_option("--cascade", request->cascade, "Haar cascade file")->capture_default_str();
    faces->add_option("--out", request->output,
                      "Also write the picture with the faces framed: .png, .jpg, .bmp or .tga");
    faces->fallthrough();
    faces->callback([request] { runFaces(*request); });
    setExample(*faces, "pixmora faces team.jpg --out team-faces.png");
}
