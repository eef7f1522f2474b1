#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <regex>
#include <string>

#include "pmUtil.h"

namespace {

using pmUtil::valueToString;

// --- Integers and bool ----------------------------------------------------------

TEST(PmUtilValue, UnsignedDigits) {
    EXPECT_EQ(valueToString(0u), "0");
    EXPECT_EQ(valueToString(7u), "7");
    EXPECT_EQ(valueToString(10u), "10");
    EXPECT_EQ(valueToString(99u), "99");
    EXPECT_EQ(valueToString(1234567u), "1234567");
    EXPECT_EQ(valueToString(4294967295u), "4294967295");
}

TEST(PmUtilValue, UnsignedDigitCountAtEveryPowerOfTen) {
    // The count comes from log10: the edges are where it could go wrong.
    unsigned int power = 1;
    std::string ones = "1";
    std::string nines;
    for (int digits = 1; digits <= 9; ++digits) {
        EXPECT_EQ(valueToString(power), ones);
        EXPECT_EQ(valueToString(power * 10 - 1), nines + "9");
        EXPECT_EQ(valueToString(power + 1), digits == 1 ? "2" : ones.substr(0, digits - 1) + "1");
        power *= 10;
        ones = "1" + std::string(static_cast<std::size_t>(digits), '0');
        nines += "9";
    }
    EXPECT_EQ(valueToString(1000000000u), "1000000000");
    EXPECT_EQ(valueToString(999999999u), "999999999");
}

TEST(PmUtilValue, UnsignedAgreesWithStdToString) {
    std::mt19937 random(42);
    for (int i = 0; i < 2000; ++i) {
        const unsigned int value = random() >> (random() % 32);
        EXPECT_EQ(valueToString(value), std::to_string(value));
    }
}

TEST(PmUtilValue, SignedValues) {
    EXPECT_EQ(valueToString(0), "0");
    EXPECT_EQ(valueToString(-0), "0");
    EXPECT_EQ(valueToString(42), "42");
    EXPECT_EQ(valueToString(-1), "-1");
    EXPECT_EQ(valueToString(-100), "-100");
    EXPECT_EQ(valueToString(INT_MAX), "2147483647");
    EXPECT_EQ(valueToString(INT_MIN), "-2147483648");
}

TEST(PmUtilValue, BoolIsCapitalisedWord) {
    EXPECT_EQ(valueToString(true), "True");
    EXPECT_EQ(valueToString(false), "False");
}

// --- Doubles: the examples ---------------------------------------------------------

TEST(PmUtilValue, FractionHasNineDecimals) {
    EXPECT_EQ(valueToString(1.5), "1.500000000");
    EXPECT_EQ(valueToString(0.5), "0.500000000");
}

TEST(PmUtilValue, PowersOfTenAreWrittenWithAnExponent) {
    EXPECT_EQ(valueToString(1000.0), "1e3");
    EXPECT_EQ(valueToString(10.0), "1e1");
    EXPECT_EQ(valueToString(100.0), "1e2");
    EXPECT_EQ(valueToString(1e9), "1e9");
    EXPECT_EQ(valueToString(1e10), "1e10");
}

TEST(PmUtilValue, PointOneEntersTheSmallPath) {
    EXPECT_EQ(valueToString(0.1), "1e-1");
    // Just above 0.1 the exponent stays 0.
    EXPECT_EQ(valueToString(0.15), "0.150000000");
    EXPECT_EQ(valueToString(0.2), "0.200000000");
}

TEST(PmUtilValue, NegativeZeroIsZero) {
    EXPECT_EQ(valueToString(-0.0), "0");
    EXPECT_EQ(valueToString(0.0), "0");
    EXPECT_EQ(valueToString(-0.0f), "0");
}

// --- Doubles: the algorithm's paths --------------------------------------------------

TEST(PmUtilValue, IntegralValuesBelowTenHaveNoDecimals) {
    EXPECT_EQ(valueToString(1.0), "1");
    EXPECT_EQ(valueToString(2.0), "2");
    EXPECT_EQ(valueToString(9.0), "9");
}

TEST(PmUtilValue, NegativeValuesGetAMinus) {
    EXPECT_EQ(valueToString(-2.5), "-2.500000000");
    EXPECT_EQ(valueToString(-1000.0), "-1e3");
    EXPECT_EQ(valueToString(-0.1), "-1e-1");
    EXPECT_EQ(valueToString(-1.0), "-1");
}

TEST(PmUtilValue, LargeValuesAreBroughtBelowTen) {
    EXPECT_EQ(valueToString(99.0), "9.900000000e1");
    EXPECT_EQ(valueToString(123.456), "1.234560000e2");
    EXPECT_EQ(valueToString(12345678.9), "1.234567890e7");
    EXPECT_EQ(valueToString(4294967296.0), "4.294967296e9");
    EXPECT_EQ(valueToString(1e300), "1e300");
    EXPECT_EQ(valueToString(std::numeric_limits<double>::max()), "1.797693135e308");
}

TEST(PmUtilValue, SmallValuesAreBroughtToOneOrMore) {
    EXPECT_EQ(valueToString(0.05), "5e-2");
    EXPECT_EQ(valueToString(0.00645), "6.450000000e-3");
    EXPECT_EQ(valueToString(1e-5), "1e-5");
    EXPECT_EQ(valueToString(2.5e-8), "2.500000000e-8");
    EXPECT_EQ(valueToString(1e-300), "1e-300");
}

TEST(PmUtilValue, ValuesBetweenPointOneAndTenKeepExponentZero) {
    EXPECT_EQ(valueToString(0.33023), "0.330230000");
    EXPECT_EQ(valueToString(0.62184), "0.621840000");
    EXPECT_EQ(valueToString(6.21661), "6.216610000");
    EXPECT_EQ(valueToString(9.5), "9.500000000");
}

TEST(PmUtilValue, TrailingZerosStayAndLeadingZerosArePadded) {
    EXPECT_EQ(valueToString(0.25), "0.250000000");
    EXPECT_EQ(valueToString(1.05), "1.050000000");
    EXPECT_EQ(valueToString(3.000000001), "3.000000001");
    EXPECT_EQ(valueToString(1.0 + 1.0 / 1024), "1.000976562");
}

TEST(PmUtilValue, NinthDecimalRoundsHalfDown) {
    // 1 + 3/1024 is exact: its fraction times 1e9 is 2929687.5, exactly half,
    // which isn't above 0.5 and stays down.
    EXPECT_EQ(valueToString(1.0 + 3.0 / 1024), "1.002929687");
    // Just above the half rounds up.
    EXPECT_EQ(valueToString(std::nextafter(1.0 + 3.0 / 1024, 2.0)), "1.002929688");
    // Below half a unit of the ninth decimal nothing is left.
    EXPECT_EQ(valueToString(1.0 + std::ldexp(1.0, -31)), "1");
    EXPECT_EQ(valueToString(1.0 + 3 * std::ldexp(1.0, -31)), "1.000000001");
}

TEST(PmUtilValue, RoundingCarriesIntoTheIntegralAndTheExponent) {
    // Exponent 0: the integral may reach 10.
    EXPECT_EQ(valueToString(9.9999999996), "10");
    EXPECT_EQ(valueToString(0.99999999996), "1");
    // With an exponent, 10 becomes 1 and the exponent grows.
    EXPECT_EQ(valueToString(99.999999999), "1e2");
    EXPECT_EQ(valueToString(0.0999999999999), "1e-1");
    EXPECT_EQ(valueToString(0.00999999999999), "1e-2");
    // A value that the steps leave a hair below 1 comes back to 1.
    EXPECT_EQ(valueToString(1e-100), "1e-100");
}

TEST(PmUtilValue, SubnormalValues) {
    EXPECT_EQ(valueToString(std::numeric_limits<double>::denorm_min()), "4.940656458e-324");
    EXPECT_EQ(valueToString(std::numeric_limits<double>::min()), "2.225073859e-308");
}

TEST(PmUtilValue, FloatWidensToDouble) {
    // 0.1f is 0.100000001490116..., above 0.1: no exponent, and the widening
    // shows in the ninth decimal.
    EXPECT_EQ(valueToString(0.1f), "0.100000001");
    EXPECT_EQ(valueToString(0.5f), "0.500000000");
    EXPECT_EQ(valueToString(1.5f), "1.500000000");
    EXPECT_EQ(valueToString(1000.0f), "1e3");
    EXPECT_EQ(valueToString(1.13f), "1.129999995");
    EXPECT_EQ(valueToString(-3.41f), "-3.410000086");
    for (float value : {0.24961f, 0.00645f, 2.2731f, 123.25f, 1e-20f, 3e38f}) {
        EXPECT_EQ(valueToString(value), valueToString(static_cast<double>(value)));
    }
}

TEST(PmUtilValue, InfinityAndNanAreNotGuarded) {
    // No guard: they come out as meaningless numbers rather than "inf" or
    // "nan". An infinity stays infinite through every step of the scaling,
    // so its exponent is the sum of all steps.
    const double inf = std::numeric_limits<double>::infinity();
    const std::string positive = valueToString(inf);
    const std::string negative = valueToString(-inf);
    const std::string nan = valueToString(std::numeric_limits<double>::quiet_NaN());
    for (const std::string& text : {positive, negative, nan}) {
        EXPECT_EQ(text.find("inf"), std::string::npos) << text;
        EXPECT_EQ(text.find("nan"), std::string::npos) << text;
    }
    EXPECT_EQ(positive.substr(positive.size() - 4), "e511") << positive;
    EXPECT_EQ(negative, "-" + positive);
    EXPECT_EQ(nan, "0");
}

// --- Doubles: as literals ---------------------------------------------------------------

// Integer part, then "." and exactly nine digits or nothing, then an optional
// exponent: a form that reads back as a number and, with a "." or an "e", as
// a GLSL float literal.
const std::regex kNumberForm(R"(^-?(0|[1-9][0-9]*)(\.[0-9]{9})?(e-?[1-9][0-9]*)?$)");

TEST(PmUtilValue, TextReadsBackAsTheValue) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> mantissa(1.0, 10.0);
    std::uniform_int_distribution<int> exponent(-300, 300);
    for (int i = 0; i < 20000; ++i) {
        double value = mantissa(random) * std::pow(10.0, exponent(random));
        if (i % 2) value = -value;
        if (i % 5 == 0) value = std::ldexp(mantissa(random), -(i % 40));  // around 0.1 to 10
        const std::string text = valueToString(value);
        ASSERT_TRUE(std::regex_match(text, kNumberForm)) << value << " -> " << text;
        const double back = std::strtod(text.c_str(), nullptr);
        ASSERT_LE(std::fabs(back - value), 1e-8 * std::fabs(value)) << value << " -> " << text;
    }
}

