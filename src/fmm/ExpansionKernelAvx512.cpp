#include "fmm/ExpansionKernel.hpp"
#include "math/LanesAvx512.hpp"

namespace velmo::bem::fmm {
namespace {

using math::lanesAvx512::root;

#include "fmm/ExpansionKernelBody.inl"

}  // namespace

const ExpansionKernel detail_::kExpansionAvx512{
    &pointsToMultipole,    &pointsToLocal,    &localToPoints, &multipoleToPoints,
    &multipoleToMultipole, &multipoleToLocal, &localToLocal};

}  // namespace velmo::bem::fmm
