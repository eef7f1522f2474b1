#include <gtest/gtest.h>
#include <malloc.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <regex>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "SanitizerBuild.h"
#include "pmUtil.h"

// Counts array deletions while a test asks for it, to tell a release by
// delete[] from a release by free.
namespace {
std::atomic<bool> countArrayDeletes{false};
std::atomic<int> arrayDeletes{0};

void noteArrayDelete() {
    if (countArrayDeletes) ++arrayDeletes;
}
}  // namespace

// Array allocation is replaced as a pair, on malloc and free, so that the
// counting delete[] releases exactly what new[] handed out.
void* operator new[](std::size_t size) {
    if (void* pointer = std::malloc(size ? size : 1)) return pointer;
    throw std::bad_alloc();
}

void operator delete[](void* pointer) noexcept {
    noteArrayDelete();
    std::free(pointer);
}

void operator delete[](void* pointer, std::size_t) noexcept {
    noteArrayDelete();
    std::free(pointer);
}

namespace {

using pmUtil::ImageData;
using pmUtil::MemoryBlock;

class ArrayDeleteCounter {
public:
    ArrayDeleteCounter() {
        arrayDeletes = 0;
        countArrayDeletes = true;
    }
    ~ArrayDeleteCounter() { countArrayDeletes = false; }
    int count() const { return arrayDeletes; }
};

// The text of a log line after its "file: function(line) > " prefix.
std::string messageOf(const LogLine& line) {
    const std::size_t mark = line.text.find(" > ");
    return mark == std::string::npos ? line.text : line.text.substr(mark + 3);
}

std::vector<std::string> messages(const LogCapture& log) {
    std::vector<std::string> result;
    for (const LogLine& line : log.lines()) result.push_back(messageOf(line));
    return result;
}

// --- Logging and assertions ---------------------------------------------------

TEST(PmUtilLog, AssertionLogsConditionThenEmptyLineWithPrefix) {
    LogCapture log;
    auto* bytes = pmUtil::safeNewArray<unsigned char>(0);
    delete[] bytes;

    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u) << log.dump();
    const std::regex conditionLine(R"(^pmUtil: safeNewArray\((\d+)\) > _size > 0$)");
    const std::regex emptyLine(R"(^pmUtil: safeNewArray\((\d+)\) > \n$)");
    std::smatch first;
    std::smatch second;
    ASSERT_TRUE(std::regex_match(lines[0].text, first, conditionLine)) << lines[0].text;
    ASSERT_TRUE(std::regex_match(lines[1].text, second, emptyLine)) << lines[1].text;
    EXPECT_EQ(first[1], second[1]) << "both lines carry the assertion's line";
    EXPECT_GT(std::stoi(first[1]), 0);
}

TEST(PmUtilLog, LinesUseErrorPriorityAndTheLibraryTag) {
    LogCapture log;
    PM_LOGE("error %d\n", 1);
    PM_LOGI("info %s\n", "two");
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].priority, 6);
    EXPECT_EQ(lines[1].priority, 4);
    EXPECT_EQ(lines[0].tag, "Pixmora");
    EXPECT_EQ(lines[0].format.rfind("%s: %s(%d) > ", 0), 0u) << lines[0].format;
    EXPECT_TRUE(
        std::regex_match(lines[0].text, std::regex(R"(^pmUtilTest: TestBody\(\d+\) > error 1\n$)")))
        << lines[0].text;
    EXPECT_EQ(messageOf(lines[1]), "info two\n");
}

TEST(PmUtilLog, AssertionThatHoldsLogsNothing) {
    LogCapture log;
    PM_ASSERT(1 + 1 == 2);
    EXPECT_TRUE(log.lines().empty());
}

TEST(PmUtilLog, FailedAssertionCarriesOn) {
    LogCapture log;
    int reached = 0;
    PM_ASSERT(reached == 1);
    reached = 1;
    EXPECT_EQ(reached, 1);
    EXPECT_EQ(messages(log), (std::vector<std::string>{"reached == 1", "\n"}));
}

// --- Allocation ---------------------------------------------------------------

struct Pair {
    Pair(int a, std::string b) : first(a), second(std::move(b)) {}
    int first;
    std::string second;
};

struct RefusedAllocation {
    static void* operator new(std::size_t) { throw std::bad_alloc(); }
    static void operator delete(void*) {}
};

TEST(PmUtilAlloc, SafeNewForwardsArguments) {
    LogCapture log;
    Pair* pair = pmUtil::safeNew<Pair>(7, "seven");
    ASSERT_NE(pair, nullptr);
    EXPECT_EQ(pair->first, 7);
    EXPECT_EQ(pair->second, "seven");
    delete pair;
    EXPECT_TRUE(log.lines().empty());
}

