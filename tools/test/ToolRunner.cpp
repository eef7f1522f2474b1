#include "ToolRunner.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "pmStb.h"

std::string readFile(const fs::path& path) {
    std::ifstream stream(path);
    std::stringstream text;
    text << stream.rdbuf();
    return text.str();
}

std::string inQuotes(const std::string& text) {
    return "'" + text + "'";
}

void ToolTest::SetUp() {
    char pattern[] = "/tmp/pixmora-tool-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir = pattern;
}

void ToolTest::TearDown() {
    std::error_code ignored;
    fs::remove_all(dir, ignored);
}

RunResult ToolTest::run(const std::string& arguments) const {
    const std::string command = inQuotes(PIXMORA_TOOL_PATH) + " " + arguments + " > " +
                                inQuotes(path("stdout.txt")) + " 2> " +
                                inQuotes(path("stderr.txt"));
    const int raw = std::system(command.c_str());
    RunResult result;
    result.signalled = WIFSIGNALED(raw) || (WIFEXITED(raw) && WEXITSTATUS(raw) >= 128);
    result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    result.out = readFile(dir / "stdout.txt");
    result.err = readFile(dir / "stderr.txt");
    return result;
}

std::vector<unsigned char> ToolTest::writeInput(const std::string& name, int width, int height,
                                                int channel) const {
    std::vector<unsigned char> pixels(static_cast<size_t>(width) * height * channel);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            unsigned char* p = &pixels[(static_cast<size_t>(y) * width + x) * channel];
            for (int c = 0; c < channel; ++c)
                p[c] = static_cast<unsigned char>(x * 19 + y * 53 + c * 97);
            if (channel == 4) p[3] = static_cast<unsigned char>(64 + x * 7);
        }
    }
    EXPECT_TRUE(pmStb::saveImage(path(name), Image(width, height, channel, pixels.data()), false));
    return pixels;
}

std::string sampleData(const std::string& name) {
    const fs::path shipped = fs::path("/usr/share/doc/opencv-doc/examples/data") / name;
    if (fs::exists(shipped)) return shipped.string();
    const fs::path compressed = shipped.string() + ".gz";
    if (!fs::exists(compressed)) return "";
    const fs::path cached = fs::temp_directory_path() / ("pixmora-sample-" + name);
    if (!fs::exists(cached)) {
        const fs::path partial = cached.string() + ".part" + std::to_string(getpid());
        const std::string command =
            "gzip -dc " + inQuotes(compressed.string()) + " > " + inQuotes(partial.string());
        if (std::system(command.c_str()) != 0) return "";
        fs::rename(partial, cached);
    }
    return cached.string();
}

void expectRefused(const RunResult& result, const std::string& word) {
    EXPECT_FALSE(result.signalled) << result.err;
    EXPECT_NE(result.status, 0);
    EXPECT_NE(result.err.find(word), std::string::npos) << result.err;
}
