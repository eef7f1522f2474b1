// Numbers as text without printf. The generated blur shaders embed these
// texts as literals, so the output must not depend on the C library's locale
// or formatting.
#include <cmath>

#include "pmUtil.h"

namespace pmUtil {

namespace {

// Decimal digits of an unsigned value, the count taken from log10.
std::string unsignedDigits(unsigned long long value) {
    if (value == 0) return "0";
    const int count = static_cast<int>(std::log10(static_cast<double>(value))) + 1;
    std::string text(static_cast<std::size_t>(count), '0');
    for (int i = count - 1; i >= 0; --i) {
        text[static_cast<std::size_t>(i)] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
    return text;
}

// Truncation to 32 bits that stays defined outside the range: values the
// normalisation leaves out of range (an infinity) saturate, and a NaN gives 0.
unsigned long long truncate32(double value) {
    if (!(value >= 0.0)) return 0;
    if (value >= 4294967295.0) return 4294967295ull;
    return static_cast<unsigned long long>(static_cast<std::uint32_t>(value));
}

}  // namespace

std::string valueToString(unsigned int value) {
    return unsignedDigits(value);
}

std::string valueToString(int value) {
    if (value < 0) return "-" + unsignedDigits(0u - static_cast<unsigned int>(value));
    return unsignedDigits(static_cast<unsigned int>(value));
}

std::string valueToString(bool value) {
    return value ? "True" : "False";
}

std::string valueToString(float value) {
    return valueToString(static_cast<double>(value));
}

std::string valueToString(double value) {
    std::string text;
    // -0.0 isn't below 0.0 and is written "0".
    if (value < 0.0) {
        text += '-';
        value = -value;
    }

    // Bring the value to [1, 10) by powers of ten in binary steps; the range
    // (0.1, 10) keeps the exponent 0 as it is.
    int exponent = 0;
    if (value >= 10.0) {
        static const double factors[] = {1e256, 1e128, 1e64, 1e32, 1e16, 1e8, 1e4, 1e2, 1e1};
        static const int powers[] = {256, 128, 64, 32, 16, 8, 4, 2, 1};
        for (int i = 0; i < 9; ++i) {
            if (value >= factors[i]) {
                value /= factors[i];
                exponent += powers[i];
            }
        }
    } else if (value > 0.0 && value <= 0.1) {
        static const double limits[] = {1e-255, 1e-127, 1e-63, 1e-31, 1e-15, 1e-7, 1e-3, 1e-1, 1.0};
        static const double factors[] = {1e256, 1e128, 1e64, 1e32, 1e16, 1e8, 1e4, 1e2, 1e1};
        static const int powers[] = {256, 128, 64, 32, 16, 8, 4, 2, 1};
        for (int i = 0; i < 9; ++i) {
            if (value < limits[i]) {
                value *= factors[i];
                exponent -= powers[i];
            }
        }
    }

    // Nine decimals, rounded half down; a carry into the integral part that
    // reaches 10 moves to the exponent when there is one.
    unsigned long long integral = truncate32(value);
    const double rest = (value - static_cast<double>(integral)) * 1e9;
    unsigned long long decimal = truncate32(rest);
    if (rest - static_cast<double>(decimal) > 0.5) ++decimal;
    if (decimal > 999999999ull) {
        decimal = 0;
        ++integral;
        if (integral == 10 && exponent != 0) {
            integral = 1;
            ++exponent;
        }
    }

    text += unsignedDigits(integral);
    if (decimal != 0) {
        const std::string digits = unsignedDigits(decimal);
        text += '.';
        text.append(9 - digits.size(), '0');
        text += digits;
    }
    if (exponent != 0) {
        text += 'e';
        text += valueToString(exponent);
    }
    return text;
}

}  // namespace pmUtil
