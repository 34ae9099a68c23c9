#include "fmm/CoefficientIndex.hpp"
#include "fmm/ExpansionKernel.hpp"

namespace velmo::bem::fmm {

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

}  // namespace velmo::bem::fmm
