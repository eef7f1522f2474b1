// ContrastFilter: pow(rgb, power) * factor, alpha kept. The bokeh passes use
// it to bring colour towards linear light before they blur.
#include "pmDraw.h"
#include "pmGLSL.h"

namespace pmDraw {

namespace {

// Follows a header that defines TEXTURE_2D as the sampler type, so the same
// body reads a 2D texture or an external image.
const char* const contrastBody = R"(
in vec2 vTexCoord;
uniform TEXTURE_2D uTexture;
uniform float uConstFactor;
uniform float uPowerFactor;
out vec4 fragColor;
void main() {
    vec4 col = texture(uTexture, vTexCoord);
    fragColor = vec4(pow(col.rgb, vec3(uPowerFactor)) * uConstFactor, col.a);
}
)";

}  // namespace

ContrastFilter::~ContrastFilter() = default;

bool createContrastFilter(ContrastFilter& filter, bool external) {
    PM_LOGI("createContrastFilter()");
    // setTexture checks the input's target against this flag.
    filter.useExternalTexture = external;
    const std::string& header = external ? pmGLSL::EGLImageHeader : pmGLSL::defaultHeader;
    if (!createTextureFilter(filter, header + contrastBody)) {
        PM_LOGE("createTextureFilter() failed.");
        return false;
    }
    setParameters(filter, 1.8f, 2.2f);
    pmGL::disableBlend(filter.renderOpts.blend);
    PM_LOGI("createContrastFilter() end");
    return true;
}

void deleteContrastFilter(ContrastFilter& filter) {
    PM_LOGI("deleteContrastFilter()");
    deleteTextureFilter(filter);
    PM_LOGI("deleteContrastFilter() end");
}

void runContrastFilter(ContrastFilter& filter) {
    runTextureFilter(filter);
}

void setParameters(ContrastFilter& filter, float constFactor, float powerFactor) {
    pmGL::setUniformData(filter.ud, "uConstFactor", constFactor);
    pmGL::setUniformData(filter.ud, "uPowerFactor", powerFactor);
}

}  // namespace pmDraw
