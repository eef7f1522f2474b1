// pixmora: applies the library's photo effects and background blur to image
// files, and shows the blur kernel it uses.
//
// The tool makes its own headless GL ES 3 context and framebuffer, and talks
// to the library only through its exported C functions; image files are read
// and written through pmStb.
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES3/gl3.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "GaussianBlur.h"
#include "pmDrawLUT.h"
#include "pixmora.h"
#include "pmStb.h"

namespace {

using Image = pmUtil::ImageData<unsigned char>;

// A failure to report on stderr before leaving with a non-zero status.
class ToolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// --- Names on the command line -------------------------------------------------

struct EffectName {
    const char* name;
    unsigned type;
};

// The effects the tool offers, by photo effect type code.
const EffectName kEffects[] = {
    {"grey", PM_PHOTO_GREY},
    {"sepia", PM_PHOTO_SEPIA},
    {"bloom", PM_PHOTO_BLOOM},
    {"monotonous-blur", PM_PHOTO_MONOTONOUS_BLUR},
    {"cartoon", PM_PHOTO_CARTOON},
    {"chroma", PM_PHOTO_CHROMATIC_DISTORTION},
    {"night-vision", PM_PHOTO_NIGHT_VISION},
    {"cross-stitch", PM_PHOTO_CROSS_STITCHING},
    {"painting", PM_PHOTO_PAINTING},
    {"cross-hatch", PM_PHOTO_CROSS_HATCHING},
};

struct FlipName {
    const char* name;
    int mode;
};

const FlipName kFlipModes[] = {
    {"none", PM_FLIP_NONE}, {"h", PM_FLIP_H}, {"v", PM_FLIP_V}, {"hv", PM_FLIP_HV}};

const char* const kOutputExtensions[] = {".png", ".jpg", ".bmp", ".tga"};

std::string effectList() {
    std::string names;
    for (const EffectName& effect : kEffects) {
        if (!names.empty()) names += ", ";
        names += effect.name;
    }
    return names;
}

unsigned effectType(const std::string& name) {
    for (const EffectName& effect : kEffects) {
        if (name == effect.name) return effect.type;
    }
    throw ToolError("unknown effect '" + name + "' (available: " + effectList() + ")");
}

std::vector<std::string> flipNames() {
    std::vector<std::string> names;
    for (const FlipName& flip : kFlipModes) names.push_back(flip.name);
    return names;
}

int flipMode(const std::string& name) {
    for (const FlipName& flip : kFlipModes) {
        if (name == flip.name) return flip.mode;
    }
    return PM_FLIP_NONE;
}

bool endsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

// The output format follows the file's extension, written exactly in lower case.
void checkOutputExtension(const std::string& path) {
    for (const char* extension : kOutputExtensions) {
        if (endsWith(path, extension)) return;
    }
    throw ToolError("output file '" + path + "' must end in .png, .jpg, .bmp or .tga");
}

// --- Library log --------------------------------------------------------------

bool showLibraryLog = false;

}  // namespace

// The library's log sink. The library reports its progress through it at every
// call; the tool passes those lines on only with --verbose, so that a run
// prints nothing but its own result or error. It is declared here rather than
// taken from the platform's header, which is not part of the installed API:
// the log id is an int-sized enum there.
extern "C" int __dlog_print(int, int prio, const char* tag, const char* fmt, ...) {
    if (!showLibraryLog || fmt == nullptr) return 0;
    char message[4096];
    va_list args;
    va_start(args, fmt);
    std::vsnprintf(message, sizeof(message), fmt, args);
    va_end(args);
    std::string line(message);
    while (!line.empty() && line.back() == '\n') line.pop_back();
    return std::fprintf(stderr, "%c/%s: %s\n", prio == 4 ? 'I' : 'E', tag ? tag : "", line.c_str());
}

namespace {

// --- Headless GL --------------------------------------------------------------

// An ES 3 context on Mesa's surfaceless platform, current on this thread for
// its whole life.
class HeadlessContext {
public:
    HeadlessContext() {
        openDisplay();
        createContext();
    }
    ~HeadlessContext() {
        eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        if (context != EGL_NO_CONTEXT) eglDestroyContext(display, context);
        eglTerminate(display);
    }
    HeadlessContext(const HeadlessContext&) = delete;
    HeadlessContext& operator=(const HeadlessContext&) = delete;

private:
    void openDisplay() {
        display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA,
                                        reinterpret_cast<void*>(EGL_DEFAULT_DISPLAY), nullptr);
        if (display == EGL_NO_DISPLAY || !eglInitialize(display, nullptr, nullptr)) {
            throw ToolError("cannot open a headless EGL display");
        }
    }

