#include "fmm/ExpansionKernel.hpp"

#include <algorithm>

#include "fmm/CoefficientIndex.hpp"

namespace velmo::fmm {

RecursionTable::RecursionTable(u64 degree) : degree_(degree) {
  regular_.reserve(2 * numCoefficients(degree));
  singular_.reserve(2 * numCoefficients(degree));
  for (u64 m = 0; m <= degree; ++m) {
    for (u64 n = m; n <= degree; ++n) {
      const auto nn = static_cast<double>(n);
      const auto mm = static_cast<double>(m);
      // The recursions start at n = m + 2; the two entries before are never read.
      const double inverse = n == m ? 0.0 : 1.0 / (nn * nn - mm * mm);
      regular_.push_back((2.0 * nn - 1.0) * inverse);
      regular_.push_back(inverse);
      singular_.push_back(2.0 * nn - 1.0);
      singular_.push_back((nn - 1.0) * (nn - 1.0) - mm * mm);
    }
  }
}

u64 RecursionTable::degree() const noexcept { return degree_; }
const double* RecursionTable::regular() const noexcept { return regular_.data(); }
const double* RecursionTable::singular() const noexcept { return singular_.data(); }

namespace {

using Complex = std::complex<double>;

/// Row n + 1 has the n + 1 coefficients of degree n, with one number before and two after them.
constexpr u64 rowOffset(u64 row) { return row * (row + 5) / 2; }

}  // namespace

DerivedExpansion::DerivedExpansion(u64 degree)
    : baseDegree_(degree),
      values_(8 * numCoefficients(degree + 1)),
      padded_(rowOffset(degree + 3)) {}

u64 DerivedExpansion::degree() const noexcept { return degree_; }
const double* DerivedExpansion::data() const noexcept { return values_.data(); }

// Re(conj(R) L) = Re R Re L + Im R Im L, so the coefficients are used as they are. The derivatives
// of R lower its degree; collecting the terms of each R gives the derivatives of the expansion.
void DerivedExpansion::setLocal(std::span<const Complex> forPotential,
                                std::span<const Complex> forGradient) {
  degree_ = baseDegree_;
  set(forPotential, forGradient, 1);
}

// Re(S conj(M)) has the same form; the derivatives of S raise its degree, that along z with a
// minus.
void DerivedExpansion::setMultipole(std::span<const Complex> forPotential,
                                    std::span<const Complex> forGradient) {
  degree_ = baseDegree_ + 1;
  set(forPotential, forGradient, -1);
}

// Coefficients of the gradient go through `padded_`, so that the loop needs no case for missing
// orders and degrees: row n + 1 contains c(n, -1) = -conj(c(n, 1)), c(n, 0) to c(n, n) and two
// zeros; the rows before and after stay zero.
void DerivedExpansion::set(std::span<const Complex> forPotential,
                           std::span<const Complex> forGradient, int step) {
  for (u64 n = 0; n <= baseDegree_; ++n) {
    Complex* const row = padded_.data() + rowOffset(n + 1) + 1;
    std::copy_n(forGradient.data() + coefficientIndex(n, 0), n + 1, row);
    row[-1] = -std::conj(row[1]);
  }
  double* out = values_.data();
  for (u64 m = 0; m <= degree_; ++m) {
    const double e = m == 0 ? 1.0 : 2.0;
    for (u64 n = m; n <= degree_; ++n, out += 8) {
      const Complex u = n <= baseDegree_ ? forPotential[coefficientIndex(n, m)] : Complex{};
      // Row n + 1 + step contains the degree n + step.
      const Complex* const c = padded_.data() + rowOffset(step > 0 ? n + 2 : n) + 1 + m;
      const Complex difference = c[1] - c[-1];
      const Complex sum = c[1] + c[-1];
      out[0] = e * u.real();
      out[1] = e * u.imag();
      out[2] = 0.5 * e * difference.real();
      out[3] = 0.5 * e * difference.imag();
      // -i times the sum.
      out[4] = 0.5 * e * sum.imag();
      out[5] = -0.5 * e * sum.real();
      out[6] = e * step * c[0].real();
      out[7] = e * step * c[0].imag();
    }
  }
}

const ExpansionKernel& expansionKernel() noexcept {
  switch (math::instructionSet()) {
    case math::InstructionSet::Avx512:
      return detail_::kExpansionAvx512;
    case math::InstructionSet::Avx2:
      return detail_::kExpansionAvx2;
    case math::InstructionSet::Baseline:
      break;
  }
  return detail_::kExpansionBaseline;
}

}  // namespace velmo::fmm
