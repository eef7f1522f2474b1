// The names the command line gives to the library's type codes.
#ifndef PIXMORA_TOOL_NAMES_H
#define PIXMORA_TOOL_NAMES_H

#include <string>
#include <vector>

struct EffectName {
    const char* name;
    unsigned type;
};

// Every photo effect, in type code order.
const std::vector<EffectName>& effectNames();
// "grey, sepia, ..." for help texts and messages.
std::string effectList();
// The type code of an effect name; an unknown name is a ToolError.
unsigned effectType(const std::string& name);

std::vector<std::string> flipNames();
// The flip mode of a name from flipNames().
int flipMode(const std::string& name);

#endif