    void createContext() {
        const EGLint configAttribs[] = {
            EGL_RED_SIZE,   8, EGL_GREEN_SIZE,   8, EGL_BLUE_SIZE,       8,
            EGL_ALPHA_SIZE, 8, EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_ES3_BIT,
            EGL_NONE};
        const EGLint contextAttribs[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
        EGLConfig config = nullptr;
        EGLint count = 0;
        eglBindAPI(EGL_OPENGL_ES_API);
        if (!eglChooseConfig(display, configAttribs, &config, 1, &count) || count < 1) {
            throw ToolError("no EGL configuration for OpenGL ES 3");
        }
        context = eglCreateContext(display, config, EGL_NO_CONTEXT, contextAttribs);
        if (context == EGL_NO_CONTEXT ||
            !eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context)) {
            throw ToolError("cannot make an OpenGL ES 3 context current");
        }
    }

    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
};

// An RGBA8 framebuffer of the image's size, bound with a matching viewport.
class RenderTarget {
public:
    RenderTarget(int targetWidth, int targetHeight) : width(targetWidth), height(targetHeight) {
        checkSize();
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, width, height);
        glBindTexture(GL_TEXTURE_2D, 0);
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
        if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
            throw ToolError("cannot create a framebuffer of the image's size");
        }
        glViewport(0, 0, width, height);
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
        glClear(GL_COLOR_BUFFER_BIT);
    }
    ~RenderTarget() {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &framebuffer);
        glDeleteTextures(1, &texture);
    }
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

    // RGBA pixels in the order GL gives them: bottom row first.
    std::vector<unsigned char> read() const {
        std::vector<unsigned char> pixels(static_cast<size_t>(width) * height * 4);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        if (glGetError() != GL_NO_ERROR) throw ToolError("cannot read the rendered image back");
        return pixels;
    }

private:
    void checkSize() const {
        GLint maxTexture = 0;
        GLint maxRenderbuffer = 0;
        glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxTexture);
        glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &maxRenderbuffer);
        const int limit = std::min(maxTexture, maxRenderbuffer);
        if (width > limit || height > limit) {
            throw ToolError("image of " + std::to_string(width) + " x " + std::to_string(height) +
                            " exceeds the GL limit of " + std::to_string(limit));
        }
    }

    int width;
    int height;
    GLuint texture = 0;
    GLuint framebuffer = 0;
};

// One photo effect object of the library, deleted with the scope.
class PhotoFilter {
public:
    explicit PhotoFilter(unsigned type) {
        // The tool draws into its own framebuffer on its own context, so the
        // library's private per-thread context stays out of the way.
        pmDisableInternalGLContext();
        object.type = static_cast<int>(type);
        object.handler = pmPhotoFilterCreate(type);
        if (object.handler == nullptr) throw ToolError("the library cannot create this effect");
    }
    ~PhotoFilter() { pmPhotoFilterDelete(&object); }
    PhotoFilter(const PhotoFilter&) = delete;
    PhotoFilter& operator=(const PhotoFilter&) = delete;

    pmFilterObject object{};
};

// --- Pixels -------------------------------------------------------------------

// Widens grey, grey-alpha, RGB or RGBA pixels to RGBA, the one layout every
// input is uploaded in.
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

// Keeps alpha only when the input had it.
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

Image loadInput(const std::string& path) {
    Image image = pmStb::loadImage(path, false);
    if (image.data == nullptr) throw ToolError("cannot read image '" + path + "'");
    return image;
}

// Draws the effect over the top-row-first pixels and reads the framebuffer
// back. With flip mode none the library samples the picture with its vertical
// axis inverted, which shows it upright in GL's bottom-up framebuffer: the
// rows read back come bottom row first.
std::vector<unsigned char> renderEffect(unsigned type, int flipMode,
                                        std::vector<unsigned char>& rgba, int width, int height) {
    HeadlessContext context;
    RenderTarget target(width, height);
    PhotoFilter filter(type);
    pmPhotoFilterSetBuffer(filter.object, rgba.data(), width, height, 4);
    pmPhotoFilterSetFlipMode(filter.object, flipMode);
    pmPhotoFilterDraw(filter.object, width, height);
    return target.read();
}

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
    // The rows are written in reverse, top of the framebuffer first, so that
    // flip mode none keeps the input's orientation.
    const bool bottomRowFirst = true;
    if (!pmStb::saveImage(request.output, Image(width, height, channel, pixels.data()),
                          bottomRowFirst)) {
        throw ToolError("cannot write image '" + request.output + "'");
    }
}

