// NoFilter: copies a texture with a factor on its alpha, blending over the target.
#include "pmDraw.h"
#include "pmGLSL.h"

namespace pmDraw {

namespace {

const char* const noFilterBody = R"(
in vec2 vTexCoord;
uniform TEXTURE_2D uTexture;
uniform float uAlphaMultiplier;
out vec4 fragColor;
void main() {
    fragColor = texture(uTexture, vTexCoord);
    fragColor.a *= uAlphaMultiplier;
}
)";

const char* boolText(bool value) {
    return value ? "true" : "false";
}

}  // namespace

NoFilter::~NoFilter() = default;

bool NoFilter::initialize(bool external) {
    PM_LOGE("NoFilter::initialize(%s)", boolText(external));
    useExternalTexture = external;
    const std::string& header = external ? pmGLSL::EGLImageHeader : pmGLSL::defaultHeader;
    const bool result = TextureFilter::initialize(header + noFilterBody);
    if (result) {
        setAlphaMultiplier(1.0f);
        pmGL::setBlendAlpha(renderOpts.blend);
    }
    PM_LOGE("NoFilter::initialize() will return(%s)", boolText(result));
    return result;
}

bool createNoFilter(NoFilter& filter, bool external) {
    return filter.initialize(external);
}
void deleteNoFilter(NoFilter& filter) {
    deleteTextureFilter(filter);
}
void runNoFilter(NoFilter& filter) {
    filter.draw();
}

}  // namespace pmDraw
