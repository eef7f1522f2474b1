// The piecewise linear mapper: building, sorting, merging and mapping.
#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include "LogCapture.h"
#include "pmMath.h"

using Points = std::vector<std::pair<float, float>>;

namespace {

TEST(InoutMapper, PushAppendsOutputAndInput) {
    pmMath::InoutMapper mapper;
    mapper.PushInout(10.0f, 1.0f);
    mapper.PushInout(0.0f, 0.0f);
    EXPECT_EQ(mapper.inoutList, (Points{{10.0f, 1.0f}, {0.0f, 0.0f}}));
}

TEST(InoutMapper, SetReplacesByACopyAndIgnoresItsOwnList) {
    pmMath::InoutMapper mapper;
    mapper.PushInout(1.0f, 1.0f);
    Points points = {{0.0f, 0.0f}, {2.0f, 4.0f}};
    mapper.SetInout(points);
    points[0].first = 99.0f;
    EXPECT_EQ(mapper.inoutList, (Points{{0.0f, 0.0f}, {2.0f, 4.0f}}));
    mapper.SetInout(mapper.inoutList);
    EXPECT_EQ(mapper.inoutList, (Points{{0.0f, 0.0f}, {2.0f, 4.0f}}));
}

TEST(InoutMapper, InitializeOfAnEmptyListKeepsItEmpty) {
    pmMath::InoutMapper mapper;
    mapper.Initialize();
    EXPECT_TRUE(mapper.inoutList.empty());
}

TEST(InoutMapper, InitializeSortsByOutputThenInput) {
    pmMath::InoutMapper mapper;
    mapper.SetInout({{20.0f, 3.0f}, {0.0f, 0.0f}, {10.0f, 2.0f}, {10.0f, 1.0f}});
    mapper.Initialize();
    EXPECT_EQ(mapper.inoutList,
              (Points{{0.0f, 0.0f}, {10.0f, 1.0f}, {10.0f, 2.0f}, {20.0f, 3.0f}}));
}

TEST(InoutMapper, InitializeDropsRepeatedInputsAndKeepsTheGreatestOutputLast) {
    pmMath::InoutMapper mapper;
    // Three points on input 0 in a row: the first stays, compared again after
    // each removal.
    mapper.SetInout({{0.0f, 0.0f}, {1.0f, 0.0f}, {2.0f, 0.0f}, {3.0f, 1.0f}});
    mapper.Initialize();
    EXPECT_EQ(mapper.inoutList, (Points{{0.0f, 0.0f}, {3.0f, 1.0f}}));

    // Inputs one float step apart count as the same.
    const float close = std::nextafter(0.5f, 1.0f);
    mapper.SetInout({{0.0f, 0.0f}, {1.0f, 0.5f}, {2.0f, close}, {3.0f, 1.0f}});
    mapper.Initialize();
    EXPECT_EQ(mapper.inoutList, (Points{{0.0f, 0.0f}, {1.0f, 0.5f}, {3.0f, 1.0f}}));

    // The last point is the one dropped: its output moves to the new last.
    mapper.SetInout({{0.0f, 0.0f}, {1.0f, 1.0f}, {2.0f, 1.0f}});
    mapper.Initialize();
    EXPECT_EQ(mapper.inoutList, (Points{{0.0f, 0.0f}, {2.0f, 1.0f}}));
}

TEST(InoutMapper, MapInputInterpolatesOnTheFirstSegmentThatHoldsIt) {
    pmMath::InoutMapper mapper;
    mapper.PushInout(0.0f, 0.0f);
    mapper.PushInout(10.0f, 1.0f);
    mapper.PushInout(20.0f, 3.0f);
    mapper.Initialize();
    EXPECT_FLOAT_EQ(mapper.MapInput(0.0f), 0.0f);
    EXPECT_FLOAT_EQ(mapper.MapInput(0.25f), 2.5f);
    EXPECT_FLOAT_EQ(mapper.MapInput(1.0f), 10.0f);
    EXPECT_FLOAT_EQ(mapper.MapInput(2.0f), 15.0f);
    EXPECT_FLOAT_EQ(mapper.MapInput(3.0f), 20.0f);
}

TEST(InoutMapper, OutsideTheRangeGivesZeroWithoutClamping) {
    pmMath::InoutMapper mapper;
    mapper.SetInout({{5.0f, 1.0f}, {9.0f, 2.0f}});
    mapper.Initialize();
    EXPECT_FLOAT_EQ(mapper.MapInput(0.5f), 0.0f);
    EXPECT_FLOAT_EQ(mapper.MapInput(2.5f), 0.0f);
    EXPECT_FLOAT_EQ(mapper.MapInput(1.5f), 7.0f);
}

TEST(InoutMapper, OnePointHasNoSegment) {
    pmMath::InoutMapper mapper;
    mapper.PushInout(4.0f, 2.0f);
    mapper.Initialize();
    LogCapture log;
    EXPECT_FLOAT_EQ(mapper.MapInput(2.0f), 0.0f);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
}

TEST(InoutMapper, FallingMappingEndsWithFallingInputsAndMapsNothing) {
    pmMath::InoutMapper mapper;
    // Output 0 at input 10, output 1 at input 0: sorted by output, the inputs
    // fall, and no segment holds anything between them.
    mapper.PushInout(1.0f, 0.0f);
    mapper.PushInout(0.0f, 10.0f);
    mapper.Initialize();
    EXPECT_EQ(mapper.inoutList, (Points{{0.0f, 10.0f}, {1.0f, 0.0f}}));
    EXPECT_FLOAT_EQ(mapper.MapInput(5.0f), 0.0f);
    EXPECT_FLOAT_EQ(mapper.MapInput(0.0f), 0.0f);
    EXPECT_FLOAT_EQ(mapper.MapInput(10.0f), 0.0f);
}

TEST(InoutMapper, MappingAnEmptyListIsLogged) {
    pmMath::InoutMapper mapper;
    LogCapture log;
    mapper.MapInput(1.0f);
    EXPECT_EQ(log.countEndingWith("> inoutList.empty() == false"), 1) << log.dump();
    EXPECT_EQ(log.count("pmMath: MapInput("), 2) << log.dump();
    for (const LogLine& line : log.lines()) EXPECT_EQ(line.priority, 6);
}

}  // namespace
