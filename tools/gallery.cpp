// pixmora gallery: every effect and the blur at a few intensities of one
// picture, optionally a strip of consecutive frames of a blurred clip, and an
// index.html that shows them side by side.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "Commands.h"
#include "Names.h"
#include "Pictures.h"
#include "StillRender.h"
#include "ToolError.h"
#include <pixmora/pixmora.h>
#include <pixmora/pmCV.h>

namespace {

namespace fs = std::filesystem;

struct GalleryRequest {
    std::string input;
    std::string outputDir;
    std::string clip;
    int stripFrames = 12;
};

struct GalleryItem {
    std::string file;
    std::string title;
    std::string settings;
};

const float kGalleryIntensities[] = {5.0f, 20.0f, 40.0f};
// Width of the strip's frames on the page; the height keeps the clip's shape.
constexpr int kStripWidth = 240;

void makeOutputDir(const std::string& dir) {
    std::error_code error;
    fs::create_directories(dir, error);
    if (!fs::is_directory(dir)) {
        throw ToolError("cannot create folder '" + dir + "'" +
                        (error ? ": " + error.message() : std::string()));
    }
}

std::string htmlEscape(const std::string& text) {
    std::string out;
    for (char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string figure(const GalleryItem& item) {
    return "<figure><img src=\"" + htmlEscape(item.file) + "\" alt=\"" + htmlEscape(item.title) +
           "\"><figcaption><strong>" + htmlEscape(item.title) +
           "</strong><br><span class=\"settings\">" + htmlEscape(item.settings) +
           "</span></figcaption></figure>\n";
}

std::string pageHead(const std::string& input) {
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<title>Pixmora gallery</title>\n<style>\n"
           "body { font-family: sans-serif; background: #202124; color: #e8eaed; margin: 2em; }\n"
           ".grid { display: grid; grid-template-columns: repeat(auto-fill, minmax(320px, 1fr));"
           " gap: 1.5em; }\n"
           ".strip { display: flex; gap: 4px; overflow-x: auto; }\n"
           ".strip figure { flex: none; width: " +
           std::to_string(kStripWidth) +
           "px; }\n"
           "figure { margin: 0; } img { width: 100%; border-radius: 4px; }\n"
           "figcaption { margin-top: .4em; } .settings { color: #9aa0a6; font-size: .9em; }\n"
           "</style>\n</head>\n<body>\n<h1>Pixmora gallery</h1>\n<p>Source: " +
           htmlEscape(input) + "</p>\n";
}

std::string stripSection(const std::string& clip, const std::vector<GalleryItem>& frames) {
    if (frames.empty()) return "";
    std::string html = "<h2>Video blur</h2>\n<p>Consecutive output frames of " + htmlEscape(clip) +
                       ": between two input frames the blur cross-fades over several "
                       "drawn frames.</p>\n<div class=\"strip\">\n";
    for (const GalleryItem& item : frames) html += figure(item);
    return html + "</div>\n";
}

void writeGalleryPage(const std::string& dir, const GalleryRequest& request,
                      const std::vector<GalleryItem>& items,
                      const std::vector<GalleryItem>& stripFrames) {
    std::string html = pageHead(request.input) + "<div class=\"grid\">\n";
    for (const GalleryItem& item : items) html += figure(item);
    html += "</div>\n" + stripSection(request.clip, stripFrames) + "</body>\n</html>\n";
    const std::string path = dir + "/index.html";
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) throw ToolError("cannot write '" + path + "'");
    const bool written = std::fwrite(html.data(), 1, html.size(), file) == html.size();
    if (std::fclose(file) != 0 || !written) throw ToolError("cannot write '" + path + "'");
}

void addEffects(const GalleryRequest& request, std::vector<unsigned char>& rgba, int width,
                int height, std::vector<GalleryItem>& items) {
    for (const EffectName& effect : effectNames()) {
        std::vector<unsigned char> out =
            fromRgba(renderEffect(effect.type, PM_FLIP_NONE, rgba, width, height), 3);
        const std::string file = std::string("effect-") + effect.name + ".png";
        saveRendered(request.outputDir + "/" + file, out, width, height, 3);
        items.push_back({file, effect.name, "photo effect, type " + std::to_string(effect.type)});
    }
}

void addBlurs(const GalleryRequest& request, std::vector<unsigned char>& rgba, int width,
              int height, std::vector<GalleryItem>& items) {
    for (float intensity : kGalleryIntensities) {
        BlurLook look;
        look.intensity = intensity;
        look.dim = 0.8f;
        std::vector<unsigned char> out =
            fromRgba(renderBlur(look, PM_FLIP_NONE, rgba, width, height), 3);
        const std::string name = std::to_string(static_cast<int>(intensity));
        const std::string file = "blur-" + name + ".png";
        saveRendered(request.outputDir + "/" + file, out, width, height, 3);
        items.push_back({file, "blur " + name,
                         "background blur, intensity " + name + ", dimming 0.8, kernel 35"});
    }
}

// Frames of the middle of the clip, so that the blur's rates have settled.
std::vector<GalleryItem> writeStrip(const GalleryRequest& request) {
    std::vector<GalleryItem> frames;
    if (request.clip.empty()) return frames;
    pmCV::VideoData video;
    if (!pmCV::createVideoCapture(video, request.clip) || video.width < 1 || video.height < 1) {
        pmCV::deleteVideoCapture(video);
        throw ToolError("cannot read video '" + request.clip + "'");
    }
    const int thumbHeight = std::max(1, kStripWidth * video.height / video.width);
    std::vector<unsigned char> pixels(static_cast<size_t>(video.width) * video.height * 3);
    std::vector<unsigned char> thumbPixels(static_cast<size_t>(kStripWidth) * thumbHeight * 3);
    Image frame(video.width, video.height, 3, pixels.data());
    Image thumb(kStripWidth, thumbHeight, 3, thumbPixels.data());
    const int first = std::max(0, (video.frameCount - request.stripFrames) / 2);
    for (int index = 0; index < first + request.stripFrames; ++index) {
        if (!pmCV::readVideoCapture(video, frame)) break;
        if (index < first) continue;
        pmCV::resizeImage(frame, thumb, pmCV::InterArea);
        char file[32];
        std::snprintf(file, sizeof(file), "clip-%04d.png", index);
        savePicture(request.outputDir + "/" + file, thumbPixels, kStripWidth, thumbHeight, 3);
        frames.push_back({file, "frame " + std::to_string(index), ""});
    }
    pmCV::deleteVideoCapture(video);
    if (frames.empty()) throw ToolError("video '" + request.clip + "' has no frames to show");
    return frames;
}

void runGallery(const GalleryRequest& request) {
    if (request.stripFrames < 1) throw ToolError("--strip-frames must be at least 1");
    Image input = loadInput(request.input);
    const int width = input.width;
    const int height = input.height;
    std::vector<unsigned char> rgba = toRgba(input);
    pmUtil::deleteImageData(input);
    makeOutputDir(request.outputDir);
    std::vector<GalleryItem> items;
    addEffects(request, rgba, width, height, items);
    addBlurs(request, rgba, width, height, items);
    const std::vector<GalleryItem> strip = writeStrip(request);
    writeGalleryPage(request.outputDir, request, items, strip);
    std::printf("wrote %zu pictures and index.html to %s\n", items.size() + strip.size(),
                request.outputDir.c_str());
}

}  // namespace

void addGalleryCommand(CLI::App& app) {
    auto request = std::make_shared<GalleryRequest>();
    CLI::App* gallery = app.add_subcommand(
        "gallery", "Write every effect and the blur at a few intensities, with an index.html");
    gallery->add_option("IN", request->input, "Input image: PNG, JPEG, BMP or TGA")->required();
    gallery->add_option("OUTDIR", request->outputDir, "Folder for the pictures; made if missing")
        ->required();
    gallery->add_option("--clip", request->clip,
                        "A clip written by 'pixmora video': shows a strip of its frames");
    gallery
        ->add_option("--strip-frames", request->stripFrames,
                     "Consecutive frames of the clip to show")
        ->capture_default_str();
    gallery->fallthrough();
    gallery->callback([request] { runGallery(*request); });
    setExample(*gallery, "pixmora gallery photo.jpg gallery --clip blurred.avi");
}
