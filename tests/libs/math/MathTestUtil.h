#pragma once

#include "qrnmath/Tuple.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace qrnmath {

template <class T, int N>
std::string toString(const Tuple<T, N>& t) {
    std::ostringstream s;
    s << "(";
    for (int i = 0; i < N; ++i)
        s << (i ? ", " : "") << t[i];
    s << ")";
    return s.str();
}

// Element-wise comparison that prints both tuples when it fails.
template <class T, int N>
::testing::AssertionResult tuplesNear(const Tuple<T, N>& a, const Tuple<T, N>& b, T eps = T(1e-5)) {
    if (nearlyEqual(a, b, eps))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << toString(a) << " != " << toString(b);
}

constexpr float kPi = 3.14159265358979f;

} // namespace qrnmath
