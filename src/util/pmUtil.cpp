// Out-of-line helpers of pmUtil: string and path splitting.
#include <cctype>

#include "pmUtil.h"

namespace pmUtil {

namespace {

// Position of the last path separator, either kind.
std::size_t lastSeparator(const std::string& path) {
    return path.find_last_of("\\/");
}

}  // namespace

std::string stringExtension(const std::string& path) {
    // The whole path is searched, so "a.b/c" yields ".b/c".
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos) return std::string();
    return path.substr(dot);
}

std::vector<std::string> stringTokens(const std::string& text, const std::string& delimiters) {
    std::vector<std::string> tokens;
    std::size_t start = text.find_first_not_of(delimiters);
    while (start != std::string::npos) {
        const std::size_t end = text.find_first_of(delimiters, start);
        tokens.push_back(text.substr(start, end == std::string::npos ? end : end - start));
        start = text.find_first_not_of(delimiters, end);
    }
    return tokens;
}

std::string stringLower(const std::string& text) {
    std::string result(text);
    for (char& c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
}

std::string stringUpper(const std::string& text) {
    std::string result(text);
    for (char& c : result) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return result;
}

std::string stringPath(const std::string& path) {
    const std::size_t separator = lastSeparator(path);
    if (separator == std::string::npos) return std::string();
    return path.substr(0, separator + 1);
}

std::string stringFilename(const std::string& path) {
    const std::size_t separator = lastSeparator(path);
    if (separator == std::string::npos) return path;
    return path.substr(separator + 1);
}

std::string stringStem(const std::string& path) {
    // A name without a dot has no stem at all, rather than being its own stem.
    const std::string name = stringFilename(path);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos) return std::string();
    return name.substr(0, dot);
}

}  // namespace pmUtil
