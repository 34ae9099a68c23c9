#pragma once

#include <functional>
#include <vector>

#include "io/Types.hpp"
#include "samples/SurfaceMesh.hpp"

namespace velmo::samples {

/// Charge per unit of area at a point (x, y, z) of the surface, in the unit of the solution file.
using SurfaceDensity = std::function<double(const double*)>;

/// Coefficients of a surface charge density in the element-local L2 functions of one order, element
/// after element. The first of each element is its charge.
struct Density {
  u64 order = 0;
  std::vector<u64> offsets{0};  ///< first coefficient of each element, shape (numElements + 1)
  std::vector<double> charges;  ///< coefficients

  [[nodiscard]] u64 numElements() const noexcept { return offsets.size() - 1; }

  /// Sum of the first coefficients, correct to one rounding.
  [[nodiscard]] double totalCharge() const;
};

/// L2 projection of the density per unit of reference area, sigma times the area element J, onto
/// the functions phi_i of order 0 to 3 of each element: sum_j c_j (phi_i, phi_j) = (phi_i, sigma
/// J). The charge of each element is kept, since a constant is among the functions. J is the area
/// of the parallelogram that the tangents of the element's map span.
[[nodiscard]] Density projected(const SurfaceMesh& mesh, u64 order, const SurfaceDensity& sigma);

/// The projection of a constant `sigma`.
[[nodiscard]] Density uniform(const SurfaceMesh& mesh, u64 order, double sigma);

/// `density` scaled to the total charge `charge`.
/// @throws utility::RuntimeError "A density without total charge cannot be scaled to one"
[[nodiscard]] Density scaledTo(Density density, double charge);

}  // namespace velmo::samples
