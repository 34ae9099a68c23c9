#pragma once

#include <complex>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "math/InstructionSet.hpp"

/// The inner loops of the far field, eight points or eight pairs of boxes at a time.
///
/// Expansions are in triangular storage, index(n, m) = n (n + 1) / 2 + m for 0 <= m <= n <= p, as
/// interleaved real and imaginary parts. The harmonics and the meaning of the coefficients are
/// those of `SolidHarmonics.hpp`, for the kernel 1 / |x - y|: they don't contain a factor 1 / (4
/// pi). Lengths are in the unit of the input. Every loop is compiled for several instruction sets,
/// one of which is chosen per process. The value of a lane depends only on the input of that lane.
///
/// The structures here are views: the caller who fills them keeps the arrays alive. They aren't
/// checked. The loops neither allocate nor throw, and two threads must not write to the same array
/// at the same time.
namespace velmo::fmm {

/// Points with charges, or targets with sums, component by component. No padding is needed: the
/// loops don't read beyond the last point.
struct ExpansionPoints {
  const double* x = nullptr;  ///< shape (count), as y and z
  const double* y = nullptr;
  const double* z = nullptr;
  u64 count = 0;  ///< 0 is allowed
};

/// Sums at targets, component by component; shape (count) each. The loops add to them. The gradient
/// is that of the potential, not its negative, per unit of length of the input.
struct ExpansionSums {
  double* potential = nullptr;
  double* gradientX = nullptr;
  double* gradientY = nullptr;
  double* gradientZ = nullptr;
};

/// Factors of the harmonics' recursions for one degree, in the order in which the loops walk: m
/// outer, n inner, n from m to p. With R(n, m) = w q(n, m), w a multiple of (x + iy)^m,
///
///   q(n, m) = z f q(n - 1, m) - r^2 g q(n - 2, m),   q(m, m) = 1, q(m + 1, m) = z,
///
/// and the same for S with z / r^2 for z, 1 / r^2 for r^2 and q(m + 1, m) = (2m + 1) z / r^2. This
/// table contains the factors f and g. Read-only after construction; all threads share one table.
class RecursionTable {
 public:
  /// For the degree p.
  explicit RecursionTable(u64 degree);

  // Not inline, because the sources for wider instruction sets must not emit code that others may
  // link.
  [[nodiscard]] u64 degree() const noexcept;

  /// Of R(n, m): (2n - 1) / (n^2 - m^2) and 1 / (n^2 - m^2), two per coefficient; 0 for n = m.
  [[nodiscard]] const double* regular() const noexcept;
  /// Of S(n, m): (2n - 1) and (n - 1)^2 - m^2, two per coefficient.
  [[nodiscard]] const double* singular() const noexcept;

 private:
  u64 degree_;
  std::vector<double> regular_;
  std::vector<double> singular_;
};

/// Coefficients of a potential and its three derivatives in the order in which the loops over
/// targets need them: for each (m, n) four pairs of real and imaginary part, including the factor
/// e(m), in the order potential, d/dx, d/dy, d/dz; m outer and n inner, n from m to degree().
///
/// Derivatives of R lower the degree, those of S raise it:
///   d/dx R(n, m) = (R(n - 1, m - 1) - R(n - 1, m + 1)) / 2
///   d/dy R(n, m) = i (R(n - 1, m - 1) + R(n - 1, m + 1)) / 2,   d/dz R(n, m) = R(n - 1, m)
/// and the same for S with n + 1 for n - 1 and a minus at d/dz. Collected by harmonic, they turn
/// the gradient of an expansion into an expansion in the same harmonics.
///
/// Workspace of one thread, reused for one expansion after the other without allocation.
class DerivedExpansion {
 public:
  /// Room for expansions of degree p, which are arrays of (p + 1)(p + 2) / 2 coefficients.
  explicit DerivedExpansion(u64 degree);

  /// Local expansions: potential Re sum e(m) conj(R) L, derivatives of degree p - 1. The potential
  /// and the derivatives may come from different expansions.
  void setLocal(std::span<const std::complex<double>> forPotential,
                std::span<const std::complex<double>> forGradient);

  /// Multipole expansions: potential Re sum e(m) S conj(M), derivatives of degree p + 1.
  void setMultipole(std::span<const std::complex<double>> forPotential,
                    std::span<const std::complex<double>> forGradient);

  /// Degree up to which the loops run: p for a local expansion, p + 1 for a multipole.
  [[nodiscard]] u64 degree() const noexcept;
  /// The numbers, shape ((degree() + 1)(degree() + 2) / 2, 8); valid until the next set.
  [[nodiscard]] const double* data() const noexcept;

