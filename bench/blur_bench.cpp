// The blur passes at 1920 x 1080: GaussianBlur for kernel sizes 7 to 63, and
// CustomGaussianBlur at scales 1, 0.25 and 0.025, against the plain copy pass.
#include <vector>

#include "CopyBaseline.h"
#include "GLTestContext.h"
#include "GaussianBlur.h"

namespace {

pmGL::Texture fullFrameInput() {
    std::vector<uint8_t> pixels = makeTestPixels(kWidth, kHeight, 4);
    pmGL::Texture tex;
    pmUtil::ImageData<unsigned char> image(kWidth, kHeight, 4, pixels.data());
    pmGL::createTexture(tex, image, pmGL::TextureOpts());
    return tex;
}

void BM_GaussianBlur(benchmark::State& state) {
    GLTestContext gl(kWidth, kHeight);
    pmGL::Texture input = fullFrameInput();
    pmDraw::GaussianBlur blur;
    pmDraw::createGaussianBlur(blur, static_cast<int>(state.range(0)));
    pmDraw::setTexture(blur, input, 0.0f);
    runAgainstCopy(state, [&] { pmDraw::drawGaussianBlur(blur); });
    pmDraw::deleteGaussianBlur(blur);
    pmGL::deleteTexture(input);
}

// Scale in thousandths.
void BM_CustomGaussianBlur(benchmark::State& state) {
    GLTestContext gl(kWidth, kHeight);
    pmGL::Texture input = fullFrameInput();
    pmDraw::CustomGaussianBlur blur;
    pmDraw::createCustomGaussianBlur(blur, 35);
    pmDraw::setTexture(blur, input, 0.0f);
    pmDraw::setScaleFactor(blur, static_cast<float>(state.range(0)) / 1000.0f);
    runAgainstCopy(state, [&] { pmDraw::drawCustomGaussianBlur(blur); });
    pmDraw::deleteCustomGaussianBlur(blur);
    pmGL::deleteTexture(input);
}

BENCHMARK(BM_GaussianBlur)
    ->Arg(7)
    ->Arg(15)
    ->Arg(31)
    ->Arg(63)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_CustomGaussianBlur)
    ->Arg(1000)
    ->Arg(250)
    ->Arg(25)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
