// Segment intersection, angle arithmetic and the integer splitter.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

#include "GeometryTestHelpers.h"
#include "LogCapture.h"
#include "pmMath.h"

using geotest::vecNear;

namespace {

const float PI = 3.1415927f;
const float TWO_PI = 6.2831855f;

TEST(IntersectPoint, CrossingSegmentsMeetAtTheirCrossing) {
    glm::vec2 out(-1.0f);
    EXPECT_TRUE(pmMath::getIntersectPoint(glm::vec2(0.0f, 0.0f), glm::vec2(2.0f, 2.0f),
                                          glm::vec2(0.0f, 2.0f), glm::vec2(2.0f, 0.0f), &out));
    EXPECT_TRUE(vecNear(out, glm::vec2(1.0f, 1.0f)));
    // Not at the middle: (0, 0)-(4, 0) and (1, -1)-(1, 3) meet at (1, 0).
    EXPECT_TRUE(pmMath::getIntersectPoint(glm::vec2(0.0f, 0.0f), glm::vec2(4.0f, 0.0f),
                                          glm::vec2(1.0f, -1.0f), glm::vec2(1.0f, 3.0f), &out));
    EXPECT_TRUE(vecNear(out, glm::vec2(1.0f, 0.0f)));
}

TEST(IntersectPoint, CollinearAndParallelSegmentsDoNotMeet) {
    glm::vec2 out(-7.0f);
    // Overlapping on one line: the denominator is 0 before anything else.
    EXPECT_FALSE(pmMath::getIntersectPoint(glm::vec2(0.0f, 0.0f), glm::vec2(2.0f, 0.0f),
                                           glm::vec2(1.0f, 0.0f), glm::vec2(3.0f, 0.0f), &out));
    EXPECT_FALSE(pmMath::getIntersectPoint(glm::vec2(0.0f, 0.0f), glm::vec2(1.0f, 0.0f),
                                           glm::vec2(0.0f, 1.0f), glm::vec2(1.0f, 1.0f), &out));
    EXPECT_TRUE(vecNear(out, glm::vec2(-7.0f)));
}

TEST(IntersectPoint, SegmentsThatWouldMeetBeyondTheirEndsDoNot) {
    glm::vec2 out(-7.0f);
    // The lines cross at (3, 0), past the end of the first segment.
    EXPECT_FALSE(pmMath::getIntersectPoint(glm::vec2(0.0f, 0.0f), glm::vec2(2.0f, 0.0f),
                                           glm::vec2(3.0f, -1.0f), glm::vec2(3.0f, 1.0f), &out));
    // They cross at (1, 0), below the start of the second segment.
    EXPECT_FALSE(pmMath::getIntersectPoint(glm::vec2(0.0f, 0.0f), glm::vec2(2.0f, 0.0f),
                                           glm::vec2(1.0f, 1.0f), glm::vec2(1.0f, 2.0f), &out));
    EXPECT_TRUE(vecNear(out, glm::vec2(-7.0f)));
}

TEST(IntersectPoint, TouchingAtAnEndPointMeets) {
    glm::vec2 out(0.0f);
    // ua is exactly 1 and ub exactly 0.
    EXPECT_TRUE(pmMath::getIntersectPoint(glm::vec2(0.0f, 0.0f), glm::vec2(1.0f, 0.0f),
                                          glm::vec2(1.0f, 0.0f), glm::vec2(1.0f, 1.0f), &out));
    EXPECT_TRUE(vecNear(out, glm::vec2(1.0f, 0.0f), 0.0f));
    // The end of the second segment on the middle of the first: ub is 1.
    EXPECT_TRUE(pmMath::getIntersectPoint(glm::vec2(0.0f, 0.0f), glm::vec2(2.0f, 0.0f),
                                          glm::vec2(1.0f, 1.0f), glm::vec2(1.0f, 0.0f), &out));
    EXPECT_TRUE(vecNear(out, glm::vec2(1.0f, 0.0f), 0.0f));
}

TEST(IntersectPoint, SharedStartPointsGiveBothNumeratorsZeroAndDoNotMeet) {
    glm::vec2 out(-7.0f);
    EXPECT_FALSE(pmMath::getIntersectPoint(glm::vec2(0.0f, 0.0f), glm::vec2(1.0f, 0.0f),
                                           glm::vec2(0.0f, 0.0f), glm::vec2(0.0f, 1.0f), &out));
    EXPECT_TRUE(vecNear(out, glm::vec2(-7.0f)));
}

TEST(IntersectPoint, NullOutOnlyAnswers) {
    EXPECT_TRUE(pmMath::getIntersectPoint(glm::vec2(0.0f, 0.0f), glm::vec2(2.0f, 2.0f),
                                          glm::vec2(0.0f, 2.0f), glm::vec2(2.0f, 0.0f), nullptr));
    EXPECT_FALSE(pmMath::getIntersectPoint(glm::vec2(0.0f, 0.0f), glm::vec2(1.0f, 0.0f),
                                           glm::vec2(0.0f, 1.0f), glm::vec2(1.0f, 1.0f), nullptr));
}

TEST(ConstrainAngle, BringsAnglesIntoMinusPiToPi) {
    EXPECT_FLOAT_EQ(pmMath::constrainAngle(0.0f), 0.0f);
    EXPECT_NEAR(pmMath::constrainAngle(1.0f), 1.0f, 1e-6f);
    EXPECT_NEAR(pmMath::constrainAngle(-1.0f), -1.0f, 1e-6f);
    EXPECT_NEAR(pmMath::constrainAngle(1.5f * PI), -0.5f * PI, 1e-6f);
    EXPECT_NEAR(pmMath::constrainAngle(-1.5f * PI), 0.5f * PI, 1e-6f);
    EXPECT_NEAR(pmMath::constrainAngle(7.0f), 7.0f - TWO_PI, 1e-6f);
    EXPECT_NEAR(pmMath::constrainAngle(-20.0f), -20.0f + 3.0f * TWO_PI, 1e-5f);
    // The lower end stays, the upper end wraps.
    EXPECT_FLOAT_EQ(pmMath::constrainAngle(-PI), -PI);
    EXPECT_FLOAT_EQ(pmMath::constrainAngle(PI), -PI);
}

TEST(BisectAngle, MiddleOfTheShorterWay) {
    EXPECT_NEAR(pmMath::bisectAngle(0.0f, 0.5f * PI), 0.25f * PI, 1e-6f);
    EXPECT_NEAR(pmMath::bisectAngle(0.5f * PI, 0.0f), 0.25f * PI, 1e-6f);
    // From 2 to -2.5 the short way crosses pi: the span is 2 pi - 4.5.
    const float middle = 2.0f + (TWO_PI - 4.5f) * 0.5f;
    EXPECT_NEAR(pmMath::bisectAngle(2.0f, -2.5f), middle, 1e-5f);
    EXPECT_NEAR(pmMath::bisectAngle(-2.5f, 2.0f), middle, 1e-5f);
    // Angles outside the range are taken modulo a turn.
    EXPECT_NEAR(pmMath::bisectAngle(TWO_PI, TWO_PI + 1.0f), 0.5f, 1e-5f);
}

// The splitter's own rule, worked out beside it from the same generator.
std::vector<int> expectedSplit(int number, int size) {
    std::vector<int> out(static_cast<std::size_t>(size), number / size);
    const int rem = number % size;
    if (rem < 1) return out;
    const unsigned d = static_cast<unsigned>(size / rem);
    for (int& element : out) {
        const std::uint32_t b0 = static_cast<std::uint32_t>(std::rand() % 255);
        const std::uint32_t b1 = static_cast<std::uint32_t>(std::rand() % 255);
        const std::uint32_t b2 = static_cast<std::uint32_t>(std::rand() % 255);
        const std::uint32_t b3 = static_cast<std::uint32_t>(std::rand() % 255);
        const std::uint32_t r = b0 + b1 * 256u + b2 * 65536u + b3 * 16777216u;
        if (r % d + 1 == d) element += 1;
    }
    return out;
}

TEST(SplitNumber, SpreadsTheRemainderByTheCGenerator) {
    for (unsigned seed : {1u, 7u, 1234u, 99999u}) {
        for (int size : {3, 5, 8, 13}) {
            std::srand(seed);
            const std::vector<int> expected = expectedSplit(100, size);
            std::vector<int> out(static_cast<std::size_t>(size), -1);
            std::srand(seed);
            pmMath::splitNumber(100, out.data(), size);
            EXPECT_EQ(out, expected) << "seed " << seed << " size " << size;
        }
    }
}

TEST(SplitNumber, SevenOverThreeGivesTwosAndThrees) {
    int lowest = 100;
    int highest = 0;
    bool sawTwo = false;
    bool sawThree = false;
    for (unsigned seed = 1; seed <= 200; ++seed) {
        std::srand(seed);
        int out[3] = {0, 0, 0};
        pmMath::splitNumber(7, out, 3);
        int sum = 0;
        for (int value : out) {
            EXPECT_TRUE(value == 2 || value == 3) << value;
            sawTwo = sawTwo || value == 2;
            sawThree = sawThree || value == 3;
            sum += value;
        }
        lowest = std::min(lowest, sum);
        highest = std::max(highest, sum);
    }
    EXPECT_TRUE(sawTwo);
    EXPECT_TRUE(sawThree);
    // The sum is not held to 7.
    EXPECT_GE(lowest, 6);
    EXPECT_LE(highest, 9);
    EXPECT_LT(lowest, highest);
}

TEST(SplitNumber, RemainderOverHalfTheSizeGivesEveryElementOneMore) {
    // 5 over 3: base 1, remainder 2, d = 1, and r % 1 + 1 is always 1.
    int out[3] = {0, 0, 0};
    pmMath::splitNumber(5, out, 3);
    for (int value : out) EXPECT_EQ(value, 2);
    int wide[4] = {0, 0, 0, 0};
    pmMath::splitNumber(11, wide, 4);  // base 2, remainder 3, d = 1
    for (int value : wide) EXPECT_EQ(value, 3);
}

TEST(SplitNumber, NoRemainderDrawsNothingFromTheGenerator) {
    std::srand(42);
    const int next = std::rand();
    std::srand(42);
    int out[3] = {0, 0, 0};
    pmMath::splitNumber(9, out, 3);
    for (int value : out) EXPECT_EQ(value, 3);
    EXPECT_EQ(std::rand(), next);
    // A negative number truncates towards zero and its remainder is below 1.
    pmMath::splitNumber(-7, out, 3);
    for (int value : out) EXPECT_EQ(value, -2);
}

TEST(SplitNumber, SizeBelowOneIsLoggedAndLeavesTheArray) {
    int out[2] = {5, 6};
    LogCapture log;
    pmMath::splitNumber(10, out, 0);
    EXPECT_EQ(log.countEndingWith("> size > 0"), 1) << log.dump();
    EXPECT_EQ(log.count("pmMath: splitNumber("), 2) << log.dump();
    for (const LogLine& line : log.lines()) EXPECT_EQ(line.priority, 6);
    pmMath::splitNumber(10, out, -3);
    EXPECT_EQ(log.countEndingWith("> size > 0"), 2) << log.dump();
    EXPECT_EQ(out[0], 5);
    EXPECT_EQ(out[1], 6);
}

}  // namespace
