#include "bem/DofTransfer.hpp"

#include <algorithm>
#include <cassert>
#include <utility>

#include "io/CheckedAccess.hpp"
#include "io/Exception.hpp"

namespace velmo::bem {
namespace {

using sparse::IndexLayout;
using sparse::ParVec;

/// Room for the degrees of freedom of any element: its own, those of four vertices and four edges.
std::vector<u64> dofBuffer(const fe::DofData& dofs) {
  using topo::ReferenceType;
  const auto count = [&](ReferenceType kind) { return dofs.counts().numDofs(kind); };
  const u64 own = std::max(count(ReferenceType::Triangle), count(ReferenceType::Quadrilateral));
  return std::vector<u64>(std::max(own, count(ReferenceType::Point)) +
                          4 * count(ReferenceType::Point) + 4 * count(ReferenceType::Line));
}

/// Refuses a vector whose remote part is already valid, and resets its mark after the product. With
/// one rank there is no remote part to fill or send.
void useOnce(ParVec& in) {
  if (in.scattered) throw utility::RuntimeError("ParVec is already scattered");
  in.remote.zero();
}

}  // namespace

DofTransfer::DofTransfer(comm::Comm comm, std::vector<u64> columnOfRow)
    : ParMatrixBase(IndexLayout(comm, columnOfRow.size()), IndexLayout(comm, columnOfRow.size())),
      columnOfRow_(std::move(columnOfRow)) {}

void DofTransfer::matMult(ParVec& in, ParVec& out, double alpha) const {
  useOnce(in);
  const double* const from = in.local.data;
  double* const to = out.local.data;
  for (u64 row = 0; row < columnOfRow_.size(); ++row) to[row] += alpha * from[columnOfRow_[row]];
}

void DofTransfer::matMultTrans(ParVec& in, ParVec& out, double alpha) const {
  useOnce(in);
  const double* const from = in.local.data;
  double* const to = out.local.data;
  for (u64 row = 0; row < columnOfRow_.size(); ++row) to[columnOfRow_[row]] += alpha * from[row];
}

void DofTransfer::matMultConjTrans(ParVec& in, ParVec& out, double alpha) const {
  matMultTrans(in, out, alpha);
}

void DofTransfer::getDiagonal(linalg::MatrixView<double, -1, 1, 1> out) const {
  if (out.size < columnOfRow_.size()) throw utility::RuntimeError("Provided storage too small");
  for (u64 row = 0; row < columnOfRow_.size(); ++row)
    out.data[row] = columnOfRow_[row] == row ? 1.0 : 0.0;
}

template <u64 Dim>
DofTransfer makeDofTransfer(const topo::Grid<Dim>& fromGrid, const topo::Grid<Dim>& toGrid,
                            const fe::DofData& fromDofs, const fe::DofData& toDofs,
                            const ElementMap& destination, const ElementMap& elementInTarget) {
  const comm::Comm comm = topo::requireOwnerships(fromGrid.ownerships)[0].communicator();
  if (fromDofs.feOrder != toDofs.feOrder)
    throw utility::RuntimeError("FE degrees don't match as they have to");

  constexpr int kOnlyRank = 0;
  const std::vector<int> ranks(static_cast<u64>(comm::size(comm)), kOnlyRank);
  std::vector<u64> columnOfRow(toDofs.numDofs(), kNone);
  std::vector<u64> from = dofBuffer(fromDofs);
  std::vector<u64> to = dofBuffer(toDofs);
  for (u64 e = 0; e < fromGrid.numElements(); ++e) {
    (void)utility::checkedAt(ranks, destination(e));
    const u64 numDofs = fromDofs.dofsOfEntity(fromGrid, e, from);
    if (toDofs.dofsOfEntity(toGrid, elementInTarget(e), to) != numDofs)
      throw utility::RuntimeError("From/To element have different number of DOFs");
    // Both lists name the vertices' dofs first, then the edges', then the element's own.
    for (u64 i = 0; i < numDofs; ++i) columnOfRow[to[i]] = from[i];
  }
  assert(std::ranges::find(columnOfRow, kNone) == columnOfRow.end());
  return {comm, std::move(columnOfRow)};
}

template DofTransfer makeDofTransfer<0>(const topo::Grid<0>&, const topo::Grid<0>&,
                                        const fe::DofData&, const fe::DofData&, const ElementMap&,
                                        const ElementMap&);
template DofTransfer makeDofTransfer<2>(const topo::Grid<2>&, const topo::Grid<2>&,
                                        const fe::DofData&, const fe::DofData&, const ElementMap&,
                                        const ElementMap&);

}  // namespace velmo::bem
