#pragma once

#include "math/InstructionSet.hpp"

/// Eight doubles that are processed at once, in registers of the instruction set that a source file
/// is compiled for: one of 512 bits, a pair of 256, or two pairs of 128. Compilers split a vector
/// that is wider than the registers by way of memory, which is ten times slower; pairs stay in
/// registers.
///
/// This header contains what is the same for all sets. `LanesBaseline.hpp`, `LanesAvx2.hpp` and
/// `LanesAvx512.hpp` each add, in a namespace of their own, the types `Lanes` and `LaneMask` and
/// the operations that need instructions of the set:
///
/// | operation         | gives                               | promise                            |
/// |-------------------|-------------------------------------|------------------------------------|
/// | loadLanes(p)      | p[0] to p[7]                        | exact, any alignment               |
/// | loadHalves(p, q)  | p[0] to p[3], then q[0] to q[3]     | exact, any alignment               |
/// | loadStrided(p, s) | p[0], p[s] to p[7 s]                | exact                              |
/// | loadFirst(p, n)   | p[0] to p[n - 1], then 0; n < 8     | exact, reads no more               |
/// | loadRepeated<n>(p)| p[0] to p[n - 1] over and over      | exact; n 2, 4 or 8                 |
/// | root(x)           | x^(1/2)                             | correctly rounded, 0 for 0         |
/// | inverseRoot(x)    | x^(-1/2) of normal x                | a few last places                  |
/// | bitsOf(mask)      | bit l is set where lane l is        | exact, 8 bits                      |
/// | laneMask(bits)    | lane l is set where bit l is        | exact                              |
///
/// The arithmetic operators round once per lane like those of double. A source that is compiled
/// with FMA may fuse a product with the following sum, so sets agree up to rounding, not in the
/// last bit. Comparisons with NaN are false. All operations are inlined into the one source that is
/// compiled for their set, and have no state.
namespace velmo::math {

/// Registers of 128, 256 and 512 bits.
using Double2 [[gnu::vector_size(16)]] = double;
using Double4 [[gnu::vector_size(32)]] = double;
using Double8 [[gnu::vector_size(64)]] = double;
/// Results of their comparisons: integers of 64 bits, all bits set (true) or none (false).
using Mask2 = decltype(Double2{} < Double2{});
using Mask4 = decltype(Double4{} < Double4{});
using Mask8 = decltype(Double8{} < Double8{});

/// Two halves, each a register or a pair again, with the operators of a vector. Halves of numbers
/// form lanes; halves of integers, with all bits set or none, form the masks that comparisons
/// return. Lane l is in `low` for l < 4, otherwise in `high`.
template <class Half>
struct LanePair {
  Half low{};
  Half high{};

  LanePair() = default;
  [[gnu::always_inline]] LanePair(Half a, Half b) : low(a), high(b) {}
  /// One value in all lanes. Taking zero away costs nothing; adding it would, for the sake of -0.
  [[gnu::always_inline]] LanePair(double value) : low(value - Half{}), high(value - Half{}) {}

  [[gnu::always_inline]] friend LanePair operator+(LanePair a, LanePair b) {
    return {a.low + b.low, a.high + b.high};
  }
  [[gnu::always_inline]] friend LanePair operator-(LanePair a, LanePair b) {
    return {a.low - b.low, a.high - b.high};
  }
  [[gnu::always_inline]] friend LanePair operator*(LanePair a, LanePair b) {
    return {a.low * b.low, a.high * b.high};
  }
  [[gnu::always_inline]] friend LanePair operator/(LanePair a, LanePair b) {
    return {a.low / b.low, a.high / b.high};
  }
  [[gnu::always_inline]] LanePair& operator+=(LanePair b) { return *this = *this + b; }
  [[gnu::always_inline]] LanePair& operator*=(LanePair b) { return *this = *this * b; }