TEST(PmUtilAlloc, SafeNewTurnsBadAllocIntoNullAndLogLine) {
    LogCapture log;
    EXPECT_EQ(pmUtil::safeNew<RefusedAllocation>(), nullptr);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u) << log.dump();
    EXPECT_EQ(lines[0].priority, 6);
    EXPECT_EQ(lines[0].format, "%s: %s(%d) > %s\n");
    EXPECT_TRUE(std::regex_match(lines[0].text,
                                 std::regex(R"(^pmUtil: safeNew\(\d+\) > std::bad_alloc\n$)")))
        << lines[0].text;
}

TEST(PmUtilAlloc, SafeNewArrayAllocatesRequestedSize) {
    LogCapture log;
    int* values = pmUtil::safeNewArray<int>(16);
    ASSERT_NE(values, nullptr);
    for (int i = 0; i < 16; ++i) values[i] = i;
    EXPECT_EQ(values[15], 15);
    delete[] values;
    EXPECT_TRUE(log.lines().empty());
}

TEST(PmUtilAlloc, SafeNewArrayOfZeroAssertsAndStillAllocates) {
    LogCapture log;
    unsigned char* bytes = pmUtil::safeNewArray<unsigned char>(0);
    EXPECT_NE(bytes, nullptr);
    delete[] bytes;
    EXPECT_EQ(log.countEndingWith("> _size > 0"), 1);
}

TEST(PmUtilAlloc, SafeNewArrayOfHugeSizeReturnsNullAndLogs) {
    LogCapture log;
    volatile std::size_t huge = SIZE_MAX / 2;
    unsigned char* bytes = pmUtil::safeNewArray<unsigned char>(huge);
    EXPECT_EQ(bytes, nullptr);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u) << log.dump();
    EXPECT_TRUE(
        std::regex_match(lines[0].text, std::regex(R"(^pmUtil: safeNewArray\(\d+\) > .*bad.*\n$)")))
        << lines[0].text;
}

// --- ImageData ----------------------------------------------------------------

TEST(PmUtilImage, DefaultImageIsEmpty) {
    ImageData<unsigned char> image;
    EXPECT_EQ(image.getWidth(), 0);
    EXPECT_EQ(image.getHeight(), 0);
    EXPECT_EQ(image.getChannel(), 0);
    EXPECT_EQ(image.data, nullptr);
    EXPECT_FALSE(image.useFree);
}

TEST(PmUtilImage, CopiesShareData) {
    ImageData<unsigned char> image(2, 2, 1, new unsigned char[4]{1, 2, 3, 4});
    ImageData<unsigned char> copy = image;
    EXPECT_EQ(copy.data, image.data);
    pmUtil::deleteImageData(image);
}

TEST(PmUtilImage, CompatibilityComparesAllThreeSizes) {
    ImageData<float> a(4, 3, 2, nullptr);
    EXPECT_TRUE(a.isCompatible(ImageData<float>(4, 3, 2, nullptr)));
    EXPECT_FALSE(a.isCompatible(ImageData<float>(5, 3, 2, nullptr)));
    EXPECT_FALSE(a.isCompatible(ImageData<float>(4, 4, 2, nullptr)));
    EXPECT_FALSE(a.isCompatible(ImageData<float>(4, 3, 3, nullptr)));
}

TEST(PmUtilImage, DeleteOnEmptyImageFreesNothingAndLeavesZeros) {
    ArrayDeleteCounter deletes;
    ImageData<unsigned char> image;
    pmUtil::deleteImageData(image);
    EXPECT_EQ(deletes.count(), 0);
    EXPECT_EQ(image.width, 0);
    EXPECT_EQ(image.height, 0);
    EXPECT_EQ(image.channel, 0);
    EXPECT_EQ(image.data, nullptr);
    EXPECT_FALSE(image.useFree);
}

TEST(PmUtilImage, DeleteReleasesArrayWithDeleteAndZeroesFields) {
    ImageData<unsigned char> image(3, 2, 4, new unsigned char[24]);
    ArrayDeleteCounter deletes;
    pmUtil::deleteImageData(image);
    EXPECT_EQ(deletes.count(), 1);
    EXPECT_EQ(image.width, 0);
    EXPECT_EQ(image.height, 0);
    EXPECT_EQ(image.channel, 0);
    EXPECT_EQ(image.data, nullptr);
}

