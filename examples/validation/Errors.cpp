#include "validation/Errors.hpp"

#include <cmath>

#include "io/Types.hpp"

namespace velmo::validation {

namespace {

using samples::PointValue;
using samples::Real;
using samples::operator-;

/// Collects errors and exact values of one quantity.
class Sums {
 public:
  void add(Real error, Real exact) {
    errorSquares_ += error * error;
    exactSquares_ += exact * exact;
    // A NaN becomes the largest error and stays it.
    if (!(error <= largestError_) && !std::isnan(largestError_)) largestError_ = error;
    largestExact_ = std::fmax(largestExact_, exact);
    ++count_;
  }
  [[nodiscard]] RelativeError relative(Real scaleOfZero) const {
    const bool isZero = largestExact_ == 0.0L;
    const Real squares =
        isZero ? scaleOfZero * scaleOfZero * static_cast<Real>(count_) : exactSquares_;
    return {static_cast<double>(std::sqrt(errorSquares_ / squares)),
            static_cast<double>(largestError_ / (isZero ? scaleOfZero : largestExact_))};
  }

 private:
  Real errorSquares_ = 0.0L;
  Real exactSquares_ = 0.0L;
  Real largestError_ = 0.0L;
  Real largestExact_ = 0.0L;
  u64 count_ = 0;
};

PointValue valueOf(const Row& row) {
  return {row.potential, {row.gradient[0], row.gradient[1], row.gradient[2]}};
}

template <class Expected>
Errors errorsOf(std::span<const Row> rows, const samples::ClosedForm& exact, Expected&& expected) {
  Sums potential;
  Sums field;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto& x = rows[i].x;
    const PointValue scale = exact.at({x[0], x[1], x[2]});
    const PointValue wanted = expected(i, scale);
    const PointValue value = valueOf(rows[i]);
    potential.add(std::abs(value.potential - wanted.potential), std::abs(scale.potential));
    field.add(samples::norm(value.gradient - wanted.gradient), samples::norm(scale.gradient));
  }
  return {potential.relative(1.0L), field.relative(exact.surfaceField())};
}

}  // namespace

Errors againstClosedForm(std::span<const Row> rows, const samples::ClosedForm& exact) {
  return errorsOf(rows, exact, [](std::size_t, const PointValue& value) { return value; });
}

Errors againstRun(std::span<const Row> rows, std::span<const Row> reference,
                  const samples::ClosedForm& exact) {
  return errorsOf(rows, exact,
                  [reference](std::size_t i, const PointValue&) { return valueOf(reference[i]); });
}

}  // namespace velmo::validation
