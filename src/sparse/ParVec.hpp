#pragma once

#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"
#include "sparse/IndexLayout.hpp"
#include "sparse/Vector.hpp"

namespace velmo::sparse {

/// Vector that is split over ranks: a view of the range that this rank owns, and entries of other
/// ranks' ranges. The viewed buffer stays with the creator and has to outlive the vector.
class ParVec {
 public:
  /// @pre `owned` is as long as the owned range of the layout (asserted)
  ParVec(IndexLayout indexLayout, linalg::MatrixView<double, -1, 1, 1> owned);

  /// The value at a global index, owned or remote. Safe beside other reads.
  /// @throws std::out_of_range "ParVec index <index> is out of global range [0,<size>) "
  /// @throws std::domain_error "ParVec remote index out of range: <text> Scatter the ParVec?"
  [[nodiscard]] double get(u64 index) const;

  /// Adds to the value at a global index. Many threads may add at once.
  /// @throws std::out_of_range "Index <index> is out of global range [0,<size>) "
  /// @throws utility::RuntimeError what Vector::add throws for a remote index that isn't held
  void add(u64 index, double value);

  IndexLayout layout;
  linalg::MatrixView<double, -1, 1, 1> local;
  Vector remote;
  bool scattered = false;  ///< the remote part holds valid values
};

}  // namespace velmo::sparse
