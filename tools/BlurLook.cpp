#include "BlurLook.h"

#include <CLI/CLI.hpp>
#include <sstream>
#include <vector>

#include "ToolError.h"

namespace {

std::vector<float> parseMixColor(const std::string& text) {
    std::vector<float> values;
    std::string item;
    std::istringstream stream(text);
    while (std::getline(stream, item, ',')) {
        try {
            size_t used = 0;
            values.push_back(std::stof(item, &used));
            if (used != item.size()) values.clear();
        } catch (const std::exception&) {
            values.clear();
        }
        if (values.empty()) break;
    }
    if (values.size() != 4) throw ToolError("--mix wants four numbers R,G,B,A, got '" + text + "'");
    return values;
}

}  // namespace

void addBlurLookOptions(CLI::App& command, BlurLook& look) {
    command.add_option("--dim", look.dim, "Brightness, 0 (black) to 1 (unchanged)")
        ->capture_default_str();
    command.add_option("--mix", look.mix, "Colour mixed in by its own alpha: R,G,B,A, 0 to 1")
        ->capture_default_str();
    command.add_option("--kernel", look.kernel, "Kernel size; rounded to 7, 11, 15, ...")
        ->capture_default_str();
    command.add_flag("--smooth", look.smooth,
                     "Smooth quality: no steps in flat areas, cheaper at low intensities");
}

void checkBlurLook(const BlurLook& look) {
    parseMixColor(look.mix);
}

void applyBlurLook(pmFilterObject blur, const BlurLook& look) {
    const std::vector<float> mix = parseMixColor(look.mix);
    pmBlurFilterSetBlurIntensity(blur, look.intensity);
    pmBlurFilterSetBlurDimming(blur, look.dim);
    pmBlurFilterSetBlurMixColor(blur, mix[0], mix[1], mix[2], mix[3]);
    pmBlurFilterSetQuality(blur, look.smooth ? PM_BLUR_QUALITY_SMOOTH : PM_BLUR_QUALITY_DEFAULT);
}
