#pragma once

#include <vector>

#include "grid/SurfaceElements.hpp"
#include "io/Types.hpp"

namespace velmo::evaluator {

/// How far surface elements reach, in the unit of the input.
///
/// An element x(xi) = sum over k of N_k(xi) x_k is the linear or bilinear element of its vertices,
/// which lies in their convex hull, plus the sum of N_k d_k over the other nodes, where d_k is the
/// distance vector of node k from its place on that element. So it stays within
///   bulge = max over xi of (sum of |N_k|) max of |d_k|
/// of the hull. The sum over the nodes that are no vertices is at most 2.66, that of the
/// quadrilateral of 16 nodes: the square of the Lebesgue constant 1.631 of four equally spaced
/// points on a line. Flat elements with evenly placed nodes have no bulge.
///
/// Refers to the elements, which must outlive it; all operations may run on many threads.
class ElementReach {
 public:
  explicit ElementReach(const grid::SurfaceElements& elements);

  /// Upper bound of the distance of the element's farthest point.
  [[nodiscard]] double farthest(u64 element, const double* point) const noexcept;

  /// Lower bound of the distance of the element's nearest point: that of the box around it.
  [[nodiscard]] double nearest(u64 element, const double* point) const noexcept;

  /// Largest distance between the element's points and the image of its barycentre.
  [[nodiscard]] double radius(u64 element) const noexcept {
    return farthest(element, elements_->centre(element).data());
  }

  [[nodiscard]] const grid::SurfaceElements& elements() const noexcept { return *elements_; }

 private:
  [[nodiscard]] u64 numVertices(u64 element) const noexcept {
    return elements_->shapes[element] == topo::ReferenceType::Triangle ? 3 : 4;
  }
  [[nodiscard]] double bulge(u64 element) const noexcept {
    return bulges_.empty() ? 0.0 : bulges_[element];
  }

  const grid::SurfaceElements* elements_;
  std::vector<double> bulges_;  ///< empty where all elements have straight edges
};

}  // namespace velmo::evaluator
