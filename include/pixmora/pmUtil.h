// Base helpers shared by every layer: logging, assertions that log and go on,
// allocation that turns std::bad_alloc into a null result, image and memory
// records, string formatting.
#ifndef PIXMORA_PMUTIL_H
#define PIXMORA_PMUTIL_H

#include <dlog.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

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

#define PM_LOG_AT(prio, fmt, ...)                                                            \
    __dlog_print((log_id_t)PM_LOG_ID, prio, PM_LOG_TAG, "%s: %s(%d) > " fmt, PM_SOURCE_NAME, \
                 __func__, __LINE__, ##__VA_ARGS__)

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

template <typename T, typename... Args>
T* safeNew(Args&&... args) {
    try {
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

}  // namespace pmUtil

#endif
