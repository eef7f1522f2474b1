// pixmora kernel: prints the blur kernel of a size.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>

#include "Commands.h"
#include <pixmora/GaussianBlur.h>

namespace {

struct KernelRequest {
    int size = 35;
    bool glsl = false;
};

// The blur accepts sizes of the form 4k + 3; any other wish takes the nearest
// such size, a tie going to the larger, within 3 to 407.
int usableKernelSize(int wanted) {
    const int clamped = std::min(std::max(wanted, 3), 407);
    const int k = (clamped - 3 + 2) / 4;
    return 4 * k + 3;
}

void printNumbers(const char* title, const std::vector<float>& values) {
    std::printf("%-8s", title);
    for (float value : values) std::printf(" %.5f", value);
    std::printf("\n");
}

void runKernel(const KernelRequest& request) {
    const int size = usableKernelSize(request.size);
    const pmDraw::GaussKernel kernel = pmDraw::describeGaussKernel(size);
    std::printf("kernel size %d", size);
    if (size != request.size) std::printf(" (asked for %d)", request.size);
    std::printf("\nsigma    %.2f\nsteps    %zu\n", kernel.sigma, kernel.weights.size());
    printNumbers("weights", kernel.weights);
    printNumbers("offsets", kernel.offsets);
    if (request.glsl) std::printf("\n%s", GenerateGaussShaderKernelWeightsAndOffsets(size).c_str());
}

}  // namespace

void addKernelCommand(CLI::App& app) {
    auto request = std::make_shared<KernelRequest>();
    CLI::App* kernel = app.add_subcommand(
        "kernel", "Print the blur kernel of a size: sigma, steps, folded weights and offsets");
    kernel
        ->add_option("N", request->size, "Kernel size; the nearest size of the form 4k + 3 is used")
        ->required();
    kernel->add_flag("--glsl", request->glsl, "Also print the generated shader text");
    kernel->fallthrough();
    kernel->callback([request] { runKernel(*request); });
    setExample(*kernel, "pixmora kernel 35 --glsl");
}
