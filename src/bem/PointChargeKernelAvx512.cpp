#include "bem/PointChargeKernel.hpp"
#include "math/LanesAvx512.hpp"

namespace velmo::bem {
namespace {

using namespace math::lanesAvx512;

constexpr u64 kGroups = 2;

#include "bem/PointChargeKernelBody.inl"

}  // namespace

const PointChargeKernel detail_::kPointChargeAvx512{&add,     &addMasked, &nearCandidates,
                                                    &markFar, &leafCells, &sumOfCells};

}  // namespace velmo::bem
