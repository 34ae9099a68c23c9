#include "fmm/ExpansionKernel.hpp"
#include "math/LanesAvx2.hpp"

namespace velmo::fmm {
namespace {

using namespace math::lanesAvx2;

/// Groups of lanes that are processed together: as many as fit into the registers.
constexpr u64 kGroups = 1;
/// Rows of a rotation that are computed together.
constexpr u64 kRows = 2;

#include "fmm/ExpansionKernelBody.inl"
#include "fmm/TranslationKernelBody.inl"

}  // namespace

const ExpansionKernel detail_::kExpansionAvx2{
    &pointsToMultipole,    &pointsToLocal,    &localToPoints, &multipoleToPoints,
    &multipoleToMultipole, &multipoleToLocal, &localToLocal};

}  // namespace velmo::fmm
