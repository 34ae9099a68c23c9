#include "bem/PointChargeKernel.hpp"
#include "math/LanesBaseline.hpp"

namespace velmo::bem {
namespace {

using namespace math::lanesBaseline;

constexpr u64 kGroups = 1;

#include "bem/PointChargeKernelBody.inl"

}  // namespace

const PointChargeKernel detail_::kPointChargeBaseline{&add,     &addMasked, &nearCandidates,
                                                      &markFar, &leafCells, &sumOfCells};

}  // namespace velmo::bem
