// Each subcommand of the tool lives in its own file and adds itself to the
// command line here. A command keeps its parsed arguments alive in its own
// callback, and its run throws ToolError on failure.
#ifndef PIXMORA_TOOL_COMMANDS_H
#define PIXMORA_TOOL_COMMANDS_H

#include <string>

namespace CLI {
class App;
}

void addEffectCommand(CLI::App& app);
void addBlurCommand(CLI::App& app);
void addLutCommand(CLI::App& app);
void addGalleryCommand(CLI::App& app);
void addKernelCommand(CLI::App& app);
void addVideoCommand(CLI::App& app);
void addFacesCommand(CLI::App& app);
void addPaletteCommand(CLI::App& app);

// Ends a command's help with one command line to copy.
void setExample(CLI::App& command, const std::string& example);

#endif