TEST(PmUtilImage, DeleteReleasesMallocMemoryWithFree) {
    const std::size_t bytes = 1 << 16;
    const std::size_t inUseBefore = mallinfo2().uordblks;
    auto* data = static_cast<unsigned char*>(std::malloc(bytes));
    ASSERT_NE(data, nullptr);
    ImageData<unsigned char> image(128, 128, 4, data, true);
    // glibc's heap statistics do not see the sanitizer's allocator.
    const bool glibcHeap = !PIXMORA_TEST_ASAN;
    if (glibcHeap) {
        ASSERT_GE(mallinfo2().uordblks, inUseBefore + bytes);
    }

    ArrayDeleteCounter deletes;
    pmUtil::deleteImageData(image);
    EXPECT_EQ(deletes.count(), 0) << "malloc memory must not go through delete[]";
    if (glibcHeap) {
        EXPECT_LT(mallinfo2().uordblks, inUseBefore + bytes) << "the memory went back to malloc";
    }
    EXPECT_EQ(image.data, nullptr);
    EXPECT_FALSE(image.useFree);
}

TEST(PmUtilImage, CopyImageDataCopiesAllElements) {
    std::vector<float> source = {1, 2, 3, 4, 5, 6};
    std::vector<float> target(6, 0.0f);
    ImageData<float> src(3, 1, 2, source.data());
    ImageData<float> dst(3, 1, 2, target.data());
    LogCapture log;
    pmUtil::copyImageData(src, dst);
    EXPECT_EQ(target, source);
    EXPECT_TRUE(log.lines().empty());
}

TEST(PmUtilImage, CopyImageDataCopiesEvenWhenSizesDiffer) {
    std::vector<unsigned char> source = {9, 8, 7, 6};
    std::vector<unsigned char> target(8, 0);
    ImageData<unsigned char> src(2, 2, 1, source.data());
    ImageData<unsigned char> dst(4, 2, 1, target.data());
    LogCapture log;
    pmUtil::copyImageData(src, dst);
    EXPECT_EQ(log.countEndingWith("> src.isCompatible(dst)"), 1) << log.dump();
    EXPECT_EQ(target, (std::vector<unsigned char>{9, 8, 7, 6, 0, 0, 0, 0}));
}

// --- MemoryBlock --------------------------------------------------------------

TEST(PmUtilMemory, CreateMemoryBlockStartsAtZero) {
    LogCapture log;
    MemoryBlock<unsigned char> block = pmUtil::createMemoryBlock<unsigned char>(32);
    EXPECT_NE(block.data, nullptr);
    EXPECT_EQ(block.length, 32u);
    EXPECT_EQ(block.index, 0u);
    EXPECT_FALSE(block.useFree);
    EXPECT_TRUE(log.lines().empty());
    pmUtil::deleteMemoryBlock(block);
}

TEST(PmUtilMemory, CreateMemoryBlockOfZeroLogsBothAssertions) {
    LogCapture log;
    MemoryBlock<unsigned char> block = pmUtil::createMemoryBlock<unsigned char>(0);
    EXPECT_EQ(block.length, 0u);
    EXPECT_EQ(block.index, 0u);
    EXPECT_EQ(log.countEndingWith("> _size > 0"), 1) << log.dump();
    EXPECT_EQ(log.countEndingWith("> _length > 0"), 1) << log.dump();
    pmUtil::deleteMemoryBlock(block);
}

TEST(PmUtilMemory, ConstructorWithUsedSizeAssertsItFits) {
    unsigned char bytes[4] = {};
    LogCapture log;
    MemoryBlock<unsigned char> fits(bytes, 4, 4);
    EXPECT_TRUE(log.lines().empty());
    MemoryBlock<unsigned char> over(bytes, 4, 5);
    EXPECT_EQ(log.countEndingWith("> _length >= _index"), 1) << log.dump();
    EXPECT_EQ(over.index, 5u);
}

TEST(PmUtilMemory, WriteThenReadMovesIndex) {
    MemoryBlock<unsigned char> block = pmUtil::createMemoryBlock<unsigned char>(12);
    const std::uint64_t wide = 0x0102030405060708ull;
    const int narrow = -5;
    LogCapture log;
    block.write(&wide, sizeof(wide));
    EXPECT_EQ(block.index, 8u);
    block.write(&narrow, sizeof(narrow));
    EXPECT_EQ(block.index, 12u);
    EXPECT_EQ(block.data[0], 0x08) << "bytes are stored in machine order";

    block.index = 0;
    std::uint64_t wideBack = 0;
    int narrowBack = 0;
    block.read(&wideBack, sizeof(wideBack));
    block.read(&narrowBack, sizeof(narrowBack));
    EXPECT_EQ(wideBack, wide);
    EXPECT_EQ(narrowBack, narrow);
    EXPECT_EQ(block.index, 12u);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
    pmUtil::deleteMemoryBlock(block);
}

