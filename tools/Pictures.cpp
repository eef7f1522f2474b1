#include "Pictures.h"

#include "ToolError.h"
#include <pixmora/pmStb.h>

namespace {

const char* const kOutputExtensions[] = {".png", ".jpg", ".bmp", ".tga"};

void save(const std::string& path, std::vector<unsigned char>& pixels, int width, int height,
          int channel, bool bottomRowFirst) {
    if (!pmStb::saveImage(path, Image(width, height, channel, pixels.data()), bottomRowFirst)) {
        throw ToolError("cannot write image '" + path + "'");
    }
}

}  // namespace

bool endsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

void checkOutputExtension(const std::string& path) {
    for (const char* extension : kOutputExtensions) {
        if (endsWith(path, extension)) return;
    }
    throw ToolError("output file '" + path + "' must end in .png, .jpg, .bmp or .tga");
}

Image loadInput(const std::string& path) {
    Image image = pmStb::loadImage(path, false);
    if (image.data == nullptr) throw ToolError("cannot read image '" + path + "'");
    return image;
}

std::vector<unsigned char> toRgba(const Image& image) {
    const size_t count = static_cast<size_t>(image.width) * image.height;
    const int channel = image.channel;
    const bool hasAlpha = channel == 2 || channel == 4;
    const int colours = hasAlpha ? channel - 1 : channel;
    std::vector<unsigned char> rgba(count * 4);
    for (size_t i = 0; i < count; ++i) {
        const unsigned char* in = image.data + i * channel;
        unsigned char* out = &rgba[i * 4];
        for (int c = 0; c < 3; ++c) out[c] = in[colours == 1 ? 0 : c];
        out[3] = hasAlpha ? in[channel - 1] : 255;
    }
    return rgba;
}

std::vector<unsigned char> fromRgba(const std::vector<unsigned char>& rgba, int channel) {
    if (channel == 4) return rgba;
    std::vector<unsigned char> rgb(rgba.size() / 4 * 3);
    for (size_t i = 0, o = 0; i < rgba.size(); i += 4, o += 3) {
        rgb[o] = rgba[i];
        rgb[o + 1] = rgba[i + 1];
        rgb[o + 2] = rgba[i + 2];
    }
    return rgb;
}

void savePicture(const std::string& path, std::vector<unsigned char>& pixels, int width, int height,
                 int channel) {
    save(path, pixels, width, height, channel, false);
}

void saveRendered(const std::string& path, std::vector<unsigned char>& pixels, int width,
                  int height, int channel) {
    save(path, pixels, width, height, channel, true);
}
