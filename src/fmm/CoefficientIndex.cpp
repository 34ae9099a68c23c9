#include "fmm/CoefficientIndex.hpp"

#include <string>

#include "io/Exception.hpp"

namespace velmo::fmm {

u64 limitedDegree(u64 degree) {
  if (degree > kMaxDegree)
    throw utility::RuntimeError("The FMM expansion degree must be <= " +
                                std::to_string(kMaxDegree));
  return degree;
}

u64 requireDegree(u64 degree) {
  if (degree < 2) throw utility::RuntimeError("Expansion degree must be >= 2");
  return limitedDegree(degree);
}

}  // namespace velmo::fmm
