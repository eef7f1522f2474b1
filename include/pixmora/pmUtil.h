/**
 * @file pmUtil.h
 * @brief Base helpers shared by every layer (pmUtil).
 *
 * Logging, assertions that log and go on, allocation that turns std::bad_alloc
 * into a null result, the image and memory records `ImageData` and
 * `MemoryBlock`, string formatting; and the small tools beside them: paths and
 * directory listing, a frame-rate meter, wall-clock data, the key map and
 * number-to-text conversion. Nothing here calls GL.
 */
#ifndef PIXMORA_PMUTIL_H
#define PIXMORA_PMUTIL_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "pmExport.h"

#define PM_LOG_TAG "Pixmora"
#define PM_LOG_ID 0
#define PM_PRIO_ERROR 6
#define PM_PRIO_INFO 4

namespace PM_VISIBLE pmUtil {

// The name a log line carries for a source file: the base name without
// directories and without extension, worked out at compile time.
struct SourceName {
    char text[128] = {};
    constexpr explicit SourceName(const char* path) {
        const char* base = path;
        for (const char* p = path; *p; ++p) {
            if (*p == '/') base = p + 1;
        }
        // Everything from the first dot on is dropped, so "pmGL.texture.cpp"
        // logs as "pmGL": one layer may span several source files.
        std::size_t end = 0;
        while (base[end] && base[end] != '.' && end + 1 < sizeof(text)) ++end;
        for (std::size_t i = 0; i < end; ++i) text[i] = base[i];
        text[end] = '\0';
    }
};

}  // namespace pmUtil

#define PM_SOURCE_NAME                                              \
    ([]() -> const char* {                                          \
        static constexpr ::pmUtil::SourceName sourceName{__FILE__}; \
        return sourceName.text;                                     \
    }())

// The library's own code, built with the platform's log header at hand, logs
// straight into it. Code built against the installed headers alone (the
// inline helpers below, used by an application) goes through the library's
// exported logLine, which writes the same line, so it needs neither the
// platform's header nor its library.
namespace PM_VISIBLE pmUtil {
void logLine(int prio, const char* source, const char* function, int line, const char* fmt, ...)
    __attribute__((format(printf, 5, 6)));
}  // namespace pmUtil

