#include <dirent.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "pmUtil.h"

namespace {

namespace fs = std::filesystem;
using Paths = std::vector<std::string>;

Paths sorted(Paths paths) {
    std::sort(paths.begin(), paths.end());
    return paths;
}

void touch(const fs::path& path) {
    std::ofstream(path) << "x";
}

// A fresh directory tree under the system's temporary directory, by its
// resolved name so that no link lies on the way to it. Restores the current
// directory that a test changes.
class PmUtilFiles : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "pmUtilFiles.XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        root = fs::canonical(pattern);
        savedCwd = fs::current_path();

        // root/
        //   photo.jpg  SHOT.PNG  scan.Bmp  icon.tga  notes.txt  README
        //   pic.jpeg  archive.tar.gz  album.png/ (a directory)
        //   sub/ inner.png  (not listed from root)
        //   link.png -> photo.jpg   dirlink -> sub   dangling.jpg -> missing
        for (const char* name : {"photo.jpg", "SHOT.PNG", "scan.Bmp", "icon.tga", "notes.txt",
                                 "README", "pic.jpeg", "archive.tar.gz"}) {
            touch(root / name);
        }
        fs::create_directory(root / "album.png");
        fs::create_directory(root / "sub");
        touch(root / "sub" / "inner.png");
        fs::create_symlink(root / "photo.jpg", root / "link.png");
        fs::create_directory_symlink(root / "sub", root / "dirlink");
        fs::create_symlink(root / "missing", root / "dangling.jpg");
    }

    void TearDown() override {
        fs::current_path(savedCwd);
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }

    std::string at(const std::string& name) const { return (root / name).string(); }

    // The entries as readdir gives them, in its order.
    Paths readdirOrder(const std::string& directory) const {
        Paths names;
        DIR* dir = opendir(directory.c_str());
        while (const dirent* entry = readdir(dir)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") names.push_back(directory + "/" + name);
        }
        closedir(dir);
        return names;
    }

    fs::path root;
    fs::path savedCwd;
};

// --- checkSymbolicLink --------------------------------------------------------

TEST_F(PmUtilFiles, AbsolutePathWithoutLinkPasses) {
    EXPECT_TRUE(pmUtil::checkSymbolicLink(at("photo.jpg")));
    EXPECT_TRUE(pmUtil::checkSymbolicLink(at("sub")));
    EXPECT_TRUE(pmUtil::checkSymbolicLink(at("sub/inner.png")));
}

TEST_F(PmUtilFiles, MissingPathPassesForItIsNoLink) {
    EXPECT_TRUE(pmUtil::checkSymbolicLink(at("nothing-here.png")));
    EXPECT_TRUE(pmUtil::checkSymbolicLink(at("no-dir/nothing.png")));
}

TEST_F(PmUtilFiles, LinkToFileIsRefused) {
    EXPECT_FALSE(pmUtil::checkSymbolicLink(at("link.png")));
}

TEST_F(PmUtilFiles, PathThroughLinkedDirectoryIsRefused) {
    EXPECT_FALSE(pmUtil::checkSymbolicLink(at("dirlink")));
    EXPECT_FALSE(pmUtil::checkSymbolicLink(at("dirlink/inner.png")));
}

TEST_F(PmUtilFiles, DanglingLinkFailsToResolveWithEnoentAndPasses) {
    // realpath can't follow it to anything, so it counts as a missing path.
    EXPECT_TRUE(pmUtil::checkSymbolicLink(at("dangling.jpg")));
}

TEST_F(PmUtilFiles, AbsolutePathWithDotPartsIsRefused) {
    EXPECT_FALSE(pmUtil::checkSymbolicLink(at("sub/../photo.jpg")));
    EXPECT_FALSE(pmUtil::checkSymbolicLink(at("./photo.jpg")));
    EXPECT_FALSE(pmUtil::checkSymbolicLink(root.string() + "//photo.jpg"));
}