// --- Command line -------------------------------------------------------------

void addEffectCommand(CLI::App& app, EffectRequest& request) {
    CLI::App* effect = app.add_subcommand(
        "effect", "Apply a photo effect to an image file (effects: " + effectList() + ")");
    effect->add_option("EFFECT", request.effect, "Effect name: " + effectList())->required();
    effect->add_option("IN", request.input, "Input image: PNG, JPEG, BMP or TGA")->required();
    effect->add_option("OUT", request.output, "Output image: .png, .jpg, .bmp or .tga")->required();
    effect->add_option("--flip", request.flip, "Mirror the picture: h horizontally, v vertically")
        ->check(CLI::IsMember(flipNames()))
        ->capture_default_str();
    // Options of the whole tool, such as --verbose, may follow the command too.
    effect->fallthrough();
    effect->callback([&request] { runEffect(request); });
}

// --- Background blur ----------------------------------------------------------

struct BlurRequest {
    std::string input;
    std::string output;
    float intensity = 40.0f;
    float dim = 1.0f;
    std::string mix = "0,0,0,0";
    int kernel = 35;
    std::string flip = "none";
};

// The display alone: the blur runs on the library's own private context, so
// the tool makes no context of its own.
class HeadlessDisplay {
public:
    HeadlessDisplay() {
        display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA,
                                        reinterpret_cast<void*>(EGL_DEFAULT_DISPLAY), nullptr);
        if (display == EGL_NO_DISPLAY || !eglInitialize(display, nullptr, nullptr)) {
            throw ToolError("cannot open a headless EGL display");
        }
    }
    ~HeadlessDisplay() { eglTerminate(display); }
    HeadlessDisplay(const HeadlessDisplay&) = delete;
    HeadlessDisplay& operator=(const HeadlessDisplay&) = delete;

    EGLDisplay display = EGL_NO_DISPLAY;
};

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

// Blurs RGBA pixels and reads the result back through the library, bottom
// row first as GL keeps it.
std::vector<unsigned char> renderBlur(const BlurRequest& request, std::vector<unsigned char>& rgba,
                                      int width, int height) {
    const std::vector<float> mix = parseMixColor(request.mix);
    HeadlessDisplay headless;
    pmSetEGLDisplay(headless.display);
    pmEnableInternalGLContext();
    pmFilterObject blur{PM_BLUR_PHOTO,
                        pmBlurFilterCreateWithKernelSize(PM_BLUR_PHOTO, request.kernel)};
    if (blur.handler == nullptr) throw ToolError("the library cannot create the blur");
    pmBlurFilterSetBuffer(blur, rgba.data(), width, height, 4);
    pmBlurFilterSetBlurIntensity(blur, request.intensity);
    pmBlurFilterSetBlurDimming(blur, request.dim);
    pmBlurFilterSetBlurMixColor(blur, mix[0], mix[1], mix[2], mix[3]);
    pmBlurFilterSetFlipMode(blur, flipMode(request.flip));
    std::vector<unsigned char> out(static_cast<size_t>(width) * height * 4);
    pmBlurFilterSetOutputBuffer(blur, {COLOR_TYPE_RGBA, out.data(), width, height});
    pmBlurFilterDelete(&blur);
    return out;
}

void runBlur(const BlurRequest& request) {
    checkOutputExtension(request.output);
    Image input = loadInput(request.input);
    const int width = input.width;
    const int height = input.height;
    std::vector<unsigned char> rgba = toRgba(input);
    pmUtil::deleteImageData(input);
    std::vector<unsigned char> pixels = fromRgba(renderBlur(request, rgba, width, height), 3);
    const bool bottomRowFirst = true;
    if (!pmStb::saveImage(request.output, Image(width, height, 3, pixels.data()), bottomRowFirst)) {
        throw ToolError("cannot write image '" + request.output + "'");
    }
}