  [[gnu::always_inline]] friend auto operator<(LanePair a, LanePair b) {
    return LanePair<decltype(a.low < b.low)>(a.low < b.low, a.high < b.high);
  }
  [[gnu::always_inline]] friend auto operator>(LanePair a, LanePair b) { return b < a; }
  [[gnu::always_inline]] friend auto operator==(LanePair a, LanePair b) {
    return LanePair<decltype(a.low == b.low)>(a.low == b.low, a.high == b.high);
  }
};

/// The sum of all lanes, added pairwise in a fixed order, the same for every width of registers:
/// ((v0 + v4) + (v2 + v6)) + ((v1 + v5) + (v3 + v7)) for eight.
[[nodiscard, gnu::always_inline]] inline double sumOfLanes(Double2 v) { return v[0] + v[1]; }
[[nodiscard, gnu::always_inline]] inline double sumOfLanes(Double4 v) {
  return (v[0] + v[2]) + (v[1] + v[3]);
}
[[nodiscard, gnu::always_inline]] inline double sumOfLanes(Double8 v) {
  return ((v[0] + v[4]) + (v[2] + v[6])) + ((v[1] + v[5]) + (v[3] + v[7]));
}
template <class Half>
[[nodiscard, gnu::always_inline]] inline double sumOfLanes(LanePair<Half> v) {
  return sumOfLanes(v.low + v.high);
}

/// Loads a register from memory of any alignment.
template <class Register>
[[nodiscard, gnu::always_inline]] inline Register loadRegister(const void* from) {
  Register v;
  __builtin_memcpy(&v, from, sizeof v);
  return v;
}

/// Stores lane l in to[l], memory of any alignment.
template <class Register>
[[gnu::always_inline]] inline void storeLanes(double* to, Register v) {
  __builtin_memcpy(to, &v, sizeof v);
}

template <class Half>
[[gnu::always_inline]] inline void storeLanes(double* to, LanePair<Half> v) {
  storeLanes(to, v.low);
  storeLanes(to + sizeof(Half) / sizeof(double), v.high);
}

/// The value where the mask is set, +0 elsewhere: infinities and NaN in the other lanes disappear.
template <class Register, class Mask>
[[nodiscard, gnu::always_inline]] inline Register whereSet(Mask mask, Register v) {
  return reinterpret_cast<Register>(reinterpret_cast<Mask>(v) & mask);
}

template <class Half, class Mask>
[[nodiscard, gnu::always_inline]] inline LanePair<Half> whereSet(LanePair<Mask> mask,
                                                                 LanePair<Half> v) {
  return {whereSet(mask.low, v.low), whereSet(mask.high, v.high)};
}

/// Element j of row i becomes element i of row j, in place; there are as many rows as lanes in a
/// row.
[[gnu::always_inline]] inline void transpose(Double2 (&v)[2]) {
  const Double2 first = __builtin_shufflevector(v[0], v[1], 0, 2);
  v[1] = __builtin_shufflevector(v[0], v[1], 1, 3);
  v[0] = first;
}

[[gnu::always_inline]] inline void transpose(Double4 (&v)[4]) {
  const Double4 a = __builtin_shufflevector(v[0], v[1], 0, 4, 2, 6);
  const Double4 b = __builtin_shufflevector(v[0], v[1], 1, 5, 3, 7);
  const Double4 c = __builtin_shufflevector(v[2], v[3], 0, 4, 2, 6);
  const Double4 d = __builtin_shufflevector(v[2], v[3], 1, 5, 3, 7);
  v[0] = __builtin_shufflevector(a, c, 0, 1, 4, 5);
  v[1] = __builtin_shufflevector(b, d, 0, 1, 4, 5);
  v[2] = __builtin_shufflevector(a, c, 2, 3, 6, 7);
  v[3] = __builtin_shufflevector(b, d, 2, 3, 6, 7);
}

// Rows at a distance of 1, 2 and 4 exchange blocks of 1, 2 and 4 elements.
[[gnu::always_inline]] inline void transpose(Double8 (&v)[8]) {
  Double8 a[8];
  for (u64 i = 0; i < 8; i += 2) {
    a[i] = __builtin_shufflevector(v[i], v[i + 1], 0, 8, 2, 10, 4, 12, 6, 14);
    a[i + 1] = __builtin_shufflevector(v[i], v[i + 1], 1, 9, 3, 11, 5, 13, 7, 15);
  }
  Double8 b[8];
  for (u64 i = 0; i < 8; i += i % 4 == 1 ? 3 : 1) {
    b[i] = __builtin_shufflevector(a[i], a[i + 2], 0, 1, 8, 9, 4, 5, 12, 13);
    b[i + 2] = __builtin_shufflevector(a[i], a[i + 2], 2, 3, 10, 11, 6, 7, 14, 15);
  }
  for (u64 i = 0; i < 4; ++i) {
    v[i] = __builtin_shufflevector(b[i], b[i + 4], 0, 1, 2, 3, 8, 9, 10, 11);
    v[i + 4] = __builtin_shufflevector(b[i], b[i + 4], 4, 5, 6, 7, 12, 13, 14, 15);
  }
}

template <class Half, u64 N>
[[gnu::always_inline]] inline void transpose(LanePair<Half> (&v)[N]) {
  constexpr u64 kHalf = N / 2;
  Half block[2][2][kHalf];
  for (u64 i = 0; i < N; ++i) {
    block[i / kHalf][0][i % kHalf] = v[i].low;
    block[i / kHalf][1][i % kHalf] = v[i].high;
  }
  for (auto& row : block)
    for (auto& part : row) transpose(part);
  for (u64 i = 0; i < N; ++i)
    v[i] = {block[0][i / kHalf][i % kHalf], block[1][i / kHalf][i % kHalf]};
}

}  // namespace velmo::math
