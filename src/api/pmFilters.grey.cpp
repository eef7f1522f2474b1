// GrayFilter: the simplest complete effect, one Grey pass over inputBuffer.
#include "pmFilters.h"

namespace pmFilters {

void GrayFilter::Initialize() {
    FilterCommon::Initialize();
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    pmDraw::createGrey(grey);
}

void GrayFilter::Terminate() {
    FilterCommon::Terminate();
    if (!IsInit()) {
        PM_LOGE("It is not initialized.");
        return;
    }
    pmDraw::deleteGrey(grey);
}

void GrayFilter::Draw(int, int) {
    if (!IsInit()) return;
    pmDraw::setTexture(grey, inputBuffer, flip);
    pmDraw::runGrey(grey);
}

}  // namespace pmFilters
