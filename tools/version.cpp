// pixmora --version: the tool's own version and the one the loaded library
// tells, which differ when the tool runs against another build of the library.
#include "Version.h"

#include <string>

#include "FilterObjects.h"
#include "Headless.h"
#include "LibraryLog.h"

namespace {

// The library tells its version only in the line it logs when a blur is
// created: "... > Blur Version 1.0.12 ".
const std::string kVersionMark = "Blur Version ";

std::string versionIn(const std::string& line) {
    const size_t at = line.find(kVersionMark);
    if (at == std::string::npos) return "";
    const size_t start = at + kVersionMark.size();
    const size_t end = line.find_first_of(" \n", start);
    return line.substr(start, end == std::string::npos ? std::string::npos : end - start);
}

}  // namespace

std::string libraryVersion() {
    std::string version;
    setLibraryLogListener([&version](const std::string& line) {
        if (version.empty()) version = versionIn(line);
    });
    try {
        HeadlessDisplay headless;
        pmSetEGLDisplay(headless.display);
        pmEnableInternalGLContext();
        BlurFilter blur(PM_BLUR_PHOTO, 35);
    } catch (const std::exception&) {
        // The version line comes before anything that can fail in the library.
    }
    setLibraryLogListener(nullptr);
    return version.empty() ? "unknown" : version;
}

std::string versionText() {
    return std::string("pixmora ") + PIXMORA_TOOL_VERSION + "\nlibpixmora " + libraryVersion();
}
