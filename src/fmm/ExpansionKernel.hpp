#pragma once

#include <complex>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "math/InstructionSet.hpp"

/// The inner loops of the far field, eight points or eight pairs of boxes at a time.
///
/// Expansions stand in triangular storage, index(n, m) = n (n + 1) / 2 + m for 0 <= m <= n <= p, as
/// interleaved real and imaginary parts. The harmonics and the meaning of the coefficients are
/// those of `SolidHarmonics.hpp`. Every loop is built for several instruction sets; one is chosen
/// per process. The value of a lane depends on that lane's input alone.
namespace velmo::fmm {

/// Points with charges, or targets with sums, component by component.
struct ExpansionPoints {
  const double* x = nullptr;
  const double* y = nullptr;
  const double* z = nullptr;
  u64 count = 0;
};

/// Sums at targets, component by component; shape (count) each.
struct ExpansionSums {
  double* potential = nullptr;
  double* gradientX = nullptr;
  double* gradientY = nullptr;
  double* gradientZ = nullptr;
};

/// Factors of the harmonics' recursions for one degree, in the order in which the loops walk: m
/// outer, n inner, n from m to p.
class RecursionTable {
 public:
  explicit RecursionTable(u64 degree);

  // Not inline: the sources for wider instruction sets must not emit code that others may link.
  [[nodiscard]] u64 degree() const noexcept;

  /// Of R(n, m): (2n - 1) / (n^2 - m^2) and 1 / (n^2 - m^2), two per coefficient.
  [[nodiscard]] const double* regular() const noexcept;
  /// Of S(n, m): (2n - 1) and (n - 1)^2 - m^2, two per coefficient.
  [[nodiscard]] const double* singular() const noexcept;

 private:
  u64 degree_;
  std::vector<double> regular_;
  std::vector<double> singular_;
};

/// Coefficients of a potential and of its three derivatives as the loops over targets walk them:
/// per (m, n) four pairs of real and imaginary part, the factor e(m) included.
class DerivedExpansion {
 public:
  explicit DerivedExpansion(u64 degree);

  /// Local expansions: potential Re sum e(m) conj(R) L, derivatives of degree p - 1. The potential
  /// and the derivatives may come from different expansions.
  void setLocal(std::span<const std::complex<double>> forPotential,
                std::span<const std::complex<double>> forGradient);

  /// Multipole expansions: potential Re sum e(m) S conj(M), derivatives of degree p + 1.
  void setMultipole(std::span<const std::complex<double>> forPotential,
                    std::span<const std::complex<double>> forGradient);

  /// Degree up to which the loops walk: p or p + 1.
  [[nodiscard]] u64 degree() const noexcept;
  [[nodiscard]] const double* data() const noexcept;

 private:
  /// Derivatives from the coefficients of degree n + step.
  void set(std::span<const std::complex<double>> forPotential,
           std::span<const std::complex<double>> forGradient, int step);

  u64 baseDegree_;
  u64 degree_ = 0;
  std::vector<double> values_;
  std::vector<std::complex<double>> padded_;  ///< coefficients of the gradient among zeros
};

/// Rotations and factors of one translation along a direction. Matrices are folded: block n at
/// offset sum over j < n of (j + 1)^2, element (k, m) at k (n + 1) + m.
struct TranslationStep {
  const double* forwardReal = nullptr;
  const double* forwardImaginary = nullptr;
  const double* backwardReal = nullptr;
  const double* backwardImaginary = nullptr;
  const std::complex<double>* phases = nullptr;  ///< e^(i m phi), m = 0 to p
  const double* factors = nullptr;               ///< see the translations
  /// Of a conversion in another unit of length s: s^-n for n = 0 to p + 1; null for s = 1.
  const double* scales = nullptr;
};

/// Up to eight expansions of one degree; lanes behind `count` are not read or written.
struct ExpansionBatch {
  const std::complex<double>* from[math::kNumLanes] = {};
  std::complex<double>* to[math::kNumLanes] = {};
  u64 count = 0;
};

/// The loops for one instruction set.
struct ExpansionKernel {
  /// multipole += sum of q R(y - centre).
  void (*pointsToMultipole)(const RecursionTable&, const ExpansionPoints&, const double* charges,
                            const double* centre, std::complex<double>* multipole, double* scratch);

  /// local += sum of q S(y - centre).
  void (*pointsToLocal)(const RecursionTable&, const ExpansionPoints&, const double* charges,
                        const double* centre, std::complex<double>* local, double* scratch);

  /// Adds scale times potential and gradient of a local expansion.
  void (*localToPoints)(const RecursionTable&, const DerivedExpansion&, const double* centre,
                        double scale, const ExpansionPoints&, const ExpansionSums&);

  /// Adds scale times potential and gradient of a multipole expansion; the table has its degree
  /// + 1.
  void (*multipoleToPoints)(const RecursionTable&, const DerivedExpansion&, const double* centre,
                            double scale, const ExpansionPoints&, const ExpansionSums&);

  /// to += translated from, child to parent: after the rotation t(n, m) = sum over j <= n - m of
  /// factors[j] x(n - j, m), factors[j] = r^j / j!.
  void (*multipoleToMultipole)(u64 degree, const TranslationStep&, const ExpansionBatch&,
                               double* scratch);

  /// to += local expansion of a multipole: t(n, m) = sum over j >= m of
  /// (-1)^(j - m) factors[n + j] x(j, m), factors[k] = k! / (r / s)^(k + 1). A unit s other than 1
  /// keeps the factors of tiny or huge boxes within the range of doubles.
  void (*multipoleToLocal)(u64 degree, const TranslationStep&, const ExpansionBatch&,
                           double* scratch);

  /// to += translated from, parent to child: t(n, m) = sum over j <= p - n of
  /// factors[j] x(n + j, m), factors[j] = (-r)^j / j!.
  void (*localToLocal)(u64 degree, const TranslationStep&, const ExpansionBatch&, double* scratch);
};

/// Doubles of scratch that a translation, or a sum over points, of a degree needs.
[[nodiscard]] constexpr u64 translationScratch(u64 degree) noexcept {
  return 2 * (degree + 1) * (degree + 2) * math::kNumLanes;
}

/// The loops for the instruction set of this machine.
[[nodiscard]] const ExpansionKernel& expansionKernel() noexcept;

namespace detail_ {
extern const ExpansionKernel kExpansionBaseline;
extern const ExpansionKernel kExpansionAvx2;
extern const ExpansionKernel kExpansionAvx512;
}  // namespace detail_

}  // namespace velmo::fmm
