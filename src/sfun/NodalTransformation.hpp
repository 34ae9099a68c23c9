#pragma once

#include <vector>

#include "io/Types.hpp"
#include "sfun/PointBatch.hpp"

namespace velmo::sfun::Nodal {

/// Turns the raw functions into N_k = sum over i of T(k, i) raw_i, which are 1 at node k of
/// `topo::nodePoints` and 0 at all others.
///
/// With A(k, q) the vertex functions and B(i, q) the others at the nodes q behind the vertices,
/// T = [[I, -A inv(B)], [0, inv(B)]]: the functions behind the vertices vanish at the vertices.
template <int D>
class NodalTransformation {
 public:
  /// @pre order >= 1
  explicit NodalTransformation(u64 order);

  /// Transforms the rows of one batch of `count` points in place. Takes its workspace from the
  /// calling thread, which keeps it.
  void apply(detail_::Rows rows, u64 count) const;

  /// The same for one component of the gradients.
  void applyGradient(detail_::Rows rows, u64 count) const { apply(rows, count); }

 private:
  u64 numFunctions_;
  u64 numInner_;               ///< functions behind the vertices
  std::vector<double> inner_;  ///< the right part of T, shape (numFunctions, numInner), row-major
};

}  // namespace velmo::sfun::Nodal
