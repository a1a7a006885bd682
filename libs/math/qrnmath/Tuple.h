#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <type_traits>

namespace qrnmath {

// A fixed-size vector of N values: 3- and 4-vectors, and 4x4 matrices as 16 floats
// (column-major, the layout glMultMatrixf takes).
template <class T, int N>
class Tuple {
public:
    static constexpr int size = N;

    Tuple() : m_v{} {}
    explicit Tuple(T fill) { m_v.fill(fill); }
    Tuple(std::initializer_list<T> values) : m_v{} {
        int i = 0;
        for (T v : values) {
            if (i == N)
                break;
            m_v[static_cast<std::size_t>(i++)] = v;
        }
    }
    template <class... Args, class = std::enable_if_t<(sizeof...(Args) + 1 == N && N > 1)>>
    Tuple(T first, Args... rest) : m_v{{first, static_cast<T>(rest)...}} {}
    explicit Tuple(const T* values) {
        for (int i = 0; i < N; ++i)
            m_v[static_cast<std::size_t>(i)] = values[i];
    }

    T& operator[](int i) { return m_v[static_cast<std::size_t>(i)]; }
    const T& operator[](int i) const { return m_v[static_cast<std::size_t>(i)]; }
    T* data() { return m_v.data(); }
    const T* data() const { return m_v.data(); }

    T x() const { return m_v[0]; }
    T y() const { return m_v[1]; }
    T z() const { return m_v[2]; }
    T w() const { return m_v[3]; }

    Tuple& operator+=(const Tuple& o) {
        for (int i = 0; i < N; ++i)
            (*this)[i] += o[i];
        return *this;
    }
    Tuple& operator-=(const Tuple& o) {
        for (int i = 0; i < N; ++i)
            (*this)[i] -= o[i];
        return *this;
    }
    Tuple& operator*=(T s) {
        for (int i = 0; i < N; ++i)
            (*this)[i] *= s;
        return *this;
    }
    Tuple& operator/=(T s) {
        for (int i = 0; i < N; ++i)
            (*this)[i] /= s;
        return *this;
    }
    friend Tuple operator+(Tuple a, const Tuple& b) { return a += b; }
    friend Tuple operator-(Tuple a, const Tuple& b) { return a -= b; }
    friend Tuple operator*(Tuple a, T s) { return a *= s; }
    friend Tuple operator*(T s, Tuple a) { return a *= s; }
    friend Tuple operator/(Tuple a, T s) { return a /= s; }
    friend Tuple operator-(Tuple a) { return a *= T(-1); }
    friend bool operator==(const Tuple& a, const Tuple& b) { return a.m_v == b.m_v; }
    friend bool operator!=(const Tuple& a, const Tuple& b) { return !(a == b); }

    T dot(const Tuple& o) const {
        T s = T(0);
        for (int i = 0; i < N; ++i)
            s += (*this)[i] * o[i];
        return s;
    }
    T lengthSquared() const { return dot(*this); }
    T length() const { return static_cast<T>(std::sqrt(lengthSquared())); }
    // Unit vector in the same direction; a zero vector stays zero.
    Tuple normalized() const {
        T l = length();
        return l > T(0) ? *this / l : *this;
    }
    T distance(const Tuple& o) const { return (*this - o).length(); }

private:
    std::array<T, static_cast<std::size_t>(N)> m_v;
};

template <class T>
Tuple<T, 3> cross(const Tuple<T, 3>& a, const Tuple<T, 3>& b) {
    return Tuple<T, 3>(a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
                       a[0] * b[1] - a[1] * b[0]);
}

template <class T, int N>
bool nearlyEqual(const Tuple<T, N>& a, const Tuple<T, N>& b, T eps) {
    for (int i = 0; i < N; ++i)
        if (std::abs(a[i] - b[i]) > eps)
            return false;
    return true;
}

using Vec3 = Tuple<float, 3>;
using Vec4 = Tuple<float, 4>;
using Mat4 = Tuple<float, 16>;
using Vec3d = Tuple<double, 3>;

} // namespace qrnmath
