// The two-way table between the platform's key codes and KeyType.
#include "pmUtil.h"

namespace pmUtil {

namespace {

void addKey(KeyMapData& data, int key, int code) {
    // A later pair replaces an earlier one in each direction.
    data.platformToVirtual[code] = static_cast<KeyType>(key);
    data.virtualToPlatform[static_cast<KeyType>(key)] = code;
}

// Pairs a run of consecutive keys with a run of consecutive codes.
void addKeyRange(KeyMapData& data, int firstKey, int lastKey, int firstCode) {
    for (int key = firstKey; key <= lastKey; ++key) addKey(data, key, firstCode + key - firstKey);
}

}  // namespace

void createKeyMap(KeyMapData& data) {
    addKeyRange(data, Key1, Key9, 2);
    addKey(data, Key0, 11);
    addKeyRange(data, KeyA, KeyZ, 97);
    addKeyRange(data, KeyAltA, KeyAltZ, 300);
    addKeyRange(data, KeyF1, KeyF12, 501);
    // The arrow codes come after the letters, so 103, 105, 106 and 108 read
    // back as arrows while the letters still map out to them.
    addKey(data, KeyLeft, 105);
    addKey(data, KeyRight, 106);
    addKey(data, KeyUp, 103);
    addKey(data, KeyDown, 108);
    addKey(data, KeyEnter, 28);
    addKey(data, KeyExit, 174);
    addKey(data, KeyBack, 27);
    addKey(data, KeyAction1, 68);
    addKey(data, KeyAction2, 67);
    addKey(data, KeyAction3, 88);
    addKey(data, KeyAction4, 87);
    addKey(data, KeyMinus, 189);
    addKey(data, KeyPlus, 187);
    addKey(data, KeyHome, 36);
    addKey(data, KeyEnd, 35);
}

void deleteKeyMap(KeyMapData& data) {
    data.platformToVirtual.clear();
    data.virtualToPlatform.clear();
}

int getPlatformKey(KeyMapData& data, KeyType key) {
    const auto found = data.virtualToPlatform.find(key);
    return found == data.virtualToPlatform.end() ? -1 : found->second;
}

KeyType getVirtualKey(KeyMapData& data, int code) {
    const auto found = data.platformToVirtual.find(code);
    return found == data.platformToVirtual.end() ? KeyNone : found->second;
}

}  // namespace pmUtil
