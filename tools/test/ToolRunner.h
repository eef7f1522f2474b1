// Runs the pixmora tool as a user would, in a fresh folder per test, and
// reads back what it printed.
#ifndef PIXMORA_TOOL_TEST_TOOLRUNNER_H
#define PIXMORA_TOOL_TEST_TOOLRUNNER_H

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "pmUtil.h"

namespace fs = std::filesystem;
using Image = pmUtil::ImageData<unsigned char>;

struct RunResult {
    int status = -1;
    bool signalled = false;
    std::string out;
    std::string err;
};

std::string readFile(const fs::path& path);
std::string inQuotes(const std::string& text);

class ToolTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    std::string path(const std::string& name) const { return (dir / name).string(); }
    RunResult run(const std::string& arguments) const;

    // Writes a picture whose every pixel differs from its neighbours, so that
    // any mirror or shift of the output shows.
    std::vector<unsigned char> writeInput(const std::string& name, int width, int height,
                                          int channel) const;

    fs::path dir;
};

// A file of Debian's sample data (opencv-doc), decompressed into a cache
// folder when the package ships it gzip-compressed; empty when neither is
// there.
std::string sampleData(const std::string& name);

// A bad invocation ends with a non-zero status and a message.
void expectRefused(const RunResult& result, const std::string& word);

#endif