TEST_F(PmUtilFiles, RelativePathInCurrentDirectoryPasses) {
    fs::current_path(root);
    EXPECT_TRUE(pmUtil::checkSymbolicLink("photo.jpg"));
    EXPECT_TRUE(pmUtil::checkSymbolicLink("sub/inner.png"));
    EXPECT_TRUE(pmUtil::checkSymbolicLink("nothing-here.png"));
}

TEST_F(PmUtilFiles, RelativePathWithDotPartsIsRefused) {
    fs::current_path(root / "sub");
    EXPECT_FALSE(pmUtil::checkSymbolicLink("./inner.png"));
    EXPECT_FALSE(pmUtil::checkSymbolicLink("../photo.jpg"));
    EXPECT_FALSE(pmUtil::checkSymbolicLink("../sub/inner.png"));
}

TEST_F(PmUtilFiles, RelativePathThroughLinkIsRefused) {
    fs::current_path(root);
    EXPECT_FALSE(pmUtil::checkSymbolicLink("link.png"));
    EXPECT_FALSE(pmUtil::checkSymbolicLink("dirlink/inner.png"));
}

TEST_F(PmUtilFiles, RelativePathFromRootDirectoryIsRefused) {
    // "/" joined with "/" and the path gives "//name", which never equals the
    // resolved "/name".
    const std::string first = *(++root.begin());
    fs::current_path("/");
    EXPECT_FALSE(pmUtil::checkSymbolicLink(first));
    EXPECT_TRUE(pmUtil::checkSymbolicLink("/" + first));
}

TEST_F(PmUtilFiles, OtherResolveFailuresAreReportedAndRefused) {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(pmUtil::checkSymbolicLink(at("photo.jpg/child")));
    const std::string notDirectory = testing::internal::GetCapturedStderr();
    EXPECT_EQ(notDirectory, "realpath: Not a directory\n");

    fs::create_symlink(root / "loopB", root / "loopA");
    fs::create_symlink(root / "loopA", root / "loopB");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(pmUtil::checkSymbolicLink(at("loopA")));
    const std::string loop = testing::internal::GetCapturedStderr();
    EXPECT_EQ(loop, "realpath: Too many levels of symbolic links\n");
}

// --- findAllFiles -------------------------------------------------------------

TEST_F(PmUtilFiles, AllFilesListsEveryEntryButDotAndDotDot) {
    const Paths files = pmUtil::findAllFiles(root.string());
    EXPECT_EQ(sorted(files), sorted({at("photo.jpg"), at("SHOT.PNG"), at("scan.Bmp"),
                                     at("icon.tga"), at("notes.txt"), at("README"), at("pic.jpeg"),
                                     at("archive.tar.gz"), at("album.png"), at("sub"),
                                     at("link.png"), at("dirlink"), at("dangling.jpg")}));
}

TEST_F(PmUtilFiles, AllFilesKeepsTheOrderOfReaddir) {
    EXPECT_EQ(pmUtil::findAllFiles(root.string()), readdirOrder(root.string()));
}

TEST_F(PmUtilFiles, AllFilesDoesNotDescend) {
    const Paths files = pmUtil::findAllFiles(root.string());
    EXPECT_EQ(std::count(files.begin(), files.end(), at("sub/inner.png")), 0);
    EXPECT_EQ(pmUtil::findAllFiles(at("sub")), (Paths{at("sub/inner.png")}));
}

TEST_F(PmUtilFiles, AllFilesJoinsWithSlashAsGiven) {
    // The directory is used as written: a trailing slash gives a double one,
    // and a relative directory gives relative paths.
    EXPECT_EQ(pmUtil::findAllFiles(at("sub") + "/"), (Paths{at("sub") + "//inner.png"}));
    fs::current_path(root);
    EXPECT_EQ(pmUtil::findAllFiles("sub"), (Paths{"sub/inner.png"}));
    EXPECT_EQ(pmUtil::findAllFiles("dirlink"), (Paths{"dirlink/inner.png"}));
}

TEST_F(PmUtilFiles, AllFilesOfEmptyDirectoryIsEmpty) {
    fs::create_directory(root / "empty");
    EXPECT_TRUE(pmUtil::findAllFiles(at("empty")).empty());
}

