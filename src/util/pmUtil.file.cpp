// Symbolic-link check and directory listing.
#include <dirent.h>
#include <limits.h>
#include <unistd.h>

#include <cerrno>

#include "pmUtil.h"

namespace pmUtil {

namespace {

// realpath needs PATH_MAX bytes; the joined path is held to the same size.
constexpr std::size_t kPathBufferSize = 4096;
static_assert(PATH_MAX <= kPathBufferSize, "realpath may write more than the buffer holds");

}  // namespace

bool checkSymbolicLink(const std::string& path) {
    char resolved[kPathBufferSize];
    if (realpath(path.c_str(), resolved) == nullptr) {
        // A path that doesn't exist can't be a link; anything else is refused.
        if (errno == ENOENT) return true;
        perror("realpath");
        return false;
    }
    if (path == resolved) return true;

    // A relative path passes when the current directory joined with it is
    // already the resolved path: no link and no "." or ".." to resolve.
    char joined[kPathBufferSize];
    if (getcwd(joined, sizeof(joined)) == nullptr) return false;
    std::size_t used = std::strlen(joined);
    const std::string tail = "/" + path;
    const std::size_t room = sizeof(joined) - 1 - used;
    const std::size_t copied = tail.size() < room ? tail.size() : room;
    std::memcpy(joined + used, tail.data(), copied);
    used += copied;
    joined[used] = '\0';
    return std::strcmp(joined, resolved) == 0;
}

std::vector<std::string> findAllFiles(const std::string& directory) {
    std::vector<std::string> files;
    DIR* dir = opendir(directory.c_str());
    if (dir == nullptr) return files;
    while (const dirent* entry = readdir(dir)) {
        const char* name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
        files.push_back(directory + "/" + name);
    }
    closedir(dir);
    return files;
}

std::vector<std::string> findFilteredFiles(const std::string& directory,
                                           const std::vector<std::string>& extensions) {
    std::vector<std::string> files;
    for (const std::string& file : findAllFiles(directory)) {
        const std::string extension = stringLower(stringExtension(file));
        for (const std::string& wanted : extensions) {
            if (extension == wanted) {
                files.push_back(file);
                break;
            }
        }
    }
    return files;
}

std::vector<std::string> findImageFiles(const std::string& directory) {
    return findFilteredFiles(directory, {".jpg", ".png", ".bmp", ".tga"});
}

}  // namespace pmUtil
