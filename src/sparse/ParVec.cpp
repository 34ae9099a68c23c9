#include "sparse/ParVec.hpp"

#include <cassert>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>

namespace velmo::sparse {
namespace {

[[noreturn]] void failOutOfRange(const char* what, u64 index, u64 size) {
  throw std::out_of_range(what + std::to_string(index) + " is out of global range [0," +
                          std::to_string(size) + ") ");
}

}  // namespace

ParVec::ParVec(IndexLayout indexLayout, linalg::MatrixView<double, -1, 1, 1> owned)
    : layout(std::move(indexLayout)), local(owned) {
  assert(local.size == layout.ownedSize());
}

double ParVec::get(u64 index) const {
  if (index >= layout.globalSize()) failOutOfRange("ParVec index ", index, layout.globalSize());
  if (layout.owns(index)) return local[index - layout.ownedBegin()];
  try {
    return remote.get(index);
  } catch (const std::domain_error& failure) {
    throw std::domain_error(std::string("ParVec remote index out of range: ") + failure.what() +
                            " Scatter the ParVec?");
  }
}

void ParVec::add(u64 index, double value) {
  if (index >= layout.globalSize()) failOutOfRange("Index ", index, layout.globalSize());
  if (layout.owns(index))
    atomicAdd(local[index - layout.ownedBegin()], value);
  else
    remote.add(std::span(&index, 1), std::span(&value, 1), atomicAdd);
}

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
