#include "fe/DofContainer.hpp"

#include <algorithm>
#include <stdexcept>

#include "io/Exception.hpp"

namespace velmo::fe {

DofContainer::DofContainer(bool compressed, u64 entityCount, u64 totalDofs, u64 first)
    : DofDataLayout(entityCount, totalDofs, compressed),
      data(totalDofs, 0),
      numEntities(entityCount),
      firstEntity(first) {}

void DofContainer::setCount(u64 entity, u64 n) {
  checkEntity_(entity);
  DofDataLayout::setCount(entity - firstEntity, n);
  maxDofsPerEntity = std::max(maxDofsPerEntity, n);
}

void DofContainer::finalize() {
  DofDataLayout::finalize();
  data.resize(DofDataLayout::startOf(numEntities), 0);
}

void DofContainer::set(u64 entity, u64 n, const u64* values) {
  if (!isFinalized() || numEntities == 0)
    throw utility::RuntimeError("DofContainer not finalized or no entities registered");
  checkEntity_(entity);
  const u64 first = startOf(entity);
  if (first > data.size() || n > data.size() - first)
    throw utility::RuntimeError("DofContainer too small");
  std::copy_n(values, n, data.data() + first);
}

void DofContainer::checkEntity_(u64 entity) const {
  // An entity before the first wraps around to a number behind the last.
  if (entity - firstEntity >= numEntities) throw std::out_of_range("invalid vector subscript");
}

}  // namespace velmo::fe
