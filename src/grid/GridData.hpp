#pragma once

#include <span>
#include <vector>

#include "io/Types.hpp"

namespace velmo::grid {

/// The flat exchange form of a grid: what readers fill and everything else is built from.
///
/// `connectivity` holds node ids, not positions; the nodes of element i are
/// `connectivity[offsets[i]]` to `connectivity[offsets[i + 1] - 1]`. A point cloud has one `Point`
/// element per node.
struct GridData {
  u64 worldDim = 3;  ///< components per node
  u64 numElements = 0;
  u64 numNodes = 0;
  std::vector<double> coordinates;  ///< shape (numNodes, worldDim), unit of the input file
  std::vector<u64> nodeIds;         ///< sorted, but for a grid read from `.mesh`
  std::vector<u64> elementTypes;    ///< element type codes, shape (numElements)
  std::vector<u64> offsets{0};      ///< shape (numElements + 1)
  std::vector<u64> connectivity;
  std::vector<u64> elementTags;  ///< shape (numElements)

  [[nodiscard]] bool operator==(const GridData&) const = default;
};

}  // namespace velmo::grid
