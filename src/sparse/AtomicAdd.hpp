#pragma once

#include <atomic>

namespace velmo::sparse {

/// target += value, safe beside other calls of it on the same double: compare-and-swap on the
/// 64-bit pattern. Orders nothing else; readers need the threads joined.
inline void atomicAdd(double& target, double value) noexcept {
  const std::atomic_ref<double> shared(target);
  double current = shared.load(std::memory_order_relaxed);
  while (!shared.compare_exchange_weak(current, current + value, std::memory_order_relaxed)) {
  }
}

}  // namespace velmo::sparse
