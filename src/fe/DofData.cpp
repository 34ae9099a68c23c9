#include "fe/DofData.hpp"

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include "io/Exception.hpp"

namespace velmo::fe {
namespace {

using topo::ReferenceType;

/// Shape of entity `i` of a codimension.
template <u64 CODIM, u64 Dim>
ReferenceType shapeOf(const topo::Grid<Dim>& grid, u64 i) {
  if constexpr (Dim == 2 && CODIM == 0)
    return grid.elementType(i);
  else
    return Dim - CODIM == 0 ? ReferenceType::Point : ReferenceType::Line;
}

/// All edges have the same number, and so have all vertices, so they need no table.
template <u64 CODIM, u64 Dim>
std::unique_ptr<DofContainer> makeContainer(const topo::Grid<Dim>& grid,
                                            const ShapeFunCounts& counts) {
  const u64 numEntities = grid.numEntities(CODIM);
  constexpr bool kCompressed = Dim - CODIM < 2;
  u64 totalDofs = 0;
  if constexpr (kCompressed)
    totalDofs =
        numEntities * counts.numDofs(Dim == CODIM ? ReferenceType::Point : ReferenceType::Line);
  auto container = std::make_unique<DofContainer>(kCompressed, numEntities, totalDofs, 0);
  for (u64 i = 0; i < numEntities; ++i)
    container->setCount(i, counts.numDofs(shapeOf<CODIM>(grid, i)));
  container->finalize();
  return container;
}

std::string text(u64 codim) {
  return "DofData<" + std::to_string(codim) + ">::get<" + std::to_string(codim) + ">()";
}

/// Appends a slice to the caller's buffer.
u64 append(std::span<const u64> dofs, std::span<u64> out, u64 used) {
  if (dofs.size() > out.size() - used) throw utility::RuntimeError("Provided storage too small");
  std::copy(dofs.begin(), dofs.end(), out.begin() + static_cast<std::ptrdiff_t>(used));
  return used + dofs.size();
}

}  // namespace

template <u64 CODIM>
DofContainer& DofData::get() {
  static_assert(CODIM < kNumCodims);
  if (!containers_[CODIM])
    throw utility::RuntimeError(text(CODIM) + " is not initialized! (ContainerType)");
  return *containers_[CODIM];
}

template <u64 CODIM>
const DofContainer& DofData::get() const {
  static_assert(CODIM < kNumCodims);
  if (!containers_[CODIM])
    throw utility::RuntimeError(text(CODIM) + " is not initialized! (const ContainerType)");
  return *containers_[CODIM];
}

template <u64 CODIM, u64 Dim>
u64 DofData::initialize(const topo::Grid<Dim>& grid, u64 firstDof) {
  static_assert(CODIM <= Dim);
  if (containers_[CODIM])
    throw utility::RuntimeError("velmo::fe::DofData::CODIM=" + std::to_string(CODIM) +
                                " has already been initialized!");
  std::unique_ptr<DofContainer> container = makeContainer<CODIM>(grid, counts_);
  const topo::Ownership* ownership = grid.ownerships ? &(*grid.ownerships)[CODIM] : nullptr;
  std::vector<u64> dofs(container->maxDofsPerEntity);
  u64 next = firstDof;
  for (u64 i = 0; i < container->numEntities; ++i) {
    const u64 n = container->countOf(i);
    if (ownership == nullptr || ownership->isOwned(i)) {
      std::iota(dofs.begin(), dofs.begin() + static_cast<std::ptrdiff_t>(n), next);
      next += n;
    } else {
      std::fill_n(dofs.begin(), n, kNone);
    }
    container->set(i, n, dofs.data());
  }
  containers_[CODIM] = std::move(container);
  return next;
}

template <u64 Dim>
u64 DofData::dofsOfEntity(const topo::Grid<Dim>& grid, u64 element, std::span<u64> out) const {
  if (element == kNone)
    throw utility::RuntimeError(
        "This entity is only temporary, to get the index of its original use "
        "velmo::topo::Grid::index( entity ) instead");
  u64 used = 0;
  if constexpr (Dim == 2) {
    const ReferenceType shape = grid.elementType(element);
    for (const u64 codim : {u64{2}, u64{1}}) {
      if (!containers_[codim]) continue;
      for (u64 i = 0; i < topo::numSubEntities(shape, codim); ++i) {
        const u64 index = grid.index(grid.subEntity(element, codim, i));
        used = append(containers_[codim]->dofsOf(index), out, used);
      }
    }
  }
  if (containers_[0]) used = append(containers_[0]->dofsOf(element), out, used);
  return used;
}

u64 DofData::numDofs() const noexcept {
  u64 total = 0;
  for (const auto& container : containers_)
    if (container) total += container->data.size();
  return total;
}

DofData elementDofs(const topo::Grid<2>& grid, const ShapeFunList<2, 3>& list) {
  DofData dofs(list);
  dofs.initialize<0>(grid);
  return dofs;
}

DofData vertexDofs(const topo::Grid<0>& grid, u64 valuesPerVertex) {
  ShapeFunCounts counts;
  counts.count[static_cast<std::size_t>(ReferenceType::Point)] = 1;
  counts.multiplicity[static_cast<std::size_t>(ReferenceType::Point)] = valuesPerVertex;
  DofData dofs(counts);
  dofs.initialize<0>(grid);
  return dofs;
}

template DofContainer& DofData::get<0>();
template DofContainer& DofData::get<1>();
template DofContainer& DofData::get<2>();
template const DofContainer& DofData::get<0>() const;
template const DofContainer& DofData::get<1>() const;
template const DofContainer& DofData::get<2>() const;
template u64 DofData::initialize<0>(const topo::Grid<0>&, u64);
template u64 DofData::initialize<0>(const topo::Grid<2>&, u64);
template u64 DofData::initialize<1>(const topo::Grid<2>&, u64);
template u64 DofData::initialize<2>(const topo::Grid<2>&, u64);
template u64 DofData::dofsOfEntity(const topo::Grid<0>&, u64, std::span<u64>) const;
template u64 DofData::dofsOfEntity(const topo::Grid<2>&, u64, std::span<u64>) const;

}  // namespace velmo::fe
