// pixmora: the library's photo effects, background blur and video blur on
// image and video files, and the OpenCV bridge's faces and palettes, from the
// command line.
//
// The tool makes its own headless GL ES 3 context and framebuffer where it
// reads pictures back, and talks to the library only through its exported C
// functions and visible layers. Each subcommand lives in a file of its own
// name; this file only puts them together.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <opencv2/core/utils/logger.hpp>

#include "Commands.h"
#include "LibraryLog.h"
#include "ToolError.h"
#include "Version.h"

void setExample(CLI::App& command, const std::string& example) {
    command.footer("Example:\n  " + example);
}

// OpenCV writes its own warnings on stderr, several lines for a file it cannot
// open; the tool says what went wrong in one line of its own instead, and
// shows OpenCV's lines only with --verbose.
void quietOpenCV() {
    if (!libraryLogShownFlag()) {
        cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    }
}

int main(int argc, char** argv) {
    CLI::App app{
        "Applies the library's GPU photo effects and blurs to image and video files, "
        "headless."};
    app.name("pixmora");
    app.require_subcommand(1);
    app.add_flag("-v,--verbose", libraryLogShownFlag(), "Show the library's log lines on stderr");
    app.set_version_flag(
        "--version", [] { return versionText(); }, "Print the tool's and the library's version");
    addEffectCommand(app);
    addBlurCommand(app);
    addVideoCommand(app);
    addLutCommand(app);
    addGalleryCommand(app);
    addFacesCommand(app);
    addPaletteCommand(app);
    addKernelCommand(app);
    try {
        app.parse_complete_callback([] { quietOpenCV(); });
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const ToolError& error) {
        std::fprintf(stderr, "pixmora: error: %s\n", error.what());
        return 1;
    }
    return 0;
}