 private:
  /// Derivatives from the coefficients of degree n + step.
  void set(std::span<const std::complex<double>> forPotential,
           std::span<const std::complex<double>> forGradient, int step);

  u64 baseDegree_;
  u64 degree_ = 0;
  std::vector<double> values_;
  std::vector<std::complex<double>> padded_;  ///< coefficients of the gradient, padded with zeros
};

/// Rotations and factors of one translation along a direction. Matrices are folded as in
/// `RotationTable.hpp`: block n at offset sum over j < n of (j + 1)^2, element (k, m) at
/// k (n + 1) + m. Forward rotates the direction (theta, phi) to +z, backward rotates +z to it.
struct TranslationStep {
  const double* forwardReal = nullptr;       ///< for the real parts of the coefficients
  const double* forwardImaginary = nullptr;  ///< for their imaginary parts
  const double* backwardReal = nullptr;
  const double* backwardImaginary = nullptr;
  const std::complex<double>* phases = nullptr;  ///< e^(i m phi), m = 0 to p
  const double* factors = nullptr;               ///< see the translations
  /// For a conversion in another unit of length s: s^-n for n = 0 to p + 1; null for s = 1.
  const double* scales = nullptr;
};

/// Up to eight expansions of one degree p that take the same step; lanes from `count` on are not
/// read or written. If several share one `to`, they are added one after the other, in order.
struct ExpansionBatch {
  const std::complex<double>* from[math::kNumLanes] = {};  ///< (p + 1)(p + 2) / 2 coefficients each
  std::complex<double>* to[math::kNumLanes] = {};          ///< the same
  u64 count = 0;                                           ///< 1 to 8
};

/// The loops for one instruction set. `centre` is that of the expansion, three coordinates; unless
/// stated otherwise, the degree of an expansion is that of the table passed with it. `scratch` has
/// translationScratch(degree) doubles, which need no initial values.
struct ExpansionKernel {
  /// multipole += sum of q R(y - centre). `charges` has one q per point.
  void (*pointsToMultipole)(const RecursionTable&, const ExpansionPoints&, const double* charges,
                            const double* centre, std::complex<double>* multipole, double* scratch);

  /// local += sum of q S(y - centre).
  void (*pointsToLocal)(const RecursionTable&, const ExpansionPoints&, const double* charges,
                        const double* centre, std::complex<double>* local, double* scratch);

  /// Adds scale times potential and gradient of a local expansion. The expansion was set by
  /// setLocal; the scale contains the factor 1 / (4 pi).
  void (*localToPoints)(const RecursionTable&, const DerivedExpansion&, const double* centre,
                        double scale, const ExpansionPoints&, const ExpansionSums&);

  /// Adds scale times potential and gradient of a multipole expansion, set by setMultipole; the
  /// table has its degree + 1. A target at the centre gets values that aren't finite.
  void (*multipoleToPoints)(const RecursionTable&, const DerivedExpansion&, const double* centre,
                            double scale, const ExpansionPoints&, const ExpansionSums&);

  /// to += translated from, child to parent: after the rotation t(n, m) = sum over j <= n - m of
  /// factors[j] x(n - j, m), factors[j] = r^j / j!.
  void (*multipoleToMultipole)(u64 degree, const TranslationStep&, const ExpansionBatch&,
                               double* scratch);

  /// to += local expansion of a multipole: t(n, m) = sum over j >= m of
  /// (-1)^(j - m) factors[n + j] x(j, m), factors[k] = k! / (r / s)^(k + 1). For tiny or huge boxes
  /// a unit s other than 1 keeps the factors within the range of doubles.
  void (*multipoleToLocal)(u64 degree, const TranslationStep&, const ExpansionBatch&,
                           double* scratch);

  /// to += translated from, parent to child: t(n, m) = sum over j <= p - n of
  /// factors[j] x(n + j, m), factors[j] = (-r)^j / j!.
  void (*localToLocal)(u64 degree, const TranslationStep&, const ExpansionBatch&, double* scratch);
};

/// Number of doubles of scratch for a translation, or a sum over points, of a degree.
[[nodiscard]] constexpr u64 translationScratch(u64 degree) noexcept {
  return 2 * (degree + 1) * (degree + 2) * math::kNumLanes;
}

/// The loops for the instruction set of this machine, the same at every call.
[[nodiscard]] const ExpansionKernel& expansionKernel() noexcept;

/// The loops for each instruction set; only for their sources and expansionKernel().
namespace detail_ {
extern const ExpansionKernel kExpansionBaseline;
extern const ExpansionKernel kExpansionAvx2;
extern const ExpansionKernel kExpansionAvx512;
}  // namespace detail_

}  // namespace velmo::fmm
