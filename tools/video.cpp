// pixmora video: the video blur or a photo effect on every frame of a clip,
// driven as an application on the device drives the library: each input
// frame is handed over once, and the blur is drawn as often as the display
// would draw it in the frame's time.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "FrameRenderers.h"
#include "Headless.h"
#include "Names.h"
#include "Progress.h"
#include "ToolError.h"
#include "VideoFiles.h"

namespace {

// The rate assumed for a clip whose container does not tell its own.
constexpr double kFallbackFps = 25.0;

struct VideoRequest {
    std::string input;
    std::string output;
    VideoBlurOptions blur;
    std::string effect;
    double renderFps = 60.0;
    int frames = 0;
    bool quiet = false;
    CLI::Option* blurOption = nullptr;
    CLI::Option* effectOption = nullptr;
    CLI::Option* framesOption = nullptr;

    bool blurs() const { return blurOption->count() > 0; }
};

// Everything that can be refused before a file is opened.
void checkRequest(const VideoRequest& request) {
    if (!request.blurs() && request.effectOption->count() == 0) {
        throw ToolError("video wants --blur INTENSITY or --effect NAME");
    }
    if (!request.blurs()) effectType(request.effect);
    if (!(request.renderFps >= 1.0)) throw ToolError("--render-fps must be at least 1");
    if (request.framesOption->count() > 0 && request.frames < 1) {
        throw ToolError("--frames must be at least 1");
    }
    if (!endsWith(request.output, ".avi")) {
        throw ToolError("output file '" + request.output +
                        "' must end in .avi (motion JPEG in AVI)");
    }
    checkBlurLook(request.blur.look);
}

void note(const VideoRequest& request, const std::string& text) {
    if (!request.quiet) std::fprintf(stderr, "pixmora: video: %s\n", text.c_str());
}

double inputRate(const VideoRequest& request, const ClipReader& clip) {
    if (clip.framesPerSecond() > 0.0) return clip.framesPerSecond();
    note(request, "the clip does not tell its frame rate; taking " +
                      std::to_string(static_cast<int>(kFallbackFps)) + " fps");
    return kFallbackFps;
}

// Draws per input frame: the display rate over the clip's, rounded, at least 1.
int drawsPerFrame(const VideoRequest& request, double inputFps) {
    if (!request.blurs()) return 1;
    return std::max(1, static_cast<int>(std::lround(request.renderFps / inputFps)));
}

int framesToRead(const VideoRequest& request, const ClipReader& clip) {
    if (request.frames == 0) return clip.frameCount();
    if (clip.frameCount() == 0) return request.frames;
    return std::min(request.frames, clip.frameCount());
}

std::unique_ptr<FrameRenderer> makeRenderer(const VideoRequest& request) {
    if (request.blurs()) return makeVideoBlurRenderer(request.blur);
    return makeEffectRenderer(effectType(request.effect));
}

void runVideo(const VideoRequest& request) {
    checkRequest(request);
    ClipReader clip(request.input);
    const int width = clip.width();
    const int height = clip.height();
    const double inputFps = inputRate(request, clip);
    const int draws = drawsPerFrame(request, inputFps);
    // The clip keeps its duration: each input frame lasts `draws` output frames.
    const double outputFps = inputFps * draws;
    if (request.blurs() && std::fabs(outputFps - request.renderFps) > 0.01) {
        note(request, "writing at " + std::to_string(outputFps) + " fps, " + std::to_string(draws) +
                          " draws per input frame");
    }
    ClipWriter writer(request.output, outputFps, width, height);
    HeadlessContext context;
    RenderTarget target(width, height);
    std::unique_ptr<FrameRenderer> renderer = makeRenderer(request);
    std::vector<unsigned char> rgba(static_cast<size_t>(width) * height * 4);
    const Image picture(width, height, 4, rgba.data());
    const int total = framesToRead(request, clip);
    Progress progress("video", total, request.quiet);
    Image frame;
    int done = 0;
    while ((request.frames == 0 || done < request.frames) && clip.next(frame)) {
        renderer->submit(frame);
        for (int draw = 0; draw < draws; ++draw) {
            target.bind();
            renderer->draw(width, height);
            target.readInto(rgba);
            writer.write(picture);
        }
        progress.update(++done);
    }
    progress.finish(done);
    writer.commit();
}

}  // namespace

void addVideoCommand(CLI::App& app) {
    auto request = std::make_shared<VideoRequest>();
    CLI::App* video = app.add_subcommand(
        "video", "Blur a clip for the display, or apply a photo effect to every frame");
    video->add_option("IN", request->input, "Input clip: any file the OpenCV decoder reads")
        ->required();
    video->add_option("OUT", request->output, "Output clip: motion JPEG in .avi")->required();
    request->blurOption = video->add_option("--blur", request->blur.look.intensity,
                                            "Video blur of this degree, 1 to 50");
    request->effectOption =
        video->add_option("--effect", request->effect, "Photo effect: " + effectList());
    request->blurOption->excludes(request->effectOption);
    video
        ->add_option("--render-fps", request->renderFps,
                     "Display rate R: each input frame is drawn R / (clip rate) times, rounded")
        ->capture_default_str();
    request->framesOption =
        video->add_option("--frames", request->frames, "Stop after N input frames");
    addBlurLookOptions(*video, request->blur.look);
    video->add_flag("--no-interpolation{false}", request->blur.interpolation,
                    "Show each frame at once instead of cross-fading");
    video->add_flag("--no-dithering{false}", request->blur.dithering, "Leave the blur undithered");
    video->add_flag("-q,--quiet", request->quiet, "No progress on stderr");
    video->fallthrough();
    video->callback([request] { runVideo(*request); });
    setExample(*video, "pixmora video walk.avi walk-blur.avi --blur 20 --render-fps 30");
}
