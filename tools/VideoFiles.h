// Video files on the tool's side, through the library's OpenCV bridge: a
// clip read frame by frame, and a clip written under a temporary name that
// takes its real name only when it is complete.
#ifndef PIXMORA_TOOL_VIDEOFILES_H
#define PIXMORA_TOOL_VIDEOFILES_H

#include <string>
#include <vector>

#include "Pictures.h"
#include <pixmora/pmCV.h>

class ClipReader {
public:
    // Opens the clip and decodes its first frame; a missing file, a file that
    // is no video or a video without frames is a ToolError.
    explicit ClipReader(const std::string& path);
    ~ClipReader();
    ClipReader(const ClipReader&) = delete;
    ClipReader& operator=(const ClipReader&) = delete;

    // The next frame, RGB top row first, in a buffer reused from frame to
    // frame; false at the end of the clip.
    bool next(Image& frame);

    int width() const { return video.width; }
    int height() const { return video.height; }
    // The container's frame count; 0 when it does not tell.
    int frameCount() const { return video.frameCount > 0 ? video.frameCount : 0; }
    // The container's frame rate; 0 when it does not tell.
    double framesPerSecond() const { return fps; }

private:
    pmCV::VideoData video;
    std::vector<unsigned char> pixels;
    bool firstPending = true;
    double fps = 0.0;
};

class ClipWriter {
public:
    // Opens a motion JPEG file in AVI next to `path`, under a temporary name.
    ClipWriter(const std::string& path, double fps, int width, int height);
    // Removes the temporary file unless commit() renamed it.
    ~ClipWriter();
    ClipWriter(const ClipWriter&) = delete;
    ClipWriter& operator=(const ClipWriter&) = delete;

    // One RGB or RGBA frame of the clip's size, top row first.
    void write(const Image& frame);
    // Finishes the file and gives it its real name.
    void commit();

    int framesWritten() const { return written; }

private:
    std::string path;
    std::string partialPath;
    pmCV::VideoWriter writer;
    int written = 0;
    bool committed = false;
};

// The name a clip is written under until it is complete.
std::string partialName(const std::string& path);

#endif
