// The settings that shape a background blur, shared by the still and the
// video commands so that both offer the same options in the same words.
#ifndef PIXMORA_TOOL_BLURLOOK_H
#define PIXMORA_TOOL_BLURLOOK_H

#include <string>

#include <pixmora/pixmora.h>

namespace CLI {
class App;
}

struct BlurLook {
    float intensity = 40.0f;
    float dim = 1.0f;
    std::string mix = "0,0,0,0";
    int kernel = 35;
    bool smooth = false;
};

// Adds --dim, --mix, --kernel and --smooth to a command; the intensity has its own
// option name in each command.
void addBlurLookOptions(CLI::App& command, BlurLook& look);

// Checks what the parser cannot: the mix colour's four numbers.
void checkBlurLook(const BlurLook& look);

// Hands the settings to a blur object of either type.
void applyBlurLook(pmFilterObject blur, const BlurLook& look);

#endif
