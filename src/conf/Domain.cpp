#include "conf/Domain.hpp"

#include <utility>

namespace velmo::conf {

Domain::Domain(const Domain& other) : Base(other), parts(other.parts) {
  placements.reserve(other.placements.size());
  for (const auto& placement : other.placements) placements.push_back(placement->clone());
}

Domain& Domain::operator=(const Domain& other) {
  Domain copy(other);
  *this = std::move(copy);
  return *this;
}

}  // namespace velmo::conf
