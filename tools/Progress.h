// Progress of a long run on stderr. On a terminal one line is redrawn in
// place; otherwise, for logs and pipes, a plain line is written at every
// tenth of the work.
#ifndef PIXMORA_TOOL_PROGRESS_H
#define PIXMORA_TOOL_PROGRESS_H

#include <chrono>
#include <string>

class Progress {
public:
    // total of 0 or less means the amount of work is not known.
    Progress(std::string label, int total, bool quiet);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Called after each unit of work with the number done so far.
    void update(int done);
    // Ends the line on a terminal; called once, after the last update.
    void finish(int done);

private:
    using Clock = std::chrono::steady_clock;

    std::string describe(int done) const;
    double unitsPerSecond(int done) const;
    void redraw(int done);
    void printStep(int done);

    std::string label;
    int total;
    bool quiet;
    bool terminal;
    Clock::time_point start;
    Clock::time_point lastDrawn;
    int lastTenth = 0;
};

#endif
