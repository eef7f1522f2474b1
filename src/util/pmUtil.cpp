// Out-of-line helpers of pmUtil.
#include "pmUtil.h"

namespace pmUtil {

std::string stringExtension(const std::string& path) {
    // The whole path is searched, so "a.b/c" yields ".b/c".
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos) return std::string();
    return path.substr(dot);
}

}  // namespace pmUtil
