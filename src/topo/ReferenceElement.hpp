#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "io/Types.hpp"

namespace velmo::topo {

/// Shape of a reference element. The values are part of the file and message formats.
enum class ReferenceType : std::int8_t {
  Point = 0,
  Line = 1,
  Triangle = 2,
  Quadrilateral = 3,
  Tetrahedron = 4,
  Hexahedron = 5,
  Prism = 6,
  Pyramid = 7,
  None = 8,
};

/// Node points of a reference element in the order of the nodes of a grid element.
struct NodePoints {
  u64 order = 0;
  std::vector<double> points;  ///< x, y of each node, shape (count, 2)
  u64 count = 0;
};

/// Dimension of the shape.
[[nodiscard]] u64 dimension(ReferenceType type);

/// Number of vertices of the shape.
[[nodiscard]] u64 numVertices(ReferenceType type);

/// Number of sub-entities of codimension `codim`; 1 for codimension 0.
/// @throws std::runtime_error "topo::ReferenceElement::numSubEntities::Wrong codim"
[[nodiscard]] u64 numSubEntities(ReferenceType type, u64 codim);

/// Shape of the sub-entities of codimension `codim`, `None` beyond the dimension.
[[nodiscard]] ReferenceType subEntityType(ReferenceType type, u64 codim);

/// Local vertex numbers of sub-entity `i` of codimension `codim`; edges in their orientation.
/// @throws std::runtime_error "topo::ReferenceElement::getSubEntityNodes::Wrong codim"
/// @throws std::out_of_range  "invalid array<T, N> subscript"
[[nodiscard]] std::span<const u64> getSubEntityNodes(ReferenceType type, u64 codim, u64 i);

/// Reference vertices, `dimension` coordinates each, vertex after vertex.
/// Triangle: (0,0), (1,0), (1,1), that is 0 <= y <= x <= 1.
[[nodiscard]] std::span<const double> vertices(ReferenceType type);

/// Mean of the reference vertices; the pyramid has (0.375, 0.375, 0.25).
[[nodiscard]] std::array<double, 3> barycenter(ReferenceType type);

/// Node points of order `order` of a triangle or quadrilateral: vertices, then the inner points of
/// each edge in edge order, then the interior, numbered in the same way as a smaller shape.
/// Order 0 is the single point (0, 0).
[[nodiscard]] NodePoints nodePoints(ReferenceType type, u64 order);

/// Interior node points of order `order`, shape (count, 2).
/// @throws std::runtime_error "Tria with p < 3 cannot have interior nodes",
///                            "Quad with p < 2 cannot have interior nodes"
[[nodiscard]] std::vector<double> interiorNodePoints(ReferenceType type, u64 order);

}  // namespace velmo::topo

namespace velmo::geom::detail_ {

/// Non-owning span over interleaved coordinates of points in `Dim` dimensions.
/// `CoordinateSpan_<2, 1>` carries points of a reference element.
template <std::size_t Dim, int N = 1>
struct CoordinateSpan_ {
  const double* data = nullptr;
  u64 size = 0;  ///< number of doubles, `Dim` per point

  [[nodiscard]] constexpr u64 numPoints() const noexcept { return size / Dim; }
  [[nodiscard]] constexpr double operator()(u64 point, u64 axis) const noexcept {
    return data[point * Dim + axis];
  }
};

}  // namespace velmo::geom::detail_

namespace velmo::geom {

/// Points of a two-dimensional reference element.
using ReferencePoints = detail_::CoordinateSpan_<2, 1>;

}  // namespace velmo::geom