#if defined(PIXMORA_LOG_TO_PLATFORM)
#include <dlog.h>
#define PM_LOG_AT(prio, fmt, ...)                                                            \
    __dlog_print((log_id_t)PM_LOG_ID, prio, PM_LOG_TAG, "%s: %s(%d) > " fmt, PM_SOURCE_NAME, \
                 __func__, __LINE__, ##__VA_ARGS__)
#else
#define PM_LOG_AT(prio, fmt, ...) \
    ::pmUtil::logLine(prio, PM_SOURCE_NAME, __func__, __LINE__, fmt, ##__VA_ARGS__)
#endif

// Error level is also the usual level for plain progress lines.
#define PM_LOGE(fmt, ...) PM_LOG_AT(PM_PRIO_ERROR, fmt, ##__VA_ARGS__)
#define PM_LOGI(fmt, ...) PM_LOG_AT(PM_PRIO_INFO, fmt, ##__VA_ARGS__)

// Logs the failed condition and an empty line, then carries on: nothing in the
// library aborts on an assertion.
#define PM_ASSERT(cond)           \
    do {                          \
        if (!(cond)) {            \
            PM_LOGE("%s", #cond); \
            PM_LOGE("\n");        \
        }                         \
    } while (0)

namespace PM_VISIBLE pmUtil {

// Passed by every safeNew and safeNewArray before it allocates. It does
// nothing in normal use; the library's own tests can make it throw
// std::bad_alloc to drive the callers down their out-of-memory paths.
void allocationCheckpoint();

template <typename T, typename... Args>
T* safeNew(Args&&... args) {
    try {
        allocationCheckpoint();
        return new T(std::forward<Args>(args)...);
    } catch (const std::bad_alloc& e) {
        PM_LOGE("%s\n", e.what());
        return nullptr;
    }
}

template <typename T>
T* safeNewArray(std::size_t _size) {
    PM_ASSERT(_size > 0);
    try {
        allocationCheckpoint();
        return new T[_size];
    } catch (const std::bad_alloc& e) {
        PM_LOGE("%s\n", e.what());
        return nullptr;
    }
}

template <typename T>
struct ImageData {
    int width = 0;
    int height = 0;
    int channel = 0;
    T* data = nullptr;
    bool useFree = false;

    ImageData() = default;
    ImageData(int _width, int _height, int _channel, T* _data, bool _useFree = false)
        : width(_width), height(_height), channel(_channel), data(_data), useFree(_useFree) {}

    int getWidth() const { return width; }
    int getHeight() const { return height; }
    int getChannel() const { return channel; }
    std::size_t getCount() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
               static_cast<std::size_t>(channel);
    }
    bool isCompatible(const ImageData& other) const {
        return width == other.width && height == other.height && channel == other.channel;
    }
};

template <typename T>
void releaseData(T*& data, bool useFree) {
    if (data == nullptr) return;
    if (useFree) {
        std::free(data);
    } else {
        delete[] data;
    }
    data = nullptr;
}

template <typename T>
void deleteImageData(ImageData<T>& image) {
    releaseData(image.data, image.useFree);
    image.width = 0;
    image.height = 0;
    image.channel = 0;
    image.useFree = false;
}

template <typename T>
void copyImageData(const ImageData<T>& src, ImageData<T>& dst) {
    PM_ASSERT(src.isCompatible(dst));
    std::memcpy(dst.data, src.data, src.getCount() * sizeof(T));
}

template <typename T>
struct MemoryBlock {
    T* data = nullptr;
    std::uint64_t length = 0;
    std::uint64_t index = 0;
    bool useFree = false;

    MemoryBlock() = default;
    MemoryBlock(T* _data, std::uint64_t _length, std::uint64_t _index = 0, bool _useFree = false)
        : data(_data), length(_length), index(_index), useFree(_useFree) {
        PM_ASSERT(_length >= _index);
    }

    // Copies size bytes from the block at index into dst and moves index on.
    void read(void* dst, std::size_t size) {
        std::memcpy(dst, reinterpret_cast<unsigned char*>(data) + index, size);
        index += size;
        PM_ASSERT(length >= index);
    }

    // Copies size bytes from src into the block at index and moves index on.
    void write(const void* src, std::size_t size) {
        std::memcpy(reinterpret_cast<unsigned char*>(data) + index, src, size);
        index += size;
        PM_ASSERT(length >= index);
    }
};

template <typename T>
MemoryBlock<T> createMemoryBlock(std::size_t _length) {
    T* _data = safeNewArray<T>(_length);
    PM_ASSERT(_data);
    PM_ASSERT(_length > 0);
    return MemoryBlock<T>(_data, _length, 0, false);
}

template <typename T>
void deleteMemoryBlock(MemoryBlock<T>& block) {
    releaseData(block.data, block.useFree);
    block.length = 0;
    block.index = 0;
    block.useFree = false;
}

template <typename... Args>
std::string stringFormat(const std::string& format, Args... args) {
    int size = std::snprintf(nullptr, 0, format.c_str(), args...) + 1;
    if (size < 1) throw std::runtime_error("Error during formatting.");
    char* buffer = new char[size];
    std::snprintf(buffer, size, format.c_str(), args...);
    std::string result(buffer, buffer + size - 1);
    delete[] buffer;
    return result;
}

// From the last "." in the whole path to the end, dot included; empty if none.
std::string stringExtension(const std::string& path);

// --- Strings, paths and files ---------------------------------------------------

// The longest runs of characters that aren't in `delimiters`; empty input or
// delimiters only give an empty vector.
std::vector<std::string> stringTokens(const std::string& text, const std::string& delimiters);
// tolower / toupper on each byte.
std::string stringLower(const std::string& text);
std::string stringUpper(const std::string& text);
// The text up to and including the last "/" or backslash; empty if there is none.
std::string stringPath(const std::string& path);
// What follows the last "/" or backslash; the whole input if there is none.
std::string stringFilename(const std::string& path);
// The file name up to its last "."; empty if the file name has no ".".
std::string stringStem(const std::string& path);

// True when the path may be opened: it doesn't exist, or it is reached without
// a symbolic link and, if relative, without "." or ".." parts.
bool checkSymbolicLink(const std::string& path);

// Every entry of a directory but "." and "..", as directory + "/" + name, in
// the order the directory lists them; not recursive. Empty if unreadable.
std::vector<std::string> findAllFiles(const std::string& directory);
// The entries whose lower-cased stringExtension equals one of `extensions`
// exactly: give them in lower case, with their dot.
std::vector<std::string> findFilteredFiles(const std::string& directory,
                                           const std::vector<std::string>& extensions);
// .jpg, .png, .bmp and .tga entries.
std::vector<std::string> findImageFiles(const std::string& directory);

// --- Time -------------------------------------------------------------------------

template <typename T>
struct TimeData {
    T days = 0;
    T hours = 0;
    T minutes = 0;
    T seconds = 0;
    T milliseconds = 0;
};

// An offset from UTC; for a negative offset all three fields are negative.
struct OffsetUTC {
    int hour = 0;
    int minute = 0;
    int second = 0;
};

// A frame-rate meter: `rates` is a ring of the latest rates that the user
// sizes (and may pre-fill) before the first call, `index` the ring's next
// slot, `lastTime` the time of the latest call in milliseconds.
struct FPSData {
    std::vector<float> rates;
    int index = 0;
    std::uint64_t lastTime = 0;
};

// Milliseconds of the system clock since the epoch.
std::uint64_t now();
// Stores the rate since the previous call into the ring and returns the mean
// of the whole ring. The ring must not be empty.
float getFPS(FPSData& data);

// Splits milliseconds into days, hours (0 to 23), minutes, seconds and
// milliseconds. `days` may be null, the others not.
void getTimestampComponents(unsigned long long timestamp, unsigned int* days, unsigned int* hours,
                            unsigned int* minutes, unsigned int* seconds,
                            unsigned int* milliseconds);

// The platform's wall clock: day of the month, hour, minute and second, with
// milliseconds that restart at 0 on each tick of the platform's second. Keeps
// process-wide state: call it from one thread only.
TimeData<unsigned int> getLocalTimeData();
// `time` moved from the offset `from` to the offset `to`, wrapped into one day;
// days is 0.
TimeData<unsigned int> getGlobalTimeData(const OffsetUTC& from, const OffsetUTC& to,
                                         const TimeData<unsigned int>& time);
// The same for the local time of getLocalTimeData.
TimeData<unsigned int> getGlobalTimeData(const OffsetUTC& from, const OffsetUTC& to);
// The product a x b taken as milliseconds and split, days included.
TimeData<unsigned int> generateTimeData(unsigned int a, unsigned int b);
// The field-wise sum, carried through milliseconds and split again.
TimeData<unsigned int> addTimeData(const TimeData<unsigned int>& a,
                                   const TimeData<unsigned int>& b);
// The fractions of a clock face's hands: hours of 12, minutes of 60, seconds
// of 60 and milliseconds of 1000, each with the finer fields; days is 0.
TimeData<float> normalizeTimeData(const TimeData<unsigned int>& time);

// "1:05P" style: 12 for noon and midnight, A or P.
std::string hourFormat12(const TimeData<unsigned int>& time);
// "13:05" style, both fields two digits.
std::string hourFormat24(const TimeData<unsigned int>& time);
// The platform's local date and time as "2024-03-07_09-05-01".
std::string getLocalDateTimeString();

// Reads "[+|-]hh:mm:ss". Out-of-range parts are logged and kept; a part that
// isn't a number throws what std::stoi throws.
OffsetUTC parseOffsetUTC(const std::string& text);

// --- Keys -------------------------------------------------------------------------

// The program's key codes. 0 to 9 are the digit keys; KeyNone (89) means no
// key.
enum KeyType : int {
    Key0 = 0,
    Key1,
    Key2,
    Key3,
    Key4,
    Key5,
    Key6,
    Key7,
    Key8,
    Key9,
    KeyLeft = 10,
    KeyRight,
    KeyUp,
    KeyDown,
    KeyEnter = 14,
    KeyExit,
    KeyBack,
    KeyAction1 = 17,
    KeyAction2,
    KeyAction3,
    KeyAction4,
    KeyA = 21,
    KeyB,
    KeyC,
    KeyD,
    KeyE,
    KeyF,
    KeyG,
    KeyH,
    KeyI,
    KeyJ,
    KeyK,
    KeyL,
    KeyM,
    KeyN,
    KeyO,
    KeyP,
    KeyQ,
    KeyR,
    KeyS,
    KeyT,
    KeyU,
    KeyV,
    KeyW,
    KeyX,
    KeyY,
    KeyZ,
    KeyAltA = 47,
    KeyAltB,
    KeyAltC,
    KeyAltD,
    KeyAltE,
    KeyAltF,
    KeyAltG,
    KeyAltH,
    KeyAltI,
    KeyAltJ,
    KeyAltK,
    KeyAltL,
    KeyAltM,
    KeyAltN,
    KeyAltO,
    KeyAltP,
    KeyAltQ,
    KeyAltR,
    KeyAltS,
    KeyAltT,
    KeyAltU,
    KeyAltV,
    KeyAltW,
    KeyAltX,
    KeyAltY,
    KeyAltZ,
    KeyF1 = 73,
    KeyF2,
    KeyF3,
    KeyF4,
    KeyF5,
    KeyF6,
    KeyF7,
    KeyF8,
    KeyF9,
    KeyF10,
    KeyF11,
    KeyF12,
    KeyMinus = 85,
    KeyPlus,
    KeyHome,
    KeyEnd,
    KeyNone = 89
};

// Both directions between the platform's key codes and KeyType.
struct KeyMapData {
    std::map<int, KeyType> platformToVirtual;
    std::map<KeyType, int> virtualToPlatform;
};

void createKeyMap(KeyMapData& data);
void deleteKeyMap(KeyMapData& data);
// The platform's code for a key, or -1 for one that isn't mapped.
int getPlatformKey(KeyMapData& data, KeyType key);
// The key for a platform code, or KeyNone for one that isn't mapped.
KeyType getVirtualKey(KeyMapData& data, int code);

// --- Numbers as text ----------------------------------------------------------------

// Decimal text without printf. A double is written as a mantissa from 1 to
// below 10 (or from 0.1 to below 10 when no exponent is needed) with nine
// decimals when it has a fraction, then "e" and the power of ten: 1.5 gives
// "1.500000000", 1000.0 gives "1e3", 0.1 gives "1e-1".
std::string valueToString(unsigned int value);
std::string valueToString(int value);
std::string valueToString(bool value);
std::string valueToString(double value);
std::string valueToString(float value);

// --- Shared records -------------------------------------------------------------------

template <typename T>
struct Rect {
    T x = 0;
    T y = 0;
    T width = 0;
    T height = 0;

    Rect() = default;
    Rect(T _x, T _y, T _width, T _height) : x(_x), y(_y), width(_width), height(_height) {}
};

// Three channels in the channel order of the image they came from.
template <typename T>
struct Color {
    T r = 0;
    T g = 0;
    T b = 0;

    Color() = default;
    Color(T _r, T _g, T _b) : r(_r), g(_g), b(_b) {}
};

}  // namespace pmUtil

#endif
