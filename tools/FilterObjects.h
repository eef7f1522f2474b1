// The library's filter objects held for a scope, deleted with it.
#ifndef PIXMORA_TOOL_FILTEROBJECTS_H
#define PIXMORA_TOOL_FILTEROBJECTS_H

#include <pixmora/pixmora.h>

// A photo effect drawn on the context the tool has current: the tool reads
// its own framebuffer back, so the library's private context stays out of
// the way.
class PhotoFilter {
public:
    explicit PhotoFilter(unsigned type);
    ~PhotoFilter();
    PhotoFilter(const PhotoFilter&) = delete;
    PhotoFilter& operator=(const PhotoFilter&) = delete;

    pmFilterObject object{};
};

// A blur object of either type. Whether it runs on the library's private
// context or on the tool's is for the caller to choose before creating it.
class BlurFilter {
public:
    BlurFilter(int type, int kernelSize);
    ~BlurFilter();
    BlurFilter(const BlurFilter&) = delete;
    BlurFilter& operator=(const BlurFilter&) = delete;

    pmFilterObject object{};
};

#endif
