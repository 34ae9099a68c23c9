#pragma once

#include <span>
#include <vector>

#include "grid/GridData.hpp"
#include "io/Types.hpp"
#include "topo/IdMap.hpp"

namespace velmo::grid {

/// Node positions by node id, in the unit of the grid: x, y, z of each node. Owns a copy of them.
/// Built once in time linear in the number of nodes, then read by any number of threads; a look-up
/// takes constant time.
class Coordinates {
 public:
  Coordinates() = default;

  /// The points of a cloud, in the order of its elements: element i is the node connectivity[i].
  /// @pre cloud.worldDim >= 3 (refused otherwise); components beyond the third are ignored
  /// @throws std::runtime_error "Input coordinate dimension too small",
  ///         "Constructor only allowed for point clouds", and the duplicate message below
  explicit Coordinates(const GridData& cloud);

  /// @param ids         id of each node, shape (count)
  /// @param coordinates shape (count, stride), of which the first three of each node are used
  /// @throws std::runtime_error "Input coordinate dimension too small" for a stride under 3,
  ///         "velmo::grid::Coordinates::Coordinates():Node '<id>' seems to be a duplicate!",
  ///         "Coordinates: the lists of a grid don't fit together"
  Coordinates(u64 count, std::span<const u64> ids, std::span<const double> coordinates, u64 stride);

  /// Number of nodes.
  [[nodiscard]] u64 size() const noexcept { return values_.size() / 3; }

  /// Position of the node `id`; a view that is valid as long as this object.
  /// @throws std::out_of_range "invalid unordered_map<K, T> key"
  [[nodiscard]] std::span<const double, 3> position(u64 id) const {
    return std::span<const double, 3>(values_.data() + 3 * placeOf(id), 3);
  }

  /// Place of the node `id` in `values`.
  /// @throws std::out_of_range "invalid unordered_map<K, T> key"
  [[nodiscard]] u64 placeOf(u64 id) const;

  /// All positions in place order, shape (size, 3).
  [[nodiscard]] std::span<const double> values() const noexcept { return values_; }

 private:
  topo::IdMap places_;
  std::vector<double> values_;
};

}  // namespace velmo::grid
