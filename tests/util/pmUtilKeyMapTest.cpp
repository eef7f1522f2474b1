#include <gtest/gtest.h>

#include <map>
#include <utility>
#include <vector>

#include "pmUtil.h"

namespace {

using pmUtil::KeyType;

// Every pair of the table as (key, platform code), in the order entered.
std::vector<std::pair<int, int>> tablePairs() {
    std::vector<std::pair<int, int>> pairs;
    for (int key = 1; key <= 9; ++key) pairs.emplace_back(key, key + 1);
    pairs.emplace_back(0, 11);
    for (int key = 21; key <= 46; ++key) pairs.emplace_back(key, 97 + key - 21);
    for (int key = 47; key <= 72; ++key) pairs.emplace_back(key, 300 + key - 47);
    for (int key = 73; key <= 84; ++key) pairs.emplace_back(key, 501 + key - 73);
    const std::vector<std::pair<int, int>> singles = {
        {10, 105}, {11, 106}, {12, 103}, {13, 108}, {14, 28},  {15, 174}, {16, 27}, {17, 68},
        {18, 67},  {19, 88},  {20, 87},  {85, 189}, {86, 187}, {87, 36},  {88, 35}};
    pairs.insert(pairs.end(), singles.begin(), singles.end());
    return pairs;
}

class PmUtilKeyMap : public ::testing::Test {
protected:
    void SetUp() override { pmUtil::createKeyMap(keys); }
    void TearDown() override { pmUtil::deleteKeyMap(keys); }
    pmUtil::KeyMapData keys;
};

TEST_F(PmUtilKeyMap, EveryKeyMapsToItsPlatformCode) {
    for (const auto& pair : tablePairs()) {
        EXPECT_EQ(pmUtil::getPlatformKey(keys, static_cast<KeyType>(pair.first)), pair.second)
            << "key " << pair.first;
    }
    EXPECT_EQ(keys.virtualToPlatform.size(), 89u) << "keys 0 to 88";
}

TEST_F(PmUtilKeyMap, EveryCodeMapsBackToTheLatestKeyEnteredForIt) {
    std::map<int, int> latest;
    for (const auto& pair : tablePairs()) latest[pair.second] = pair.first;
    for (const auto& entry : latest) {
        EXPECT_EQ(pmUtil::getVirtualKey(keys, entry.first), entry.second) << "code " << entry.first;
    }
    EXPECT_EQ(keys.platformToVirtual.size(), 85u) << "four codes are shared";
}

TEST_F(PmUtilKeyMap, DigitsAreZeroToNine) {
    EXPECT_EQ(pmUtil::Key0, 0);
    EXPECT_EQ(pmUtil::Key9, 9);
    EXPECT_EQ(pmUtil::getPlatformKey(keys, pmUtil::Key0), 11);
    EXPECT_EQ(pmUtil::getPlatformKey(keys, pmUtil::Key1), 2);
    EXPECT_EQ(pmUtil::getPlatformKey(keys, pmUtil::Key9), 10);
    EXPECT_EQ(pmUtil::getVirtualKey(keys, 11), pmUtil::Key0);
    EXPECT_EQ(pmUtil::getVirtualKey(keys, 2), pmUtil::Key1);
}

TEST_F(PmUtilKeyMap, LaterPairWinsForSharedCodes) {
    // Four letter codes are entered again for the arrows: read back they give
    // the arrow, while the letters still map out to them.
    EXPECT_EQ(pmUtil::getVirtualKey(keys, 105), pmUtil::KeyLeft);
    EXPECT_EQ(pmUtil::getVirtualKey(keys, 106), pmUtil::KeyRight);
    EXPECT_EQ(pmUtil::getVirtualKey(keys, 103), pmUtil::KeyUp);
    EXPECT_EQ(pmUtil::getVirtualKey(keys, 108), pmUtil::KeyDown);
    EXPECT_EQ(pmUtil::getPlatformKey(keys, pmUtil::KeyI), 105);
    EXPECT_EQ(pmUtil::getPlatformKey(keys, pmUtil::KeyJ), 106);
    EXPECT_EQ(pmUtil::getPlatformKey(keys, pmUtil::KeyG), 103);
    EXPECT_EQ(pmUtil::getPlatformKey(keys, pmUtil::KeyL), 108);
    EXPECT_EQ(pmUtil::getVirtualKey(keys, 104), pmUtil::KeyH);
    EXPECT_EQ(pmUtil::getVirtualKey(keys, 107), pmUtil::KeyK);
}

TEST_F(PmUtilKeyMap, NamedKeysHaveTheirNumbers) {
    EXPECT_EQ(pmUtil::KeyLeft, 10);
    EXPECT_EQ(pmUtil::KeyDown, 13);
    EXPECT_EQ(pmUtil::KeyEnter, 14);
    EXPECT_EQ(pmUtil::KeyAction4, 20);
    EXPECT_EQ(pmUtil::KeyA, 21);
    EXPECT_EQ(pmUtil::KeyZ, 46);
    EXPECT_EQ(pmUtil::KeyAltA, 47);
    EXPECT_EQ(pmUtil::KeyAltZ, 72);
    EXPECT_EQ(pmUtil::KeyF1, 73);
    EXPECT_EQ(pmUtil::KeyF12, 84);
    EXPECT_EQ(pmUtil::KeyMinus, 85);
    EXPECT_EQ(pmUtil::KeyEnd, 88);
    EXPECT_EQ(pmUtil::KeyNone, 89);
}

TEST_F(PmUtilKeyMap, UnknownKeysAndCodes) {
    EXPECT_EQ(pmUtil::getPlatformKey(keys, pmUtil::KeyNone), -1);
    EXPECT_EQ(pmUtil::getPlatformKey(keys, static_cast<KeyType>(-1)), -1);
    for (int code : {0, 1, 12, 96, 123, 299, 326, 500, 513, -1}) {
        EXPECT_EQ(pmUtil::getVirtualKey(keys, code), pmUtil::KeyNone) << "code " << code;
    }
}

TEST_F(PmUtilKeyMap, DeleteEmptiesBothMaps) {
    pmUtil::deleteKeyMap(keys);
    EXPECT_TRUE(keys.platformToVirtual.empty());
    EXPECT_TRUE(keys.virtualToPlatform.empty());
    EXPECT_EQ(pmUtil::getPlatformKey(keys, pmUtil::KeyA), -1);
    EXPECT_EQ(pmUtil::getVirtualKey(keys, 97), pmUtil::KeyNone);
    // A map can be filled again after it was emptied.
    pmUtil::createKeyMap(keys);
    EXPECT_EQ(pmUtil::getPlatformKey(keys, pmUtil::KeyA), 97);
}

TEST(PmUtilKeyMapEmpty, LookupsInAnEmptyMapFindNothing) {
    pmUtil::KeyMapData keys;
    EXPECT_EQ(pmUtil::getPlatformKey(keys, pmUtil::Key5), -1);
    EXPECT_EQ(pmUtil::getVirtualKey(keys, 6), pmUtil::KeyNone);
    pmUtil::deleteKeyMap(keys);
    EXPECT_TRUE(keys.platformToVirtual.empty());
}

}  // namespace
