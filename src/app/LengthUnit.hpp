#pragma once

#include <span>

#include "grid/GridData.hpp"

namespace orvanta {

/// The unit of length in which a run computes: a power of two of the input's, so that results have
/// the same bits as without it, as long as no number leaves the range of doubles.
///
/// Expansions of degree p contain powers up to p of the boxes' sizes, divided by p!. With a root
/// cube of about 2^13 units they stay in range for all levels and degrees: at degree 80 box sizes
/// from 2^11 on level 2 to 2^-8 on level 21.
struct LengthUnit {
  int exponent = 0;  ///< the unit is 2^exponent units of the input

  /// Converts coordinates of the input to this unit.
  void applyTo(std::span<double> coordinates) const;

  /// A value of the dimension 1 / length^power in the unit of the input: 1 for the potential of
  /// given charges, 2 for its gradient.
  [[nodiscard]] double removedFrom(double value, int power) const noexcept;
};

/// The unit for the evaluation of the solution on `surface` at `points`.
///
/// @param surface its node ids are positions
/// @throws velmo::utility::RuntimeError "Coordinates of point <i> (counted from 0) are more than
///         2^256 times the size of the smallest element away from it" and the same for "node <i>":
///         the squares of distances and their inverses would not both fit into doubles
[[nodiscard]] LengthUnit lengthUnitOf(const velmo::grid::GridData& points,
                                      const velmo::grid::GridData& surface);

}  // namespace orvanta
