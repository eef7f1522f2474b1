// Comparisons of glm values for the geometry suites.
#ifndef PIXMORA_TESTS_GEOMETRY_GEOMETRYTESTHELPERS_H
#define PIXMORA_TESTS_GEOMETRY_GEOMETRYTESTHELPERS_H

#include <gtest/gtest.h>

#include <glm/glm.hpp>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "pmGL.h"

namespace geotest {

template <int C, int R>
std::string text(const glm::mat<C, R, float, glm::defaultp>& m) {
    std::ostringstream out;
    for (int c = 0; c < C; ++c) {
        out << "[";
        for (int r = 0; r < R; ++r) out << (r ? ", " : "") << m[c][r];
        out << "]";
    }
    return out.str();
}

template <int L>
std::string text(const glm::vec<L, float, glm::defaultp>& v) {
    std::ostringstream out;
    out << "(";
    for (int i = 0; i < L; ++i) out << (i ? ", " : "") << v[i];
    out << ")";
    return out.str();
}

template <int C, int R>
::testing::AssertionResult matNear(const glm::mat<C, R, float, glm::defaultp>& actual,
                                   const glm::mat<C, R, float, glm::defaultp>& expected,
                                   float tolerance = 1e-5f) {
    for (int c = 0; c < C; ++c) {
        for (int r = 0; r < R; ++r) {
            if (!(std::fabs(actual[c][r] - expected[c][r]) <= tolerance)) {
                return ::testing::AssertionFailure()
                       << "[" << c << "][" << r << "] differs: " << text(actual) << " vs "
                       << text(expected);
            }
        }
    }
    return ::testing::AssertionSuccess();
}

template <int L>
::testing::AssertionResult vecNear(const glm::vec<L, float, glm::defaultp>& actual,
                                   const glm::vec<L, float, glm::defaultp>& expected,
                                   float tolerance = 1e-5f) {
    for (int i = 0; i < L; ++i) {
        if (!(std::fabs(actual[i] - expected[i]) <= tolerance)) {
            return ::testing::AssertionFailure() << text(actual) << " vs " << text(expected);
        }
    }
    return ::testing::AssertionSuccess();
}

inline std::vector<unsigned short> flatten(const std::vector<pmGL::IndexedTriangle>& triangles) {
    std::vector<unsigned short> indices;
    for (const pmGL::IndexedTriangle& t : triangles) {
        indices.push_back(t.a);
        indices.push_back(t.b);
        indices.push_back(t.c);
    }
    return indices;
}

}  // namespace geotest

#endif