TEST(PmUtilValue, MantissaIsBelowTenAndAtLeastOneWithAnExponent) {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> logValue(-30.0, 30.0);
    for (int i = 0; i < 5000; ++i) {
        const double value = std::pow(10.0, logValue(random));
        const std::string text = valueToString(value);
        const std::size_t e = text.find('e');
        const double mantissa = std::strtod(text.substr(0, e).c_str(), nullptr);
        if (e == std::string::npos) {
            EXPECT_GT(value, 0.1) << text;
            EXPECT_LE(mantissa, 10.0) << text;
        } else {
            EXPECT_GE(mantissa, 1.0) << text;
            EXPECT_LT(mantissa, 10.0) << text;
        }
    }
}

// --- Shared records ----------------------------------------------------------------------

TEST(PmUtilRecords, RectHoldsPositionAndSize) {
    const pmUtil::Rect<int> empty;
    EXPECT_EQ(empty.x + empty.y + empty.width + empty.height, 0);
    const pmUtil::Rect<int> rect(1, 2, 30, 40);
    EXPECT_EQ(rect.x, 1);
    EXPECT_EQ(rect.y, 2);
    EXPECT_EQ(rect.width, 30);
    EXPECT_EQ(rect.height, 40);
    EXPECT_EQ(sizeof(pmUtil::Rect<int>), 4 * sizeof(int));
}

TEST(PmUtilRecords, ColorIsThreeBytes) {
    EXPECT_EQ(sizeof(pmUtil::Color<unsigned char>), 3u);
    const pmUtil::Color<unsigned char> color(10, 20, 255);
    EXPECT_EQ(color.r, 10);
    EXPECT_EQ(color.g, 20);
    EXPECT_EQ(color.b, 255);
    const pmUtil::Color<unsigned char> black;
    EXPECT_EQ(black.r + black.g + black.b, 0);
}

}  // namespace
