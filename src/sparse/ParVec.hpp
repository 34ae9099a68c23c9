#pragma once

#include <algorithm>
#include <atomic>
#include <cassert>
#include <span>
#include <string>
#include <vector>

#include "io/Exception.hpp"
#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"
#include "sparse/IndexLayout.hpp"

/// Distributed vectors: a view of what this rank owns, and a sparse vector of what it doesn't. In
/// one process nothing is remote.
namespace velmo::sparse {

/// target += value, safe with simultaneous calls on the same double: compare-and-swap on the 64-bit
/// pattern. It doesn't order other memory accesses; join the threads before reading.
inline void atomicAdd(double& target, double value) noexcept {
  const std::atomic_ref<double> shared(target);
  double current = shared.load(std::memory_order_relaxed);
  while (!shared.compare_exchange_weak(current, current + value, std::memory_order_relaxed)) {
  }
}

/// Sparse vector with a fixed pattern: one value per id, found by binary search. Nothing may run at
/// the same time as setIds(); simultaneous reads are safe, and so are simultaneous add() if `op` is
/// atomic.
class Vector {
 public:
  /// Sets the pattern, with all values 0. `newIds` must be in ascending order; equal neighbours are
  /// accepted.
  /// @throws utility::RuntimeError "IDs have to be sorted"
  void setIds(std::span<const u64> newIds);

  /// Sets all values to 0.
  void zero() noexcept;

  /// The value of an id.
  /// @throws utility::DomainError "Vector index cannot be found: <id>"
  [[nodiscard]] double get(u64 id) const;

  /// Calls `op(value of wantedIds[k], summands[k])` for each k in order. `op` takes a double
  /// reference and a double; both lists have the same length (asserted).
  /// @throws utility::RuntimeError
  ///   "Attempting to add too many new values to sparse vector - capacity exceeded: <capacity>",
  ///   "Failed to find Index <id> in sparse::Vector, did you call reserve() correctly? "
  template <class Op>
  void add(std::span<const u64> wantedIds, std::span<const double> summands, Op&& op) {
    assert(wantedIds.size() == summands.size());
    if (wantedIds.size() > ids.size())
      throw utility::RuntimeError(
          "Attempting to add too many new values to sparse vector - capacity exceeded: " +
          std::to_string(ids.size()));
    for (u64 k = 0; k < wantedIds.size(); ++k) {
      const u64 place = find_(wantedIds[k]);
      if (place == kNone)
        throw utility::RuntimeError("Failed to find Index " + std::to_string(wantedIds[k]) +
                                    " in sparse::Vector, did you call reserve() correctly? ");
      op(values[place], summands[k]);
    }
  }

  std::vector<u64> ids;        ///< ascending global indices
  std::vector<double> values;  ///< one per id

 private:
  /// Place of the id, `kNone` if it is missing.
  [[nodiscard]] u64 find_(u64 id) const noexcept {
    const auto found = std::lower_bound(ids.begin(), ids.end(), id);
    return found != ids.end() && *found == id ? static_cast<u64>(found - ids.begin()) : kNone;
  }
};

/// Vector that is divided among ranks: a view of the range that this rank owns, and entries of
/// other ranks' ranges. The creator owns the viewed buffer, which must outlive the vector.
class ParVec {
 public:
  /// @pre `owned` is as long as the owned range of the layout (asserted)
  ParVec(IndexLayout indexLayout, linalg::MatrixView<double, -1, 1, 1> owned);

  /// The value at a global index, owned or remote. Safe with simultaneous reads.
  /// @throws std::out_of_range "ParVec index <index> is out of global range [0,<size>) "
  /// @throws std::domain_error "ParVec remote index out of range: <text> Scatter the ParVec?"
  [[nodiscard]] double get(u64 index) const;

  /// Adds to the value at a global index. Many threads may add at the same time; the order of the
  /// sums, and so their last bits, then depends on the threads.
  /// @throws std::out_of_range "Index <index> is out of global range [0,<size>) "
  /// @throws utility::RuntimeError what Vector::add throws for a remote index that is missing
  void add(u64 index, double value);

  IndexLayout layout;                          ///< the layout of the global indices
  linalg::MatrixView<double, -1, 1, 1> local;  ///< the owned range, shape (ownedSize)
  Vector remote;                               ///< entries outside the owned range
  bool scattered = false;                      ///< the remote part has valid values
};

}  // namespace velmo::sparse
