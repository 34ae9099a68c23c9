#pragma once

#include <vector>

#include "bits/MortonID.hpp"
#include "io/Exception.hpp"

namespace velmo::tree {

/// Which stretch of the Morton curve belongs to which process: of the sorted objects, and of the
/// tree, where the stretch is that of the occupied blocks. The program runs as one process, so
/// there is one stretch, from the first identifier held to the last.
///
/// Empty when made; a finalized partition doesn't change any more. The lists have one entry per
/// process, in the order of their ranks.
struct Partition {
  std::vector<bits::Morton> first;  ///< first identifier of each process, of any level
  std::vector<bits::Morton> last;   ///< last identifier of each process, included
  std::vector<bool> active;         ///< whether the process holds anything
  bool finalized = false;           ///< whether check() may be asked

  /// The finalized partition of one process; both identifiers are 0 for a process without any.
  [[nodiscard]] static Partition ofOneProcess(bits::Morton firstId, bits::Morton lastId) {
    return {{firstId}, {lastId}, {true}, true};
  }

  /// The processes whose stretch overlaps `id`: the only one owns everything, whether inside the
  /// stretch or not. Any thread may ask.
  /// @return ranks, ascending: {0}
  ///
  /// @throws utility::RuntimeError "velmo::tree::Partition::check not finalized"
  [[nodiscard]] std::vector<int> check(bits::Morton /*id*/) const {
    if (!finalized) throw utility::RuntimeError("velmo::tree::Partition::check not finalized");
    return {0};
  }
};

}  // namespace velmo::tree
