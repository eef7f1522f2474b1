#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pmUtil.h"

namespace {

using Tokens = std::vector<std::string>;

TEST(PmUtilStrings, TokensAreTheRunsBetweenDelimiters) {
    EXPECT_EQ(pmUtil::stringTokens("a:bc:def", ":"), (Tokens{"a", "bc", "def"}));
    EXPECT_EQ(pmUtil::stringTokens("-05:30:00", ":"), (Tokens{"-05", "30", "00"}));
    EXPECT_EQ(pmUtil::stringTokens("one two", " "), (Tokens{"one", "two"}));
}

TEST(PmUtilStrings, TokensTakeEachCharacterOfTheDelimiterSetAlone) {
    EXPECT_EQ(pmUtil::stringTokens("a,b;c d", ",; "), (Tokens{"a", "b", "c", "d"}));
    // The set is a set of characters, not a separator string.
    EXPECT_EQ(pmUtil::stringTokens("a<>b><c", "<>"), (Tokens{"a", "b", "c"}));
}

TEST(PmUtilStrings, TokensSkipRepeatedLeadingAndTrailingDelimiters) {
    EXPECT_EQ(pmUtil::stringTokens("::a:::b::", ":"), (Tokens{"a", "b"}));
    EXPECT_EQ(pmUtil::stringTokens("  word  ", " "), (Tokens{"word"}));
}

TEST(PmUtilStrings, TokensOfEmptyInputOrDelimitersOnlyAreEmpty) {
    EXPECT_TRUE(pmUtil::stringTokens("", ":").empty());
    EXPECT_TRUE(pmUtil::stringTokens(":::", ":").empty());
    EXPECT_TRUE(pmUtil::stringTokens(" ,; ", ",; ").empty());
}

TEST(PmUtilStrings, TokensWithNoDelimiterIsTheWholeInput) {
    EXPECT_EQ(pmUtil::stringTokens("abc", ":"), (Tokens{"abc"}));
    EXPECT_EQ(pmUtil::stringTokens("abc", ""), (Tokens{"abc"}));
}

TEST(PmUtilStrings, LowerAndUpperWorkOnEachByte) {
    EXPECT_EQ(pmUtil::stringLower("IMG_0042.JPG"), "img_0042.jpg");
    EXPECT_EQ(pmUtil::stringUpper("img_0042.jpg"), "IMG_0042.JPG");
    EXPECT_EQ(pmUtil::stringLower("MiXeD 123 !?"), "mixed 123 !?");
    EXPECT_EQ(pmUtil::stringUpper("MiXeD 123 !?"), "MIXED 123 !?");
    EXPECT_EQ(pmUtil::stringLower(""), "");
    EXPECT_EQ(pmUtil::stringUpper(""), "");
}

TEST(PmUtilStrings, LowerAndUpperKeepBytesOutsideAscii) {
    // UTF-8 "Ä" is two bytes above 0x7F; the C locale leaves them as they are.
    const std::string text = "\xC3\x84x";
    EXPECT_EQ(pmUtil::stringLower(text), "\xC3\x84x");
    EXPECT_EQ(pmUtil::stringUpper(text), "\xC3\x84X");
    const std::string withNul("A\0B", 3);
    EXPECT_EQ(pmUtil::stringLower(withNul), std::string("a\0b", 3));
}

TEST(PmUtilStrings, PathIsUpToAndIncludingTheLastSeparator) {
    EXPECT_EQ(pmUtil::stringPath("/usr/share/photo.png"), "/usr/share/");
    EXPECT_EQ(pmUtil::stringPath("dir/sub/"), "dir/sub/");
    EXPECT_EQ(pmUtil::stringPath("/file"), "/");
    EXPECT_EQ(pmUtil::stringPath("C:\\images\\a.bmp"), "C:\\images\\");
    // Both kinds count; the last of either wins.
    EXPECT_EQ(pmUtil::stringPath("a\\b/c\\d"), "a\\b/c\\");
    EXPECT_EQ(pmUtil::stringPath("a/b\\c/d"), "a/b\\c/");
}

TEST(PmUtilStrings, PathWithoutSeparatorIsEmpty) {
    EXPECT_EQ(pmUtil::stringPath("photo.png"), "");
    EXPECT_EQ(pmUtil::stringPath(""), "");
}

TEST(PmUtilStrings, FilenameFollowsTheLastSeparator) {
    EXPECT_EQ(pmUtil::stringFilename("/usr/share/photo.png"), "photo.png");
    EXPECT_EQ(pmUtil::stringFilename("C:\\images\\a.bmp"), "a.bmp");
    EXPECT_EQ(pmUtil::stringFilename("a/b\\c"), "c");
    EXPECT_EQ(pmUtil::stringFilename("dir/"), "");
}

TEST(PmUtilStrings, FilenameWithoutSeparatorIsTheWholeInput) {
    EXPECT_EQ(pmUtil::stringFilename("photo.png"), "photo.png");
    EXPECT_EQ(pmUtil::stringFilename(""), "");
}

TEST(PmUtilStrings, PathAndFilenameTogetherGiveTheInput) {
    for (const std::string path : {"/a/b/c.txt", "c.txt", "x\\y", "/", "dir/", ""}) {
        EXPECT_EQ(pmUtil::stringPath(path) + pmUtil::stringFilename(path), path);
    }
}

TEST(PmUtilStrings, StemIsTheFilenameUpToItsLastDot) {
    EXPECT_EQ(pmUtil::stringStem("/data/photo.png"), "photo");
    EXPECT_EQ(pmUtil::stringStem("archive.tar.gz"), "archive.tar");
    EXPECT_EQ(pmUtil::stringStem("C:\\x\\shot.JPG"), "shot");
    EXPECT_EQ(pmUtil::stringStem("trailing."), "trailing");
}

TEST(PmUtilStrings, StemOfNameWithoutDotIsEmptyNotTheName) {
    EXPECT_EQ(pmUtil::stringStem("README"), "");
    EXPECT_EQ(pmUtil::stringStem("/dir/README"), "");
    // The dot of a directory doesn't count for the stem.
    EXPECT_EQ(pmUtil::stringStem("a.b/c"), "");
    EXPECT_EQ(pmUtil::stringStem(""), "");
}

TEST(PmUtilStrings, StemOfHiddenFileIsEmpty) {
    EXPECT_EQ(pmUtil::stringStem("dir/.hidden"), "");
    EXPECT_EQ(pmUtil::stringStem(".config.json"), ".config");
}

TEST(PmUtilStrings, ExtensionOfDottedDirectoryRunsToTheEnd) {
    EXPECT_EQ(pmUtil::stringExtension("a.b/c"), ".b/c");
    EXPECT_EQ(pmUtil::stringExtension("/photos.2024/IMG_1"), ".2024/IMG_1");
    EXPECT_EQ(pmUtil::stringExtension("/photos.2024/IMG_1.png"), ".png");
}

}  // namespace
