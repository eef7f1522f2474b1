#ifndef PIXMORA_TOOL_VERSION_H
#define PIXMORA_TOOL_VERSION_H

#include <string>

// The version the loaded library reports, or "unknown".
std::string libraryVersion();
// Two lines: the tool's version and the library's.
std::string versionText();

#endif
