#pragma once

#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace velmo::io {

/// The standard allocator, but elements that are made without a value are left as they are found:
/// numbers get no zeros. A long array is then written once, by the threads that fill it, and its
/// pages are touched there for the first time.
template <class T>
struct UnfilledAllocator : std::allocator<T> {
  template <class Other>
  struct rebind {
    using other = UnfilledAllocator<Other>;
  };

  UnfilledAllocator() = default;
  template <class Other>
  explicit(false) UnfilledAllocator(const UnfilledAllocator<Other>& /*other*/) noexcept {}

  template <class Element>
  void construct(Element* place) noexcept {
    ::new (static_cast<void*>(place)) Element;
  }
  template <class Element, class... Arguments>
  void construct(Element* place, Arguments&&... arguments) {
    std::construct_at(place, std::forward<Arguments>(arguments)...);
  }
};

/// A vector whose constructor and `resize` leave numbers unset: each element must be written before
/// it is read.
template <class T>
using UnfilledVector = std::vector<T, UnfilledAllocator<T>>;

}  // namespace velmo::io
