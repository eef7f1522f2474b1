#include "ScratchDirectory.h"

#include <stdlib.h>

#include <system_error>

ScratchDirectory::ScratchDirectory(const std::string& prefix) {
    std::string pattern = "/tmp/" + prefix + "-XXXXXX";
    if (mkdtemp(pattern.data()) != nullptr) dir = pattern;
}

ScratchDirectory::~ScratchDirectory() {
    if (dir.empty()) return;
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
}
