#include "conf/Solver.hpp"

#include <cstddef>

#include "io/Exception.hpp"

namespace velmo::conf {

std::string_view toText(SolverType type) {
  const auto index = static_cast<std::size_t>(type);
  if (index >= kSolverTypeNames.size()) throw utility::RuntimeError("Cannot identify solver type");
  return kSolverTypeNames[index];
}

}  // namespace velmo::conf
