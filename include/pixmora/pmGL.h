/**
 * @file pmGL.h
 * @brief The GL layer (pmGL): a thin procedural layer over OpenGL ES 3 and EGL.
 *
 * Resources are plain records owned by value by whoever declares them; free
 * functions take a record by reference and fill, use or empty it. A GL resource
 * record holds its GL name in `id`, and 0 means empty. No record frees its GL
 * object on destruction: call the matching delete function, which is safe on an
 * empty record. Every GL call needs a current context on the calling thread.
 */
#ifndef PIXMORA_PMGL_H
#define PIXMORA_PMGL_H

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES3/gl3.h>
#include <GLES2/gl2ext.h>

#include <glm/glm.hpp>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "pmExport.h"
#include "pmUtil.h"

#ifndef GL_TEXTURE_EXTERNAL_OES
#define GL_TEXTURE_EXTERNAL_OES 0x8D65
#endif

// A native buffer surface of the platform. Only the handle appears here, so
// the header needs none of the platform's own headers.
struct _tbm_surface;
typedef struct _tbm_surface* tbm_surface_h;

namespace PM_VISIBLE pmGL {

using pmUtil::ImageData;

// Marks a vertex buffer whose attributes advance per instance.
constexpr unsigned PM_INSTANCED_ARRAY = 65535;

constexpr int TEX_FORMAT_SIZE = 5;
extern const unsigned TEX_DATA_FORMAT_8U[TEX_FORMAT_SIZE];
extern const unsigned TEX_DATA_FORMAT_16F[TEX_FORMAT_SIZE];
extern const int TEX_INTERNAL_FORMAT_8U[TEX_FORMAT_SIZE];
extern const int TEX_INTERNAL_FORMAT_16F[TEX_FORMAT_SIZE];

struct TextureOpts {
    unsigned target = GL_TEXTURE_2D;
    unsigned type = GL_UNSIGNED_BYTE;
    int internalFormat = GL_RGBA8;
    unsigned format = GL_RGBA;
    int minFilter = GL_LINEAR;
    int magFilter = GL_LINEAR;
    int wrapS = GL_CLAMP_TO_EDGE;
    int wrapT = GL_CLAMP_TO_EDGE;
    int wrapR = GL_CLAMP_TO_EDGE;
    bool mipmap = false;
    bool linear = true;
};

struct Texture {
    unsigned id = 0;
    int width = 0;
    int height = 0;
    TextureOpts opts;
};

struct RenderBufferOpts {
    int internalFormat = GL_RGBA8;
    int samples = 0;
};

struct RenderBuffer {
    unsigned id = 0;
    int width = 0;
    int height = 0;
    RenderBufferOpts opts;
};

struct FrameBuffer {
    unsigned id = 0;
    int width = 0;
    int height = 0;
    unsigned prevDrawFrameBuffer = 0;
    unsigned prevReadFrameBuffer = 0;
    int prevViewport[4] = {0, 0, 0, 0};
    std::vector<Texture> colorTex;
    Texture depthTex;
    std::vector<RenderBuffer> colorRenderBuffer;
    RenderBuffer depthRenderBuffer;
};

struct VertexAttribute {
    unsigned type = GL_FLOAT;
    int size = 0;
    bool normalized = false;
    int stride = 0;
    std::uintptr_t offset = 0;
    std::string name;
};

struct VertexBuffer {
    unsigned id = 0;
    unsigned indexId = 0;
    std::uint32_t count = 0;
    unsigned mode = GL_TRIANGLES;
    unsigned indexType = GL_UNSIGNED_SHORT;
    std::vector<VertexAttribute> attributes;
};

struct VertexArray {
    unsigned id = 0;
    unsigned count = 0;
    unsigned mode = GL_TRIANGLES;
    unsigned indexType = GL_UNSIGNED_SHORT;
    bool indexed = false;
};

// A buffer object on GL_UNIFORM_BUFFER, for the uniform blocks of a program.
struct UniformBuffer {
    unsigned id = 0;
    unsigned bindingPoint = 0;
    int size = 0;
    unsigned usage = GL_DYNAMIC_DRAW;
};

struct Uniform {
    int location = -1;
    int size = 0;
    unsigned type = 0;
    std::string name;
};

struct Attribute {
    int location = -1;
    int size = 0;
    unsigned type = 0;
    std::string name;
};

struct Program {
    unsigned id = 0;
    std::vector<Uniform> uniforms;
    std::vector<Attribute> attribs;
};

// Named uniform values of one pass. A texture's unit is its position in
// `textures`, whose keys are ordered by byte comparison.
struct UniformData {
    std::map<std::string, Texture> textures;
    std::map<std::string, int> ints;
    std::map<std::string, float> floats;
    std::map<std::string, glm::vec2> vec2s;
    std::map<std::string, glm::vec3> vec3s;
    std::map<std::string, glm::vec4> vec4s;
    std::map<std::string, glm::mat2> mat2s;
    std::map<std::string, glm::mat3> mat3s;
    std::map<std::string, glm::mat4> mat4s;
};

struct IndexedTriangle {
    unsigned short a = 0;
    unsigned short b = 0;
    unsigned short c = 0;
};

template <typename V>
struct TriangleStripMesh {
    std::vector<V> vertices;
    std::vector<VertexAttribute> attributes;
};

template <typename V>
struct TriangleFanMesh {
    std::vector<V> vertices;
    std::vector<VertexAttribute> attributes;
};

template <typename V>
struct IndexedTriangleMesh {
    std::vector<V> vertices;
    std::vector<IndexedTriangle> triangles;
    std::vector<VertexAttribute> attributes;
};

template <typename V>
struct IndexedTriangleStripMesh {
    std::vector<V> vertices;
    std::vector<unsigned short> indices;
    std::vector<VertexAttribute> attributes;
};

struct BlendOpts {
    bool enabled = true;
    unsigned equationRGB = GL_FUNC_ADD;
    unsigned equationAlpha = GL_FUNC_ADD;
    unsigned srcRGB = GL_ONE;
    unsigned dstRGB = GL_ONE_MINUS_SRC_ALPHA;
    unsigned srcAlpha = GL_ONE;
    unsigned dstAlpha = GL_ONE_MINUS_SRC_ALPHA;
};

struct CullFaceOpts {
    bool enabled = false;
    unsigned cullFace = GL_BACK;
    unsigned frontFace = GL_CCW;
};

struct DepthTestOpts {
    bool enabled = false;
    bool mask = false;
    unsigned func = GL_GEQUAL;
};

struct StencilTestOpts {
    bool enabled = false;
    unsigned mask = 0xFF;
};

struct RenderOpts {
    BlendOpts blend;
    CullFaceOpts cullFace;
    DepthTestOpts depthTest;
    StencilTestOpts stencilTest;
    glm::bvec4 colorMask = glm::bvec4(true, true, true, true);
};

template <typename T>
bool isExist(const T& object) {
    return object.id != 0;
}

// ---- errors
bool checkError();

// ---- shaders and programs
unsigned createShader(const char* source, unsigned type);
bool createProgram(unsigned& id, const char* vertexSource, const char* fragmentSource);
bool createProgram(unsigned& id, const std::string& vertexSource,
                   const std::string& fragmentSource);
bool createProgram(Program& program, const char* vertexSource, const char* fragmentSource);
bool createProgram(Program& program, const std::string& vertexSource,
                   const std::string& fragmentSource);
void deleteProgram(unsigned& id);
void deleteProgram(Program& program);
void useProgram(unsigned id);
void useProgram(const Program& program);
bool isCurrentProgram(unsigned id);
bool isCurrentProgram(const Program& program);

// ---- reflection
int getUniformLocation(unsigned program, const char* name);
int getUniformLocation(unsigned program, const std::string& name);
int getUniformLocation(const Program& program, const char* name);
int getUniformLocation(const Program& program, const std::string& name);
int getAttribLocation(unsigned program, const char* name);
int getAttribLocation(unsigned program, const std::string& name);
int getAttribLocation(const Program& program, const char* name);
int getAttribLocation(const Program& program, const std::string& name);
void bindUniformBlock(unsigned program, const char* blockName, unsigned bindingPoint);
void bindUniformBlock(unsigned program, const std::string& blockName, unsigned bindingPoint);
void bindUniformBlock(const Program& program, const char* blockName, unsigned bindingPoint);
void bindUniformBlock(const Program& program, const std::string& blockName, unsigned bindingPoint);
int getUniformBlockSize(unsigned program, const char* blockName);
int getUniformBlockSize(unsigned program, const std::string& blockName);
int getUniformBlockSize(const Program& program, const char* blockName);
int getUniformBlockSize(const Program& program, const std::string& blockName);
void cacheActiveUniforms(Program& program);
void cacheActiveAttribs(Program& program);

template <typename T>
void uniform(const Program& program, const std::string& name, const T& value);
template <>
void uniform<int>(const Program& program, const std::string& name, const int& value);

// ---- textures
void createTexture(Texture& tex, int width, int height, void* pixels, const TextureOpts& opts);
void createTexture(Texture& tex, const ImageData<unsigned char>& image, const TextureOpts& opts);
void deleteTexture(Texture& tex);
void bindTexture(const Texture& tex, int unit);
unsigned getTextureInternalFormat(int channel, unsigned type);
unsigned getTextureFormat(int channel, unsigned type);
int getTextureChannel(unsigned format, unsigned type);
int getTexelSize(const TextureOpts& opts);
void updateTextureOpts(TextureOpts& opts, const ImageData<unsigned char>& image);
void updateTextureOpts(TextureOpts& opts, const ImageData<float>& image);
void updateTexture(Texture& tex, const ImageData<unsigned char>& image);
void updateTexture(Texture& tex, const ImageData<float>& image);
void updateTexture(Texture& tex, int x, int y, int width, int height, const void* data);
// Level 0 only: the mipmap levels keep their old contents until generateMipmap.
void updateTextureBaseLevel(Texture& tex, const ImageData<unsigned char>& image);
void generateMipmap(Texture& tex);
bool isEqualFormat(const Texture& tex, const ImageData<unsigned char>& image);
bool isEqualFormat(const Texture& tex, const ImageData<float>& image);
bool isEqualFormat(const Texture& tex, const Texture& other);

// Float and cubemap forms, adoption of a texture name GL already knows,
// resizing and compressed data.
void createTexture(Texture& tex, const ImageData<float>& image, const TextureOpts& opts);
void createCubemapTexture(Texture& tex, int width, int height, void** faces,
                          const TextureOpts& opts);
void createCubemapTexture(Texture& tex, const std::vector<ImageData<unsigned char>>& images,
                          const TextureOpts& opts);
void createCubemapTexture(Texture& tex, const std::vector<ImageData<float>>& images,
                          const TextureOpts& opts);
void createCubemapTexture(Texture& tex, int width, int height, const TextureOpts& opts);
bool assignTexture(Texture& tex, unsigned id, int width, int height, unsigned format,
                   unsigned type);
void resizeTexture(Texture& tex, int width, int height);
void createCompressedTexture(Texture& tex, int width, int height, int imageSize, void* data,
                             const TextureOpts& opts);

// The unpack alignment rule shared by every upload: 4 when a row of `width`
// texels of `texelSize` bytes is a multiple of 4 bytes, else 1.
void setUnpackAlignment(int width, int texelSize);

// ---- framebuffers
void createFrameBuffer(FrameBuffer& fb, int width, int height, const TextureOpts& opts,
                       int colorCount, bool depth, bool stencil);
void createFrameBuffer(FrameBuffer& fb, const ImageData<unsigned char>& image,
                       const TextureOpts& opts, int colorCount, bool depth, bool stencil,
                       int samples);
void createFrameBuffer(FrameBuffer& fb, const ImageData<float>& image, const TextureOpts& opts,
                       int colorCount, bool depth, bool stencil);
void createFrameBuffer(FrameBuffer& fb, int width, int height, const RenderBufferOpts& opts,
                       int colorCount, bool depth, bool stencil);
// The form all others go through: colour textures (one per data pointer) when
// `colorTexOpts` is given, colour render buffers when `colorBufferOpts` is
// given, a depth texture and a depth render buffer by their options. The depth
// render buffer takes `samples`, not the samples of its options.
void createFrameBuffer(FrameBuffer& fb, int width, int height, std::vector<void*> colorData,
                       const TextureOpts* colorTexOpts, const RenderBufferOpts* colorBufferOpts,
                       void* depthData, const TextureOpts* depthTexOpts,
                       const RenderBufferOpts* depthBufferOpts, int samples);
void updateFrameBuffer(FrameBuffer& fb, const ImageData<unsigned char>& image,
                       unsigned targetIndex);
void updateFrameBuffer(FrameBuffer& fb, const ImageData<float>& image, unsigned targetIndex);
void generateMipmap(FrameBuffer& fb);
bool bindFrameBuffer(FrameBuffer& fb);
bool unbindFrameBuffer(FrameBuffer& fb);
void deleteFrameBuffer(FrameBuffer& fb);
bool isBound(FrameBuffer& fb);
void readFrameBuffer(FrameBuffer& fb, void* pixels, unsigned targetIndex);
void readFrameBuffer(FrameBuffer& fb, ImageData<unsigned char>& image, unsigned targetIndex);
void readFrameBuffer(FrameBuffer& fb, ImageData<float>& image, unsigned targetIndex);
// Gives every attachment the new size; the contents are lost.
void resizeFrameBuffer(FrameBuffer& fb, int width, int height);
// Draw buffer lists of the bound framebuffer: attachments 0 to count - 1, or
// the single attachment `index`.
void specifyDrawBuffers(unsigned count);
void specifyDrawBuffer(unsigned index);
// Attach to the bound framebuffer.
void attachTexture(Texture& tex, unsigned colorIndex, int level);
void attachCubemapTexture(Texture& tex, unsigned colorIndex, unsigned face, int level);
bool isDepthExist(const FrameBuffer& fb);
bool isStencilExist(const FrameBuffer& fb);
void clearFrameBuffer(FrameBuffer& fb, const glm::vec4& colour);
// Clears the bound framebuffer: colour always, depth and stencil as asked.
void clearBuffer(const glm::vec4& colour, bool depth, bool stencil);

// ---- render buffers
// Multisampled storage for `samples` of 2 or more; 0 and 1 both mean none.
void createRenderBuffer(RenderBuffer& rb, int width, int height, const RenderBufferOpts& opts);
void resizeRenderBuffer(RenderBuffer& rb, int width, int height);
// Frees the name; size and options stay in the record.
void deleteRenderBuffer(RenderBuffer& rb);

// ---- vertices
void createVertexBuffer(VertexBuffer& vb, std::size_t vertexSize, std::size_t vertexCount,
                        const void* data, unsigned usage, unsigned mode,
                        const std::vector<VertexAttribute>& attributes);
void updateVertexBuffer(VertexBuffer& vb, std::size_t vertexSize, std::size_t vertexCount,
                        const void* data);
void deleteVertexBuffer(VertexBuffer& vb);
void enableVertexBuffer(const VertexBuffer& vb, const Program& program);
void createVertexArray(VertexArray& va, const VertexBuffer& vb, const Program& program);
void deleteVertexArray(VertexArray& va);
void drawVertexArray(const VertexArray& va, std::size_t instanceCount);

// Indexed form: `count` becomes the index count and `indexType` follows
// `indexSize` (1, 2 or 4 bytes). The index buffer is always GL_STATIC_DRAW.
void createVertexBuffer(VertexBuffer& vb, std::size_t vertexSize, std::size_t vertexCount,
                        const void* vertices, std::size_t indexSize, std::size_t indexCount,
                        const void* indices, unsigned usage, unsigned mode,
                        const std::vector<VertexAttribute>& attributes);
// True when `vb` exists and holds `count` vertices (or indices when indexed).
bool checkVertexBuffer(const VertexBuffer& vb, std::size_t count);
// Adds the attributes of `vb` to the vertex array, such as the per-instance
// attributes of a PM_INSTANCED_ARRAY buffer beside the array's own vertices.
void enableVertexBuffer(VertexArray& va, const VertexBuffer& vb, const Program& program);
// Draws without a vertex array: the attributes are pointed, drawn and disabled
// again. The first form uses the current program and does nothing without one.
void drawVertexBuffer(const VertexBuffer& vb, std::size_t instanceCount);
void drawVertexBuffer(const VertexBuffer& vb, const Program& program, std::size_t instanceCount);
// Draws vertices (and indices when `indexCount` is not 0) from client memory;
// a bound array buffer, and with indices a bound element buffer, is unbound
// first. The attributes' `normalized` flags are not used.
void drawImmediate(unsigned mode, const std::vector<VertexAttribute>& attributes,
                   std::size_t vertexCount, const void* vertices, std::size_t indexCount,
                   const void* indices, unsigned indexType);
void drawImmediate(const Program& program, unsigned mode,
                   const std::vector<VertexAttribute>& attributes, std::size_t vertexCount,
                   const void* vertices, std::size_t indexCount, const void* indices,
                   unsigned indexType);

template <typename V>
void createVertexBuffer(VertexBuffer& vb, const TriangleStripMesh<V>& mesh,
                        unsigned usage = GL_STATIC_DRAW) {
    createVertexBuffer(vb, sizeof(V), mesh.vertices.size(), mesh.vertices.data(), usage,
                       GL_TRIANGLE_STRIP, mesh.attributes);
}

template <typename V>
void updateVertexBuffer(VertexBuffer& vb, const TriangleStripMesh<V>& mesh) {
    updateVertexBuffer(vb, sizeof(V), mesh.vertices.size(), mesh.vertices.data());
}

template <typename V>
void createVertexBuffer(VertexBuffer& vb, const TriangleFanMesh<V>& mesh,
                        unsigned usage = GL_STATIC_DRAW) {
    createVertexBuffer(vb, sizeof(V), mesh.vertices.size(), mesh.vertices.data(), usage,
                       GL_TRIANGLE_FAN, mesh.attributes);
}

template <typename V>
void updateVertexBuffer(VertexBuffer& vb, const TriangleFanMesh<V>& mesh) {
    updateVertexBuffer(vb, sizeof(V), mesh.vertices.size(), mesh.vertices.data());
}

static_assert(sizeof(IndexedTriangle) == 3 * sizeof(unsigned short),
              "triangles are read by GL as a plain list of 16-bit indices");

template <typename V>
void createVertexBuffer(VertexBuffer& vb, const IndexedTriangleMesh<V>& mesh,
                        unsigned usage = GL_STATIC_DRAW) {
    createVertexBuffer(vb, sizeof(V), mesh.vertices.size(), mesh.vertices.data(),
                       sizeof(unsigned short), mesh.triangles.size() * 3, mesh.triangles.data(),
                       usage, GL_TRIANGLES, mesh.attributes);
}

template <typename V>
void updateVertexBuffer(VertexBuffer& vb, const IndexedTriangleMesh<V>& mesh) {
    updateVertexBuffer(vb, sizeof(V), mesh.vertices.size(), mesh.vertices.data());
}

template <typename V>
void createVertexBuffer(VertexBuffer& vb, const IndexedTriangleStripMesh<V>& mesh,
                        unsigned usage = GL_STATIC_DRAW) {
    createVertexBuffer(vb, sizeof(V), mesh.vertices.size(), mesh.vertices.data(),
                       sizeof(unsigned short), mesh.indices.size(), mesh.indices.data(), usage,
                       GL_TRIANGLE_STRIP, mesh.attributes);
}

template <typename V>
void updateVertexBuffer(VertexBuffer& vb, const IndexedTriangleStripMesh<V>& mesh) {
    updateVertexBuffer(vb, sizeof(V), mesh.vertices.size(), mesh.vertices.data());
}

// ---- uniform buffers
// A buffer of `size` bytes with no data; its binding point starts at 0.
void createUniformBuffer(UniformBuffer& ub, int size, unsigned usage);
// Sized for the program's block, which is tied to `bindingPoint`, and the
// buffer bound there. A binding point of 0 makes no binding call: 0 is where a
// new buffer already counts itself bound.
void createUniformBuffer(UniformBuffer& ub, const Program& program, const char* blockName,
                         int bindingPoint, unsigned usage);
void createUniformBuffer(UniformBuffer& ub, const Program& program, const std::string& blockName,
                         int bindingPoint, unsigned usage);
// Nothing happens when the record already holds `bindingPoint`.
void bindUniformBuffer(UniformBuffer& ub, unsigned bindingPoint);
void updateUniformBuffer(UniformBuffer& ub, int offset, int size, const void* data);
void updateUniformBuffer(UniformBuffer& ub, const void* data);
void deleteUniformBuffer(UniformBuffer& ub);

// ---- small queries
// True as soon as one extension's name differs from `name`, so with two or more
// extensions any name gives true. Null or no extensions give false.
bool checkExtension(const char* name);
glm::ivec4 getViewport();
void setViewport(const glm::ivec4& viewport);
// Cube map seams need no switch on GL ES 3: nothing to do.
void useCubemapSeamless();

// ---- uniform data
void setUniformData(UniformData& data, const std::string& name, const Texture& value);
void setUniformData(UniformData& data, const std::string& name, int value);
void setUniformData(UniformData& data, const std::string& name, float value);
void setUniformData(UniformData& data, const std::string& name, const glm::vec2& value);
void setUniformData(UniformData& data, const std::string& name, const glm::vec3& value);
void setUniformData(UniformData& data, const std::string& name, const glm::vec4& value);
void setUniformData(UniformData& data, const std::string& name, const glm::mat2& value);
void setUniformData(UniformData& data, const std::string& name, const glm::mat3& value);
void setUniformData(UniformData& data, const std::string& name, const glm::mat4& value);
void unsetUniformData(UniformData& data, const std::string& name);
void clearUniformData(UniformData& data);
void useUniformData(const UniformData& data);
void useUniformData(const UniformData& data, const Program& program);
void useUniformData(const UniformData& data, const Program& program, const std::string& name);
bool isUniformData(const UniformData& data, const std::string& name);
void bindTexture(const UniformData& data);

// ---- render state
void setBlendFunction(BlendOpts& opts, unsigned srcRGB, unsigned dstRGB, unsigned srcAlpha,
                      unsigned dstAlpha);
void setBlendEquation(BlendOpts& opts, unsigned rgb, unsigned alpha);
void enableBlend(BlendOpts& opts);
void disableBlend(BlendOpts& opts);
void setBlendNormal(BlendOpts& opts);
void setBlendAlpha(BlendOpts& opts);
void setBlendAdditive(BlendOpts& opts);
void setBlendScreen(BlendOpts& opts);
void setBlendMax(BlendOpts& opts);
void useBlendOptions(const BlendOpts& opts);
void useCullFaceOptions(const CullFaceOpts& opts);
void useDepthTestOptions(const DepthTestOpts& opts);
void useStencilTestOptions(const StencilTestOpts& opts);
void useRenderOptions(const RenderOpts& opts);
void setColorMask(const glm::bvec4& mask);

// ---- EGL records used by the filter objects for native surfaces
struct EGLInfo {
    void* display = nullptr;
    void* drawSurface = nullptr;
    void* readSurface = nullptr;
    void* context = nullptr;
    void* prevDrawSurface = nullptr;
    void* prevReadSurface = nullptr;
    void* prevContext = nullptr;
    PFNEGLCREATEIMAGEKHRPROC eglCreateImageKHRProc = nullptr;
    PFNEGLDESTROYIMAGEKHRPROC eglDestroyImageKHRProc = nullptr;
    PFNGLEGLIMAGETARGETTEXTURE2DOESPROC glEGLImageTargetTexture2DOESProc = nullptr;
    bool bound = false;
};

struct SurfaceTexture {
    void* image = nullptr;
    Texture tex;
#ifndef PIXMORA_DEVICE_PLATFORM
    // Desktop import route: the surface's pixels in a 2D texture, from which
    // the EGLImage is made, since desktop EGL takes no native surface.
    Texture source;
#endif
};

bool setEGLInfo(EGLInfo& info, void* display, void* drawSurface, void* readSurface, void* context);
bool checkEglError();
const char* eglGetErrorString(EGLint error);
void deleteSurfaceTexture(SurfaceTexture& st, EGLInfo& info);

// The private context: created on info.display, made current on the stored
// surfaces by bindEGLContext, which saves what was current for unbindEGLContext.
// Native surfaces: a surface imported as an external texture for sampling,
// and plain surfaces in RGBA byte order mapped as images.
bool createSurfaceTexture(SurfaceTexture& st, EGLInfo& info, tbm_surface_h surface,
                          const TextureOpts& opts);
bool createSurfaceTBM(tbm_surface_h& surface, int width, int height);
void deleteSurfaceTBM(tbm_surface_h& surface);
ImageData<unsigned char> mapSurfaceTBM(tbm_surface_h& surface, bool read, bool write);
void unmapSurfaceTBM(tbm_surface_h& surface);

bool createEGLContext(EGLInfo& info);
bool bindEGLContext(EGLInfo& info);
bool unbindEGLContext(EGLInfo& info);
bool deleteEGLContext(EGLInfo& info);

}  // namespace pmGL

#endif
