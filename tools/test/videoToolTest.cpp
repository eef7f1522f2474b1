// The video command on the first frames of a real clip (people walking, 768 x
// 576 at 10 frames a second), checked against the input frames decoded here.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <opencv2/videoio.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "ToolRunner.h"
#include "pmCV.h"

namespace {

struct Clip {
    double fps = 0.0;
    int width = 0;
    int height = 0;
    std::vector<std::vector<unsigned char>> frames;  // RGB, top row first
};

// Every frame of a clip, or the first `limit` of them.
Clip decodeClip(const std::string& path, int limit = 1 << 30) {
    Clip clip;
    pmCV::VideoData video;
    if (!pmCV::createVideoCapture(video, path)) return clip;
    clip.fps = video.capture->get(cv::CAP_PROP_FPS);
    clip.width = video.width;
    clip.height = video.height;
    std::vector<unsigned char> pixels(static_cast<size_t>(video.width) * video.height * 3);
    Image frame(video.width, video.height, 3, pixels.data());
    while (static_cast<int>(clip.frames.size()) < limit && pmCV::readVideoCapture(video, frame)) {
        clip.frames.push_back(pixels);
    }
    pmCV::deleteVideoCapture(video);
    return clip;
}

double luminance(const unsigned char* p) {
    return p[0] * 0.2125 + p[1] * 0.7154 + p[2] * 0.0721;
}

// Detail: the mean step in luminance between horizontal neighbours.
double detail(const std::vector<unsigned char>& rgb, int width, int height) {
    double sum = 0.0;
    for (int y = 0; y < height; ++y) {
        const unsigned char* row = &rgb[static_cast<size_t>(y) * width * 3];
        for (int x = 1; x < width; ++x)
            sum += std::fabs(luminance(row + x * 3) - luminance(row + (x - 1) * 3));
    }
    return sum / (static_cast<double>(height) * (width - 1));
}

double meanDifference(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b) {
    double sum = 0.0;
    for (size_t i = 0; i < a.size(); ++i) sum += std::abs(a[i] - b[i]);
    return sum / static_cast<double>(a.size());
}

// Mean luminance of each cell of a coarse grid: what a strong blur keeps.
std::vector<double> coarseGrid(const std::vector<unsigned char>& rgb, int width, int height,
                               bool upsideDown) {
    constexpr int kCells = 4;
    std::vector<double> cells(kCells * kCells, 0.0);
    for (int y = 0; y < height; ++y) {
        const int sourceY = upsideDown ? height - 1 - y : y;
        for (int x = 0; x < width; ++x) {
            const int cell = (y * kCells / height) * kCells + x * kCells / width;
            cells[cell] += luminance(&rgb[(static_cast<size_t>(sourceY) * width + x) * 3]);
        }
    }
    for (double& cell : cells) cell /= static_cast<double>(width) * height / (kCells * kCells);
    return cells;
}

double gridDistance(const std::vector<double>& a, const std::vector<double>& b) {
    double sum = 0.0;
    for (size_t i = 0; i < a.size(); ++i) sum += std::fabs(a[i] - b[i]);
    return sum / static_cast<double>(a.size());
}

// Consecutive output frames that differ at all: the writer encodes equal
// pictures to equal bytes, so a frame that did not change decodes the same.
int changedFrames(const Clip& clip) {
    int changed = 0;
    for (size_t i = 1; i < clip.frames.size(); ++i) {
        if (meanDifference(clip.frames[i], clip.frames[i - 1]) > 0.0) ++changed;
    }
    return changed;
}

class VideoToolTest : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        clip = sampleData("vtest.avi");
        if (clip.empty()) GTEST_SKIP() << "opencv-doc's vtest.avi is not installed";
    }

    RunResult video(const std::string& arguments) const {
        return run("video " + inQuotes(clip) + " " + inQuotes(path("out.avi")) + " " + arguments);
    }

    std::string clip;
};

TEST_F(VideoToolTest, BlurWritesRenderRateOverClipRateFramesPerInputFrameAtTheRenderRate) {
    RunResult result = video("--blur 20 --render-fps 30 --frames 4 -q");
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(result.err.empty()) << result.err;
    const Clip out = decodeClip(path("out.avi"));
    EXPECT_EQ(out.frames.size(), 4u * 30 / 10);
    EXPECT_NEAR(out.fps, 30.0, 0.01);
    EXPECT_EQ(out.width, 768);
    EXPECT_EQ(out.height, 576);
}

