#include "fmm/ExpansionKernel.hpp"
#include "math/LanesBaseline.hpp"

namespace velmo::bem::fmm {
namespace {

using math::lanesBaseline::root;

#include "fmm/ExpansionKernelBody.inl"

}  // namespace

const ExpansionKernel detail_::kExpansionBaseline{
    &pointsToMultipole,    &pointsToLocal,    &localToPoints, &multipoleToPoints,
    &multipoleToMultipole, &multipoleToLocal, &localToLocal};

}  // namespace velmo::bem::fmm
