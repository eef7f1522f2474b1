// The tool's side of the library's log: lines are dropped unless the user
// asked for them with --verbose, and a listener may read them as they come.
#ifndef PIXMORA_TOOL_LIBRARYLOG_H
#define PIXMORA_TOOL_LIBRARYLOG_H

#include <functional>
#include <string>

// The flag behind --verbose: library lines go to stderr while it is set.
bool& libraryLogShownFlag();

// Receives every line of the library, prefix and all, without its newline.
// An empty function removes the listener.
void setLibraryLogListener(std::function<void(const std::string&)> listener);

#endif
