#include "bem/PointChargeKernel.hpp"
#include "math/LanesAvx2.hpp"

namespace velmo::bem {
namespace {

using namespace math::lanesAvx2;

constexpr u64 kGroups = 1;

#include "bem/PointChargeKernelBody.inl"

}  // namespace

const PointChargeKernel detail_::kPointChargeAvx2{&add,     &addMasked, &nearCandidates,
                                                  &markFar, &leafCells, &sumOfCells};

}  // namespace velmo::bem
