#include "bem/DofTransfer.hpp"

#include <array>
#include <numeric>
#include <vector>

#include "comm/Exchange.hpp"
#include "io/CheckedAccess.hpp"
#include "io/Exception.hpp"
#include "sparse/Assemble.hpp"
#include "topo/Grid.hpp"

namespace velmo::bem {
namespace {

/// Words in front of an element's degrees of freedom: its number and their count.
constexpr u64 kHeader = 2;

/// Room for the degrees of freedom of any element.
std::vector<u64> dofBuffer(const fe::DofData& dofs) {
  u64 most = 0;
  for (const auto kind : {topo::ReferenceType::Point, topo::ReferenceType::Triangle,
                          topo::ReferenceType::Quadrilateral})
    most = std::max(most, dofs.counts().numDofs(kind));
  return std::vector<u64>(most + 4 * dofs.counts().numDofs(topo::ReferenceType::Point) +
                          4 * dofs.counts().numDofs(topo::ReferenceType::Line));
}

/// Per rank, one run per element: number, count, degrees of freedom.
template <u64 Dim>
std::vector<u64> packElements(const topo::Grid<Dim>& grid, const fe::DofData& dofs,
                              const topo::Ownership& owned, const ElementMap& destination,
                              std::vector<u64>& counts) {
  std::vector<u64> buffer = dofBuffer(dofs);
  std::vector<u64> rankOf(grid.numElements(), kNone);
  for (u64 e = 0; e < grid.numElements(); ++e) {
    if (!owned.isOwned(e)) continue;
    rankOf[e] = destination(e);
    utility::checkedAt(counts, rankOf[e]) += kHeader + dofs.dofsOfEntity(grid, e, buffer);
  }
  std::vector<u64> next(counts.size());
  std::exclusive_scan(counts.begin(), counts.end(), next.begin(), u64{0});
  std::vector<u64> runs(std::reduce(counts.begin(), counts.end(), u64{0}));
  for (u64 e = 0; e < grid.numElements(); ++e) {
    if (rankOf[e] == kNone) continue;
    const u64 numDofs = dofs.dofsOfEntity(grid, e, buffer);
    u64& place = next[rankOf[e]];
    runs[place++] = e;
    runs[place++] = numDofs;
    for (u64 i = 0; i < numDofs; ++i) runs[place++] = buffer[i];
  }
  return runs;
}

}  // namespace

template <u64 Dim>
DofTransfer makeDofTransfer(const topo::Grid<Dim>& fromGrid, const topo::Grid<Dim>& toGrid,
                            const fe::DofData& fromDofs, const fe::DofData& toDofs,
                            const ElementMap& destination, const ElementMap& elementInTarget) {
  const topo::Ownership& owned = topo::requireOwnerships(fromGrid.ownerships)[0];
  const comm::Comm comm = owned.communicator();
  const sparse::IndexLayout rows(comm, toDofs.numDofs());
  const sparse::IndexLayout cols(comm, fromDofs.numDofs());
  if (fromDofs.feOrder != toDofs.feOrder)
    throw utility::RuntimeError("FE degrees don't match as they have to");

  std::vector<u64> counts(static_cast<u64>(comm::size(comm)), 0);
  const std::vector<u64> sent = packElements(fromGrid, fromDofs, owned, destination, counts);
  const auto received = comm::exchangeRuns<u64>(comm, sent, counts);

  std::vector<sparse::Triple> triples;
  triples.reserve(fromDofs.numDofs());
  std::vector<u64> buffer = dofBuffer(toDofs);
  for (const u64* run = received.buffer.data();
       run != received.buffer.data() + received.buffer.size();) {
    const u64 numDofs = run[1];
    const u64 target = elementInTarget(run[0]);
    if (toDofs.dofsOfEntity(toGrid, target, buffer) != numDofs)
      throw utility::RuntimeError("From/To element have different number of DOFs");
    // Both lists name the vertices' dofs first, then the edges', then the element's own.
    for (u64 i = 0; i < numDofs; ++i)
      if (rows.owns(buffer[i])) triples.push_back({buffer[i], run[kHeader + i], 1.0});
    run += kHeader + numDofs;
  }
  return sparse::assemble(rows, cols, std::move(triples));
}

template DofTransfer makeDofTransfer<0>(const topo::Grid<0>&, const topo::Grid<0>&,
                                        const fe::DofData&, const fe::DofData&, const ElementMap&,
                                        const ElementMap&);
template DofTransfer makeDofTransfer<2>(const topo::Grid<2>&, const topo::Grid<2>&,
                                        const fe::DofData&, const fe::DofData&, const ElementMap&,
                                        const ElementMap&);

}  // namespace velmo::bem
