#include "topo/ReferenceElement.hpp"

#include <stdexcept>
#include <type_traits>
#include <utility>

namespace velmo::topo {
namespace detail_ {

template <ReferenceType Type>
using RetConstant = std::integral_constant<ReferenceType, Type>;

/// Calls `function` with the shape `type` as a compile-time constant and returns its result, which
/// must have the same type for all shapes.
/// @throws std::runtime_error "velmo::topo::detail_::applyToRets: must not reach this point" for
///         `None` and values outside the enumeration
template <class Function>
decltype(auto) applyToRets(ReferenceType type, Function&& function) {
  switch (type) {
    case ReferenceType::Point:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Point>{});
    case ReferenceType::Line:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Line>{});
    case ReferenceType::Triangle:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Triangle>{});
    case ReferenceType::Quadrilateral:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Quadrilateral>{});
    case ReferenceType::Tetrahedron:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Tetrahedron>{});
    case ReferenceType::Hexahedron:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Hexahedron>{});
    case ReferenceType::Prism:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Prism>{});
    case ReferenceType::Pyramid:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Pyramid>{});
    case ReferenceType::None:
      break;
  }
  throw std::runtime_error("velmo::topo::detail_::applyToRets: must not reach this point");
}

}  // namespace detail_

namespace {

using enum ReferenceType;

/// The tables of one shape; index c of `counts` and `subTypes` is the codimension.
template <std::size_t Dim, std::size_t NumVertices>
struct Tables {
  static constexpr u64 kDimension = Dim;
  static constexpr u64 kNumVertices = NumVertices;
  std::array<u64, Dim + 1> counts;
  std::array<ReferenceType, Dim + 1> subTypes;
  std::array<double, Dim * NumVertices> vertices;
};

template <ReferenceType Type>
constexpr auto kTables = nullptr;

template <>
constexpr Tables<0, 1> kTables<Point>{{1}, {Point}, {}};

template <>
constexpr Tables<1, 2> kTables<Line>{{1, 2}, {Line, Point}, {0, 1}};

template <>
constexpr Tables<2, 3> kTables<Triangle>{{1, 3, 3}, {Triangle, Line, Point}, {0, 0, 1, 0, 1, 1}};

template <>
constexpr Tables<2, 4> kTables<Quadrilateral>{
    {1, 4, 4}, {Quadrilateral, Line, Point}, {0, 0, 1, 0, 1, 1, 0, 1}};

template <>
constexpr Tables<3, 4> kTables<Tetrahedron>{
    {1, 4, 6, 4}, {Tetrahedron, Triangle, Line, Point}, {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1}};

template <>
constexpr Tables<3, 8> kTables<Hexahedron>{
    {1, 6, 12, 8}, {Hexahedron, Quadrilateral, Line, Point}, {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0,
                                                              0, 0, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1}};

// Prisms and pyramids have faces of both kinds, so their faces have no single type.
template <>
constexpr Tables<3, 6> kTables<Prism>{{1, 5, 9, 6},
                                      {Prism, None, Line, Point},
                                      {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 0, 1, 1}};

template <>
constexpr Tables<3, 5> kTables<Pyramid>{
    {1, 5, 8, 5}, {Pyramid, None, Line, Point}, {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1}};

constexpr std::array<u64, 4> kLocalVertices{0, 1, 2, 3};
constexpr std::array<u64, 6> kTriangleEdges{0, 1, 1, 2, 2, 0};
constexpr std::array<u64, 8> kQuadrilateralEdges{0, 1, 1, 2, 2, 3, 3, 0};

std::span<const u64> edgesOf(ReferenceType type) {
  if (type == Triangle) return kTriangleEdges;
  return kQuadrilateralEdges;
}

void requireSurfaceShape(ReferenceType type) {
  if (type != Triangle && type != Quadrilateral)
    throw std::runtime_error("velmo::topo::detail_::applyToRets: must not reach this point");
}

u64 numNodePoints(ReferenceType type, u64 order) {
  return type == Triangle ? (order + 1) * (order + 2) / 2 : (order + 1) * (order + 1);
}

}  // namespace

u64 dimension(ReferenceType type) {
  return detail_::applyToRets(type, [](auto shape) { return kTables<shape()>.kDimension; });
}

u64 numVertices(ReferenceType type) {
  return detail_::applyToRets(type, [](auto shape) { return kTables<shape()>.kNumVertices; });
}