TEST_F(PmUtilFiles, AllFilesOfUnreadableDirectoryIsEmpty) {
    EXPECT_TRUE(pmUtil::findAllFiles(at("no-such-dir")).empty());
    EXPECT_TRUE(pmUtil::findAllFiles(at("photo.jpg")).empty());
    EXPECT_TRUE(pmUtil::findAllFiles(at("dangling.jpg")).empty());
    EXPECT_TRUE(pmUtil::findAllFiles("").empty());
}

// --- findFilteredFiles and findImageFiles --------------------------------------

TEST_F(PmUtilFiles, FilteredFilesMatchLowerCasedExtensions) {
    const Paths files = pmUtil::findFilteredFiles(root.string(), {".png", ".txt"});
    EXPECT_EQ(sorted(files),
              sorted({at("SHOT.PNG"), at("notes.txt"), at("album.png"), at("link.png")}));
}

TEST_F(PmUtilFiles, FilteredFilesKeepTheListingOrder) {
    const Paths all = pmUtil::findAllFiles(root.string());
    const Paths files = pmUtil::findFilteredFiles(root.string(), {".txt", ".png", ".jpg"});
    Paths expected;
    for (const std::string& file : all) {
        const std::string extension = pmUtil::stringLower(pmUtil::stringExtension(file));
        if (extension == ".txt" || extension == ".png" || extension == ".jpg") {
            expected.push_back(file);
        }
    }
    EXPECT_EQ(files, expected);
    EXPECT_EQ(files.size(), 6u);
}

TEST_F(PmUtilFiles, FilteredFilesNeedLowerCaseExtensionsWithTheirDot) {
    EXPECT_TRUE(pmUtil::findFilteredFiles(root.string(), {".PNG"}).empty());
    EXPECT_TRUE(pmUtil::findFilteredFiles(root.string(), {"png"}).empty());
    EXPECT_TRUE(pmUtil::findFilteredFiles(root.string(), {}).empty());
}

TEST_F(PmUtilFiles, FilteredFilesTakeOnlyTheLastExtension) {
    EXPECT_EQ(pmUtil::findFilteredFiles(root.string(), {".gz"}), (Paths{at("archive.tar.gz")}));
    EXPECT_TRUE(pmUtil::findFilteredFiles(root.string(), {".tar.gz", ".tar"}).empty());
}

TEST_F(PmUtilFiles, FilteredFilesSeeTheDotOfADottedDirectory) {
    // In "x.d/notes" the extension is ".d/notes": the name has none of its
    // own, and the directory's dot leaks into every entry without one.
    fs::create_directory(root / "x.d");
    touch(root / "x.d" / "notes");
    touch(root / "x.d" / "a.png");
    EXPECT_EQ(pmUtil::findFilteredFiles(at("x.d"), {".png"}), (Paths{at("x.d/a.png")}));
    EXPECT_EQ(pmUtil::findFilteredFiles(at("x.d"), {".d/notes"}), (Paths{at("x.d/notes")}));
}

TEST_F(PmUtilFiles, FilteredFilesOfUnreadableDirectoryAreEmpty) {
    EXPECT_TRUE(pmUtil::findFilteredFiles(at("no-such-dir"), {".png"}).empty());
}

TEST_F(PmUtilFiles, ImageFilesAreJpgPngBmpAndTga) {
    const Paths files = pmUtil::findImageFiles(root.string());
    EXPECT_EQ(sorted(files),
              sorted({at("photo.jpg"), at("SHOT.PNG"), at("scan.Bmp"), at("icon.tga"),
                      at("album.png"), at("link.png"), at("dangling.jpg")}));
    // ".jpeg" is not among them.
    EXPECT_EQ(std::count(files.begin(), files.end(), at("pic.jpeg")), 0);
}

TEST_F(PmUtilFiles, ImageFilesOfUnreadableDirectoryAreEmpty) {
    EXPECT_TRUE(pmUtil::findImageFiles(at("no-such-dir")).empty());
}

}  // namespace
