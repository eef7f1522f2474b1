#include "Progress.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <utility>

namespace {

// A terminal line is redrawn at most this often, so that printing never
// costs more than the work it reports.
constexpr std::chrono::milliseconds kRedrawInterval(100);

std::string minutesAndSeconds(double seconds) {
    const long whole = std::lround(seconds);
    char text[32];
    std::snprintf(text, sizeof(text), "%ld:%02ld", whole / 60, whole % 60);
    return text;
}

}  // namespace

Progress::Progress(std::string progressLabel, int totalUnits, bool silent)
    : label(std::move(progressLabel)),
      total(totalUnits),
      quiet(silent),
      terminal(isatty(STDERR_FILENO) == 1),
      start(Clock::now()),
      lastDrawn(start) {}

void Progress::update(int done) {
    if (quiet) return;
    if (terminal) {
        if (Clock::now() - lastDrawn >= kRedrawInterval) redraw(done);
    } else {
        printStep(done);
    }
}

void Progress::finish(int done) {
    if (quiet) return;
    if (terminal) {
        redraw(done);
        std::fputc('\n', stderr);
    } else if (total <= 0) {
        std::fprintf(stderr, "%s: %s\n", label.c_str(), describe(done).c_str());
    }
}

double Progress::unitsPerSecond(int done) const {
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return seconds > 0.0 ? done / seconds : 0.0;
}

std::string Progress::describe(int done) const {
    const double rate = unitsPerSecond(done);
    char text[160];
    if (total > 0) {
        const int percent = static_cast<int>(100LL * done / total);
        const double left = rate > 0.0 ? (total - done) / rate : 0.0;
        std::snprintf(text, sizeof(text), "%d/%d frames %3d%%  %.1f fps  %s left", done, total,
                      percent, rate, minutesAndSeconds(left).c_str());
    } else {
        std::snprintf(text, sizeof(text), "%d frames  %.1f fps", done, rate);
    }
    return text;
}

void Progress::redraw(int done) {
    // Carriage return and erase to the end of the line: the line shrinks
    // cleanly when the time left gets shorter.
    std::fprintf(stderr, "\r%s: %s\033[K", label.c_str(), describe(done).c_str());
    std::fflush(stderr);
    lastDrawn = Clock::now();
}

void Progress::printStep(int done) {
    if (total <= 0) return;
    const int tenth = static_cast<int>(10LL * done / total);
    if (tenth <= lastTenth) return;
    lastTenth = tenth;
    std::fprintf(stderr, "%s: %s\n", label.c_str(), describe(done).c_str());
}
