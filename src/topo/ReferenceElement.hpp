#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "io/Types.hpp"

namespace velmo::topo {

/// Shape of a reference element. The values are part of the file and message formats, and places in
/// arrays that are indexed by shape.
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

// All queries throw std::runtime_error "velmo::topo::detail_::applyToRets: must not reach this
// point" for `None` and values outside the enumeration. The tables behind them are constant.

/// Dimension of the shape, 0 to 3.
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

/// Node points of order p = `order` of a triangle or quadrilateral, (p + 1)(p + 2)/2 or (p + 1)^2
/// of them: the vertices; on each edge (a, b), in edge order, a + (b - a) i/p for i = 1 to p - 1;
/// then the interior, numbered like a smaller shape. Order 0 is the single point (0, 0). Setup
/// code, allocates.
[[nodiscard]] NodePoints nodePoints(ReferenceType type, u64 order);

/// Interior node points of order p = `order`, shape (count, 2): all node points (x, y) of order
/// p - 3 at ((p - 3)/p x + 2/p, (p - 3)/p y + 1/p) on the triangle, of order p - 2 at
/// ((p - 2)/p x + 1/p, (p - 2)/p y + 1/p) on the quadrilateral.
/// @throws std::runtime_error "Tria with p < 3 cannot have interior nodes",
///                            "Quad with p < 2 cannot have interior nodes"
[[nodiscard]] std::vector<double> interiorNodePoints(ReferenceType type, u64 order);

}  // namespace velmo::topo

namespace velmo::geom::detail_ {

/// Non-owning span over interleaved coordinates of points in `Dim` dimensions, passed by value:
/// coordinate `axis` of point q is data[q Dim + axis]. The caller keeps the array alive.
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
