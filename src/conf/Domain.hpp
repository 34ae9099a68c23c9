#pragma once

#include <memory>
#include <string>
#include <vector>

#include "conf/Base.hpp"
#include "conf/GridTransform.hpp"
#include "io/Types.hpp"

namespace velmo::conf {

/// A body of the grid.
struct Part : Base {
  std::string name;
  u64 id = 0;
  std::vector<u64> regionIds;  ///< regions of the grid that form it; read from a file never empty

  void describe(SchemaWriter& writer) const override;
};

/// The bodies and where they stand. A copy holds copies of the placements.
struct Domain : Base {
  std::vector<Part> parts;
  std::vector<std::unique_ptr<GridTransformBase>> placements;  ///< no entry is null

  Domain() = default;
  Domain(const Domain& other);
  Domain(Domain&&) = default;
  Domain& operator=(const Domain& other);
  Domain& operator=(Domain&&) = default;
  ~Domain() override = default;

  void describe(SchemaWriter& writer) const override;
};

}  // namespace velmo::conf
