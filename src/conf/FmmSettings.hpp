#pragma once

#include <cstdint>

namespace velmo::bem::fmm {

/// Far field: order of the source moments' quadrature and degree of the expansions.
struct Settings {
  std::uint64_t leafQuadratureOrder = 8;
  std::uint64_t degree = 5;

  bool operator==(const Settings&) const = default;
};

}  // namespace velmo::bem::fmm
