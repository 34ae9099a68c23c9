#include "fe/DofContainer.hpp"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <string>

#include "io/CheckedAccess.hpp"
#include "io/Exception.hpp"

namespace velmo::fe {

DofDataLayout::DofDataLayout(u64 numEntities, u64 totalDofs, bool compressed) {
  if (compressed)
    cInitialize_(numEntities, totalDofs);
  else
    uInitialize_(numEntities);
}

void DofDataLayout::cInitialize_(u64 numEntities, u64 totalDofs) {
  if (numEntities > 0 && totalDofs == 0)
    throw utility::RuntimeError("For compressed addressing need numTotalDofs");
  const u64 uniform = numEntities == 0 ? 0 : totalDofs / numEntities;
  if (numEntities * uniform != totalDofs)
    throw utility::RuntimeError("DofDataLayout::cInitialize_:" + std::to_string(totalDofs) +
                                " is not a multiple of " + std::to_string(numEntities));
  compressed_ = std::make_unique<u64>(uniform);
  finalized_ = true;
  startOf_ = [](const DofDataLayout& layout, u64 i) { return i * *layout.compressed_; };
  setCount_ = [](DofDataLayout&, u64, u64) {};
  finalize_ = [](DofDataLayout&) {};
  countOf_ = [](const DofDataLayout& layout, u64) { return *layout.compressed_; };
}

void DofDataLayout::uInitialize_(u64 numEntities) {
  offsets_ = std::make_unique<std::vector<u64>>(numEntities + 1, 0);
  startOf_ = [](const DofDataLayout& layout, u64 i) { return (*layout.offsets_)[i]; };
  setCount_ = [](DofDataLayout& layout, u64 i, u64 n) { (*layout.offsets_)[i + 1] = n; };
  finalize_ = [](DofDataLayout& layout) {
    if (layout.finalized_) return;  // the entries are offsets by now
    std::partial_sum(layout.offsets_->begin(), layout.offsets_->end(), layout.offsets_->begin());
    layout.finalized_ = true;
  };
  countOf_ = [](const DofDataLayout& layout, u64 i) {
    return utility::checkedAt(*layout.offsets_, i + 1) - utility::checkedAt(*layout.offsets_, i);
  };
}

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
  // An entity before the first one wraps around to a number beyond the last.
  if (entity - firstEntity >= numEntities) throw std::out_of_range("invalid vector subscript");
}

}  // namespace velmo::fe
