// What the fuzz targets share: a scratch file per process to hand bytes to
// the readers that take a path or a stream, and a headless GL context for the
// readers that make textures.
#ifndef PIXMORA_FUZZ_SUPPORT_H
#define PIXMORA_FUZZ_SUPPORT_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

// Writes the bytes to this process's scratch file with the given extension
// and returns its path.
std::string writeScratchFile(const std::uint8_t* data, std::size_t size,
                             const std::string& extension);

// Makes a GL ES 3 context current on Mesa's surfaceless platform, once.
void ensureGLContext();

}  // namespace fuzz

#endif
