// Writes the seed corpora that the library's own writers make: image files of
// every format, packed records, PKM files and a framebuffer stream. Run from
// scripts/fuzz.sh --seeds; the results are checked in under fuzz/corpus/.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "pmGL.h"
#include "pmGLUtil.h"
#include "pmStb.h"

namespace {

using Image = pmUtil::ImageData<unsigned char>;
using Bytes = std::vector<unsigned char>;

Bytes pixels(int width, int height, int channel) {
    Bytes bytes(static_cast<std::size_t>(width) * height * channel);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(i * 37 + (i / 7) * 5);
    }
    return bytes;
}

void writeBytes(const std::string& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

Bytes readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

Bytes withPrefix(unsigned char first, const Bytes& rest) {
    Bytes bytes{first};
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    return bytes;
}

void imageSeeds(const std::string& corpus) {
    const std::string unpacked = corpus + "/fuzz_unpacked_image/";
    const std::string file = corpus + "/fuzz_image_file/";
    const std::string noise = corpus + "/fuzz_noise_texture/";
    const char* extensions[] = {".png", ".jpg", ".bmp", ".tga"};
    int index = 0;
    for (int channel = 1; channel <= 4; ++channel) {
        Bytes image = pixels(5, 3, channel);
        for (const char* extension : extensions) {
            const std::string path = "/tmp/pixmora-seed" + std::string(extension);
            if (!pmStb::saveImage(path, Image(5, 3, channel, image.data()), false)) continue;
            const Bytes encoded = readBytes(path);
            const std::string name = "own" + std::to_string(index++);
            writeBytes(unpacked + name, withPrefix(0, encoded));
            writeBytes(file + name, withPrefix(static_cast<unsigned char>(index % 12), encoded));
            if (channel == 4 && std::string(extension) == ".png") {
                writeBytes(noise + name, withPrefix(0x8F, withPrefix(4, encoded)));
            }
        }
    }
    std::vector<float> hdr(4 * 3 * 3);
    for (std::size_t i = 0; i < hdr.size(); ++i) hdr[i] = 0.25f * static_cast<float>(i);
    if (pmStb::saveHdrImage("/tmp/pixmora-seed.hdr", pmUtil::ImageData<float>(4, 3, 3, hdr.data()),
                            false)) {
        const Bytes encoded = readBytes("/tmp/pixmora-seed.hdr");
        writeBytes(unpacked + "own-hdr", withPrefix(1, encoded));
        writeBytes(file + "own-hdr", withPrefix(8, encoded));
    }
}

void recordSeeds(const std::string& corpus) {
    const std::string dir = corpus + "/fuzz_image_record/";
    const char* extensions[] = {".raw", ".png", ".jpg", ".bmp", ".tga", ".xyz"};
    Bytes image = pixels(4, 3, 3);
    for (const char* extension : extensions) {
        std::ofstream out(dir + "own" + extension, std::ios::binary | std::ios::trunc);
        pmStb::writeImage(out, Image(4, 3, 3, image.data()), extension);
        pmStb::writeImage(out, Image(4, 3, 3, image.data()), ".raw");
    }
}

void pkmSeeds(const std::string& corpus) {
    const std::string dir = corpus + "/fuzz_compressed_texture/";
    const int sizes[][2] = {{4, 4}, {3, 5}, {8, 4}};
    int index = 0;
    for (const auto& size : sizes) {
        const int ew = (size[0] + 3) / 4 * 4;
        const int eh = (size[1] + 3) / 4 * 4;
        for (unsigned char format : {0, 1}) {
            Bytes bytes = {format, 'P', 'K', 'M', ' ', '2', '0', 0, 1};
            for (int value : {ew, eh, size[0], size[1]}) {
                bytes.push_back(static_cast<unsigned char>(value >> 8));
                bytes.push_back(static_cast<unsigned char>(value & 0xFF));
            }
            const std::size_t data = static_cast<std::size_t>(ew) * eh / (format == 0 ? 2 : 1);
            for (std::size_t i = 0; i < data; ++i)
                bytes.push_back(static_cast<unsigned char>(i * 13));
            writeBytes(dir + "own" + std::to_string(index++), bytes);
        }
    }
}

void frameBufferSeeds(const std::string& corpus) {
    fuzz::ensureGLContext();
    pmGL::FrameBuffer fb;
    Bytes image = pixels(8, 6, 4);
    pmGL::TextureOpts opts;
    opts.mipmap = false;
    pmGL::createFrameBuffer(fb, Image(8, 6, 4, image.data()), opts, 2, false, false, 0);
    for (const char* extension : {".raw", ".png", ".bmp"}) {
        std::ofstream out(corpus + "/fuzz_framebuffer_stream/own" + extension,
                          std::ios::binary | std::ios::trunc);
        pmGL::writeFrameBufferToStream(out, fb, extension);
    }
    pmGL::deleteFrameBuffer(fb);
}

void stringSeeds(const std::string& corpus) {
    const std::string dir = corpus + "/fuzz_string_parsers/";
    const char* texts[] = {"\x0A-05:30:00:", "\x0A+09:00:00:",
                           "\x09"
                           "12:60:61/.",
                           "\x12/usr/lib/a.b/c.so.1/\\.",
                           "\x05"
                           "a:b:c"};
    int index = 0;
    for (const char* text : texts) {
        const std::string bytes(text);
        writeBytes(dir + "own" + std::to_string(index++), Bytes(bytes.begin(), bytes.end()));
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS_DIR\n", argv[0]);
        return 2;
    }
    const std::string corpus = argv[1];
    for (const char* target :
         {"fuzz_image_record", "fuzz_unpacked_image", "fuzz_image_file", "fuzz_compressed_texture",
          "fuzz_framebuffer_stream", "fuzz_noise_texture", "fuzz_string_parsers"}) {
        std::filesystem::create_directories(corpus + "/" + target);
    }
    imageSeeds(corpus);
    recordSeeds(corpus);
    pkmSeeds(corpus);
    frameBufferSeeds(corpus);
    stringSeeds(corpus);
    return 0;
}
