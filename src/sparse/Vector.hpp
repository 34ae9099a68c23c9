#pragma once

#include <algorithm>
#include <cassert>
#include <span>
#include <string>
#include <vector>

#include "io/Exception.hpp"
#include "io/Types.hpp"

namespace velmo::sparse {

/// Sparse vector with a fixed pattern.
class Vector {
 public:
  /// Sets the pattern, with all values 0. `newIds` ascend; equal neighbours are let through.
  /// @throws utility::RuntimeError "IDs have to be sorted"
  void setIds(std::span<const u64> newIds);

  /// Sets all values to 0.
  void zero() noexcept;

  /// @throws utility::DomainError "Vector index cannot be found: <id>"
  [[nodiscard]] double get(u64 id) const;

  /// Calls `op(value of wantedIds[k], summands[k])` for each k in order. `op` takes a double
  /// reference and a double.
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
  /// Place of the id, `kNone` where it is missing.
  [[nodiscard]] u64 find_(u64 id) const noexcept {
    const auto found = std::lower_bound(ids.begin(), ids.end(), id);
    return found != ids.end() && *found == id ? static_cast<u64>(found - ids.begin()) : kNone;
  }
};

}  // namespace velmo::sparse
