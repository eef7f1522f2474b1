#include "VideoFiles.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <opencv2/videoio.hpp>

#include "ToolError.h"

namespace {

namespace fs = std::filesystem;

// The temporary file of the clip being written, for the signal handler: an
// interrupted run leaves nothing behind. A fixed buffer, because a handler
// may not allocate.
char pendingPartial[4096] = "";

void removePendingAndExit(int signalNumber) {
    if (pendingPartial[0] != '\0') unlink(pendingPartial);
    std::signal(signalNumber, SIG_DFL);
    std::raise(signalNumber);
}

void watchPartial(const std::string& partialPath) {
    std::snprintf(pendingPartial, sizeof(pendingPartial), "%s", partialPath.c_str());
    std::signal(SIGINT, removePendingAndExit);
    std::signal(SIGTERM, removePendingAndExit);
    std::signal(SIGHUP, removePendingAndExit);
}

void forgetPartial() {
    pendingPartial[0] = '\0';
}

}  // namespace

std::string partialName(const std::string& path) {
    const fs::path target(path);
    // A hidden name with the process id, so that two runs on one output do
    // not write into each other, and the real extension, which the writer
    // may choose its container by.
    const std::string name = "." + target.stem().string() + ".part" + std::to_string(getpid()) +
                             target.extension().string();
    return (target.parent_path() / name).string();
}

ClipReader::ClipReader(const std::string& path) {
    std::error_code error;
    if (!fs::exists(path, error)) throw ToolError("cannot read video '" + path + "': no such file");
    if (!pmCV::createVideoCapture(video, path) || video.width < 1 || video.height < 1) {
        pmCV::deleteVideoCapture(video);
        throw ToolError("cannot read video '" + path + "': not a video the decoder knows");
    }
    pixels.resize(static_cast<size_t>(video.width) * video.height * 3);
    Image first(video.width, video.height, 3, pixels.data());
    if (!pmCV::readVideoCapture(video, first)) {
        pmCV::deleteVideoCapture(video);
        throw ToolError("cannot read video '" + path + "': no frame decodes");
    }
    const double containerFps = video.capture->get(cv::CAP_PROP_FPS);
    fps = containerFps > 0.0 && containerFps < 1000.0 ? containerFps : 0.0;
}

ClipReader::~ClipReader() {
    pmCV::deleteVideoCapture(video);
}

bool ClipReader::next(Image& frame) {
    frame = Image(video.width, video.height, 3, pixels.data());
    if (firstPending) {
        firstPending = false;
        return true;
    }
    return pmCV::readVideoCapture(video, frame);
}

ClipWriter::ClipWriter(const std::string& target, double fps, int width, int height)
    : path(target), partialPath(partialName(target)) {
    watchPartial(partialPath);
    if (!pmCV::createVideoWriter(writer, partialPath, static_cast<float>(fps), width, height) ||
        !pmCV::isOpened(writer)) {
        pmCV::deleteVideoWriter(writer);
        std::remove(partialPath.c_str());
        forgetPartial();
        throw ToolError("cannot write video '" + path + "'");
    }
}

ClipWriter::~ClipWriter() {
    pmCV::deleteVideoWriter(writer);
    if (!committed) std::remove(partialPath.c_str());
    forgetPartial();
}

void ClipWriter::write(const Image& frame) {
    if (!pmCV::writeVideoFrame(writer, frame)) {
        throw ToolError("cannot write frame " + std::to_string(written) + " of '" + path + "'");
    }
    ++written;
}

void ClipWriter::commit() {
    pmCV::deleteVideoWriter(writer);
    std::error_code error;
    fs::rename(partialPath, path, error);
    if (error) throw ToolError("cannot write video '" + path + "': " + error.message());
    committed = true;
}
