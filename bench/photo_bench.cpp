// The photo effects at 1920 x 1080 against the plain copy pass.
#include <vector>

#include "CopyBaseline.h"
#include "GLTestContext.h"
#include "pixmora.h"

namespace {

void BM_CopyPassBaseline(benchmark::State& state) {
    GLTestContext gl(kWidth, kHeight);
    CopyPass copy(makeTestPixels(kWidth, kHeight, 4));
    for (auto _ : state) {
        copy.draw();
        finishFrame();
    }
}

void BM_GreyDraw(benchmark::State& state) {
    GLTestContext gl(kWidth, kHeight);
    pmDisableInternalGLContext();
    std::vector<uint8_t> pixels = makeTestPixels(kWidth, kHeight, 4);
    pmFilterObject grey{PM_PHOTO_GREY, pmPhotoFilterCreate(PM_PHOTO_GREY)};
    pmPhotoFilterSetBuffer(grey, pixels.data(), kWidth, kHeight, 4);
    runAgainstCopy(state, [&] { pmPhotoFilterDraw(grey, kWidth, kHeight); });
    pmPhotoFilterDelete(&grey);
}

void BM_GreyUploadAndDraw(benchmark::State& state) {
    GLTestContext gl(kWidth, kHeight);
    pmDisableInternalGLContext();
    std::vector<uint8_t> pixels = makeTestPixels(kWidth, kHeight, 4);
    pmFilterObject grey{PM_PHOTO_GREY, pmPhotoFilterCreate(PM_PHOTO_GREY)};
    runAgainstCopy(state, [&] {
        pmPhotoFilterSetBuffer(grey, pixels.data(), kWidth, kHeight, 4);
        pmPhotoFilterDraw(grey, kWidth, kHeight);
    });
    pmPhotoFilterDelete(&grey);
}

// One Draw of each type code on an uploaded picture.
void BM_PhotoEffectDraw(benchmark::State& state) {
    GLTestContext gl(kWidth, kHeight);
    pmDisableInternalGLContext();
    std::vector<uint8_t> pixels = makeTestPixels(kWidth, kHeight, 4);
    const unsigned type = static_cast<unsigned>(state.range(0));
    pmFilterObject effect{static_cast<int>(type), pmPhotoFilterCreate(type)};
    pmPhotoFilterSetBuffer(effect, pixels.data(), kWidth, kHeight, 4);
    runAgainstCopy(state, [&] { pmPhotoFilterDraw(effect, kWidth, kHeight); });
    pmPhotoFilterDelete(&effect);
}

BENCHMARK(BM_CopyPassBaseline)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_GreyDraw)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_GreyUploadAndDraw)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PhotoEffectDraw)->DenseRange(0, 9)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