void addBlurCommand(CLI::App& app, BlurRequest& request) {
    CLI::App* blur =
        app.add_subcommand("blur", "Make a soft, dimmed, dithered background of an image file");
    blur->add_option("IN", request.input, "Input image: PNG, JPEG, BMP or TGA")->required();
    blur->add_option("OUT", request.output, "Output image: .png, .jpg, .bmp or .tga")->required();
    blur->add_option("--intensity", request.intensity, "Blur degree, 1 to 50")
        ->capture_default_str();
    blur->add_option("--dim", request.dim, "Brightness, 0 (black) to 1 (unchanged)")
        ->capture_default_str();
    blur->add_option("--mix", request.mix, "Colour mixed in by its own alpha: R,G,B,A, 0 to 1")
        ->capture_default_str();
    blur->add_option("--kernel", request.kernel, "Kernel size; rounded to 7, 11, 15, ...")
        ->capture_default_str();
    blur->add_option("--flip", request.flip, "Mirror the picture: h horizontally, v vertically")
        ->check(CLI::IsMember(flipNames()))
        ->capture_default_str();
    blur->fallthrough();
    blur->callback([&request] { runBlur(request); });
}

// --- Colour look-up -----------------------------------------------------------

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
    if (!pmStb::saveImage(request.output, Image(width, height, 3, pixels.data()), true)) {
        throw ToolError("cannot write image '" + request.output + "'");
    }
}

void addLutCommand(CLI::App& app, LutRequest& request) {
    CLI::App* lut = app.add_subcommand("lut", "Grade an image file through a colour table");
    lut->add_option("IN", request.input, "Input image: PNG, JPEG, BMP or TGA")->required();
    lut->add_option("TABLE", request.table,
                    "Colour table image: N slices of N x N side by side, N*N wide, N high")
        ->required();
    lut->add_option("OUT", request.output, "Output image: .png, .jpg, .bmp or .tga")->required();
    lut->fallthrough();
    lut->callback([&request] { runLut(request); });
}

// --- Gallery ------------------------------------------------------------------

struct GalleryRequest {
    std::string input;
    std::string outputDir;
};

struct GalleryItem {
    std::string file;
    std::string title;
    std::string settings;
};

const float kGalleryIntensities[] = {5.0f, 20.0f, 40.0f};

void writeGalleryImage(const std::string& path, std::vector<unsigned char>& rgba, int width,
                       int height) {
    std::vector<unsigned char> rgb = fromRgba(rgba, 3);
    if (!pmStb::saveImage(path, Image(width, height, 3, rgb.data()), true)) {
        throw ToolError("cannot write image '" + path + "'");
    }
}

