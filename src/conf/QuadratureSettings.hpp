#pragma once

#include <cstdint>

namespace velmo::bem {

/// Quadrature of the main solver; carried, not used by this program.
struct QuadratureSettings {
  std::uint64_t regular = 5;
  std::uint64_t quasiOrder = 5;
  std::uint64_t quasiMaxLevel = 3;
  double quasiAdm = 1.0;
  std::uint64_t singularXi = 8;
  std::uint64_t singularEta = 8;

  bool operator==(const QuadratureSettings&) const = default;
};

/// Quadrature of the near field.
struct EvalQuadratureSettings {
  std::uint64_t order = 5;     ///< order of the rule on an element and on each of its cells
  double minRelDist = 1.0;     ///< distance in element sizes below which a target is near
  std::uint64_t maxLevel = 5;  ///< only shown in the log

  bool operator==(const EvalQuadratureSettings&) const = default;
};

}  // namespace velmo::bem
