// pixmora lut: grades an image file through a colour table.
#include <CLI/CLI.hpp>
#include <memory>

#include "Commands.h"
#include "Headless.h"
#include "Pictures.h"
#include "ToolError.h"
#include <pixmora/pmDrawLUT.h>

namespace {

struct LutRequest {
    std::string input;
    std::string table;
    std::string output;
};

// The picture through a colour table of strip layout (N slices of N x N side
// by side, N * N wide and N high), on the tool's own context.
std::vector<unsigned char> renderLut(std::vector<unsigned char>& rgba, int width, int height,
                                     Image& table) {
    HeadlessContext context;
    RenderTarget target(width, height);
    pmGL::Texture picture;
    pmGL::Texture strip;
    pmGL::createTexture(picture, Image(width, height, 4, rgba.data()), pmGL::TextureOpts());
    pmGL::createTexture(strip, table, pmGL::TextureOpts());
    pmDraw::LUTFilter lut;
    if (!lut.initialize()) throw ToolError("the library cannot build the colour look-up");
    pmDraw::setTexture(lut, picture, glm::vec2(0.0f, 1.0f));
    lut.setLUT(strip);
    pmDraw::runTextureFilter(lut);
    std::vector<unsigned char> out = target.read();
    pmDraw::deleteTextureFilter(lut);
    pmGL::deleteTexture(strip);
    pmGL::deleteTexture(picture);
    return out;
}

void runLut(const LutRequest& request) {
    checkOutputExtension(request.output);
    Image input = loadInput(request.input);
    Image table = loadInput(request.table);
    if (table.height < 2 || table.width != table.height * table.height) {
        pmUtil::deleteImageData(input);
        pmUtil::deleteImageData(table);
        throw ToolError("table '" + request.table + "' must be N*N pixels wide and N high");
    }
    const int width = input.width;
    const int height = input.height;
    std::vector<unsigned char> rgba = toRgba(input);
    std::vector<unsigned char> tableRgba = toRgba(table);
    Image tableImage(table.width, table.height, 4, tableRgba.data());
    pmUtil::deleteImageData(input);
    pmUtil::deleteImageData(table);
    std::vector<unsigned char> pixels = fromRgba(renderLut(rgba, width, height, tableImage), 3);
    saveRendered(request.output, pixels, width, height, 3);
}

}  // namespace

void addLutCommand(CLI::App& app) {
    auto request = std::make_shared<LutRequest>();
    CLI::App* lut = app.add_subcommand("lut", "Grade an image file through a colour table");
    lut->add_option("IN", request->input, "Input image: PNG, JPEG, BMP or TGA")->required();
    lut->add_option("TABLE", request->table,
                    "Colour table image: N slices of N x N side by side, N*N wide, N high")
        ->required();
    lut->add_option("OUT", request->output, "Output image: .png, .jpg, .bmp or .tga")->required();
    lut->fallthrough();
    lut->callback([request] { runLut(*request); });
    setExample(*lut, "pixmora lut photo.jpg warm-table.png graded.png");
}
