#pragma once

#include <span>

#include "samples/ClosedForm.hpp"
#include "validation/RunResult.hpp"

namespace velmo::validation {

/// Relative errors of one quantity at a set of points.
struct RelativeError {
  double l2 = 0.0;       ///< sqrt(sum of squared errors / sum of squared exact values)
  double largest = 0.0;  ///< greatest error / greatest exact value
};

/// A field's error is the length of the difference of the vectors.
struct Errors {
  RelativeError potential;
  RelativeError field;
};

/// Distance of a run from the closed form. Where the exact field is zero at all points, its errors
/// are divided by the field at the surface.
[[nodiscard]] Errors againstClosedForm(std::span<const Row> rows, const samples::ClosedForm& exact);

/// Distance of a run from another one at the same points, divided as in `againstClosedForm`.
[[nodiscard]] Errors againstRun(std::span<const Row> rows, std::span<const Row> reference,
                                const samples::ClosedForm& exact);

}  // namespace velmo::validation
