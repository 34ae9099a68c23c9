#include "grid/GeometricBasis.hpp"

#include <stdexcept>

#include "grid/ElementTypes.hpp"

namespace velmo::grid {

const sfun::NodalBasis& geometricBasis(u64 code) {
  if (dimensionOf(code) != 2)
    throw std::runtime_error("velmo::grid::detail_::applyToEets: must not reach this point (" +
                             nameOf(code) + ")");
  if (code == 308) return sfun::serendipityBasis();
  return sfun::lagrangeBasis(referenceTypeOf(code), orderOf(code));
}

}  // namespace velmo::grid
