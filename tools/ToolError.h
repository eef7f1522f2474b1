// The one way a subcommand fails: main prints the message on stderr and
// leaves with a non-zero status.
#ifndef PIXMORA_TOOL_TOOLERROR_H
#define PIXMORA_TOOL_TOOLERROR_H

#include <stdexcept>

class ToolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

#endif