TEST_F(VideoToolTest, EveryBlurredFrameHasFarLessDetailAndStaysUpright) {
    const int frames = 3;
    const int draws = 2;
    RunResult result = video("--blur 10 --render-fps 20 --frames 3 -q");
    ASSERT_EQ(result.status, 0) << result.err;
    const Clip in = decodeClip(clip, frames);
    const Clip out = decodeClip(path("out.avi"));
    ASSERT_EQ(out.frames.size(), static_cast<size_t>(frames * draws));
    for (size_t i = 0; i < out.frames.size(); ++i) {
        const std::vector<unsigned char>& source = in.frames[i / draws];
        EXPECT_LT(detail(out.frames[i], out.width, out.height),
                  detail(source, in.width, in.height) / 4.0)
            << "output frame " << i;
        const std::vector<double> blurred = coarseGrid(out.frames[i], out.width, out.height, false);
        EXPECT_LT(gridDistance(blurred, coarseGrid(source, in.width, in.height, false)),
                  gridDistance(blurred, coarseGrid(source, in.width, in.height, true)))
            << "output frame " << i << " is upside down";
    }
}

TEST_F(VideoToolTest, CrossFadeChangesTheFrameOnMostDraws) {
    const int frames = 6;
    RunResult result = video("--blur 10 --render-fps 60 --frames 6 -q");
    ASSERT_EQ(result.status, 0) << result.err;
    const Clip out = decodeClip(path("out.avi"));
    ASSERT_EQ(out.frames.size(), static_cast<size_t>(frames * 6));
    EXPECT_GT(changedFrames(out), static_cast<int>(out.frames.size() - 1) / 2);
}

TEST_F(VideoToolTest, WithoutInterpolationTheFrameChangesOnceAnInputFrame) {
    const int frames = 6;
    RunResult result = video("--blur 10 --render-fps 60 --frames 6 --no-interpolation -q");
    ASSERT_EQ(result.status, 0) << result.err;
    const Clip out = decodeClip(path("out.avi"));
    ASSERT_EQ(out.frames.size(), static_cast<size_t>(frames * 6));
    // The first input frame has nothing to change from; each later one
    // changes the picture once, at the Draw after it arrived.
    EXPECT_EQ(changedFrames(out), frames - 1);
}

TEST_F(VideoToolTest, GreyEffectIsTheGreyOfEachFrameWithinTheCodecNoise) {
    const int frames = 3;
    RunResult result = video("--effect grey --frames 3 -q");
    ASSERT_EQ(result.status, 0) << result.err;
    const Clip in = decodeClip(clip, frames);
    const Clip out = decodeClip(path("out.avi"));
    ASSERT_EQ(out.frames.size(), static_cast<size_t>(frames));
    EXPECT_NEAR(out.fps, in.fps, 0.01);
    for (size_t f = 0; f < out.frames.size(); ++f) {
        double error = 0.0;
        double colour = 0.0;
        const size_t count = static_cast<size_t>(out.width) * out.height;
        for (size_t i = 0; i < count; ++i) {
            const unsigned char* p = &out.frames[f][i * 3];
            const double grey = luminance(&in.frames[f][i * 3]);
            for (int c = 0; c < 3; ++c) error += std::fabs(p[c] - grey);
            colour += std::abs(p[0] - p[1]) + std::abs(p[1] - p[2]);
        }
        EXPECT_LT(error / (count * 3), 2.5) << "frame " << f;
        EXPECT_LT(colour / (count * 2), 1.0) << "frame " << f;
    }
}

TEST_F(VideoToolTest, ProgressIsAPlainLineAtEveryTenthWhenStderrIsNoTerminal) {
    RunResult result = video("--effect grey --frames 10");
    ASSERT_EQ(result.status, 0) << result.err;
    int lines = 0;
    size_t start = 0;
    for (size_t end; (end = result.err.find('\n', start)) != std::string::npos; start = end + 1) {
        const std::string line = result.err.substr(start, end - start);
        EXPECT_NE(line.find('%'), std::string::npos) << line;
        EXPECT_EQ(line.find('\r'), std::string::npos) << line;
        ++lines;
    }
    EXPECT_EQ(lines, 10) << result.err;
    EXPECT_NE(result.err.find("100%"), std::string::npos) << result.err;
}

