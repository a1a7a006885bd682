#pragma once

namespace qrnsg {

template <class A, class B>
struct PairT {
    A first{};
    B second{};

    PairT() = default;
    PairT(const A& a, const B& b) : first(a), second(b) {}
    friend bool operator==(const PairT& x, const PairT& y) {
        return x.first == y.first && x.second == y.second;
    }
    friend bool operator!=(const PairT& x, const PairT& y) { return !(x == y); }
    friend bool operator<(const PairT& x, const PairT& y) {
        return x.first < y.first || (!(y.first < x.first) && x.second < y.second);
    }
};

} // namespace qrnsg