TEST(PmUtilMemory, OverrunIsReportedAfterTheCopy) {
    // The block claims 4 bytes of a larger buffer, so the overrun stays inside
    // memory the test owns.
    unsigned char storage[16] = {};
    MemoryBlock<unsigned char> block(storage, 4);
    const unsigned char six[6] = {1, 2, 3, 4, 5, 6};
    LogCapture log;
    block.write(six, sizeof(six));
    EXPECT_EQ(block.index, 6u);
    EXPECT_EQ(storage[5], 6) << "the copy is made before the check";
    EXPECT_EQ(log.countEndingWith("> length >= index"), 1) << log.dump();

    log.clear();
    block.index = 2;
    unsigned char back[3] = {};
    block.read(back, sizeof(back));
    EXPECT_EQ(back[2], 5);
    EXPECT_EQ(log.countEndingWith("> length >= index"), 1) << log.dump();
}

TEST(PmUtilMemory, DeleteReleasesAndZeroesAllFields) {
    MemoryBlock<unsigned char> block = pmUtil::createMemoryBlock<unsigned char>(8);
    block.index = 3;
    ArrayDeleteCounter deletes;
    pmUtil::deleteMemoryBlock(block);
    EXPECT_EQ(deletes.count(), 1);
    EXPECT_EQ(block.data, nullptr);
    EXPECT_EQ(block.length, 0u);
    EXPECT_EQ(block.index, 0u);
    EXPECT_FALSE(block.useFree);
}

TEST(PmUtilMemory, DeleteReleasesMallocBlockWithFree) {
    MemoryBlock<unsigned char> block(static_cast<unsigned char*>(std::malloc(64)), 64, 64, true);
    ArrayDeleteCounter deletes;
    pmUtil::deleteMemoryBlock(block);
    EXPECT_EQ(deletes.count(), 0);
    EXPECT_EQ(block.data, nullptr);
    EXPECT_EQ(block.length, 0u);
    EXPECT_EQ(block.index, 0u);
    EXPECT_FALSE(block.useFree);
}

TEST(PmUtilMemory, DeleteOnEmptyBlockIsHarmless) {
    MemoryBlock<unsigned char> block;
    ArrayDeleteCounter deletes;
    pmUtil::deleteMemoryBlock(block);
    EXPECT_EQ(deletes.count(), 0);
    EXPECT_EQ(block.data, nullptr);
}

// --- Strings ------------------------------------------------------------------

TEST(PmUtilString, StringFormatFormatsArguments) {
    EXPECT_EQ(pmUtil::stringFormat("%d x %d = %s", 3, 4, "twelve"), "3 x 4 = twelve");
    EXPECT_EQ(pmUtil::stringFormat("%.2f%%", 12.345), "12.35%");
}

TEST(PmUtilString, StringFormatOfEmptyResultIsEmpty) {
    EXPECT_EQ(pmUtil::stringFormat(""), "");
    EXPECT_EQ(pmUtil::stringFormat("%s", ""), "");
}

TEST(PmUtilString, StringFormatKeepsLongResults) {
    const std::string longText(5000, 'x');
    EXPECT_EQ(pmUtil::stringFormat("<%s>", longText.c_str()), "<" + longText + ">");
}

TEST(PmUtilString, StringExtensionTakesFromLastDot) {
    EXPECT_EQ(pmUtil::stringExtension("photo.png"), ".png");
    EXPECT_EQ(pmUtil::stringExtension("/tmp/archive.tar.gz"), ".gz");
    EXPECT_EQ(pmUtil::stringExtension("IMAGE.PNG"), ".PNG");
    EXPECT_EQ(pmUtil::stringExtension("dir/.hidden"), ".hidden");
    EXPECT_EQ(pmUtil::stringExtension("trailing."), ".");
}

TEST(PmUtilString, StringExtensionSearchesTheWholePath) {
    EXPECT_EQ(pmUtil::stringExtension("a.b/c"), ".b/c");
    EXPECT_EQ(pmUtil::stringExtension("./file"), "./file");
}

TEST(PmUtilString, StringExtensionIsEmptyWithoutDot) {
    EXPECT_EQ(pmUtil::stringExtension("README"), "");
    EXPECT_EQ(pmUtil::stringExtension("dir/file"), "");
    EXPECT_EQ(pmUtil::stringExtension(""), "");
}

}  // namespace