// A refused run says so in one line and leaves no file behind, finished or not.
void expectRefusedWithoutFiles(const RunResult& result, const std::string& word,
                               const fs::path& dir) {
    expectRefused(result, word);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    for (const fs::directory_entry& entry : fs::directory_iterator(dir)) {
        const std::string name = entry.path().filename().string();
        EXPECT_TRUE(name == "stdout.txt" || name == "stderr.txt" || name == "text.avi") << name;
    }
}

TEST_F(VideoToolTest, BadInputsAreRefusedInOneLineWithoutAnOutputFile) {
    std::ofstream(dir / "text.avi") << "plain text, no video";
    const std::string out = " " + inQuotes(path("out.avi"));
    expectRefusedWithoutFiles(run("video " + inQuotes(path("text.avi")) + out + " --blur 10"),
                              "cannot read video", dir);
    expectRefusedWithoutFiles(run("video " + inQuotes(path("absent.avi")) + out + " --blur 10"),
                              "no such file", dir);
    expectRefusedWithoutFiles(
        run("video " + inQuotes(clip) + " " + inQuotes(path("no/such/dir/out.avi")) + " --blur 10"),
        "cannot write video", dir);
    expectRefusedWithoutFiles(video("--effect sparkle"), "unknown effect 'sparkle'", dir);
    expectRefusedWithoutFiles(video("--blur 10 --render-fps 0.5"), "--render-fps", dir);
    expectRefusedWithoutFiles(video("--blur 10 --frames 0"), "--frames", dir);
    expectRefusedWithoutFiles(video(""), "--blur", dir);
}

TEST_F(VideoToolTest, ASuccessfulRunLeavesOnlyTheFinishedFile) {
    RunResult result = video("--blur 10 --frames 1 -q");
    ASSERT_EQ(result.status, 0) << result.err;
    for (const fs::directory_entry& entry : fs::directory_iterator(dir)) {
        const std::string name = entry.path().filename().string();
        EXPECT_TRUE(name == "stdout.txt" || name == "stderr.txt" || name == "out.avi") << name;
    }
}

// Waits for the temporary file of a run to appear in `dir`, for at most a
// minute; its name starts with a dot and the output's stem.
bool partialAppears(const fs::path& dir) {
    for (int wait = 0; wait < 600; ++wait) {
        for (const fs::directory_entry& entry : fs::directory_iterator(dir)) {
            if (entry.path().filename().string().rfind(".out.part", 0) == 0) return true;
        }
        usleep(100 * 1000);
    }
    return false;
}

TEST_F(VideoToolTest, AnInterruptedRunLeavesNoFile) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const std::string out = path("out.avi");
        execl(PIXMORA_TOOL_PATH, "pixmora", "video", clip.c_str(), out.c_str(), "--blur", "10",
              "-q", static_cast<char*>(nullptr));
        _exit(127);
    }
    const bool started = partialAppears(dir);
    kill(child, SIGTERM);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(started);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_TRUE(fs::is_empty(dir));
}

TEST_F(ToolTest, FacesFindsAPersonAndNoneInALandscape) {
    const std::string person = sampleData("messi5.jpg");
    if (person.empty()) GTEST_SKIP() << "opencv-doc's messi5.jpg is not installed";
    RunResult found = run("faces " + inQuotes(person) + " --out " + inQuotes(path("faces.png")));
    ASSERT_EQ(found.status, 0) << found.err;
    std::istringstream lines(found.out);
    int x = 0, y = 0, w = 0, h = 0, faces = 0;
    while (lines >> x >> y >> w >> h) {
        EXPECT_GE(w, 30);
        EXPECT_GE(h, 30);
        ++faces;
    }
    EXPECT_GE(faces, 1) << found.out;
    Image annotated = pmCV::loadImage(path("faces.png"), false, true);
    EXPECT_EQ(annotated.width, 548);
    EXPECT_EQ(annotated.height, 342);
    pmUtil::deleteImageData(annotated);

    RunResult none = run("faces /usr/share/backgrounds/mate/nature/Storm.jpg");
    ASSERT_EQ(none.status, 0) << none.err;
    EXPECT_TRUE(none.out.empty()) << none.out;
}

