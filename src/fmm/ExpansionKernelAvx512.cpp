#include "fmm/ExpansionKernel.hpp"
#include "math/LanesAvx512.hpp"

namespace velmo::fmm {
namespace {

using namespace math::lanesAvx512;

/// Groups of lanes that are processed together: as many as fit into the registers.
constexpr u64 kGroups = 2;
/// Rows of a rotation that are computed together.
constexpr u64 kRows = 4;

#include "fmm/ExpansionKernelBody.inl"
#include "fmm/TranslationKernelBody.inl"

}  // namespace

const ExpansionKernel detail_::kExpansionAvx512{
    &pointsToMultipole,    &pointsToLocal,    &localToPoints, &multipoleToPoints,
    &multipoleToMultipole, &multipoleToLocal, &localToLocal};

}  // namespace velmo::fmm
