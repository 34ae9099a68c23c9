#include "sparse/Vector.hpp"

namespace velmo::sparse {

void Vector::setIds(std::span<const u64> newIds) {
  if (!std::ranges::is_sorted(newIds)) throw utility::RuntimeError("IDs have to be sorted");
  ids.assign(newIds.begin(), newIds.end());
  values.assign(ids.size(), 0.0);
}

void Vector::zero() noexcept { std::ranges::fill(values, 0.0); }

double Vector::get(u64 id) const {
  const u64 place = find_(id);
  if (place == kNone)
    throw utility::DomainError("Vector index cannot be found: " + std::to_string(id));
  return values[place];
}

}  // namespace velmo::sparse