TEST_F(ToolTest, FacesRefusesAMissingCascade) {
    writeInput("in.png", 40, 40, 3);
    expectRefused(
        run("faces " + inQuotes(path("in.png")) + " --cascade " + inQuotes(path("no.xml"))),
        "cannot load face cascade");
}

TEST_F(ToolTest, PaletteOfTwoFlatColoursIsExactlyThoseTwo) {
    const int width = 40;
    const int height = 30;
    std::vector<unsigned char> pixels(static_cast<size_t>(width) * height * 3);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            unsigned char* p = &pixels[(static_cast<size_t>(y) * width + x) * 3];
            const bool left = x < width / 2;
            p[0] = left ? 200 : 10;
            p[1] = left ? 30 : 120;
            p[2] = left ? 40 : 250;
        }
    }
    ASSERT_TRUE(pmCV::saveImage(path("two.png"), Image(width, height, 3, pixels.data()), false));
    RunResult result =
        run("palette " + inQuotes(path("two.png")) + " 2 --out " + inQuotes(path("swatch.png")));
    ASSERT_EQ(result.status, 0) << result.err;
    // Darkest first: the red's luminance is below the blue's.
    EXPECT_EQ(result.out, "#c81e28\n#0a78fa\n");
    Image swatch = pmCV::loadImage(path("swatch.png"), false, true);
    EXPECT_EQ(swatch.width, 2 * 64);
    EXPECT_EQ(swatch.height, 64);
    pmUtil::deleteImageData(swatch);
}

TEST_F(ToolTest, PaletteRefusesMoreColoursThanPixels) {
    writeInput("tiny.png", 2, 2, 3);
    expectRefused(run("palette " + inQuotes(path("tiny.png")) + " 5"), "more than");
    expectRefused(run("palette " + inQuotes(path("tiny.png")) + " 0"), "K");
}

TEST_F(ToolTest, VersionTellsTheToolsAndTheLibrarysVersion) {
    RunResult result = run("--version");
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "pixmora 1.0.12\nlibpixmora 1.0.12\n");
}

TEST_F(ToolTest, EverySubcommandsHelpEndsWithAnExample) {
    for (const char* command :
         {"effect", "blur", "video", "lut", "gallery", "faces", "palette", "kernel"}) {
        RunResult result = run(std::string(command) + " --help");
        EXPECT_EQ(result.status, 0) << command;
        std::string text = result.out;
        while (!text.empty() && text.back() == '\n') text.pop_back();
        const std::string last = text.substr(text.rfind('\n') + 1);
        EXPECT_EQ(last.rfind(std::string("  pixmora ") + command + " ", 0), 0u)
            << command << ": " << last;
    }
}

TEST_F(VideoToolTest, GalleryShowsAStripOfConsecutiveClipFrames) {
    ASSERT_EQ(video("--blur 10 --render-fps 30 --frames 3 -q").status, 0);
    writeInput("in.png", 16, 12, 3);
    RunResult result =
        run("gallery " + inQuotes(path("in.png")) + " " + inQuotes(path("new/gallery")) +
            " --clip " + inQuotes(path("out.avi")) + " --strip-frames 4");
    ASSERT_EQ(result.status, 0) << result.err;
    const std::string index = readFile(path("new/gallery/index.html"));
    // Nine output frames; the strip is the middle four, 2 to 5.
    for (int frame = 2; frame <= 5; ++frame) {
        const std::string file = "clip-000" + std::to_string(frame) + ".png";
        EXPECT_NE(index.find(file), std::string::npos) << file;
        EXPECT_TRUE(fs::exists(path("new/gallery/" + file))) << file;
    }
    EXPECT_EQ(index.find("clip-0001.png"), std::string::npos);
    EXPECT_EQ(index.find("clip-0006.png"), std::string::npos);
}

}  // namespace
