#include "fmm/ExpansionKernel.hpp"

#include <algorithm>

#include "fmm/CoefficientIndex.hpp"

namespace velmo::fmm {

namespace {

using Complex = std::complex<double>;

/// Steps and scales of one kind of harmonics up to a degree.
/// @param first a(m + 1, m)
/// @param factor of r^2 in the recursion of R / w or S / w, with that of z / r^2 being 2n - 1 times
///        `zFactor`
template <class First, class Factor, class ZFactor>
RecursionTable::Factors recursion(u64 degree, First first, Factor factor, ZFactor zFactor) {
  RecursionTable::Factors result;
  auto& [steps, scales] = result;
  steps.reserve(numCoefficients(degree));
  scales.reserve(numCoefficients(degree));
  for (u64 m = 0; m <= degree; ++m) {
    const auto mm = static_cast<double>(m);
    for (u64 n = m; n <= degree; ++n) {
      const auto nn = static_cast<double>(n);
      if (n < m + 2) {
        steps.push_back(0.0);
        scales.push_back(n == m ? 1.0 : first(mm));
        continue;
      }
      const double before = scales[scales.size() - 2];
      const double last = scales.back();
      scales.push_back(before * factor(nn, mm));
      steps.push_back((2.0 * nn - 1.0) * zFactor(nn, mm) * (last / before));
    }
  }
  return result;
}

/// Row n + 1 holds n + 1 coefficients of degree n and a zero.
constexpr u64 rowOffset(u64 row) { return row * (row + 1) / 2; }

}  // namespace

RecursionTable::RecursionTable(u64 degree)
    : degree_(degree),
      regular_(recursion(
          degree, [](double) { return 1.0; },
          [](double n, double m) { return 1.0 / (n * n - m * m); },
          [](double, double) { return 1.0; })),
      singular_(recursion(
          degree, [](double m) { return 2.0 * m + 1.0; },
          [](double n, double m) { return (n - 1.0) * (n - 1.0) - m * m; },
          [](double n, double m) { return 1.0 / ((n - 1.0) * (n - 1.0) - m * m); })) {}

u64 RecursionTable::degree() const noexcept { return degree_; }
const double* RecursionTable::regularSteps() const noexcept { return regular_.steps.data(); }
const double* RecursionTable::regularScales() const noexcept { return regular_.scales.data(); }
const double* RecursionTable::singularSteps() const noexcept { return singular_.steps.data(); }
const double* RecursionTable::singularScales() const noexcept { return singular_.scales.data(); }

DerivedExpansion::DerivedExpansion(u64 degree)
    : table_(degree),
      higherTable_(degree + 1),
      values_(8 * numCoefficients(degree + 1)),
      padded_(rowOffset(degree + 3)) {}

u64 DerivedExpansion::degree() const noexcept { return degree_; }
bool DerivedExpansion::isPair() const noexcept { return isPair_; }
const double* DerivedExpansion::data() const noexcept { return values_.data(); }

void DerivedExpansion::setLocal(std::span<const Complex> forPotential,
                                std::span<const Complex> forGradient) {
  degree_ = table_.degree();
  set(forPotential, forGradient, 1, table_.regularScales());
}

void DerivedExpansion::setMultipole(std::span<const Complex> forPotential,
                                    std::span<const Complex> forGradient) {
  degree_ = higherTable_.degree();
  set(forPotential, forGradient, -1, higherTable_.singularScales());
}

// Coefficients of the gradient go through `padded_`, so that the loop needs no case for missing
// orders and degrees: the rows before and behind stay zero.
void DerivedExpansion::set(std::span<const Complex> forPotential,
                           std::span<const Complex> forGradient, int step, const double* scales) {
  const u64 baseDegree = table_.degree();
  isPair_ = forPotential.data() != forGradient.data();
  for (u64 n = 0; n <= baseDegree; ++n)
    std::copy_n(forGradient.data() + coefficientIndex(n, 0), n + 1,
                padded_.data() + rowOffset(n + 1));
  double* out = values_.data();
  const auto add = [&out](double factor, const Complex& c) {
    *out++ = factor * c.real();
    *out++ = factor * c.imag();
  };
  for (u64 m = 0; m <= degree_; ++m) {
    const double e = m == 0 ? 1.0 : 2.0;
    const double lowerE = m == 1 ? 1.0 : 2.0;
    for (u64 n = m; n <= degree_; ++n) {
      const double a = *scales++;
      const Complex u = n <= baseDegree ? forPotential[coefficientIndex(n, m)] : Complex{};
      // Row n + 1 + step holds the degree n + step.
      const Complex* const c = padded_.data() + rowOffset(step > 0 ? n + 2 : n) + m;
      if (m == 0) {
        *out++ = a * u.real();
        *out++ = a * step * c[0].real();
        continue;
      }
      add(e * a, u);
      if (isPair_) add(e * a, n <= baseDegree ? forGradient[coefficientIndex(n, m)] : Complex{});
      add(e * a * step, c[0]);
      add(-lowerE * a, c[-1]);
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
