// An application builds against the installed headers without the platform's
// log header: its inline helpers then log through the library's logLine. This
// file is built that way, so the lines it makes take that road.
#undef PIXMORA_LOG_TO_PLATFORM

#include <gtest/gtest.h>

#include <string>

#include "LogCapture.h"
#include "pmUtil.h"

namespace {

int lineOfLog() {
    PM_LOGE("a %s of %d\n", "message", 7);
    return __LINE__ - 1;
}

}  // namespace

TEST(PmUtilLogLine, HeaderOnlyCodeWritesTheLibraryPrefixAndTag) {
    LogCapture log;
    const int line = lineOfLog();
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].priority, 6);
    EXPECT_EQ(lines[0].tag, "Pixmora");
    EXPECT_EQ(lines[0].format.rfind("%s: %s(%d) > ", 0), 0u);
    EXPECT_EQ(lines[0].text,
              "pmUtilLogLineTest: lineOfLog(" + std::to_string(line) + ") > a message of 7\n");
}

TEST(PmUtilLogLine, InformationLevelAndAMessageLongerThanAnyStackBuffer) {
    LogCapture log;
    const std::string longText(5000, 'x');
    PM_LOGI("%s|", longText.c_str());
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].priority, 4);
    const std::string& text = lines[0].text;
    ASSERT_GE(text.size(), longText.size() + 1);
    EXPECT_EQ(text.substr(text.size() - longText.size() - 1), longText + "|");
}

TEST(PmUtilLogLine, AssertionFromHeaderCodeLogsTheConditionAndGoesOn) {
    LogCapture log;
    pmUtil::MemoryBlock<unsigned char> block;
    block.length = 2;
    block.index = 3;
    PM_ASSERT(block.length >= block.index);
    EXPECT_EQ(log.countEndingWith("> block.length >= block.index"), 1) << log.dump();
}
