#pragma once

#include <functional>

#include "fe/DofData.hpp"
#include "io/Types.hpp"
#include "sparse/ParMatrix.hpp"
#include "topo/Grid.hpp"

namespace velmo::bem {

/// Moves coefficient vectors between two numberings of one grid: entries 1, one per row.
using DofTransfer = sparse::csr::ParMatrix<double>;

/// From an element's number to another number: a rank or the element's number in the other grid.
using ElementMap = std::function<unsigned long long(unsigned long long)>;

/// The transfer from the degrees of freedom of one grid (columns) to those of another with the same
/// elements in another order (rows).
///
/// @param destination     rank that receives an element of `fromGrid`
/// @param elementInTarget element of `toGrid` for an element of `fromGrid`
/// @throws utility::RuntimeError "Ownerships has not been created yet",
///   "FE degrees don't match as they have to", "From/To element have different number of DOFs"
/// @throws std::runtime_error "To-be-sent list does not have the right size"
template <u64 Dim>
[[nodiscard]] DofTransfer makeDofTransfer(const topo::Grid<Dim>& fromGrid,
                                          const topo::Grid<Dim>& toGrid,
                                          const fe::DofData& fromDofs, const fe::DofData& toDofs,
                                          const ElementMap& destination,
                                          const ElementMap& elementInTarget);

}  // namespace velmo::bem
