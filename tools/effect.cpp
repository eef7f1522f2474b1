// pixmora effect: one photo effect on an image file.
#include <CLI/CLI.hpp>
#include <memory>

#include "Commands.h"
#include "Names.h"
#include "Pictures.h"
#include "StillRender.h"

namespace {

struct EffectRequest {
    std::string effect;
    std::string input;
    std::string output;
    std::string flip = "none";
};

void runEffect(const EffectRequest& request) {
    const unsigned type = effectType(request.effect);
    checkOutputExtension(request.output);
    Image input = loadInput(request.input);
    const int width = input.width;
    const int height = input.height;
    const int channel = (input.channel == 2 || input.channel == 4) ? 4 : 3;
    std::vector<unsigned char> rgba = toRgba(input);
    pmUtil::deleteImageData(input);
    std::vector<unsigned char> pixels =
        fromRgba(renderEffect(type, flipMode(request.flip), rgba, width, height), channel);
    saveRendered(request.output, pixels, width, height, channel);
}

}  // namespace

void addEffectCommand(CLI::App& app) {
    auto request = std::make_shared<EffectRequest>();
    CLI::App* effect = app.add_subcommand(
        "effect", "Apply a photo effect to an image file (effects: " + effectList() + ")");
    effect->add_option("EFFECT", request->effect, "Effect name: " + effectList())->required();
    effect->add_option("IN", request->input, "Input image: PNG, JPEG, BMP or TGA")->required();
    effect->add_option("OUT", request->output, "Output image: .png, .jpg, .bmp or .tga")
        ->required();
    effect->add_option("--flip", request->flip, "Mirror the picture: h horizontally, v vertically")
        ->check(CLI::IsMember(flipNames()))
        ->capture_default_str();
    // Options of the whole tool, such as --verbose, may follow the command too.
    effect->fallthrough();
    effect->callback([request] { runEffect(*request); });
    setExample(*effect, "pixmora effect sepia photo.jpg sepia.png");
}
