// The video path of an application on a real clip (vtest.avi, 768 x 576 at 10
// frames a second), stage by stage, as the pixmora tool drives it: decode a
// frame through the OpenCV bridge, hand it to a video blur, the Draw that
// captures it, a resting Draw between two frames, reading the picture back,
// and encoding it. Each stage is timed alone and reported in milliseconds,
// frames a second ("fps") and as a multiple of one 1920 x 1080 copy pass
// measured in the same run ("x_copy").
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "CopyBaseline.h"
#include "GLTestContext.h"
#include "pixmora.h"
#include "pmCV.h"

namespace {

using Image = pmUtil::ImageData<unsigned char>;

const char* const kClip = "/usr/share/doc/opencv-doc/examples/data/vtest.avi";

// The clip, read round and round: at its end it starts over.
class ClipFrames {
public:
    ClipFrames() {
        if (!pmCV::createVideoCapture(video, kClip)) return;
        rgb.resize(static_cast<size_t>(video.width) * video.height * 3);
        frame = Image(video.width, video.height, 3, rgb.data());
        opened = next();
    }
    ~ClipFrames() { pmCV::deleteVideoCapture(video); }
    ClipFrames(const ClipFrames&) = delete;
    ClipFrames& operator=(const ClipFrames&) = delete;

    bool next() {
        if (pmCV::readVideoCapture(video, frame)) return true;
        pmCV::setVideoCapturePosition(video, 0);
        return pmCV::readVideoCapture(video, frame);
    }

    pmCV::VideoData video;
    std::vector<unsigned char> rgb;
    Image frame;
    bool opened = false;
};

// A video blur on the caller's context, as the tool makes it; interpolation
// off, so that every Draw after a new frame captures it.
class VideoBlur {
public:
    VideoBlur() {
        pmDisableInternalGLContext();
        object = {PM_BLUR_VIDEO, pmBlurFilterCreate(PM_BLUR_VIDEO)};
        pmBlurFilterSetBlurIntensity(object, 10.0f);
        pmBlurFilterSetInterpolation(object, false);
        pmBlurFilterSetFlipMode(object, PM_FLIP_V);
    }
    ~VideoBlur() { pmBlurFilterDelete(&object); }
    VideoBlur(const VideoBlur&) = delete;
    VideoBlur& operator=(const VideoBlur&) = delete;

    void handOver(Image& frame) {
        pmBlurFilterSetBuffer(object, frame.data, frame.width, frame.height, 3);
    }
    void draw(const Image& frame) { pmBlurFilterDraw(object, frame.width, frame.height); }

    pmFilterObject object{};
};

// Times `stage` alone in each iteration, after an untimed `prepare`, and
// reports it against the copy pass of this run.
template <typename Prepare, typename Stage>
void runStage(benchmark::State& state, Prepare prepare, Stage stage) {
    using Clock = std::chrono::steady_clock;
    const double copyMs = copyPassMilliseconds();
    prepare();
    stage();
    finishFrame();
    double totalMs = 0.0;
    for (auto _ : state) {
        prepare();
        finishFrame();
        const Clock::time_point start = Clock::now();
        stage();
        finishFrame();
        totalMs += std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    }
    const double meanMs = totalMs / static_cast<double>(state.iterations());
    state.counters["stage_ms"] = meanMs;
    state.counters["fps"] = 1000.0 / meanMs;
    state.counters["x_copy"] = meanMs / copyMs;
}

bool haveClip(benchmark::State& state, const ClipFrames& clip) {
    if (clip.opened) return true;
    state.SkipWithError("vtest.avi of opencv-doc is not installed");
    return false;
}

void BM_VideoDecode(benchmark::State& state) {
    ClipFrames clip;
    if (!haveClip(state, clip)) return;
    GLTestContext gl(clip.video.width, clip.video.height);
    runStage(
        state, [] {}, [&] { clip.next(); });
}

void BM_VideoHandOver(benchmark::State& state) {
    ClipFrames clip;
    if (!haveClip(state, clip)) return;
    GLTestContext gl(clip.video.width, clip.video.height);
    VideoBlur blur;
    runStage(
        state, [] {}, [&] { blur.handOver(clip.frame); });
}

void BM_VideoCaptureDraw(benchmark::State& state) {
    ClipFrames clip;
    if (!haveClip(state, clip)) return;
    GLTestContext gl(clip.video.width, clip.video.height);
    VideoBlur blur;
    runStage(
        state, [&] { blur.handOver(clip.frame); }, [&] { blur.draw(clip.frame); });
}

void BM_VideoRestingDraw(benchmark::State& state) {
    ClipFrames clip;
    if (!haveClip(state, clip)) return;
    GLTestContext gl(clip.video.width, clip.video.height);
    VideoBlur blur;
    for (int capture = 0; capture < 2; ++capture) {
        blur.handOver(clip.frame);
        blur.draw(clip.frame);
    }
    runStage(
        state, [] {}, [&] { blur.draw(clip.frame); });
}

void BM_VideoReadBack(benchmark::State& state) {
    ClipFrames clip;
    if (!haveClip(state, clip)) return;
    GLTestContext gl(clip.video.width, clip.video.height);
    std::vector<unsigned char> rgba(static_cast<size_t>(gl.width) * gl.height * 4);
    runStage(
        state, [] {},
        [&] { glReadPixels(0, 0, gl.width, gl.height, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data()); });
}

void BM_VideoEncode(benchmark::State& state) {
    ClipFrames clip;
    if (!haveClip(state, clip)) return;
    GLTestContext gl(clip.video.width, clip.video.height);
    const std::string path =
        (std::filesystem::temp_directory_path() / "pixmora-bench-encode.avi").string();
    pmCV::VideoWriter writer;
    pmCV::createVideoWriter(writer, path, 60.0f, clip.video.width, clip.video.height);
    runStage(
        state, [] {}, [&] { pmCV::writeVideoFrame(writer, clip.frame); });
    pmCV::deleteVideoWriter(writer);
    std::remove(path.c_str());
}

BENCHMARK(BM_VideoDecode)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_VideoHandOver)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_VideoCaptureDraw)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_VideoRestingDraw)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_VideoReadBack)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_VideoEncode)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
