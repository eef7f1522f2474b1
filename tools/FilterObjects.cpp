#include "FilterObjects.h"

#include "ToolError.h"

PhotoFilter::PhotoFilter(unsigned type) {
    pmDisableInternalGLContext();
    object.type = static_cast<int>(type);
    object.handler = pmPhotoFilterCreate(type);
    if (object.handler == nullptr) throw ToolError("the library cannot create this effect");
}

PhotoFilter::~PhotoFilter() {
    pmPhotoFilterDelete(&object);
}

BlurFilter::BlurFilter(int type, int kernelSize) {
    object.type = type;
    object.handler = pmBlurFilterCreateWithKernelSize(static_cast<unsigned>(type), kernelSize);
    if (object.handler == nullptr) throw ToolError("the library cannot create the blur");
}

BlurFilter::~BlurFilter() {
    pmBlurFilterDelete(&object);
}
