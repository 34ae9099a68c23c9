#pragma once

#include <array>
#include <memory>
#include <span>

#include "fe/DofContainer.hpp"
#include "fe/ShapeFunList.hpp"
#include "io/Types.hpp"
#include "topo/Grid.hpp"

namespace velmo::fe {

/// The degrees of freedom of one discrete function, by codimension: on a surface elements (0),
/// edges (1) and vertices (2), in a point cloud vertices (0). Const operations may be called from
/// many threads once all codimensions in use are initialized.
class DofData {
 public:
  static constexpr u64 kNumCodims = 3;

  explicit DofData(const ShapeFunCounts& counts) : feOrder(counts.order), counts_(counts) {}

  /// The container of one codimension.
  /// @throws utility::RuntimeError
  ///         "DofData<CODIM>::get<CODIM>() is not initialized! (ContainerType)", for the const form
  ///         "... (const ContainerType)"
  template <u64 CODIM>
  [[nodiscard]] DofContainer& get();
  template <u64 CODIM>
  [[nodiscard]] const DofContainer& get() const;

  /// Numbers the degrees of freedom of all entities of one codimension from `firstDof` on, entity
  /// after entity. Entities of another rank get `kNone` for each of theirs; without ownership
  /// records all entities count as owned.
  ///
  /// @return the number after the last one assigned
  /// @throws utility::RuntimeError
  ///         "velmo::fe::DofData::CODIM=<CODIM> has already been initialized!"; for edges and
  ///         vertices without degrees of freedom "For compressed addressing need numTotalDofs"
  template <u64 CODIM, u64 Dim>
  u64 initialize(const topo::Grid<Dim>& grid, u64 firstDof = 0);

  /// Writes all degrees of freedom of an element to `out`: those of its vertices, its edges, then
  /// its own, each in the order of the reference element.
  ///
  /// @return their number
  /// @throws utility::RuntimeError "Provided storage too small"; "This entity is only temporary, to
  ///         get the index of its original use velmo::topo::Grid::index( entity ) instead" for the
  ///         index `kNone`
  template <u64 Dim>
  u64 dofsOfEntity(const topo::Grid<Dim>& grid, u64 element, std::span<u64> out) const;

  /// Number of degrees of freedom in all containers.
  [[nodiscard]] u64 numDofs() const noexcept;

  /// The numbers of functions that this was made with.
  [[nodiscard]] const ShapeFunCounts& counts() const noexcept { return counts_; }

  u64 feOrder;  ///< polynomial order

 private:
  ShapeFunCounts counts_;
  std::array<std::unique_ptr<DofContainer>, kNumCodims> containers_;  ///< null if there are none
};

/// Element-local degrees of freedom of a list of shape functions on a surface, numbered from 0 in
/// element order.
[[nodiscard]] DofData elementDofs(const topo::Grid<2>& grid, const ShapeFunList<2, 3>& list);

/// `valuesPerVertex` >= 1 degrees of freedom at each point of a cloud, numbered from 0 in the order
/// of the points; the values of a point are contiguous.
[[nodiscard]] DofData vertexDofs(const topo::Grid<0>& grid, u64 valuesPerVertex);

}  // namespace velmo::fe
