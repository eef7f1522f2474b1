// The string parsers of the utilities over any text. parseOffsetUTC hands on
// what std::stoi throws for a part that is not a number, as it is documented
// to; nothing else may escape.
#include <stdexcept>
#include <string>

#include "FuzzSupport.h"
#include "pmUtil.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    // The first byte splits the rest into a text and a delimiter set.
    const std::size_t split = 1 + data[0] % size;
    const std::string text(reinterpret_cast<const char*>(data + 1), split - 1);
    const std::string delimiters(reinterpret_cast<const char*>(data + split), size - split);
    try {
        pmUtil::parseOffsetUTC(text);
    } catch (const std::invalid_argument&) {
    } catch (const std::out_of_range&) {
    }
    pmUtil::stringTokens(text, delimiters);
    pmUtil::stringLower(text);
    pmUtil::stringUpper(text);
    pmUtil::stringPath(text);
    pmUtil::stringFilename(text);
    pmUtil::stringStem(text);
    pmUtil::stringExtension(text);
    return 0;
}