u64 numSubEntities(ReferenceType type, u64 codim) {
  return detail_::applyToRets(type, [codim](auto shape) {
    constexpr const auto& counts = kTables<shape()>.counts;
    if (codim >= counts.size())
      throw std::runtime_error("topo::ReferenceElement::numSubEntities::Wrong codim");
    return counts[codim];
  });
}

ReferenceType subEntityType(ReferenceType type, u64 codim) {
  return detail_::applyToRets(type, [codim](auto shape) {
    constexpr const auto& subTypes = kTables<shape()>.subTypes;
    return codim < subTypes.size() ? subTypes[codim] : None;
  });
}

std::span<const u64> getSubEntityNodes(ReferenceType type, u64 codim, u64 i) {
  // Only the sub-entities of surfaces are needed, so solids have no tables.
  const u64 dim = dimension(type);
  if (codim > dim || dim > 2)
    throw std::runtime_error("topo::ReferenceElement::getSubEntityNodes::Wrong codim");
  if (i >= numSubEntities(type, codim)) throw std::out_of_range("invalid array<T, N> subscript");
  if (codim == 0) return std::span(kLocalVertices).first(numVertices(type));
  if (codim == dim) return std::span(kLocalVertices).subspan(i, 1);
  return edgesOf(type).subspan(2 * i, 2);
}

std::span<const double> vertices(ReferenceType type) {
  return detail_::applyToRets(
      type, [](auto shape) { return std::span<const double>(kTables<shape()>.vertices); });
}

std::array<double, 3> barycenter(ReferenceType type) {
  if (type == Pyramid) return {0.375, 0.375, 0.25};
  const u64 dim = dimension(type);
  const auto count = static_cast<double>(numVertices(type));
  const std::span<const double> coordinates = vertices(type);
  std::array<double, 3> mean{};
  for (u64 i = 0; i < coordinates.size(); ++i) mean[i % dim] += coordinates[i];
  for (double& component : mean) component /= count;
  return mean;
}

NodePoints nodePoints(ReferenceType type, u64 order) {
  requireSurfaceShape(type);
  NodePoints nodes{order, {}, numNodePoints(type, order)};
  if (order == 0) {
    nodes.points = {0.0, 0.0};
    return nodes;
  }
  nodes.points.reserve(2 * nodes.count);
  const std::span<const double> corners = vertices(type);
  nodes.points.assign(corners.begin(), corners.end());

  const std::span<const u64> edges = edgesOf(type);
  const auto p = static_cast<double>(order);
  for (u64 edge = 0; edge < edges.size(); edge += 2) {
    const double* const a = &corners[2 * edges[edge]];
    const double* const b = &corners[2 * edges[edge + 1]];
    for (u64 i = 1; i < order; ++i) {
      for (u64 axis = 0; axis < 2; ++axis)
        nodes.points.push_back(a[axis] + (b[axis] - a[axis]) * static_cast<double>(i) / p);
    }
  }
  if (nodes.points.size() < 2 * nodes.count) {
    const std::vector<double> interior = interiorNodePoints(type, order);
    nodes.points.insert(nodes.points.end(), interior.begin(), interior.end());
  }
  return nodes;
}

std::vector<double> interiorNodePoints(ReferenceType type, u64 order) {
  requireSurfaceShape(type);
  const bool isTriangle = type == Triangle;
  const u64 shrink = isTriangle ? 3 : 2;
  if (order < shrink)
    throw std::runtime_error(isTriangle ? "Tria with p < 3 cannot have interior nodes"
                                        : "Quad with p < 2 cannot have interior nodes");
  // The inner shape is the reference shape scaled by w and moved one node spacing inwards. Its
  // barycentric or bilinear weights reproduce (a, b) on the reference shape itself.
  const auto p = static_cast<double>(order);
  const double w = static_cast<double>(order - shrink) / p;
  const double shiftX = (isTriangle ? 2.0 : 1.0) / p;
  const double shiftY = 1.0 / p;
  std::vector<double> points = nodePoints(type, order - shrink).points;
  for (u64 i = 0; i < points.size(); i += 2) {
    points[i] = w * points[i] + shiftX;
    points[i + 1] = w * points[i + 1] + shiftY;
  }
  return points;
}

}  // namespace velmo::topo
