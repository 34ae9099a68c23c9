#pragma once

#include <vector>

#include "bits/MortonID.hpp"
#include "io/Exception.hpp"

namespace velmo::tree {

/// Which range of the Morton curve belongs to which process, for the sorted objects and for the
/// tree, whose range is that of the occupied blocks. The program runs as one process, so there is
/// one range, from the first identifier to the last.
///
/// Initially empty; a finalized partition doesn't change any more. The lists have one entry per
/// process, in the order of their ranks.
struct Partition {
  std::vector<bits::Morton> first;  ///< first identifier of each process, of any level
  std::vector<bits::Morton> last;   ///< last identifier of each process, included
  std::vector<bool> active;         ///< whether the process has any objects
  bool finalized = false;           ///< whether check() may be called

  /// The finalized partition of one process; both identifiers are 0 for a process without objects.
  [[nodiscard]] static Partition ofOneProcess(bits::Morton firstId, bits::Morton lastId) {
    return {{firstId}, {lastId}, {true}, true};
  }

  /// The processes whose range overlaps `id`. The only process owns everything, inside its range or
  /// not. Any thread may call this.
  /// @return ranks, ascending: {0}
  ///
  /// @throws utility::RuntimeError "velmo::tree::Partition::check not finalized"
  [[nodiscard]] std::vector<int> check(bits::Morton /*id*/) const {
    if (!finalized) throw utility::RuntimeError("velmo::tree::Partition::check not finalized");
    return {0};
  }
};

}  // namespace velmo::tree