std::string htmlEscape(const std::string& text) {
    std::string out;
    for (char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

void writeGalleryPage(const std::string& dir, const std::string& input,
                      const std::vector<GalleryItem>& items) {
    std::string html =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<title>Pixmora gallery</title>\n<style>\n"
        "body { font-family: sans-serif; background: #202124; color: #e8eaed; margin: 2em; }\n"
        ".grid { display: grid; grid-template-columns: repeat(auto-fill, minmax(320px, 1fr));"
        " gap: 1.5em; }\n"
        "figure { margin: 0; } img { width: 100%; border-radius: 4px; }\n"
        "figcaption { margin-top: .4em; } .settings { color: #9aa0a6; font-size: .9em; }\n"
        "</style>\n</head>\n<body>\n<h1>Pixmora gallery</h1>\n<p>Source: " +
        htmlEscape(input) + "</p>\n<div class=\"grid\">\n";
    for (const GalleryItem& item : items) {
        html += "<figure><img src=\"" + htmlEscape(item.file) + "\" alt=\"" +
                htmlEscape(item.title) + "\"><figcaption><strong>" + htmlEscape(item.title) +
                "</strong><br><span class=\"settings\">" + htmlEscape(item.settings) +
                "</span></figcaption></figure>\n";
    }
    html += "</div>\n</body>\n</html>\n";
    const std::string path = dir + "/index.html";
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) throw ToolError("cannot write '" + path + "'");
    const bool written = std::fwrite(html.data(), 1, html.size(), file) == html.size();
    if (std::fclose(file) != 0 || !written) throw ToolError("cannot write '" + path + "'");
}

void runGallery(const GalleryRequest& request) {
    Image input = loadInput(request.input);
    const int width = input.width;
    const int height = input.height;
    std::vector<unsigned char> rgba = toRgba(input);
    pmUtil::deleteImageData(input);
    std::vector<GalleryItem> items;
    for (const EffectName& effect : kEffects) {
        std::vector<unsigned char> out =
            renderEffect(effect.type, PM_FLIP_NONE, rgba, width, height);
        const std::string file = std::string("effect-") + effect.name + ".png";
        writeGalleryImage(request.outputDir + "/" + file, out, width, height);
        items.push_back({file, effect.name, "photo effect, type " + std::to_string(effect.type)});
    }
    for (float intensity : kGalleryIntensities) {
        BlurRequest blur;
        blur.intensity = intensity;
        blur.dim = 0.8f;
        std::vector<unsigned char> out = renderBlur(blur, rgba, width, height);
        const std::string name = std::to_string(static_cast<int>(intensity));
        const std::string file = "blur-" + name + ".png";
        writeGalleryImage(request.outputDir + "/" + file, out, width, height);
        items.push_back({file, "blur " + name,
                         "background blur, intensity " + name + ", dimming 0.8, kernel 35"});
    }
    writeGalleryPage(request.outputDir, request.input, items);
    std::printf("wrote %zu pictures and index.html to %s\n", items.size(),
                request.outputDir.c_str());
}

void addGalleryCommand(CLI::App& app, GalleryRequest& request) {
    CLI::App* gallery = app.add_subcommand(
        "gallery", "Write every effect and the blur at a few intensities, with an index.html");
    gallery->add_option("IN", request.input, "Input image: PNG, JPEG, BMP or TGA")->required();
    gallery->add_option("OUTDIR", request.outputDir, "Existing folder for the pictures")
        ->required()
        ->check(CLI::ExistingDirectory);
    gallery->fallthrough();
    gallery->callback([&request] { runGallery(request); });
}

// --- Kernel inspector -------------------------------------------------------------

struct KernelRequest {
    int size = 35;
    bool glsl = false;
};

// The blur accepts sizes of the form 4k + 3; any other wish takes the nearest
// such size, a tie going to the larger, within 3 to 407.
int usableKernelSize(int wanted) {
    const int clamped = std::min(std::max(wanted, 3), 407);
    const int k = (clamped - 3 + 2) / 4;
    return 4 * k + 3;
}

void printNumbers(const char* title, const std::vector<float>& values) {
    std::printf("%-8s", title);
    for (float value : values) std::printf(" %.5f", value);
    std::printf("\n");
}

void runKernel(const KernelRequest& request) {
    const int size = usableKernelSize(request.size);
    const pmDraw::GaussKernel kernel = pmDraw::describeGaussKernel(size);
    std::printf("kernel size %d", size);
    if (size != request.size) std::printf(" (asked for %d)", request.size);
    std::printf("\nsigma    %.2f\nsteps    %zu\n", kernel.sigma, kernel.weights.size());
    printNumbers("weights", kernel.weights);
    printNumbers("offsets", kernel.offsets);
    if (request.glsl) std::printf("\n%s", GenerateGaussShaderKernelWeightsAndOffsets(size).c_str());
}

void addKernelCommand(CLI::App& app, KernelRequest& request) {
    CLI::App* kernel = app.add_subcommand(
        "kernel", "Print the blur kernel of a size: sigma, steps, folded weights and offsets");
    kernel
        ->add_option("N", request.size, "Kernel size; the nearest size of the form 4k + 3 is used")
        ->required();
    kernel->add_flag("--glsl", request.glsl, "Also print the generated shader text");
    kernel->fallthrough();
    kernel->callback([&request] { runKernel(request); });
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Applies the library's GPU photo effects to image files, headless."};
    app.name("pixmora");
    app.require_subcommand(1);
    app.add_flag("-v,--verbose", showLibraryLog, "Show the library's log lines on stderr");
    EffectRequest request;
    addEffectCommand(app, request);
    BlurRequest blurRequest;
    addBlurCommand(app, blurRequest);
    LutRequest lutRequest;
    addLutCommand(app, lutRequest);
    GalleryRequest galleryRequest;
    addGalleryCommand(app, galleryRequest);
    KernelRequest kernelRequest;
    addKernelCommand(app, kernelRequest);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const ToolError& error) {
        std::fprintf(stderr, "pixmora: error: %s\n", error.what());
        return 1;
    }
    return 0;
}
