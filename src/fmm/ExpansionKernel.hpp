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
/// outer, n inner, n from m to p. Each harmonic is R(n, m) = a(n, m) w(m) q(n, m) with w(m) a
/// multiple of (x + iy)^m, numbers a and real polynomials
///
///   q(n, m) = f(n, m) z q(n - 1, m) - r^2 q(n - 2, m),   q(m, m) = 1, q(m + 1, m) = z;
///
/// S likewise with z / r^2 for z and 1 / r^2 for r^2. The choice of a makes the factor of r^2 one,
/// which saves a product per step; a goes into the coefficients of an expansion instead, once. With
/// a(m, m) = 1,
///
///   R: a(m + 1, m) = 1,       a(n, m) = a(n - 2, m) / (n^2 - m^2)
///   S: a(m + 1, m) = 2m + 1,  a(n, m) = a(n - 2, m) ((n - 1)^2 - m^2)
///
/// and f(n, m) = (2n - 1) a(n - 1, m) / a(n - 2, m) for R; for S that over (n - 1)^2 - m^2.
/// Read-only once made; one table serves all threads.
class RecursionTable {
 public:
  /// One number per coefficient each.
  struct Factors {
    std::vector<double> steps;   ///< f, 0 for n < m + 2
    std::vector<double> scales;  ///< a
  };

  /// For the degree p.
  explicit RecursionTable(u64 degree);

  // Not inline, because the sources for wider instruction sets must not emit code that others may
  // link.
  [[nodiscard]] u64 degree() const noexcept;
  /// Steps and scales of R, and of S, shape ((p + 1)(p + 2) / 2) each.
  [[nodiscard]] const double* regularSteps() const noexcept;
  [[nodiscard]] const double* regularScales() const noexcept;
  [[nodiscard]] const double* singularSteps() const noexcept;
  [[nodiscard]] const double* singularScales() const noexcept;

 private:
  u64 degree_;
  Factors regular_;
  Factors singular_;
};

/// Coefficients of a potential and of its gradient as the loops over targets walk them, for the
/// harmonics w(m) q(n, m) of `RecursionTable`; the factors a and e(m) are in them.
///
/// With w(m) = (x + iy) v(m), v(m) = w(m - 1) / (2m) for R, and x + iy over r^2 and
/// v(m) = (2m - 1) w(m - 1) for S, and with the sums over n at one target
///
///   A(m) = sum of e(m) c(n, m) q(n, m),
///   B(m) = sum of +- e(m) c(n +- 1, m) q(n, m),       + for a local expansion, - for a multipole
///   D(m) = sum of -e(m - 1) c(n +- 1, m - 1) q(n, m), m > 0,
///
/// the potential is u = Re sum of conj(w(m)) A(m), and from d/dz R(n, m) = R(n - 1, m) and
/// (d/dx + i d/dy) R(n, m) = -R(n - 1, m + 1), where S has -S(n + 1, m) and -S(n + 1, m + 1),
///
///   du/dz          = Re sum of conj(w(m)) B(m)
///   du/dx + i du/dy = s (sum of m conj(v(m)) A(m) + (x + iy) Re sum of conj(v(m)) D(m)),
///
/// s = 1 for R and 1 / r^2 for S. So three sums per order give all four values, and a fourth where
/// potential and gradient come from two expansions.
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
  /// Whether potential and gradient come from two expansions.
  [[nodiscard]] bool isPair() const noexcept;
  /// The factors of q(n, m), m outer and n inner, n from m to degree(): for m = 0 the real parts of
  /// those in A and B, for m > 0 real and imaginary parts of those in A, then in the A of the
  /// gradient where isPair(), in B and in D. Valid until the next set.
  [[nodiscard]] const double* data() const noexcept;

 private:
  /// Derivatives from the coefficients of degree n + step.
  void set(std::span<const std::complex<double>> forPotential,
           std::span<const std::complex<double>> forGradient, int step, const double* scales);

  RecursionTable table_;        ///< of degree p
  RecursionTable higherTable_;  ///< of degree p + 1
  u64 degree_ = 0;
  bool isPair_ = false;
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

/// Doubles of scratch that a translation, or a sum over points, of a degree needs. Any alignment
/// will do: there is room to begin at a line of the cache.
[[nodiscard]] constexpr u64 translationScratch(u64 degree) noexcept {
  return (2 * (degree + 1) * (degree + 2) + 1) * math::kNumLanes;
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
