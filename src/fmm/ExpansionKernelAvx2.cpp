#include "fmm/ExpansionKernel.hpp"
#include "math/LanesAvx2.hpp"

namespace velmo::bem::fmm {
namespace {

using math::lanesAvx2::root;

#include "fmm/ExpansionKernelBody.inl"

}  // namespace

const ExpansionKernel detail_::kExpansionAvx2{
    &pointsToMultipole,    &pointsToLocal,    &localToPoints, &multipoleToPoints,
    &multipoleToMultipole, &multipoleToLocal, &localToLocal};

}  // namespace velmo::bem::fmm
