// pixmora blur: the background blur of one image file.
#include <CLI/CLI.hpp>
#include <memory>

#include "BlurLook.h"
#include "Commands.h"
#include "Names.h"
#include "Pictures.h"
#include "StillRender.h"

namespace {

struct BlurRequest {
    std::string input;
    std::string output;
    BlurLook look;
    std::string flip = "none";
};

void runBlur(const BlurRequest& request) {
    checkOutputExtension(request.output);
    checkBlurLook(request.look);
    Image input = loadInput(request.input);
    const int width = input.width;
    const int height = input.height;
    std::vector<unsigned char> rgba = toRgba(input);
    pmUtil::deleteImageData(input);
    std::vector<unsigned char> pixels =
        fromRgba(renderBlur(request.look, flipMode(request.flip), rgba, width, height), 3);
    saveRendered(request.output, pixels, width, height, 3);
}

}  // namespace

void addBlurCommand(CLI::App& app) {
    auto request = std::make_shared<BlurRequest>();
    CLI::App* blur =
        app.add_subcommand("blur", "Make a soft, dimmed, dithered background of an image file");
    blur->add_option("IN", request->input, "Input image: PNG, JPEG, BMP or TGA")->required();
    blur->add_option("OUT", request->output, "Output image: .png, .jpg, .bmp or .tga")->required();
    blur->add_option("--intensity", request->look.intensity, "Blur degree, 1 to 50")
        ->capture_default_str();
    addBlurLookOptions(*blur, request->look);
    blur->add_option("--flip", request->flip, "Mirror the picture: h horizontally, v vertically")
        ->check(CLI::IsMember(flipNames()))
        ->capture_default_str();
    blur->fallthrough();
    blur->callback([request] { runBlur(*request); });
    setExample(*blur, "pixmora blur photo.jpg background.png --intensity 30 --dim 0.8");
}
