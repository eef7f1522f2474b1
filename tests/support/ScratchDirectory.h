// A fresh directory under /tmp for one test, removed with everything in it
// when the test is done.
#ifndef PIXMORA_TESTS_SCRATCHDIRECTORY_H
#define PIXMORA_TESTS_SCRATCHDIRECTORY_H

#include <filesystem>
#include <string>

class ScratchDirectory {
public:
    // `prefix` names the directory, for instance "pixmora-cv".
    explicit ScratchDirectory(const std::string& prefix);
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    // False when the directory could not be made; path() is then empty.
    bool created() const { return !dir.empty(); }
    const std::filesystem::path& path() const { return dir; }
    // The path of `name` inside the directory.
    std::string file(const std::string& name) const { return (dir / name).string(); }

private:
    std::filesystem::path dir;
};

#endif
